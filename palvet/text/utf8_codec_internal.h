#ifndef PALVET_TEXT_UTF8_CODEC_INTERNAL_H
#define PALVET_TEXT_UTF8_CODEC_INTERNAL_H

// The UTF-8 <-> wide loops behind AllocCopyWStringFromAString and
// AllocCopyAStringFromWString. They are written once over a block kernel that
// converts a fixed number of characters at a time and reports how many of
// them, from the start, were ASCII: ASCII is the bulk of most text and the
// part worth vectorising. Each file that includes this instantiates the loops
// with the kernels its compiler flags allow; the scalar kernels define the
// results.

#include <cstddef>
#include <cstdint>

namespace palvet::detail {

// Room the encoder needs beyond its nominal 4 * count + 1 bytes: one five- or
// six-byte form started on the last nominal byte (five more), plus the
// terminator.
constexpr size_t kEncodeSpare = 6;

// Decodes len bytes into out (len + 1 elements) and returns the count of wide
// characters; never more than the bytes read. Cut-short sequences take the
// missing bytes as zero.
size_t DecodeUtf8(unsigned char const* source, size_t len, wchar_t* out);
// Encodes until len characters are done or size bytes are used; out holds
// size + kEncodeSpare bytes. Returns the count of bytes written.
size_t EncodeUtf8(wchar_t const* source, size_t len, unsigned char* out, size_t size);

size_t DecodeUtf8Scalar(unsigned char const* source, size_t len, wchar_t* out);
size_t EncodeUtf8Scalar(wchar_t const* source, size_t len, unsigned char* out, size_t size);
#if defined(__arm__) || defined(__aarch64__)
size_t DecodeUtf8Neon(unsigned char const* source, size_t len, wchar_t* out);
size_t EncodeUtf8Neon(wchar_t const* source, size_t len, unsigned char* out, size_t size);
#endif

// Block kernels provide:
//   static constexpr size_t kWidth;
//   static size_t Widen(unsigned char const* in, wchar_t* out);  // kWidth each
//   static size_t Narrow(wchar_t const* in, unsigned char* out); // kWidth each
// Both may write all kWidth outputs, but return the count of leading ASCII
// characters; the loops overwrite whatever lies past that.

// Decodes the five- and six-byte forms and sequences cut short by the end
// of the source; returns the value and advances j.
uint32_t DecodeRare(unsigned char const* s, size_t len, size_t& j);

template <class Block>
size_t DecodeUtf8With(unsigned char const* s, size_t len, wchar_t* out)
{
    size_t j = 0;
    size_t k = 0;
    while (j < len) {
        uint32_t b = s[j];
        size_t left = len - j;
        if (b < 0x80) {
            // k <= j, so a whole block stays inside the len + 1 outputs.
            if (left >= Block::kWidth) {
                size_t run = Block::Widen(s + j, out + k);
                j += run;
                k += run;
            } else {
                out[k++] = static_cast<wchar_t>(b);
                ++j;
            }
            continue;
        }
        // Continuation bytes are taken as they come, only their low six bits.
        uint32_t value;
        if (b >= 0xE0 && b <= 0xEF && left >= 3) {  // the common case: most non-Latin scripts
            value = (b & 0x0F) << 12 | (s[j + 1] & 0x3Fu) << 6 | (s[j + 2] & 0x3Fu);
            j += 3;
        } else if (b >= 0xC0 && b <= 0xDF && left >= 2) {
            value = (b & 0x1F) << 6 | (s[j + 1] & 0x3Fu);
            j += 2;
        } else if (b >= 0xF0 && b <= 0xF7 && left >= 4) {
            value = (b & 0x07) << 18 | (s[j + 1] & 0x3Fu) << 12 | (s[j + 2] & 0x3Fu) << 6 | (s[j + 3] & 0x3Fu);
            j += 4;
        } else if (b < 0xC0 || b >= 0xFE) {
            value = b;  // stray continuation bytes, 0xFE and 0xFF read as Latin-1
            ++j;
        } else {
            value = DecodeRare(s, len, j);
        }
        out[k++] = static_cast<wchar_t>(value);
    }
    return k;
}

// Encodes the five- and six-byte forms; returns the new j.
size_t EncodeRare(uint32_t c, unsigned char* out, size_t j, size_t size);
// Reports a form that does not fit in the room left; it is still written
// whole, into the spare bytes.
void ReportNoRoom(size_t bytes);

template <class Block>
size_t EncodeUtf8With(wchar_t const* s, size_t len, unsigned char* out, size_t size)
{
    size_t i = 0;
    size_t j = 0;
    while (i < len && j < size) {
        uint32_t c = static_cast<uint32_t>(s[i]);
        if (c < 0x80) {
            if (len - i >= Block::kWidth && size - j >= Block::kWidth) {
                size_t run = Block::Narrow(s + i, out + j);
                i += run;
                j += run;
            } else {
                out[j++] = static_cast<unsigned char>(c);
                ++i;
            }
            continue;
        }
        // Four bytes per character leave room for anything up to 0x1FFFFF,
        // unless five- or six-byte forms came before.
        if (c >= 0x800 && c <= 0xFFFF) {  // surrogates included, like any value
            if (size - j < 3)
                ReportNoRoom(3);
            out[j] = static_cast<unsigned char>(0xE0 | c >> 12);
            out[j + 1] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
            out[j + 2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
            j += 3;
        } else if (c < 0x800) {
            if (size - j < 2)
                ReportNoRoom(2);
            out[j] = static_cast<unsigned char>(0xC0 | c >> 6);
            out[j + 1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
            j += 2;
        } else if (c <= 0x1FFFFF) {
            if (size - j < 4)
                ReportNoRoom(4);
            out[j] = static_cast<unsigned char>(0xF0 | c >> 18);
            out[j + 1] = static_cast<unsigned char>(0x80 | (c >> 12 & 0x3F));
            out[j + 2] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
            out[j + 3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
            j += 4;
        } else if (c <= 0x7FFFFFFF) {
            j = EncodeRare(c, out, j, size);
        } else {
            out[j++] = static_cast<unsigned char>(c & 0x7F);  // folded into seven bits
        }
        ++i;
    }
    return j;
}

}  // namespace palvet::detail

#endif
