#include <palvet/files/file_utils.h>

#include <palvet/core/debug_output.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

constexpr unsigned int kCompareChunk = 0x100000;

// Closes the stream on every way out.
class StreamCloser {
public:
    explicit StreamCloser(FILE* stream) : stream_(stream) {}
    ~StreamCloser()
    {
        if (stream_ != nullptr)
            fclose(stream_);
    }
    StreamCloser(StreamCloser const&) = delete;
    StreamCloser& operator=(StreamCloser const&) = delete;

private:
    FILE* stream_;
};

}  // namespace

unsigned long long FileSize(FILE* stream)
{
    if (stream == nullptr)
        return 0;
    off64_t position = ftello64(stream);
    if (position < 0) {
        DbgOutput(1, "ftell error:%s\n", strerror(errno));
        return 0;
    }
    fseeko64(stream, 0, SEEK_END);
    off64_t size = ftello64(stream);
    fseeko64(stream, position, SEEK_SET);
    return size < 0 ? 0 : static_cast<unsigned long long>(size);
}

unsigned int FileRead(FILE* stream, void* buffer, unsigned int count)
{
    if (count == 0 || stream == nullptr || buffer == nullptr)
        return 0;
    unsigned char* bytes = static_cast<unsigned char*>(buffer);
    unsigned int total = 0;
    while (total < count) {
        total += static_cast<unsigned int>(fread(bytes + total, 1, count - total, stream));
        if (total < count) {
            if (feof(stream))
                break;
            // The stream's error indicator is what gets reported, not errno.
            if (int error = ferror(stream)) {
                DbgOutput(1, "Read Failed, errno=%d\n", error);
                break;
            }
        }
    }
    return total;
}

unsigned int FileWrite(FILE* stream, void const* buffer, unsigned int count)
{
    if (count == 0 || stream == nullptr || buffer == nullptr)
        return 0;
    unsigned char const* bytes = static_cast<unsigned char const*>(buffer);
    unsigned int total = 0;
    while (total < count) {
        total += static_cast<unsigned int>(fwrite(bytes + total, 1, count - total, stream));
        if (total < count) {
            if (int error = ferror(stream)) {
                DbgOutput(1, "Write Failed, errno=%d\n", error);
                break;
            }
        }
    }
    return total;
}

unsigned long long ReadFileData(char const* path, unsigned char** out)
{
    if (out != nullptr)
        *out = nullptr;
    if (path == nullptr || IsDir(path) != 0 || IsFileExist(path) == 0)
        return 0;
    FILE* stream = fopen64(path, "rb");
    if (stream == nullptr)
        return 0;
    StreamCloser closer(stream);

    fseeko64(stream, 0, SEEK_END);
    off64_t size = ftello64(stream);
    fseeko64(stream, 0, SEEK_SET);
    if (size < 1)
        return 0;
    unsigned long long const fileSize = static_cast<unsigned long long>(size);
    if (out == nullptr)
        return fileSize;

    // Reads are counted in 32 bits: a file too large for one block or one
    // count is reported like a failed allocation, size returned, out null.
    if (fileSize > UINT_MAX || fileSize > SIZE_MAX)
        return fileSize;
    unsigned char* block = new (std::nothrow) unsigned char[static_cast<size_t>(fileSize)];
    if (block == nullptr)
        return fileSize;
    *out = block;
    return FileRead(stream, block, static_cast<unsigned int>(fileSize));
}

void WriteFileData(char const* path, void const* data, unsigned int size, int append)
{
    if (path == nullptr || data == nullptr)
        return;
    FILE* stream = fopen64(path, append != 0 ? "a+" : "wb");
    if (stream == nullptr) {
        DbgOutput(1, "WriteFile failed create file:%s, error=%s\n", path, strerror(errno));
        return;
    }
    fseeko64(stream, 0, SEEK_END);
    FileWrite(stream, data, size);
    fclose(stream);
}

void ReleaseFileData(unsigned char* data)
{
    delete[] data;
}

int IsFileDataEqual(char const* path1, char const* path2)
{
    if (path1 == nullptr || path2 == nullptr)
        return 0;
    FILE* first = fopen64(path1, "rb");
    if (first == nullptr)
        return 0;
    StreamCloser closeFirst(first);
    FILE* second = fopen64(path2, "rb");
    if (second == nullptr)
        return 0;
    StreamCloser closeSecond(second);

    unsigned long long const size = FileSize(first);
    if (size != FileSize(second))
        return 0;
    if (size == 0)
        return 1;

    unsigned char* chunk1 = new (std::nothrow) unsigned char[kCompareChunk];
    unsigned char* chunk2 = new (std::nothrow) unsigned char[kCompareChunk];
    unsigned long long compared = 0;
    if (chunk1 != nullptr && chunk2 != nullptr) {
        while (compared < size) {
            unsigned long long const left = size - compared;
            unsigned int const want =
                left < kCompareChunk ? static_cast<unsigned int>(left) : kCompareChunk;
            if (FileRead(first, chunk1, want) != want || FileRead(second, chunk2, want) != want)
                break;
            if (memcmp(chunk1, chunk2, want) != 0)
                break;
            compared += want;
        }
    }
    delete[] chunk1;
    delete[] chunk2;
    return compared == size ? 1 : 0;
}
