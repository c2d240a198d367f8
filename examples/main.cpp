// Shows the library from an application's side: writes debug lines to the
// console and a debug file, and times a short sleep on the monotonic clock.
#include <palvet/palvet.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    char const* tmp = getenv("TMPDIR");
    std::string log = argc > 1 ? argv[1] : std::string(tmp && *tmp ? tmp : "/tmp") + "/palvet-example.log";

    DbgOutputOpenFile(log.c_str(), 0);
    if (gDbgOutputFileHandle == nullptr)
        return 1;
    DbgOutput(1, "palvet example started, thread %d\n", getlwpid());

    unsigned long long start = GetTickCountUS();
    Sleep(20);
    unsigned long long slept = GetTickCountUS() - start;
    DbgOutput(1, "slept 20 ms, the monotonic clock measured %llu us\n", slept);
    DbgOutputCloseFile();

    FILE* f = fopen(log.c_str(), "rb");
    int lines = 0;
    for (int c; f != nullptr && (c = fgetc(f)) != EOF;)
        lines += c == '\n';
    if (f != nullptr)
        fclose(f);
    printf("palvet example: wrote %d lines to %s\n", lines, log.c_str());
    return lines == 2 ? 0 : 1;
}
