#include <palvet/files/file_utils.h>

#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Working length of a path copy; the scratch arrays hold it plus a
// terminator, and CombinePathName's one more for the '/' it may add.
constexpr size_t kMaxPath = 1023;

// Copies at most max characters of src to dest and terminates; the two may
// overlap.
void CopyCut(char* dest, char const* src, size_t max)
{
    size_t n = strnlen(src, max);
    memmove(dest, src, n);
    dest[n] = '\0';
}

}  // namespace

char* GetProgramName(char* buffer, int size)
{
    // Without even room for the terminator nothing can be stored.
    if (buffer == nullptr || size <= 0)
        return nullptr;
    ssize_t n = readlink("/proc/self/exe", buffer, static_cast<size_t>(size - 1));
    // A link that fills the space may have been cut: treat it as unknown.
    if (n < 0 || n >= size - 1) {
        buffer[0] = '\0';
        return nullptr;
    }
    buffer[n] = '\0';
    return buffer;
}

char* GetProgramPath(char* buffer, int size)
{
    char program[kMaxPath + 1];
    char folder[kMaxPath + 1];
    GetProgramName(program, sizeof program);
    GetFileParentDir(folder, program);
    if (buffer == nullptr)
        return nullptr;
    if (size < 2) {
        if (size == 1)
            buffer[0] = '\0';
        return buffer;
    }
    CopyCut(buffer, folder, static_cast<size_t>(size - 1));
    return buffer;
}

int FixToPathName(char* path)
{
    if (path == nullptr)
        return 0;
    size_t length = strlen(path);
    if (length > 0 && path[length - 1] != '/') {
        path[length] = '/';
        path[length + 1] = '\0';
    }
    return static_cast<int>(length);
}

void FixToFileName(char* path)
{
    if (path == nullptr)
        return;
    size_t length = strlen(path);
    if (length > 0 && path[length - 1] == '/')
        path[length - 1] = '\0';
}

int CombinePathName(char* dest, char const* folder, char const* name)
{
    if (dest == nullptr)
        return 0;
    char scratch[kMaxPath + 2] = {};
    if (folder != nullptr) {
        CopyCut(scratch, folder, kMaxPath);
        FixToPathName(scratch);
    }
    if (name != nullptr) {
        // A folder of full length leaves no room: its '/' already makes the
        // text one longer than the working length.
        size_t length = strlen(scratch);
        if (length < kMaxPath)
            strncat(scratch, name, kMaxPath - length);
    }
    strcpy(dest, scratch);
    return 1;
}

int GetFileParentDir(char* dest, char const* path)
{
    if (dest == nullptr || path == nullptr)
        return 0;
    if (dest != path)
        CopyCut(dest, path, kMaxPath);
    FixToFileName(dest);
    char* slash = strrchr(dest, '/');
    if (slash != nullptr)
        *slash = '\0';
    else
        dest[0] = '\0';
    return 1;
}

int GetFileShortName(char* dest, char const* path)
{
    if (dest == nullptr || path == nullptr)
        return 0;
    char scratch[kMaxPath + 1];
    CopyCut(scratch, path, kMaxPath);
    char const* slash = strrchr(scratch, '/');
    strcpy(dest, slash != nullptr ? slash + 1 : scratch);
    return 1;
}

void SetFileExtName(char* name, char const* ext)
{
    if (name == nullptr || ext == nullptr)
        return;
    char const* extDot = strrchr(ext, '.');
    char const* newExt = extDot != nullptr ? extDot + 1 : ext;
    size_t extLength = strlen(newExt);

    // The terminators are written after the moves, so ext may even lie
    // inside name.
    char* dot = strrchr(name, '.');
    if (dot != nullptr) {
        if (extLength > 0) {
            memmove(dot + 1, newExt, extLength);
            dot[1 + extLength] = '\0';
        } else {
            *dot = '\0';
        }
    } else if (extLength > 0) {
        size_t length = strlen(name);
        memmove(name + length + 1, newExt, extLength);
        name[length + 1 + extLength] = '\0';
        name[length] = '.';
    }
}

int IsDir(char const* path)
{
    if (path == nullptr)
        return 0;
    struct stat64 info;
    return stat64(path, &info) == 0 && S_ISDIR(info.st_mode) ? 1 : 0;
}

int IsFileExist(char const* path)
{
    if (path == nullptr)
        return 0;
    return access(path, F_OK) == 0 ? 1 : 0;
}
