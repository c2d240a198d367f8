#include <palvet/core/clock.h>
#include <palvet/core/debug_output.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <regex>
#include <string>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "support/test_support.h"

using palvet_test::ReadWholeFile;
using palvet_test::StdoutCapture;
using palvet_test::TempDir;

namespace {

// Every test starts and ends with no debug file open.
class DbgOutputTest : public ::testing::Test {
protected:
    void TearDown() override { DbgOutputCloseFile(); }

    // Runs the call with a fresh debug file and standard output captured;
    // returns what reached the console and the file.
    template <class Call>
    std::pair<std::string, std::string> Both(Call call)
    {
        std::string path = dir_.File("dbg.log");
        DbgOutputOpenFile(path.c_str(), 0);
        StdoutCapture cap;
        call();
        std::string out = cap.Take();
        DbgOutputCloseFile();
        return {out, ReadWholeFile(path)};
    }

    TempDir dir_;
};

// The prefixed line expected for the text, around the timestamp found in the
// line once its shape is checked (its value is TimestampIsLocalTimeOfTheCall's
// concern). A timestamp of another width shifts the rest and fails as well.
std::string Prefixed(std::string const& line, char const* label, std::string const& text)
{
    static std::regex const shape("[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}");
    std::string stamp = line.substr(7, 26);
    if (!std::regex_match(stamp, shape))
        stamp = "(not a timestamp) " + stamp;
    return "Palvet " + stamp + " (pid:" + std::to_string(getpid()) + ", " + label + ":" +
           std::to_string(getlwpid()) + ") => " + text;
}

// The local time as a line shows it; the fields have fixed widths, so the
// order of these texts is the order in time.
std::string Stamp(timeval const& tv)
{
    tm t{};
    localtime_r(&tv.tv_sec, &t);
    char text[128];
    snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d:%02d.%06ld", t.tm_year + 1900,
             t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, static_cast<long>(tv.tv_usec));
    return text;
}

}  // namespace

TEST_F(DbgOutputTest, EveryLevelAndLengthReachesConsoleAndFile)
{
    // 1023 characters fit the first buffer, longer texts need a second one;
    // a cut text would lose its last character.
    for (size_t length : {1u, 1023u, 1024u, 1025u, 5000u}) {
        std::string text(length, 'a');
        text.back() = 'z';
        for (int level : {0, 1, 2, 7, -1}) {
            auto r = Both([&] { DbgOutput(level, "%s", text.c_str()); });
            if (level == 0) {
                EXPECT_EQ(r.first, text) << length;
                EXPECT_EQ(r.second, text) << length;
                continue;
            }
            EXPECT_EQ(r.first, Prefixed(r.first, "lwp", text)) << level;
            EXPECT_EQ(r.second, Prefixed(r.second, "tid", text)) << level;
        }
    }
    auto empty = Both([] {
        DbgOutput(0, "%s", "");
        DbgOutput(1, "%s", "");
    });
    EXPECT_EQ(empty.first + empty.second, "");  // not even the prefix

    // Off the main thread the kernel thread id is no longer the process id.
    std::thread([this] {
        auto r = Both([] { DbgOutput(1, "%s", "t"); });
        EXPECT_EQ(r.first, Prefixed(r.first, "lwp", "t"));
        EXPECT_EQ(r.second, Prefixed(r.second, "tid", "t"));
    }).join();
}

TEST_F(DbgOutputTest, TimestampIsLocalTimeOfTheCall)
{
    // Early in a second, so that the microseconds need their zero-padding.
    timeval before{}, after{};
    gettimeofday(&before, nullptr);
    USleep(1000000 - before.tv_usec);
    gettimeofday(&before, nullptr);
    auto r = Both([] { DbgOutput(1, "x\n"); });
    gettimeofday(&after, nullptr);

    std::string stamp = r.first.substr(7, 26);  // after "Palvet "
    EXPECT_LE(Stamp(before), stamp);
    EXPECT_GE(Stamp(after), stamp);
    EXPECT_EQ(r.second.substr(7, 26), stamp);  // one instant serves both lines
}

TEST_F(DbgOutputTest, AppendTruncateFlushAndClose)
{
    EXPECT_EQ(DbgOutputCloseFile(), 0);  // no file: nothing to do
    EXPECT_EQ(DbgFlush(), 0);

    std::string path = dir_.File("dbg.log");
    palvet_test::WriteWholeFile(path, "old|");
    EXPECT_NE(DbgOutputOpenFile(path.c_str(), 1), 0);
    StdoutCapture cap;
    DbgOutput(0, "new|");
    EXPECT_EQ(DbgFlush(), 0);
    EXPECT_EQ(ReadWholeFile(path), "old|new|");  // flushed while still open
    EXPECT_EQ(DbgOutputCloseFile(), 0);
    EXPECT_EQ(gDbgOutputFileHandle, nullptr);
    EXPECT_EQ(DbgOutputCloseFile(), 0);

    DbgOutputOpenFile(path.c_str(), 0);
    DbgOutputCloseFile();
    EXPECT_EQ(ReadWholeFile(path), "");
}

TEST_F(DbgOutputTest, ReopeningAbandonsTheOldStreamAndFailureStopsFileOutput)
{
    std::string first = dir_.File("first.log"), second = dir_.File("second.log");
    DbgOutputOpenFile(first.c_str(), 0);
    FILE* abandoned = gDbgOutputFileHandle;
    DbgOutputOpenFile(second.c_str(), 0);
    FILE* current = gDbgOutputFileHandle;

    StdoutCapture cap;
    DbgOutput(0, "msg");
    int result = DbgOutputOpenFile(dir_.File("no/such/dir/dbg.log").c_str(), 1);
    DbgOutput(0, "after");
    std::string report = std::string("open dbg file , errno=") + std::to_string(ENOENT) + ", " +
                         strerror(ENOENT) + "\n";
    EXPECT_EQ(cap.Take(), "msg" + report + "after");
    EXPECT_EQ(result, static_cast<int>(report.size()));
    EXPECT_EQ(gDbgOutputFileHandle, nullptr);

    // Neither stream was closed: both still accept writes.
    for (FILE* stream : {abandoned, current}) {
        EXPECT_GE(fputs("|open", stream), 0);
        EXPECT_EQ(fclose(stream), 0);
    }
    EXPECT_EQ(ReadWholeFile(first), "|open");
    EXPECT_EQ(ReadWholeFile(second), "msg|open");
}
