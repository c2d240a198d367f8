#include <palvet/files/system_utils.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/core/clock.h>
#include <palvet/files/file_utils.h>
#include <palvet/text/simple_string.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace {

constexpr unsigned int kCopyBlock = 0x100000;

struct StreamCloser {
    FILE* stream;
    ~StreamCloser()
    {
        if (stream != nullptr)
            fclose(stream);
    }
};

struct OwnedList {
    CPtrListCtrl list;
    ~OwnedList() { FreeFileList(&list); }
};

// prefix + middle + ext (with a '.' put in front of an ext that has none),
// cut to 1023 characters into buffer.
void FinishName(char* buffer, CSimpleStringA& name, char const* ext)
{
    if (ext != nullptr) {
        if (strchr(ext, '.') == nullptr)
            name.Append('.');
        name.Append(ext, -1);
    }
    strncpy(buffer, name.GetString(), 1023);
    buffer[1023] = '\0';
}

void StartName(CSimpleStringA& name, char const* prefix)
{
    if (prefix != nullptr)
        name.Set(prefix, -1);
}

}  // namespace

int GetDiskFreeSpaceEx(char const* path, unsigned long long* freeBytes, unsigned long long* totalBytes,
                       unsigned long long* availBytes)
{
    struct statfs64 info;
    memset(&info, 0, sizeof info);
    if (path != nullptr)
        statfs64(path, &info);
    // The block size is a signed 32-bit value in the record.
    long long block = static_cast<int>(info.f_bsize);
    if (freeBytes != nullptr)
        *freeBytes = static_cast<unsigned long long>(info.f_bfree) * static_cast<unsigned long long>(block);
    if (totalBytes != nullptr)
        *totalBytes = static_cast<unsigned long long>(info.f_blocks) * static_cast<unsigned long long>(block);
    if (availBytes != nullptr)
        *availBytes = static_cast<unsigned long long>(info.f_bavail) * static_cast<unsigned long long>(block);
    return 1;
}

void FormatFileSize(unsigned long long size, CSimpleStringA* out)
{
    if (out == nullptr)
        return;
    float value = static_cast<float>(size);
    if (size < 1024)
        out->Format("%.2f B", static_cast<double>(value));
    else if (size < 0x100000)
        out->Format("%.2f K", static_cast<double>(value / 1024.0f));
    else if (size < 0x40000000)
        out->Format("%.2f M", static_cast<double>(value / 1048576.0f));
    else if (size < (1ull << 40))
        out->Format("%.2f G", static_cast<double>(value / 1073741824.0f));
    else
        out->Format("%.2f T", static_cast<double>(value / 1099511627776.0f));
}

int CopyFile(char const* src, char const* dst, IFileCopyProgressListener* listener, unsigned long long user)
{
    if (src == nullptr || dst == nullptr)
        return 0;
    StreamCloser in{fopen64(src, "rb")};
    if (in.stream == nullptr)
        return 0;
    StreamCloser out{fopen64(dst, "wb")};
    if (out.stream == nullptr)
        return 0;
    unsigned long long size = FileSize(in.stream);
    if (size < 1)
        return 1;
    std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[kCopyBlock]);
    if (!block)
        return 0;
    if (listener != nullptr)
        listener->OnCopyProgress(user, 0, size);
    unsigned long long copied = 0;
    while (copied < size) {
        unsigned int chunk = size - copied < kCopyBlock ? static_cast<unsigned int>(size - copied) : kCopyBlock;
        if (FileRead(in.stream, block.get(), chunk) != chunk)
            break;
        if (FileWrite(out.stream, block.get(), chunk) != chunk)
            break;
        copied += chunk;
        if (listener != nullptr)
            listener->OnCopyProgress(user, copied, size);
    }
    return copied == size ? 1 : 0;
}

int MoveFile(char const* src, char const* dst)
{
    if (src == nullptr || dst == nullptr)
        return 0;
    if (rename(src, dst) == 0)
        return 1;
    if (!CopyFile(src, dst, nullptr, 0))
        return 0;
    unlink(src);
    return 1;
}

int do_mkdir(char const* path, unsigned int mode)
{
    if (path == nullptr) {
        errno = EINVAL;
        return -1;
    }
    struct stat st;
    if (stat(path, &st) != 0) {
        if (mkdir(path, static_cast<mode_t>(mode)) == 0)
            return 0;
        // Another creator may have won the race.
        return errno == EEXIST ? 0 : -1;
    }
    if (!S_ISDIR(st.st_mode)) {
        errno = ENOTDIR;
        return -1;
    }
    return 0;
}

void RemoveFile(char const* folder, char const* filter, int removeFolders, int recurse)
{
    if (folder == nullptr)
        return;
    OwnedList folders, files;
    GetLocalFolderFileList(folder, recurse ? &folders.list : nullptr, &files.list, filter, 1);
    for (int i = 0, n = folders.list.GetCount(); i < n; ++i) {
        char path[1025];
        CombinePathName(path, folder, static_cast<char const*>(folders.list.GetAt(i)));
        RemoveFile(path, filter, removeFolders, recurse);
        if (removeFolders)
            rmdir(path);
    }
    for (int i = 0, n = files.list.GetCount(); i < n; ++i) {
        char path[1025];
        CombinePathName(path, folder, static_cast<char const*>(files.list.GetAt(i)));
        unlink(path);
    }
}

void GetFileNameByNumberA(char* buffer, char const* ext, char const* prefix, int number)
{
    if (buffer == nullptr)
        return;
    CSimpleStringA name;
    StartName(name, prefix);
    name.AppendFormat("%d", number);
    FinishName(buffer, name, ext);
}

void GetFileNameByDateA(char* buffer, char const* ext, char const* prefix, tm const* when, int withDate,
                        int withMillis)
{
    if (buffer == nullptr)
        return;
    tm now;
    if (when == nullptr) {
        time_t t = time(nullptr);
        localtime_r(&t, &now);
        when = &now;
    }
    CSimpleStringA name;
    StartName(name, prefix);
    if (withDate)
        name.AppendFormat("%04d_%02d_%02d_", when->tm_year + 1900, when->tm_mon + 1, when->tm_mday);
    name.AppendFormat("%02d_%02d_%02d", when->tm_hour, when->tm_min, when->tm_sec);
    if (withMillis)
        name.AppendFormat("_%03d", static_cast<int>(GetTickCount() % 1000));
    FinishName(buffer, name, ext);
}

void GetFileNameByRandomA(char* buffer, char const* ext, char const* prefix, int count)
{
    if (buffer == nullptr)
        return;
    CSimpleStringA name;
    StartName(name, prefix);
    for (int i = 0; i < count; ++i) {
        int r1 = rand();
        int r2 = rand();
        switch (r2 % 7) {
        case 0:
        case 1:
        case 2: name.Append(static_cast<char>('a' + rand() % 26)); break;
        case 3:
        case 4:
        case 5: name.Append(static_cast<char>('A' + rand() % 26)); break;
        default: name.Append(static_cast<char>('0' + r1 % 10)); break;
        }
    }
    FinishName(buffer, name, ext);
}
