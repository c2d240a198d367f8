#include <palvet/imaging/bmp.h>

#include <palvet/files/file_utils.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr unsigned int kFileHeaderSize = 14;
constexpr unsigned int kInfoHeaderSize = 40;
constexpr unsigned int kV5HeaderSize = 124;
// The loader reads fields up to the bit depth at offset 28.
constexpr int kMinImageSize = 30;
constexpr unsigned int kFlipBlock = 256 * 1024;

constexpr unsigned int kSignature = 0x4D42;            // "BM"
constexpr unsigned int kCompressionBitFields = 3;
constexpr unsigned int kPixelsPerMetre = 2835;         // 72 dots per inch
constexpr unsigned int kColourSpaceSrgb = 0x73524742;  // "BGRs" in file order

unsigned int Get16(unsigned char const* p) { return p[0] | p[1] << 8; }

uint32_t Get32(unsigned char const* p)
{
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<uint32_t>(p[3]) << 24;
}

void Put16(unsigned char* p, unsigned int v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}

void Put32(unsigned char* p, uint32_t v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
    p[2] = static_cast<unsigned char>(v >> 16);
    p[3] = static_cast<unsigned char>(v >> 24);
}

// |v| without overflow for INT_MIN.
uint32_t Magnitude(int v)
{
    return v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
}

// Bytes per row padded to 32 bits, in 64 bits so that no input overflows;
// negative for a negative bit count, as the plain int formula would give.
long long RowStride(long long width, long long bpp) { return (bpp * width + 31) / 32 * 4; }

// Allocates a zeroed header block of headerSize bytes plus the palette, when
// one is given and count is positive, and writes the fields both header kinds
// share. Null when the block would not fit in an int or cannot be allocated.
unsigned char* NewInfoBlock(unsigned int headerSize, int width, int height, int bpp,
                            unsigned int const* palette, int count, int* infoSize)
{
    unsigned long long total = headerSize;
    if (palette != nullptr && count > 0)
        total += 4ull * static_cast<unsigned int>(count);
    if (total > INT_MAX)
        return nullptr;
    unsigned char* info = static_cast<unsigned char*>(malloc(static_cast<size_t>(total)));
    if (info == nullptr)
        return nullptr;
    memset(info, 0, static_cast<size_t>(total));

    uint32_t const w = Magnitude(width);
    uint32_t const h = Magnitude(height);
    Put32(info + 0, headerSize);
    Put32(info + 4, w);
    Put32(info + 8, h);
    Put16(info + 12, 1);
    Put16(info + 14, static_cast<unsigned int>(bpp));
    // The 32-bit field keeps the low bits of the size; the product is taken
    // in unsigned 64-bit, where extreme sizes wrap instead of overflowing.
    Put32(info + 20, static_cast<uint32_t>(static_cast<unsigned long long>(h) *
                                           static_cast<unsigned long long>(RowStride(w, bpp))));
    if (palette != nullptr && count > 0) {
        for (int i = 0; i < count; ++i)
            Put32(info + headerSize + 4 * i, palette[i]);
    }
    if (infoSize != nullptr)
        *infoSize = static_cast<int>(total);
    return info;
}

// Writes a top-down buffer last row first, so the file is bottom-up. The rows
// are gathered into larger blocks: one write per row costs several times more
// than the copy, and the stream's own buffer is too small to help.
void WriteFlipped(FILE* stream, unsigned char const* buffer, unsigned int rowBytes, uint32_t rows)
{
    uint32_t const perBlock = rowBytes < kFlipBlock ? kFlipBlock / rowBytes : 1;
    uint32_t const blockRows = perBlock < rows ? perBlock : rows;
    unsigned char* block =
        blockRows > 1 ? new (std::nothrow) unsigned char[blockRows * rowBytes] : nullptr;
    uint32_t row = rows;
    while (row > 0) {
        if (block == nullptr) {
            --row;
            FileWrite(stream, buffer + static_cast<size_t>(row) * rowBytes, rowBytes);
            continue;
        }
        uint32_t const n = row < blockRows ? row : blockRows;
        for (uint32_t i = 0; i < n; ++i)
            memcpy(block + static_cast<size_t>(i) * rowBytes,
                   buffer + static_cast<size_t>(row - 1 - i) * rowBytes, rowBytes);
        FileWrite(stream, block, n * rowBytes);
        row -= n;
    }
    delete[] block;
}

// Writes the file header, the information block and the rows, then closes
// the stream and frees the block.
void WriteBmp(FILE* stream, unsigned char* info, int infoSize, unsigned char const* buffer,
              int width, int height, int bpp)
{
    // The stride is taken from |width|, as the header states it. A negative
    // width would otherwise give a negative row length, which the unchecked
    // formula turns into a read far past the buffer.
    long long const stride = RowStride(Magnitude(width), bpp);
    uint32_t const rows = Magnitude(height);

    unsigned char header[kFileHeaderSize] = {};
    uint32_t const offset = kFileHeaderSize + static_cast<uint32_t>(infoSize);
    Put16(header + 0, kSignature);
    Put32(header + 2, static_cast<uint32_t>(offset + rows * static_cast<uint64_t>(stride)));
    Put32(header + 10, offset);
    FileWrite(stream, header, sizeof header);
    FileWrite(stream, info, static_cast<unsigned int>(infoSize));

    if (stride > 0 && stride <= UINT_MAX && rows > 0) {
        unsigned int const rowBytes = static_cast<unsigned int>(stride);
        unsigned long long const all = static_cast<unsigned long long>(rowBytes) * rows;
        if (height > 0 && all <= UINT_MAX) {
            FileWrite(stream, buffer, static_cast<unsigned int>(all));
        } else if (height > 0) {
            for (uint32_t row = 0; row < rows; ++row)
                FileWrite(stream, buffer + static_cast<size_t>(row) * rowBytes, rowBytes);
        } else {
            WriteFlipped(stream, buffer, rowBytes, rows);
        }
    }
    fclose(stream);
    DeleteBitmapInfo(info);
}

}  // namespace

int LoadBmpImageFromData(unsigned char const* data, int size, int* width, int* height, int* bpp,
                         unsigned char** pixels)
{
    if (data == nullptr || size < kMinImageSize)
        return 0;
    if (Get16(data) != kSignature || Get32(data + 2) != static_cast<uint32_t>(size))
        return 0;

    int32_t const w = static_cast<int32_t>(Get32(data + 18));
    int32_t const h = static_cast<int32_t>(Get32(data + 22));
    int const depth = static_cast<int>(Get16(data + 28));
    uint32_t const offset = Get32(data + 10);

    if (pixels != nullptr) {
        // Deliberately stricter than trusting the header: the pixel block it
        // describes must lie inside the data, and its size must come out of
        // the int arithmetic of the row formula without overflow. Anything
        // else is refused before any output is written, so truncated or
        // hostile data can neither be read past its end nor make us allocate
        // more than it holds. A header query copies nothing and is answered
        // whatever the block would be.
        if (h == INT32_MIN)
            return 0;
        long long const bits = static_cast<long long>(w) * depth;
        if (bits + 31 > INT_MAX || bits < INT_MIN)
            return 0;
        long long const stride = RowStride(w, depth);
        long long const total = stride * (h < 0 ? -static_cast<long long>(h) : h);
        if (total < 0 || offset > static_cast<uint32_t>(size) ||
            total > static_cast<long long>(size - static_cast<int>(offset)))
            return 0;
        unsigned char* copy = new (std::nothrow) unsigned char[static_cast<size_t>(total)];
        if (copy == nullptr)
            return 0;
        if (total > 0)
            memcpy(copy, data + offset, static_cast<size_t>(total));
        *pixels = copy;
    }
    if (width != nullptr)
        *width = w;
    // INT_MIN has no positive counterpart and stays as it is (the 32-bit
    // negation wraps to itself).
    if (height != nullptr)
        *height = static_cast<int>(Magnitude(h));
    if (bpp != nullptr)
        *bpp = depth;
    return 1;
}

int LoadBmpImageFromFile(char const* path, int* width, int* height, int* bpp,
                         unsigned char** pixels)
{
    if (path == nullptr)
        return 0;
    FILE* stream = fopen64(path, "rb");
    if (stream == nullptr)
        return 0;
    fseeko64(stream, 0, SEEK_END);
    off64_t const length = ftello64(stream);
    fseeko64(stream, 0, SEEK_SET);

    // The parser takes an int size and the size field is 32 bits, so a longer
    // file cannot be an image it accepts: refuse it before allocating.
    int result = 0;
    if (length >= 0 && length <= INT_MAX) {
        unsigned char* image = new (std::nothrow) unsigned char[static_cast<size_t>(length)];
        if (image != nullptr) {
            unsigned int const want = static_cast<unsigned int>(length);
            if (FileRead(stream, image, want) == want)
                result = LoadBmpImageFromData(image, static_cast<int>(length), width, height, bpp,
                                              pixels);
            delete[] image;
        }
    }
    fclose(stream);
    return result;
}

void DeleteBmpImageData(unsigned char* pixels)
{
    delete[] pixels;
}

void* CreateBitmapInfo(int width, int height, int bpp, unsigned int const* palette, int count,
                       int* infoSize)
{
    unsigned char* info =
        NewInfoBlock(kInfoHeaderSize, width, height, bpp, palette, count, infoSize);
    if (info != nullptr && palette != nullptr)
        Put32(info + 32, static_cast<uint32_t>(count));
    return info;
}

void* CreateBitmapV5Info(int width, int height, int bpp, unsigned int redMask,
                         unsigned int greenMask, unsigned int blueMask, unsigned int alphaMask,
                         unsigned int const* palette, int count, int* infoSize)
{
    int size = 0;
    unsigned char* info = NewInfoBlock(kV5HeaderSize, width, height, bpp, palette, count, &size);
    if (info == nullptr)
        return nullptr;
    // Readers are told the size of the whole block, palette included.
    Put32(info + 0, static_cast<uint32_t>(size));
    Put32(info + 16, kCompressionBitFields);
    Put32(info + 24, kPixelsPerMetre);
    Put32(info + 28, kPixelsPerMetre);
    Put32(info + 40, redMask);
    Put32(info + 44, greenMask);
    Put32(info + 48, blueMask);
    Put32(info + 52, alphaMask);
    Put32(info + 56, kColourSpaceSrgb);
    if (infoSize != nullptr)
        *infoSize = size;
    return info;
}

void DeleteBitmapInfo(void* info)
{
    free(info);
}

void SaveRgbBufferToBmpFile(unsigned char const* buffer, int width, int height, int bpp,
                            unsigned int const* palette, int count, char const* path)
{
    if (buffer == nullptr || path == nullptr)
        return;
    FILE* stream = fopen64(path, "wb");
    if (stream == nullptr)
        return;
    int infoSize = 0;
    unsigned char* info = static_cast<unsigned char*>(
        CreateBitmapInfo(width, height, bpp, palette, count, &infoSize));
    if (info == nullptr) {
        fclose(stream);
        return;
    }
    WriteBmp(stream, info, infoSize, buffer, width, height, bpp);
}

void SaveRgbBufferToBmpFileV5(unsigned char const* buffer, int width, int height, int bpp,
                              unsigned int redMask, unsigned int greenMask, unsigned int blueMask,
                              unsigned int alphaMask, unsigned int const* palette, int count,
                              char const* path)
{
    if (buffer == nullptr || path == nullptr)
        return;
    FILE* stream = fopen64(path, "wb");
    if (stream == nullptr)
        return;
    int infoSize = 0;
    unsigned char* info = static_cast<unsigned char*>(CreateBitmapV5Info(
        width, height, bpp, redMask, greenMask, blueMask, alphaMask, palette, count, &infoSize));
    if (info == nullptr) {
        fclose(stream);
        return;
    }
    WriteBmp(stream, info, infoSize, buffer, width, height, bpp);
}

void SaveRgb565BufferToBmpFile(unsigned char const* buffer, int width, int height,
                               char const* path)
{
    SaveRgbBufferToBmpFileV5(buffer, width, height, 16, 0xF800, 0x07E0, 0x001F, 0, nullptr, 0,
                             path);
}
