#include <algorithm>
#include <palvet/imaging/color_tables.h>

#include <palvet/core/cpu_features_internal.h>
#include <palvet/imaging/color_conversion_internal.h>

#include <atomic>
#include <cstdint>

double ippRGBYUVCOEF[9] = {0.257, 0.504, 0.098, -0.148, -0.291, 0.439, 0.439, -0.368, -0.071};
double ippYUVRGBCOEF[9] = {1.164, 0.0, 1.596, 1.164, -0.392, -0.813, 1.164, 2.017, 0.0};
double nmlRGBYUVCOEF[9] = {0.299, 0.587, 0.114, -0.1687, -0.3313, 0.5, 0.5, -0.4187, -0.0813};
double nmlYUVRGBCOEF[9] = {1.0, 0.0, 1.402, 1.0, -0.34413, -0.71414, 1.0, 1.772, 0.0};

int RTEXTO_Y[256];
int GTEXTO_Y[256];
int BTEXTO_Y[256];
int RTEXTO_U[256];
int GTEXTO_U[256];
int BTEXTO_U[256];
int RTEXTO_V[256];
int GTEXTO_V[256];
int BTEXTO_V[256];
int YTEXTO_R[256];
int UTEXTO_R[256];
int VTEXTO_R[256];
int YTEXTO_G[256];
int UTEXTO_G[256];
int VTEXTO_G[256];
int YTEXTO_B[256];
int UTEXTO_B[256];
int VTEXTO_B[256];

int RGBYUVTABLE_INIT = 0;

namespace palvet::detail {
namespace {

// Positive products round to nearest with an exact half going down; negative
// ones are truncated toward zero. Every converted pixel depends on this
// asymmetry, so it stays as it is.
int RoundEntry(double product)
{
    double t = static_cast<double>(static_cast<int>(product));
    if (product - t > 0.5)
        return static_cast<int>(product + 1.0);
    return static_cast<int>(t);
}

RgbToYuvForms gRgbForms;
YuvToRgbForms gYuvForms;
// Bit 0: gRgbForms usable; bit 1: gYuvForms usable. Published after the forms.
std::atomic<int> gFastState{0};

constexpr int kNoFit = -1;

// The lowest and highest 16-bit b for which (d * k + b) >> shift gives every
// entry lo..hi-1; lo > hi when this k cannot work.
struct Bounds {
    long long lo, hi;
};

Bounds BoundsFor(int const* t, int offset, int lo, int hi, int shift, long long k)
{
    long long const one = 1LL << shift;
    Bounds b{-32768, 32767};
    for (int i = lo; i < hi; ++i) {
        long long d = i - offset;
        long long low = t[i] * one - d * k;
        long long high = t[i] * one + one - 1 - d * k;
        if (low > b.lo)
            b.lo = low;
        if (high < b.hi)
            b.hi = high;
    }
    return b;
}

// Finds k and b for entries lo..hi-1. The gap hi - lo is concave in k, so a
// ternary search over the k allowed by the two end entries finds its maximum.
bool FitPiece(int const* t, int offset, int lo, int hi, int shift, int16_t& kOut, int16_t& bOut)
{
    long long const one = 1LL << shift;
    long long kMin = 0, kMax = 0;
    if (hi - lo > 1) {
        long long span = hi - 1 - lo;
        long long rise = static_cast<long long>(t[hi - 1] - t[lo]) * one;
        long long a = rise - (one - 1), z = rise + (one - 1);
        kMin = a >= 0 ? (a + span - 1) / span : -((-a) / span);
        kMax = z >= 0 ? z / span : -((-z + span - 1) / span);
    }
    if (kMin < -32768)
        kMin = -32768;
    if (kMax > 32767)
        kMax = 32767;
    if (kMin > kMax)
        return false;
    auto gap = [&](long long k) {
        Bounds b = BoundsFor(t, offset, lo, hi, shift, k);
        return b.hi - b.lo;
    };
    long long l = kMin, h = kMax;
    while (h - l > 2) {
        long long m1 = l + (h - l) / 3, m2 = h - (h - l) / 3;
        if (gap(m1) < gap(m2))
            l = m1 + 1;
        else
            h = m2;
    }
    for (long long k = l; k <= h; ++k) {
        Bounds b = BoundsFor(t, offset, lo, hi, shift, k);
        if (b.lo <= b.hi) {
            kOut = static_cast<int16_t>(k);
            bOut = static_cast<int16_t>(b.lo);
            return true;
        }
    }
    return false;
}

// The vectorised sums of three entries and an offset run in 16 bits.
bool EntriesSmall(int const* const* tables)
{
    for (int n = 0; n < 9; ++n)
        for (int i = 0; i < 256; ++i)
            if (tables[n][i] < -8191 || tables[n][i] > 8191)
                return false;
    return true;
}

// One shift serves all nine tables of a direction, so the kernels can shift
// every lane alike; tries the most precise first.
int FitShift(int const* const* tables, int const* offsets, TableForm* forms)
{
    if (!EntriesSmall(tables))
        return kNoFit;
    for (int shift = 15; shift >= 4; --shift) {
        bool all = true;
        for (int n = 0; n < 9 && all; ++n)
            all = FitTableForm(tables[n], offsets[n], shift, forms[n]);
        if (all)
            return shift;
    }
    return kNoFit;
}

bool SameForm(TableForm const& a, TableForm const& b)
{
    return a.kPos == b.kPos && a.bPos == b.bPos && a.kNeg == b.kNeg && a.bNeg == b.bNeg;
}

// Rnd and Flr are nondecreasing in k for a >= 0, so the k that fit form an
// interval; the entry with the largest a bounds it tightly, then every entry
// is checked.
bool FitMulK(int const* t, int offset, int shift, bool positive, bool rounding, int16_t& kOut)
{
    auto op = [&](int a, long long k) {
        long long p = a * k + (rounding ? 16384 : 0);
        return p >> 15;
    };
    auto target = [&](int i) { return rounding ? t[i] : -t[i]; };
    auto mine = [&](int i) {
        int d = i - offset;
        return d != 0 && ((d > 0) == positive) == rounding;
    };
    int top = -1, topA = 0;
    for (int i = 0; i < 256; ++i) {
        int d = i - offset, a = (d < 0 ? -d : d) << shift;
        if (mine(i) && a > topA) {
            top = i;
            topA = a;
        }
    }
    long long lo = -32768, hi = 32767;
    if (top >= 0) {
        long long l = -32768, h = 32767;
        while (l < h) {  // lowest k with op >= target
            long long m = l + (h - l) / 2;
            if (op(topA, m) >= target(top))
                h = m;
            else
                l = m + 1;
        }
        lo = l;
        l = -32768, h = 32767;
        while (l < h) {  // highest k with op <= target
            long long m = h - (h - l) / 2;
            if (op(topA, m) <= target(top))
                l = m;
            else
                h = m - 1;
        }
        hi = l;
    } else {
        lo = hi = 0;
    }
    for (long long k = lo; k <= hi; ++k) {
        bool ok = true;
        for (int i = 0; i < 256 && ok; ++i) {
            int d = i - offset, a = (d < 0 ? -d : d) << shift;
            if (mine(i))
                ok = op(a, k) == target(i);
        }
        if (ok) {
            kOut = static_cast<int16_t>(k);
            return true;
        }
    }
    return false;
}

bool FitMulSet(int const* const* tables, bool const* positive, MulForm* forms)
{
    for (int n = 0; n < 9; ++n)
        if (!FitMulForm(tables[n], 0, 0, positive[n], forms[n]))
            return false;
    return true;
}

// Whether the three-term sum plus offset stays within 0..255 for any input.
bool SumInRange(int const* a, int const* b, int const* c, int offset)
{
    int lo = offset, hi = offset;
    int const* const tables[3] = {a, b, c};
    for (int const* t : tables) {
        int mn = t[0], mx = t[0];
        for (int i = 1; i < 256; ++i) {
            mn = t[i] < mn ? t[i] : mn;
            mx = t[i] > mx ? t[i] : mx;
        }
        lo += mn;
        hi += mx;
    }
    return lo >= 0 && hi <= 255;
}

int DeriveForms()
{
    int state = 0;
    {
        int const* tables[9] = {RTEXTO_Y, GTEXTO_Y, BTEXTO_Y, RTEXTO_U, GTEXTO_U,
                                BTEXTO_U, RTEXTO_V, GTEXTO_V, BTEXTO_V};
        int const offsets[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
        bool const positive[9] = {true, true, true, false, false, true, true, false, false};
        TableForm f[9];
        MulForm m[9];
        RgbToYuvForms r{};
        r.shift = FitShift(tables, offsets, f);
        if (r.shift != kNoFit) {
            r.ry = f[0], r.gy = f[1], r.by = f[2], r.ru = f[3], r.gu = f[4];
            r.bu = f[5], r.rv = f[6], r.gv = f[7], r.bv = f[8];
            r.mul = FitMulSet(tables, positive, m);
            if (r.mul) {
                r.mry = m[0], r.mgy = m[1], r.mby = m[2], r.mru = m[3], r.mgu = m[4];
                r.mbu = m[5], r.mrv = m[6], r.mgv = m[7], r.mbv = m[8];
            }
            r.clampFree = SumInRange(RTEXTO_U, GTEXTO_U, BTEXTO_U, 128) &&
                          SumInRange(RTEXTO_V, GTEXTO_V, BTEXTO_V, 128);
            gRgbForms = r;
            state |= 1;
        }
    }
    {
        int const* tables[9] = {YTEXTO_R, UTEXTO_R, VTEXTO_R, YTEXTO_G, UTEXTO_G,
                                VTEXTO_G, YTEXTO_B, UTEXTO_B, VTEXTO_B};
        int const offsets[9] = {16, 128, 128, 16, 128, 128, 16, 128, 128};
        TableForm f[9];
        MulForm m[6];
        YuvToRgbForms y{};
        y.shift = FitShift(tables, offsets, f);
        if (y.shift != kNoFit) {
            y.yr = f[0], y.ur = f[1], y.vr = f[2], y.yg = f[3], y.ug = f[4];
            y.vg = f[5], y.yb = f[6], y.ub = f[7], y.vb = f[8];
            y.sharedY = SameForm(f[0], f[3]) && SameForm(f[0], f[6]);
            // Luma needs a free rounding bias (exact halves occur), so only the
            // chroma terms take the multiply-high form.
            int const* chroma[6] = {UTEXTO_R, VTEXTO_R, UTEXTO_G, VTEXTO_G, UTEXTO_B, VTEXTO_B};
            bool const chromaPositive[6] = {true, true, false, false, true, true};
            for (int shift = 0; shift <= 3 && !y.mul; ++shift) {
                bool all = true;
                for (int n = 0; n < 6 && all; ++n)
                    all = FitMulForm(chroma[n], 128, shift, chromaPositive[n], m[n]);
                y.mul = all;
                y.mulShift = shift;
            }
            y.luma = y.sharedY && FitLumaForm(YTEXTO_R, y.lumaForm);
            if (y.luma)
                FitLumaHighForm(YTEXTO_R, y.lumaForm);
            if (y.mul) {
                y.mur = m[0], y.mvr = m[1], y.mug = m[2], y.mvg = m[3], y.mub = m[4], y.mvb = m[5];
            }
            gYuvForms = y;
            state |= 2;
        }
    }
    return state;
}

}  // namespace

int EvalTableForm(TableForm const& form, int shift, int d)
{
    int v = d < 0 ? d * form.kNeg + form.bNeg : d * form.kPos + form.bPos;
    return v >> shift;
}

bool FitTableForm(int const* t, int offset, int shift, TableForm& form)
{
    form = TableForm{};
    bool fitted = FitPiece(t, offset, 0, 256, shift, form.kPos, form.bPos);
    if (fitted) {
        form.kNeg = form.kPos;
        form.bNeg = form.bPos;
    } else if (offset > 0) {
        fitted = FitPiece(t, offset, 0, offset, shift, form.kNeg, form.bNeg) &&
                 FitPiece(t, offset, offset, 256, shift, form.kPos, form.bPos);
        form.twoPiece = true;
    }
    if (!fitted)
        return false;
    bool zero = true;
    for (int i = 0; i < 256; ++i) {
        if (EvalTableForm(form, shift, i - offset) != t[i])
            return false;
        zero = zero && t[i] == 0;
    }
    form.zero = zero;
    return true;
}

bool FitMulForm(int const* t, int offset, int shift, bool positive, MulForm& form)
{
    form = MulForm{};
    if (!FitMulK(t, offset, shift, positive, true, form.kRnd) ||
        !FitMulK(t, offset, shift, positive, false, form.kFlr))
        return false;
    for (int i = 0; i < 256; ++i)
        if (EvalMulForm(form, shift, positive, i - offset) != t[i])
            return false;
    return true;
}

int EvalMulForm(MulForm const& form, int shift, bool positive, int d)
{
    int const a = (d < 0 ? -d : d) << shift;
    int const rnd = (a * form.kRnd + 16384) >> 15, flr = (a * form.kFlr) >> 15;
    return (d >= 0) == positive ? rnd : -flr;
}

int EvalLumaForm(LumaForm const& form, int y)
{
    int const line = y * form.m - form.b;
    return (line > 0 ? line >> form.shift : 0) - (y < 16 ? form.below[y] : 0);
}

// For each shift, every slope m near the table's: the offsets b that put
// each entry from y = 16 on between the line's floors form an interval;
// the first b in it that also leaves y < 16 at 0 gives the form.
bool FitLumaForm(int const* t, LumaForm& form)
{
    for (int y = 0; y < 16; ++y)
        if (t[y] > 0 || t[y] < -127)
            return false;
    if (t[16] != 0)
        return false;
    double const slope = (t[255] - t[16]) / 239.0;
    for (int shift = 0; shift <= 8; ++shift) {
        long long const centre = static_cast<long long>(slope * (1 << shift));
        for (long long m = centre - 2; m <= centre + 2; ++m) {
            if (m < 1 || m * 255 > 65535)
                continue;
            long long lo = 0, hi = 65535;
            for (int y = 16; y < 256; ++y) {
                // t[y] << shift <= y * m - b < (t[y] + 1) << shift
                lo = std::max(lo, y * m - ((static_cast<long long>(t[y]) + 1) << shift) + 1);
                hi = std::min(hi, y * m - (static_cast<long long>(t[y]) << shift));
            }
            // Below 16 the line must floor to 0 (or saturate there).
            lo = std::max(lo, 15 * m - (1LL << shift) + 1);
            if (lo > hi)
                continue;
            LumaForm f{};
            f.m = static_cast<uint16_t>(m);
            f.b = static_cast<uint16_t>(lo);
            f.shift = shift;
            for (int y = 0; y < 16; ++y)
                f.below[y] = static_cast<unsigned char>(-t[y]);
            bool ok = true;
            for (int y = 0; y < 256 && ok; ++y)
                ok = EvalLumaForm(f, y) == t[y];
            if (ok) {
                form = f;
                return true;
            }
        }
    }
    return false;
}

int EvalLumaHighForm(LumaForm const& form, int y)
{
    int const x = 256 * y - form.highB;
    return (x > 0 ? (x * form.highK) >> 16 : 0) - (y < 16 ? form.below[y] : 0);
}

// For each multiplier near 256 times the slope: every entry's result falls
// as highB grows, so each entry allows an interval of highB, found by
// bisection; the first highB in all of them gives the form.
bool FitLumaHighForm(int const* t, LumaForm& form)
{
    form.high = false;
    long long const centre = static_cast<long long>((t[255] - t[16]) / 239.0 * 256.0);
    for (long long k = centre - 3; k <= centre + 3; ++k) {
        if (k < 1 || k > 65535)
            continue;
        auto const result = [k](int y, long long b) {
            long long const x = 256LL * y - b;
            return x > 0 ? (x * k) >> 16 : 0;
        };
        long long lo = 0, hi = 65535;
        for (int y = 0; y < 256 && lo <= hi; ++y) {
            long long const want = y < 16 ? 0 : t[y];
            if (want < 0 || result(y, 0) < want) {
                lo = hi + 1;
                break;
            }
            // The least b whose result is at most want, the greatest whose
            // result is at least want.
            long long a = 0, z = 65535;
            while (a < z) {
                long long const mid = (a + z) / 2;
                if (result(y, mid) <= want)
                    z = mid;
                else
                    a = mid + 1;
            }
            lo = std::max(lo, a);
            a = 0, z = 65535;
            while (a < z) {
                long long const mid = (a + z + 1) / 2;
                if (result(y, mid) >= want)
                    a = mid;
                else
                    z = mid - 1;
            }
            hi = std::min(hi, a);
        }
        if (lo > hi)
            continue;
        LumaForm f = form;
        f.high = true;
        f.highK = static_cast<uint16_t>(k);
        f.highB = static_cast<uint16_t>(lo);
        bool ok = true;
        for (int y = 0; y < 256 && ok; ++y)
            ok = EvalLumaHighForm(f, y) == t[y];
        if (ok) {
            form = f;
            return true;
        }
    }
    return false;
}

RgbToYuvForms const* ActiveRgbToYuvForms()
{
    return (gFastState.load(std::memory_order_acquire) & 1) ? &gRgbForms : nullptr;
}

YuvToRgbForms const* ActiveYuvToRgbForms()
{
    return (gFastState.load(std::memory_order_acquire) & 2) ? &gYuvForms : nullptr;
}

void SetColourKernelLevel(KernelLevel level) { SetKernelLevel(level); }

bool ColourKernelLevelAvailable(KernelLevel level)
{
    switch (level) {
    case KernelLevel::Auto:
    case KernelLevel::Scalar:
        return true;
    case KernelLevel::Sse2OrNeon:
        return (CpuHasSse2() && ColourKernelsSse2()) || (CpuHasNeon() && ColourKernelsNeon());
    case KernelLevel::Avx2:
        return CpuHasAvx2() && ColourKernelsAvx2();
    case KernelLevel::Avx512:
        return CpuHasAvx512() && ColourKernelsAvx512();
    }
    return false;
}

namespace {
std::atomic<bool> gAllowVbmi{true};
}  // namespace

void AllowAvx512Vbmi(bool allow) { gAllowVbmi.store(allow, std::memory_order_relaxed); }

ColourKernels const* ActiveColourKernels()
{
    if (UseAvx512() && CpuHasAvx512Vbmi() && gAllowVbmi.load(std::memory_order_relaxed) && ColourKernelsAvx512Vbmi())
        return ColourKernelsAvx512Vbmi();
    if (UseAvx512() && ColourKernelsAvx512())
        return ColourKernelsAvx512();
    if (UseAvx2() && ColourKernelsAvx2())
        return ColourKernelsAvx2();
    if (UseSse2() && ColourKernelsSse2())
        return ColourKernelsSse2();
    if (UseNeon() && ColourKernelsNeon())
        return ColourKernelsNeon();
    return nullptr;
}

}  // namespace palvet::detail

void InitLookupTable()
{
    if (RGBYUVTABLE_INIT)
        return;
    using palvet::detail::RoundEntry;
    palvet::detail::gFastState.store(0, std::memory_order_relaxed);
    double const* f = ippRGBYUVCOEF;
    double const* b = ippYUVRGBCOEF;
    for (int i = 0; i < 256; ++i) {
        RTEXTO_Y[i] = RoundEntry(i * f[0]);
        GTEXTO_Y[i] = RoundEntry(i * f[1]);
        BTEXTO_Y[i] = RoundEntry(i * f[2]);
        RTEXTO_U[i] = RoundEntry(i * f[3]);
        GTEXTO_U[i] = RoundEntry(i * f[4]);
        BTEXTO_U[i] = RoundEntry(i * f[5]);
        RTEXTO_V[i] = RoundEntry(i * f[6]);
        GTEXTO_V[i] = RoundEntry(i * f[7]);
        BTEXTO_V[i] = RoundEntry(i * f[8]);
        YTEXTO_R[i] = RoundEntry((i - 16) * b[0]);
        UTEXTO_R[i] = RoundEntry((i - 128) * b[1]);
        VTEXTO_R[i] = RoundEntry((i - 128) * b[2]);
        YTEXTO_G[i] = RoundEntry((i - 16) * b[3]);
        UTEXTO_G[i] = RoundEntry((i - 128) * b[4]);
        VTEXTO_G[i] = RoundEntry((i - 128) * b[5]);
        YTEXTO_B[i] = RoundEntry((i - 16) * b[6]);
        UTEXTO_B[i] = RoundEntry((i - 128) * b[7]);
        VTEXTO_B[i] = RoundEntry((i - 128) * b[8]);
    }
    palvet::detail::gFastState.store(palvet::detail::DeriveForms(), std::memory_order_release);
    std::atomic_thread_fence(std::memory_order_release);
    RGBYUVTABLE_INIT = 1;
}

void RGBToYUV(unsigned char r, unsigned char g, unsigned char b,
              unsigned char& y, unsigned char& u, unsigned char& v)
{
    if (!RGBYUVTABLE_INIT)
        InitLookupTable();
    using palvet::detail::Clamp255;
    y = static_cast<unsigned char>(Clamp255(RTEXTO_Y[r] + GTEXTO_Y[g] + BTEXTO_Y[b] + 16));
    u = static_cast<unsigned char>(Clamp255(RTEXTO_U[r] + GTEXTO_U[g] + BTEXTO_U[b] + 128));
    v = static_cast<unsigned char>(Clamp255(RTEXTO_V[r] + GTEXTO_V[g] + BTEXTO_V[b] + 128));
}

void YUVToRGB(unsigned char y, unsigned char u, unsigned char v,
              unsigned char& r, unsigned char& g, unsigned char& b)
{
    if (!RGBYUVTABLE_INIT)
        InitLookupTable();
    using palvet::detail::Clamp255;
    r = static_cast<unsigned char>(Clamp255(YTEXTO_R[y] + UTEXTO_R[u] + VTEXTO_R[v]));
    g = static_cast<unsigned char>(Clamp255(YTEXTO_G[y] + UTEXTO_G[u] + VTEXTO_G[v]));
    b = static_cast<unsigned char>(Clamp255(YTEXTO_B[y] + UTEXTO_B[u] + VTEXTO_B[v]));
}
