#ifndef PALVET_IMAGING_PIXEL_KERNELS_INTERNAL_H
#define PALVET_IMAGING_PIXEL_KERNELS_INTERNAL_H

// Row and block kernels behind the pixel-buffer and drawing functions. Each
// operation has a scalar version that defines the result and, where it pays,
// vectorised versions that must match it bit for bit; the dispatchers pick
// the best one the processor supports. Vectorised entry points exist only on
// their architecture.
//
// The inline helpers and templates here have internal linkage: this header
// is also compiled into the AVX2, AVX-512 and NEON objects, and an
// out-of-line copy from one of those, picked by the linker for a plain
// caller, would stop on a processor without the extension.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace palvet::detail {

namespace {

inline std::uint32_t LoadU32(unsigned char const* p)
{
    std::uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

inline void StoreU32(unsigned char* p, std::uint32_t v)
{
    std::memcpy(p, &v, 4);
}

inline std::uint16_t LoadU16(unsigned char const* p)
{
    std::uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}

inline void StoreU16(unsigned char* p, std::uint16_t v)
{
    std::memcpy(p, &v, 2);
}

// Start of pixel (x, y); computed in pointer width so large pitches cannot
// overflow int.
inline unsigned char* PixelAt(unsigned char* base, int x, int y, int pitch, int bpp)
{
    return base + static_cast<std::ptrdiff_t>(y) * pitch + static_cast<std::ptrdiff_t>(x) * bpp;
}

inline unsigned char const* PixelAt(unsigned char const* base, int x, int y, int pitch, int bpp)
{
    return base + static_cast<std::ptrdiff_t>(y) * pitch + static_cast<std::ptrdiff_t>(x) * bpp;
}

}  // namespace

// True when the byte spans of two areas (rows of rowBytes, pitch apart,
// starting at the given first-row address) may share memory; keeps the fast
// paths, which reorder reads and writes, away from overlapping buffers.
bool AreasOverlap(void const* a, int pitchA, int rowBytesA, int rowsA, void const* b, int pitchB,
                  int rowBytesB, int rowsB);

namespace {

// One blended ARGB pixel: source s over destination d.
inline std::uint32_t BlendArgb(std::uint32_t d, std::uint32_t s)
{
    std::uint32_t const sa = s >> 24;
    if (sa == 0)
        return d;
    std::uint32_t const da = d >> 24;
    if (da == 0)
        return s;
    int const a = static_cast<int>((sa * da) / 255);
    int const outA = static_cast<int>(sa + da) - a;
    std::uint32_t out = static_cast<std::uint32_t>(outA) << 24;
    for (int shift = 0; shift < 24; shift += 8) {
        int const sc = static_cast<int>((s >> shift) & 0xFF);
        int const dc = static_cast<int>((d >> shift) & 0xFF);
        int const c = dc + ((sc - dc) * static_cast<int>(sa)) / outA;
        out |= (static_cast<std::uint32_t>(c) & 0xFF) << shift;
    }
    return out;
}

// Nearest-neighbour stepping along one axis with integer error terms: the
// sequence of source positions read for successive destination positions.
class StretchStepper {
public:
    StretchStepper(int srcSize, int dstSize)
        : s_(srcSize), d_(dstSize),
          e_(dstSize > srcSize ? 3LL * srcSize - 2LL * dstSize : 2LL * dstSize - srcSize)
    {
    }

    int Position() const { return pos_; }

    void Advance()
    {
        if (s_ == d_) {
            ++pos_;
        } else if (d_ > s_) {
            if (e_ < 0) {
                e_ += 2LL * s_;
            } else {
                e_ += 2LL * s_ - 2LL * d_;
                ++pos_;
            }
        } else {
            while (e_ < 0) {
                e_ += 2LL * d_;
                ++pos_;
            }
            e_ += 2LL * (d_ - s_);
            ++pos_;
        }
    }

private:
    int s_;
    int d_;
    long long e_;  // 64-bit: 3 * size must not overflow
    int pos_ = 0;
};

}  // namespace

// Straightforward pixel-by-pixel stretches; they define the results of the
// fast paths and serve buffers that overlap.
void StretchReference(unsigned char* dst, int dstPitch, int dw, int dh, unsigned char const* src, int srcPitch,
                      int sw, int sh, int bpp);
void AlphaStretchReference(unsigned char* dst, int dstPitch, int dw, int dh, unsigned char const* src,
                           int srcPitch, int sw, int sh);

// Blends n source pixels over n destination pixels.
void BlendRowArgbScalar(unsigned char* dst, unsigned char const* src, int n);
void BlendRowArgb(unsigned char* dst, unsigned char const* src, int n);

// 3-byte to 4-byte pixels (alpha 0xFF) and back; swap exchanges bytes 0
// and 2.
void Rgb24ToRgb32RowScalar(unsigned char const* src, unsigned char* dst, int n, bool swap);
void Rgb24ToRgb32Row(unsigned char const* src, unsigned char* dst, int n, bool swap);
void Rgb32ToRgb24RowScalar(unsigned char const* src, unsigned char* dst, int n, bool swap);
void Rgb32ToRgb24Row(unsigned char const* src, unsigned char* dst, int n, bool swap);

// Rows of n 32-bit pixels from a one-byte mask m: rgb | m << 24 (Mask), or
// rgb | ((alpha * m) >> 8) << 24 (Tint); and a plain fill.
void MaskRow32Scalar(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb);
void MaskRow32(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb);
void TintRow32Scalar(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb, std::uint32_t alpha);
void TintRow32(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb, std::uint32_t alpha);
void FillRow32Scalar(unsigned char* d, int n, std::uint32_t color);
void FillRow32(unsigned char* d, int n, std::uint32_t color);

namespace {

// Rotates a tightly packed w x h image of N-byte units by 90 (clockwise),
// 180 or 270 degrees: the unit at column c of row r goes to offset
// c * h + (h - 1 - r), (w - 1 - c) * h + r, or (h - 1 - r) * w + (w - 1 - c).
// Walks tiles so that both images stay in cache; other degrees do nothing.
template <int N>
void RotateUnits(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    if (w < 1 || h < 1)
        return;
    constexpr int kTile = 32;
    auto const move = [](unsigned char* to, unsigned char const* from) { std::memcpy(to, from, N); };
    std::ptrdiff_t const W = w, H = h;
    if (degrees == 180) {
        for (std::ptrdiff_t r = 0; r < H; ++r) {
            unsigned char const* s = src + r * W * N;
            unsigned char* d = dst + ((H - 1 - r) * W + (W - 1)) * N;
            for (std::ptrdiff_t c = 0; c < W; ++c)
                move(d - c * N, s + c * N);
        }
        return;
    }
    if (degrees != 90 && degrees != 270)
        return;
    for (std::ptrdiff_t r0 = 0; r0 < H; r0 += kTile) {
        std::ptrdiff_t const r1 = r0 + kTile < H ? r0 + kTile : H;
        for (std::ptrdiff_t c0 = 0; c0 < W; c0 += kTile) {
            std::ptrdiff_t const c1 = c0 + kTile < W ? c0 + kTile : W;
            for (std::ptrdiff_t r = r0; r < r1; ++r) {
                unsigned char const* s = src + r * W * N;
                if (degrees == 90) {
                    for (std::ptrdiff_t c = c0; c < c1; ++c)
                        move(dst + (c * H + (H - 1 - r)) * N, s + c * N);
                } else {
                    for (std::ptrdiff_t c = c0; c < c1; ++c)
                        move(dst + ((W - 1 - c) * H + r) * N, s + c * N);
                }
            }
        }
    }
}

}  // namespace

// The same for units of any size, copied byte by byte.
void RotateBytes(unsigned char const* src, unsigned char* dst, int w, int h, int unit, int degrees);

void Rotate32Scalar(unsigned char const* src, unsigned char* dst, int w, int h, int degrees);
void Rotate32(unsigned char const* src, unsigned char* dst, int w, int h, int degrees);

// Eight destination pixels of a stretched row whose source pixels lie within
// eight consecutive ones from base: one load and one permute make them.
// base is -1 where that does not hold (strong shrinking, or reading past
// the row's end); those groups are copied one pixel at a time.
struct StretchGroup {
    int base;
    int lanes[8];
};

// Groups for the n source columns in cols (n / 8 of them, rounded down).
int BuildStretchGroups(int const* cols, int n, int srcWidth, StretchGroup* groups);

#if defined(__x86_64__) || defined(__i386__)
// 32-bit pixels d[k] = s[cols[k]] for k < n, using the groups.
void GatherRow32Avx2(unsigned char* d, unsigned char const* s, int const* cols, StretchGroup const* groups, int n);
void BlendRowArgbAvx2(unsigned char* dst, unsigned char const* src, int n);
void BlendRowArgbAvx512(unsigned char* dst, unsigned char const* src, int n);
void Rgb24ToRgb32RowAvx2(unsigned char const* src, unsigned char* dst, int n, bool swap);
void Rgb32ToRgb24RowAvx2(unsigned char const* src, unsigned char* dst, int n, bool swap);
#if defined(__SSE2__)
void Rotate32Sse2(unsigned char const* src, unsigned char* dst, int w, int h, int degrees);
#endif
#endif

#if defined(__arm__) || defined(__aarch64__)
void BlendRowArgbNeon(unsigned char* dst, unsigned char const* src, int n);
// The blend's reciprocal of divisor (1..255), for the test that proves it.
float BlendReciprocalNeon(int divisor);
void Rgb24ToRgb32RowNeon(unsigned char const* src, unsigned char* dst, int n, bool swap);
void Rgb32ToRgb24RowNeon(unsigned char const* src, unsigned char* dst, int n, bool swap);
void MaskRow32Neon(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb);
void TintRow32Neon(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb, std::uint32_t alpha);
void FillRow32Neon(unsigned char* d, int n, std::uint32_t color);
void Rotate32Neon(unsigned char const* src, unsigned char* dst, int w, int h, int degrees);

// Whole vectors of a row; each returns the pixels it did, the plain loop
// does the rest. bgr: red is byte 2.
int GreyRow24Neon(unsigned char const* s, unsigned char* d, int n, bool bgr);
int GreyRow32Neon(unsigned char const* s, unsigned char* d, int n, bool bgr);
int SwapRBRow24Neon(unsigned char* p, int n);
int SwapRBRow32Neon(unsigned char* p, int n);
int AlphaRatioRowNeon(unsigned char* p, int n, unsigned char ratio);
int AlphaSetRowNeon(unsigned char* p, int n, unsigned char alpha);
int AlphaToRgb24RowNeon(unsigned char const* a, unsigned char* d, int n, unsigned char const on[3],
                        unsigned char const off[3]);
// Exchanges n bytes of two non-overlapping spans, all of them.
void SwapBytesNeon(unsigned char* a, unsigned char* b, std::size_t n);
// The byte lookups of a stretch group (see StretchGroup) for vtbl.
void StretchByteIndexes(StretchGroup const& g, unsigned char idx[32]);
// As GatherRow32Avx2, with each group's byte lookups from StretchByteIndexes.
void GatherRow32Neon(unsigned char* d, unsigned char const* s, int const* cols, StretchGroup const* groups,
                     unsigned char const (*idx)[32], int n);
// RotateUnits for units of 1, 2 or 3 bytes (false for other sizes).
bool RotateUnitsNeon(unsigned char const* src, unsigned char* dst, int w, int h, int unit, int degrees);
#endif

}  // namespace palvet::detail

#endif
