#ifndef PALVET_IMAGING_COLOR_KERNELS_INTERNAL_H
#define PALVET_IMAGING_COLOR_KERNELS_INTERNAL_H

// Row kernels for the colour conversions, written once over an instruction
// set description `I` and instantiated by each *_sse2/_avx2/_neon source.
// Everything here has internal linkage so that code built for a wider
// instruction set can never be merged into a caller built for a narrower one;
// for the same reason nothing here calls inline library templates.
//
// `I` provides a vector V of I::N signed 16-bit lanes and:
//   Set1, Add, Sub, Max, Min, And, Or, SrlI<n>, SllI<n>, Srl(v, n), MulLo
//   (16-bit lanes; MulLo keeps the low 16 bits of the product)
//   LoadU8 / StoreU8     N bytes <-> N lanes (the store saturates to 0..255)
//   LoadU16 / StoreU16   N little-endian 16-bit values
//   MakeForm(even, odd, shift), Eval(d, form)  table entries for d, with the
//                        form of `even` in even lanes and `odd` in odd lanes
//   Rnd(x, k), Flr(x, k) (x * k + 2^14) >> 15 and (x * k) >> 15, x >= 0;
//   SmallFlr(x, SmallFlrK(k)) the same as Flr for |k| < 2^14
//   Abs, NegMask (all ones where negative), Sll(v, n), Select(m, a, b)
//   (b where m is all ones),
//   Alternate(even, odd) (constants alternating by lane), DupEven, DupOdd,
//   Sign(x, d) (x negated where d < 0; x is 0 where d is), CmpEq,
//   SubSatU (unsigned saturating), and where kHasLut:
//   MakeLut(16 bytes), Lut16(y, lut) (lut[y] for y < 16, else 0)
//   PairSum(a, b)        sums of adjacent lanes of a, then of b
//   Dup(c, lo, hi)       every lane of c twice, in order
//   SwapAdjacent(v)      lanes 0 1 2 3 ... as 1 0 3 2 ...
//   LoadRgb24 / StoreRgb24 / StoreArgb   N interleaved pixels (stores saturate)
//   optionally (type LumaHigh) MulHiU(a, b): (a * b) >> 16, unsigned, and
//                        MulHighByte(v, k): v's high byte times k (< 128) in
//                        each lane
//   optionally (type LaneHalves) LoadRgb24Half(p, h, c0, c1, c2): pixels
//                        8h..8h+7 and 16+8h..16+8h+7 of the 32 at p, with
//                        StoreU8Halves(p, a, b) (the 32 bytes of two such
//                        blocks; StoreU8HalvesAdd(p, a, b, k) with k added
//                        to each byte, saturating), PairSumHalves (PairSum of
//                        such blocks, in order), StoreU8Planes(p, q, a, b)
//                        (N bytes each) and StoreU8PlanesCentred<s>(p, q, a,
//                        b) (the same of (a >> s) + 128 and (b >> s) + 128,
//                        arithmetic shifts, for results within 0..255)
//   optionally (type ArgbOrdered) LoadU16ArgbOrdered / LoadU8ArgbOrdered
//                        (LoadU16 / LoadU8 with the lanes permuted in groups
//                        of four) with StoreArgbOrdered, the store of such
//                        permuted components, which needs no permutes of its own
//   SplitPairs / JoinPairs               interleaved bytes <-> two planes
// and optionally, where a hand-scheduled loop pays:
//   PackedArgbConstants, PackedStdArgb<kYvy, kAlpha>(...)   PackedStd's
//                        ARGB32 loop with the luma multiplier below 256
//   YuvRgb24Constants, YuvStdRgb24Pair<kSwap>(...)   YuvToRgb's 24-bit,
//                        4:2:0, two-row loop, the same multiplier limit

#include <palvet/core/mca_marker_internal.h>
#include <palvet/imaging/color_conversion_internal.h>

#include <type_traits>

// The per-block helpers must melt into the row loops: a call per block
// passes vectors through memory.
#define PALVET_KERNEL_INLINE inline __attribute__((always_inline))

namespace palvet::detail {
namespace {

template <class T, class = void>
struct HasPackedStdArgb : std::false_type {};
template <class T>
struct HasPackedStdArgb<T, std::void_t<typename T::PackedArgbConstants>> : std::true_type {};

template <class T, class = void>
struct HasYuvStdRgb24Pair : std::false_type {};
template <class T>
struct HasYuvStdRgb24Pair<T, std::void_t<typename T::YuvRgb24Constants>> : std::true_type {};

template <class T, class = void>
struct HasLaneHalves : std::false_type {};
template <class T>
struct HasLaneHalves<T, std::void_t<typename T::LaneHalves>> : std::true_type {};

template <class T, class = void>
struct HasLumaHigh : std::false_type {};
template <class T>
struct HasLumaHigh<T, std::void_t<typename T::LumaHigh>> : std::true_type {};

template <class T, class = void>
struct HasArgbOrder : std::false_type {};
template <class T>
struct HasArgbOrder<T, std::void_t<typename T::ArgbOrdered>> : std::true_type {};

template <class I>
struct Kernels {
    using V = typename I::V;
    using Form = typename I::Form;
    static constexpr int N = I::N;

    PALVET_KERNEL_INLINE static V Clamp(V v) { return I::Max(I::Min(v, I::Set1(255)), I::Set1(0)); }

    // Red and blue exchanged where swap holds (a bool, or a constant).
    template <class Swap>
    PALVET_KERNEL_INLINE static void SwapIf(Swap swap, V& r, V& b)
    {
        if (swap) {
            V const t = r;
            r = b;
            b = t;
        }
    }

    template <RgbFormat F>
    static constexpr int Bytes()
    {
        return F == RgbFormat::Rgb24 ? 3 : (F == RgbFormat::Argb32 ? 4 : 2);
    }

    template <RgbFormat F>
    PALVET_KERNEL_INLINE static void LoadPixels(unsigned char const* p, bool swap, V& r, V& g, V& b)
    {
        if constexpr (F == RgbFormat::Rgb24) {
            I::LoadRgb24(p, r, g, b);
        } else {
            V const v = I::LoadU16(p);
            if constexpr (F == RgbFormat::Rgb565) {
                r = I::template SllI<3>(I::template SrlI<11>(v));
                g = I::template SllI<2>(I::And(I::template SrlI<5>(v), I::Set1(0x3F)));
            } else {
                r = I::template SllI<3>(I::And(I::template SrlI<10>(v), I::Set1(0x1F)));
                g = I::template SllI<3>(I::And(I::template SrlI<5>(v), I::Set1(0x1F)));
            }
            b = I::template SllI<3>(I::And(v, I::Set1(0x1F)));
        }
        SwapIf(swap, r, b);
    }

    // r, g and b are unclamped sums.
    template <RgbFormat F>
    PALVET_KERNEL_INLINE static void StorePixels(unsigned char* p, bool swap, V r, V g, V b)
    {
        SwapIf(swap, r, b);
        if constexpr (F == RgbFormat::Rgb24) {
            I::StoreRgb24(p, r, g, b);
        } else {
            r = I::template SrlI<3>(Clamp(r));
            b = I::template SrlI<3>(Clamp(b));
            V v;
            if constexpr (F == RgbFormat::Rgb565)
                v = I::Or(I::Or(I::template SllI<11>(r), I::template SllI<5>(I::template SrlI<2>(Clamp(g)))), b);
            else
                v = I::Or(I::Or(I::template SllI<10>(r), I::template SllI<5>(I::template SrlI<3>(Clamp(g)))), b);
            I::StoreU16(p, v);
        }
    }

    struct RgbForms {
        Form ry, gy, by, ru, gu, bu, rv, gv, bv;
        bool mul, clampFree;
        V kry, kgy, kby, kru, kgu, kbu, krv, kgv, kbv;
        // The standard loops use only the multipliers; building the nine
        // forms for them cost 2% of a 32-row strip, made row by row.
        RgbForms(RgbToYuvForms const& f, bool withForms)
            : ry(), gy(), by(), ru(), gu(), bu(), rv(), gv(), bv(), mul(f.mul), clampFree(f.clampFree),
              kry(I::Set1(f.mry.kRnd)), kgy(I::Set1(f.mgy.kRnd)), kby(I::Set1(f.mby.kRnd)),
              kru(I::SmallFlrK(f.mru.kFlr)), kgu(I::SmallFlrK(f.mgu.kFlr)), kbu(I::Set1(f.mbu.kRnd)),
              krv(I::Set1(f.mrv.kRnd)), kgv(I::SmallFlrK(f.mgv.kFlr)), kbv(I::SmallFlrK(f.mbv.kFlr))
        {
            if (!withForms)
                return;
            ry = I::MakeForm(f.ry, f.ry, f.shift), gy = I::MakeForm(f.gy, f.gy, f.shift);
            by = I::MakeForm(f.by, f.by, f.shift), ru = I::MakeForm(f.ru, f.ru, f.shift);
            gu = I::MakeForm(f.gu, f.gu, f.shift), bu = I::MakeForm(f.bu, f.bu, f.shift);
            rv = I::MakeForm(f.rv, f.rv, f.shift), gv = I::MakeForm(f.gv, f.gv, f.shift);
            bv = I::MakeForm(f.bv, f.bv, f.shift);
        }

        static bool Small(int16_t k) { return k >= -16384 && k <= 16383; }
        // The usual matrices: luma terms and the blue of U and red of V
        // positive (the luma's tested here, as the loops rely on luma sums
        // that are never negative), the rest negative and below 0.5, and no
        // sum that needs clamping.
        static bool Standard(RgbToYuvForms const& f)
        {
            return f.mul && f.clampFree && Small(f.mru.kFlr) && Small(f.mgu.kFlr) && Small(f.mgv.kFlr) &&
                   Small(f.mbv.kFlr) && f.mry.kRnd >= 0 && f.mgy.kRnd >= 0 && f.mby.kRnd >= 0;
        }
    };

    // v as it stands, opaque to the optimiser: a sum ends here instead of
    // being reassociated with the next block's into one long chain, which
    // would keep every product of both blocks live at once (and spilled).
    PALVET_KERNEL_INLINE static V Settled(V v)
    {
#if defined(__aarch64__) || defined(__arm__)
        __asm__("" : "+w"(v));
#else
        __asm__("" : "+v"(v));
#endif
        return v;
    }

    // Luma of N pixels (with its 16, unless kNo16, not yet saturated) is
    // returned, U and V (clamped) through u and v. kNo16 only with kStd.
    template <bool kStd, bool kNo16 = false>
    PALVET_KERNEL_INLINE static V RgbSums(RgbForms const& f, V r, V g, V b, V& u, V& v)
    {
        if constexpr (kStd) {
            // Without the 128: the callers add it once per output sample.
            // Luma and the positive chroma terms round, the negative ones
            // truncate toward zero (hence subtracted).
            u = Settled(I::Sub(I::Rnd(b, f.kbu), I::Add(I::SmallFlr(r, f.kru), I::SmallFlr(g, f.kgu))));
            v = Settled(I::Sub(I::Rnd(r, f.krv), I::Add(I::SmallFlr(g, f.kgv), I::SmallFlr(b, f.kbv))));
            V const y = I::Add(I::Add(I::Rnd(r, f.kry), I::Rnd(g, f.kgy)), I::Rnd(b, f.kby));
            return kNo16 ? y : I::Add(y, I::Set1(16));
        } else {
            u = Clamp(I::Add(I::Add(I::Eval(r, f.ru), I::Eval(g, f.gu)), I::Add(I::Eval(b, f.bu), I::Set1(128))));
            v = Clamp(I::Add(I::Add(I::Eval(r, f.rv), I::Eval(g, f.gv)), I::Add(I::Eval(b, f.bv), I::Set1(128))));
            return I::Add(I::Add(I::Eval(r, f.ry), I::Eval(g, f.gy)), I::Add(I::Eval(b, f.by), I::Set1(16)));
        }
    }

    // Y of N pixels is stored; their U and V (clamped) are returned.
    template <RgbFormat F, bool kStd, class Swap>
    PALVET_KERNEL_INLINE static void RgbBlock(RgbForms const& f, unsigned char const* src, Swap swap, unsigned char* y, V& u, V& v)
    {
        V r, g, b;
        LoadPixels<F>(src, swap, r, g, b);
        I::StoreU8(y, RgbSums<kStd>(f, r, g, b, u, v));
    }

    // The standard matrices' loops get the red/blue swap as a constant:
    // tested inside the loop, it splits the loop body into branches that
    // the compiler shuffles registers across.
    template <RgbFormat F, ChromaLayout L, bool kStd>
    static int RgbToYuv(RgbToYuvRow const& row, RgbToYuvForms const& forms)
    {
        if constexpr (kStd) {
            return row.swapRB ? RgbToYuvRun<F, L, kStd>(row, forms, std::true_type{})
                              : RgbToYuvRun<F, L, kStd>(row, forms, std::false_type{});
        }
        return RgbToYuvRun<F, L, kStd>(row, forms, row.swapRB);
    }

    // Swap: bool, or std::bool_constant for a loop without the test.
    template <RgbFormat F, ChromaLayout L, bool kStd, class Swap>
    static int RgbToYuvRun(RgbToYuvRow const& rowIn, RgbToYuvForms const& forms, Swap swap)
    {
        // A copy: stores through the pixel pointers could alias the caller's
        // record, which would have the pointers reloaded every step.
        RgbToYuvRow const row = rowIn;
        RgbForms const f(forms, !kStd);
        constexpr int bytes = Bytes<F>();
        // Standard chroma comes without its 128 (see RgbSums).
        V const bias = I::Set1(kStd ? 128 : 0);
        int x = 0;
        if constexpr (L == ChromaLayout::C444) {
            for (; x + N <= row.width; x += N) {
                V u, v;
                RgbBlock<F, kStd>(f, row.src[0] + x * bytes, swap, row.y[0] + x, u, v);
                I::StoreU8(row.u + x, I::Add(u, bias));
                I::StoreU8(row.v + x, I::Add(v, bias));
            }
        } else {
            constexpr int samples = L == ChromaLayout::C420 ? 4 : 2;
            V const sumBias = I::Set1(kStd ? 128 * samples : 0);
            constexpr int shift = L == ChromaLayout::C420 ? 2 : 1;
            if constexpr (F == RgbFormat::Rgb24 && HasLaneHalves<I>::value) {
                // Each 32-pixel group as two blocks whose halves alternate
                // (see I::LoadRgb24Half): the packs then leave every byte in
                // pixel order, with no lane permutes for luma and one for
                // both chroma planes. A group's luma is stored, its chroma
                // returned in us and vs.
                auto const group = [&](unsigned char const* src, unsigned char* y, V* us, V* vs)
                                       __attribute__((always_inline)) {
                    V ys[2];
#pragma GCC unroll 2
                    for (int h = 0; h < 2; ++h) {
                        V r, g, b;
                        I::LoadRgb24Half(src, h, r, g, b);
                        SwapIf(swap, r, b);
                        ys[h] = RgbSums<kStd, kStd>(f, r, g, b, us[h], vs[h]);
                    }
                    // The standard luma sums are never negative, so their
                    // 16 can be added to the saturated bytes instead: one
                    // add per 32 pixels, not two.
                    if constexpr (kStd)
                        I::StoreU8HalvesAdd(y, ys[0], ys[1], 16);
                    else
                        I::StoreU8Halves(y, ys[0], ys[1]);
                };
                auto const chroma = [&](int at, V const* us, V const* vs) __attribute__((always_inline)) {
                    V const u = I::PairSumHalves(us[0], us[1]), v = I::PairSumHalves(vs[0], vs[1]);
                    if constexpr (kStd) {
                        // (sum + 128 << shift) >> shift is (sum >> shift) + 128,
                        // which one flip of the packed bytes' top bits adds
                        // to both planes (no standard sample leaves 0..255).
                        I::template StoreU8PlanesCentred<shift>(row.u + at / 2, row.v + at / 2, u, v);
                    } else {
                        I::StoreU8Planes(row.u + at / 2, row.v + at / 2, I::template SrlI<shift>(u),
                                         I::template SrlI<shift>(v));
                    }
                };
                // Runs of up to kRun groups in short loops: the first row's
                // chroma is parked, a second row's added to it, then the
                // chroma samples are made. Short loops keep more groups in
                // flight than one long one, whose dependency chains fill the
                // scheduler before the next group's loads can start.
                constexpr int kRun = 16;
                V parked[kRun][4];
                while (x + 2 * N <= row.width) {
                    int const left = (row.width - x) / (2 * N);
                    int const run = left < kRun ? left : kRun;
                    for (int s = 0; s < run; ++s) {
                        PALVET_MCA_BEGIN("rgb-yuv-first");
                        int const at = x + s * 2 * N;
                        group(row.src[0] + at * bytes, row.y[0] + at, parked[s], parked[s] + 2);
                        PALVET_MCA_END("rgb-yuv-first");
                    }
                    if constexpr (L == ChromaLayout::C420) {
                        for (int s = 0; s < run; ++s) {
                            PALVET_MCA_BEGIN("rgb-yuv");
                            int const at = x + s * 2 * N;
                            V us[2], vs[2];
                            group(row.src[1] + at * bytes, row.y[1] + at, us, vs);
                            for (int h = 0; h < 2; ++h) {
                                parked[s][h] = I::Add(us[h], parked[s][h]);
                                parked[s][2 + h] = I::Add(vs[h], parked[s][2 + h]);
                            }
                            PALVET_MCA_END("rgb-yuv");
                        }
                    }
                    for (int s = 0; s < run; ++s) {
                        PALVET_MCA_BEGIN("rgb-yuv-chroma");
                        chroma(x + s * 2 * N, parked[s], parked[s] + 2);
                        PALVET_MCA_END("rgb-yuv-chroma");
                    }
                    x += run * 2 * N;
                }
            } else {
                for (; x + 2 * N <= row.width; x += 2 * N) {
                    PALVET_MCA_BEGIN("rgb-yuv");
                    V us[2], vs[2];
#pragma GCC unroll 2
                    for (int h = 0; h < 2; ++h) {
                        int const px = x + h * N;
                        RgbBlock<F, kStd>(f, row.src[0] + px * bytes, swap, row.y[0] + px, us[h], vs[h]);
                        if constexpr (L == ChromaLayout::C420) {
                            V u1, v1;
                            RgbBlock<F, kStd>(f, row.src[1] + px * bytes, swap, row.y[1] + px, u1, v1);
                            us[h] = I::Add(us[h], u1);
                            vs[h] = I::Add(vs[h], v1);
                        }
                    }
                    I::StoreU8(row.u + x / 2, I::template SrlI<shift>(I::Add(I::PairSum(us[0], us[1]), sumBias)));
                    I::StoreU8(row.v + x / 2, I::template SrlI<shift>(I::Add(I::PairSum(vs[0], vs[1]), sumBias)));
                    PALVET_MCA_END("rgb-yuv");
                }
            }
        }
        return x;
    }

    // Chroma term of a table in multiply-high form; m marks d < 0.
    template <bool kPositive>
    PALVET_KERNEL_INLINE static V MulTerm(V a, V m, V kRnd, V kFlr)
    {
        V const rnd = I::Rnd(a, kRnd), flr = I::Sub(I::Set1(0), I::Flr(a, kFlr));
        return kPositive ? I::Select(m, rnd, flr) : I::Select(m, flr, rnd);
    }

    struct YuvForms {
        Form yr, yg, yb, ur, vr, ug, vg, ub, vb;
        bool sharedY, zur, zvr, zug, zvg, zub, zvb, mul;
        int mulShift;
        V rur, fur, rvr, fvr, rug, fug, rvg, fvg, rub, fub, rvb, fvb;
        // Luma as the floor of a line (see LumaForm).
        V lumaM, lumaB, lumaBelow;
        int lumaShift;
        explicit YuvForms(YuvToRgbForms const& f)
            : sharedY(f.sharedY), zur(f.ur.zero), zvr(f.vr.zero), zug(f.ug.zero), zvg(f.vg.zero), zub(f.ub.zero),
              zvb(f.vb.zero), mul(f.mul), mulShift(f.mulShift), rur(I::Set1(f.mur.kRnd)), fur(I::Set1(f.mur.kFlr)),
              rvr(I::Set1(f.mvr.kRnd)), fvr(I::Set1(f.mvr.kFlr)), rug(I::Set1(f.mug.kRnd)),
              fug(I::Set1(f.mug.kFlr)), rvg(I::Set1(f.mvg.kRnd)), fvg(I::Set1(f.mvg.kFlr)),
              rub(I::Set1(f.mub.kRnd)), fub(I::Set1(f.mub.kFlr)), rvb(I::Set1(f.mvb.kRnd)),
              fvb(I::Set1(f.mvb.kFlr)), lumaM(I::Set1(f.lumaForm.m)), lumaB(I::Set1(f.lumaForm.b)),
              lumaBelow(I::MakeLut(f.lumaForm.below)), lumaShift(f.lumaForm.shift)
        {
            if (Standard(f))
                return;  // the general forms are not used
            yr = I::MakeForm(f.yr, f.yr, f.shift);
            yg = I::MakeForm(f.yg, f.yg, f.shift);
            yb = I::MakeForm(f.yb, f.yb, f.shift);
            ur = I::MakeForm(f.ur, f.ur, f.shift);
            vr = I::MakeForm(f.vr, f.vr, f.shift);
            ug = I::MakeForm(f.ug, f.ug, f.shift);
            vg = I::MakeForm(f.vg, f.vg, f.shift);
            ub = I::MakeForm(f.ub, f.ub, f.shift);
            vb = I::MakeForm(f.vb, f.vb, f.shift);
        }

        // The usual matrices: luma shared and in multiply-high form, chroma in
        // multiply-high form, no U term in red and no V term in blue.
        static bool Standard(YuvToRgbForms const& f)
        {
            return I::kHasLut && f.mul && f.luma && f.ur.zero && f.vb.zero;
        }

        PALVET_KERNEL_INLINE V Term(bool zero, V d, Form const& form) const
        {
            return zero ? I::Set1(0) : I::Eval(d, form);
        }
        template <bool kStd>
        PALVET_KERNEL_INLINE void Chroma(V du, V dv, V& cr, V& cg, V& cb) const
        {
            if (kStd || mul) {
                V const au = I::Sll(I::Abs(du), mulShift), av = I::Sll(I::Abs(dv), mulShift);
                V const mu = I::NegMask(du), mv = I::NegMask(dv);
                if constexpr (kStd) {
                    cr = MulTerm<true>(av, mv, rvr, fvr);
                    cg = I::Add(MulTerm<false>(au, mu, rug, fug), MulTerm<false>(av, mv, rvg, fvg));
                    cb = MulTerm<true>(au, mu, rub, fub);
                } else {
                    V const zero = I::Set1(0);
                    cr = I::Add(zur ? zero : MulTerm<true>(au, mu, rur, fur), zvr ? zero : MulTerm<true>(av, mv, rvr, fvr));
                    cg = I::Add(zug ? zero : MulTerm<false>(au, mu, rug, fug), zvg ? zero : MulTerm<false>(av, mv, rvg, fvg));
                    cb = I::Add(zub ? zero : MulTerm<true>(au, mu, rub, fub), zvb ? zero : MulTerm<true>(av, mv, rvb, fvb));
                }
                return;
            }
            cr = I::Add(Term(zur, du, ur), Term(zvr, dv, vr));
            cg = I::Add(Term(zug, du, ug), Term(zvg, dv, vg));
            cb = I::Add(Term(zub, du, ub), Term(zvb, dv, vb));
        }
        template <bool kStd>
        PALVET_KERNEL_INLINE void Luma(V y, V& r, V& g, V& b) const
        {
            if constexpr (kStd) {
                V const t = I::Srl(I::SubSatU(I::MulLo(y, lumaM), lumaB), lumaShift);
                r = g = b = I::Sub(t, I::Lut16(y, lumaBelow));
            } else {
                V const d = I::Sub(y, I::Set1(16));
                r = I::Eval(d, yr);
                g = sharedY ? r : I::Eval(d, yg);
                b = sharedY ? r : I::Eval(d, yb);
            }
        }
    };

    // The chroma shift and the luma line of a hand-scheduled loop's
    // constants (the multiplier as bytes: those loops need it below 256).
    template <class C>
    static void FillLumaConstants(C& k, YuvToRgbForms const& forms)
    {
        I::StoreU16(k.mulShift, I::Set1(forms.mulShift));
        I::StoreU16(k.lumaB, I::Set1(forms.lumaForm.b));
        I::StoreU16(k.lumaShift, I::Set1(-forms.lumaForm.shift));
        for (int i = 0; i < 16; ++i)
            k.below[i] = forms.lumaForm.below[i];
        for (int i = 0; i < 8; ++i) {
            k.lumaM[i] = static_cast<unsigned char>(forms.lumaForm.m);
            k.c128[i] = 128;
        }
    }

    template <RgbFormat F, ChromaLayout L, bool kStd>
    static int YuvToRgb(YuvToRgbRow const& rowIn, YuvToRgbForms const& forms)
    {
        // A copy: stores through the pixel pointers could alias the caller's
        // record, which would have the pointers reloaded every step.
        YuvToRgbRow const row = rowIn;
        constexpr bool kOwnLoop =
            F == RgbFormat::Rgb24 && L == ChromaLayout::C420 && kStd && HasYuvStdRgb24Pair<I>::value;
        if constexpr (kOwnLoop) {
            if (row.y[1] != nullptr && forms.lumaForm.m <= 255) {
                typename I::YuvRgb24Constants k;
                MulForm const* const terms[4] = {&forms.mvr, &forms.mug, &forms.mvg, &forms.mub};
                for (int t = 0; t < 4; ++t) {
                    I::StoreU16(k.terms[t][0], I::Set1(terms[t]->kRnd));
                    I::StoreU16(k.terms[t][1], I::Set1(terms[t]->kFlr));
                }
                FillLumaConstants(k.luma, forms);
                int const steps = row.width / (2 * N);
                if (row.swapRB)
                    I::template YuvStdRgb24Pair<true>(row, steps, k);
                else
                    I::template YuvStdRgb24Pair<false>(row, steps, k);
                return steps * 2 * N;
            }
        }
        YuvForms const f(forms);
        constexpr int bytes = Bytes<F>();
        bool const swap = row.swapRB;
        int const rows = row.y[1] ? 2 : 1;
        V const c128 = I::Set1(128);
        int x = 0;
        if constexpr (L == ChromaLayout::C444) {
            for (; x + N <= row.width; x += N) {
                V cr, cg, cb, yr, yg, yb;
                f.template Chroma<kStd>(I::Sub(I::LoadU8(row.u + x), c128), I::Sub(I::LoadU8(row.v + x), c128), cr,
                                        cg, cb);
                f.template Luma<kStd>(I::LoadU8(row.y[0] + x), yr, yg, yb);
                StorePixels<F>(row.dst[0] + x * bytes, swap, I::Add(yr, cr), I::Add(yg, cg), I::Add(yb, cb));
            }
        } else {
            // One or two image rows per chroma row, as a compile-time count
            // so that both unroll.
            auto const run = [&](auto rowCount) {
                constexpr int kRows = decltype(rowCount)::value;
                for (; x + 2 * N <= row.width; x += 2 * N) {
                    if constexpr (kRows == 2 && !kOwnLoop)
                        PALVET_MCA_BEGIN("yuv-rgb");
                    V cr, cg, cb;
                    f.template Chroma<kStd>(I::Sub(I::LoadU8(row.u + x / 2), c128),
                                            I::Sub(I::LoadU8(row.v + x / 2), c128), cr, cg, cb);
                    V crs[2], cgs[2], cbs[2];
                    I::Dup(cr, crs[0], crs[1]);
                    I::Dup(cg, cgs[0], cgs[1]);
                    I::Dup(cb, cbs[0], cbs[1]);
#pragma GCC unroll 2
                    for (int k = 0; k < kRows; ++k) {
#pragma GCC unroll 2
                        for (int h = 0; h < 2; ++h) {
                            int const px = x + h * N;
                            V yr, yg, yb;
                            f.template Luma<kStd>(I::LoadU8(row.y[k] + px), yr, yg, yb);
                            StorePixels<F>(row.dst[k] + px * bytes, swap, I::Add(yr, crs[h]), I::Add(yg, cgs[h]),
                                           I::Add(yb, cbs[h]));
                        }
                    }
                    if constexpr (kRows == 2 && !kOwnLoop)
                        PALVET_MCA_END("yuv-rgb");
                }
            };
            if (rows == 2)
                run(std::integral_constant<int, 2>{});
            else
                run(std::integral_constant<int, 1>{});
        }
        return x;
    }

    // Packed pairs: the chroma bytes of N pixels sit in alternating lanes (U
    // then V, or V then U), so constants alternate the same way.
    static V Alternate(int16_t ku, int16_t kv, bool yvy) { return yvy ? I::Alternate(kv, ku) : I::Alternate(ku, kv); }

    template <RgbFormat F>
    PALVET_KERNEL_INLINE static void StorePacked(unsigned char* p, bool swap, V r, V g, V b, V a)
    {
        if constexpr (F == RgbFormat::Argb32)
            I::StoreArgb(p, r, g, b, a);
        else
            StorePixels<F>(p, swap, r, g, b);
    }

    // Standard layout: red has only a V term and blue only a U term, so one
    // evaluation serves both, U lanes for blue and V lanes for red.
    // kHigh: the luma in its high form, the chroma byte scaled by a multiply,
    // and the chroma floors as unsigned multiplies by twice their constants
    // (UnsignedFloors), which saves the doubling of their inputs; all three
    // need LumaHigh's operations.
    template <RgbFormat F, bool kYvy, bool kAlpha, bool kHigh>
    static int PackedStd(PackedToRgbRow const& rowIn, YuvToRgbForms const& forms)
    {
        // A copy: stores through the pixel pointers could alias the caller's
        // record, which would have the pointers reloaded every step.
        PackedToRgbRow const row = rowIn;
        YuvForms const f(forms);
        V const rbR = Alternate(forms.mub.kRnd, forms.mvr.kRnd, kYvy);
        V const rbF = Alternate(forms.mub.kFlr, forms.mvr.kFlr, kYvy);
        V const gR = Alternate(forms.mug.kRnd, forms.mvg.kRnd, kYvy);
        V const gF = Alternate(forms.mug.kFlr, forms.mvg.kFlr, kYvy);
        // (a * k) >> 15 is (a * 2k) >> 16 for a, k >= 0; 2k wraps into the
        // unsigned range.
        auto const twice = [](int16_t k) { return static_cast<int16_t>(static_cast<uint16_t>(2 * k)); };
        V const rbF2 = Alternate(twice(forms.mub.kFlr), twice(forms.mvr.kFlr), kYvy);
        V const gF2 = Alternate(twice(forms.mug.kFlr), twice(forms.mvg.kFlr), kYvy);
        int const mulShift = forms.mulShift;
        constexpr int bytes = Bytes<F>();
        int const width = row.pairs * 2;
        constexpr bool kOwnLoop = F == RgbFormat::Argb32 && HasPackedStdArgb<I>::value;
        if constexpr (kOwnLoop) {
            if (forms.lumaForm.m <= 255) {
                typename I::PackedArgbConstants k;
                I::StoreU16(k.rbR, rbR);
                I::StoreU16(k.rbF, rbF);
                I::StoreU16(k.gR, gR);
                I::StoreU16(k.gF, gF);
                FillLumaConstants(k.luma, forms);
                return I::template PackedStdArgb<kYvy, kAlpha>(row.src, row.dst, row.alpha, width / N, k) * N;
            }
        }
        // Pixels in the order the instruction set's ARGB store wants them
        // (where it has one), so that the store needs no reordering.
        constexpr bool kArgbOrder = F == RgbFormat::Argb32 && HasArgbOrder<I>::value;
        V const lowByte = I::Set1(0xFF), opaque = I::Set1(255);
        // The chroma byte, scaled by 1 << mulShift: with kHigh in one
        // multiply (mulShift at most 6, see PackedAny), else a mask and one
        // shift (shifts share the shuffle units, masks do not).
        V const chromaByte = I::Set1(~0xFF);
        int const chromaScale = kHigh ? 1 << mulShift : 0;
        V const c128 = I::Set1(128 << mulShift);
        V const highK = I::Set1(forms.lumaForm.highK), highB = I::Set1(forms.lumaForm.highB);
        int x = 0;
        for (; x + N <= width; x += N) {
            if constexpr (!kOwnLoop)
                PALVET_MCA_BEGIN("packed-std");
            V w;
            if constexpr (kArgbOrder)
                w = I::LoadU16ArgbOrdered(row.src + 2 * x);
            else
                w = I::LoadU16(row.src + 2 * x);
            // |d| << shift split by sign: pos where d > 0, neg where d < 0,
            // 0 elsewhere. Both roundings give 0 for 0, so each side's
            // multiply can run on every lane and the sum is the table entry,
            // with no sign selection.
            V cs;
            if constexpr (kHigh)
                cs = I::MulHighByte(w, chromaScale);
            else
                cs = I::Srl(I::And(w, chromaByte), 8 - mulShift);
            V const pos = I::SubSatU(cs, c128), neg = I::SubSatU(c128, cs);
            auto const flr = [](V a, V k, V k2) {
                if constexpr (kHigh)
                    return I::MulHiU(a, k2);
                else
                    return I::Flr(a, k);
            };
            V const rb = I::Sub(I::Rnd(pos, rbR), flr(neg, rbF, rbF2));
            // Green's terms (negative where d > 0), summed as they are: the
            // negated sum, subtracted, was reassociated by GCC into both signs
            // of the difference, one operation more.
            V eg = I::Sub(I::Rnd(neg, gR), flr(pos, gF, gF2));
            eg = I::Add(eg, I::SwapAdjacent(eg));
            V const er = kYvy ? I::DupEven(rb) : I::DupOdd(rb);
            V const eb = kYvy ? I::DupOdd(rb) : I::DupEven(rb);
            V yr, yg, yb;
            if constexpr (kHigh) {
                // The chroma byte above the luma saturates the lookup's
                // index, so the word serves as it is.
                V const line = I::MulHiU(I::SubSatU(I::template SllI<8>(w), highB), highK);
                yr = yg = yb = I::Sub(line, I::Lut16(w, f.lumaBelow));
            } else {
                f.template Luma<true>(I::And(w, lowByte), yr, yg, yb);
            }
            V const r = I::Add(yr, er), g = I::Add(yg, eg), b = I::Add(yb, eb);
            if constexpr (kArgbOrder)
                I::StoreArgbOrdered(row.dst + x * bytes, r, g, b, kAlpha ? I::LoadU8ArgbOrdered(row.alpha + x) : opaque);
            else
                StorePacked<F>(row.dst + x * bytes, row.swapRB, r, g, b, kAlpha ? I::LoadU8(row.alpha + x) : opaque);
            if constexpr (!kOwnLoop)
                PALVET_MCA_END("packed-std");
        }
        return x;
    }

    // One evaluation with alternating constants gives each lane its own term;
    // adding the neighbour lane gives both pixels of a pair their sum.
    template <RgbFormat F>
    static int PackedGeneral(PackedToRgbRow const& rowIn, YuvToRgbForms const& forms)
    {
        // A copy: stores through the pixel pointers could alias the caller's
        // record, which would have the pointers reloaded every step.
        PackedToRgbRow const row = rowIn;
        YuvForms const f(forms);
        bool const yvy = row.yvy;
        Form const fr = I::MakeForm(yvy ? forms.vr : forms.ur, yvy ? forms.ur : forms.vr, forms.shift);
        Form const fg = I::MakeForm(yvy ? forms.vg : forms.ug, yvy ? forms.ug : forms.vg, forms.shift);
        Form const fb = I::MakeForm(yvy ? forms.vb : forms.ub, yvy ? forms.ub : forms.vb, forms.shift);
        V const rr = Alternate(forms.mur.kRnd, forms.mvr.kRnd, yvy);
        V const fr2 = Alternate(forms.mur.kFlr, forms.mvr.kFlr, yvy);
        V const rg = Alternate(forms.mug.kRnd, forms.mvg.kRnd, yvy);
        V const fg2 = Alternate(forms.mug.kFlr, forms.mvg.kFlr, yvy);
        V const rb = Alternate(forms.mub.kRnd, forms.mvb.kRnd, yvy);
        V const fb2 = Alternate(forms.mub.kFlr, forms.mvb.kFlr, yvy);
        bool const mul = forms.mul;
        int const mulShift = forms.mulShift;
        constexpr int bytes = Bytes<F>();
        int const width = row.pairs * 2;
        V const lowByte = I::Set1(0xFF), c128 = I::Set1(128), opaque = I::Set1(255);
        int x = 0;
        for (; x + N <= width; x += N) {
            V const w = I::LoadU16(row.src + 2 * x);
            V const dc = I::Sub(I::template SrlI<8>(w), c128);
            V er, eg, eb;
            if (mul) {
                V const a = I::Sll(I::Abs(dc), mulShift), m = I::NegMask(dc);
                er = MulTerm<true>(a, m, rr, fr2);
                eg = MulTerm<false>(a, m, rg, fg2);
                eb = MulTerm<true>(a, m, rb, fb2);
            } else {
                er = I::Eval(dc, fr);
                eg = I::Eval(dc, fg);
                eb = I::Eval(dc, fb);
            }
            er = I::Add(er, I::SwapAdjacent(er));
            eg = I::Add(eg, I::SwapAdjacent(eg));
            eb = I::Add(eb, I::SwapAdjacent(eb));
            V yr, yg, yb;
            f.template Luma<false>(I::And(w, lowByte), yr, yg, yb);
            StorePacked<F>(row.dst + x * bytes, row.swapRB, I::Add(yr, er), I::Add(yg, eg), I::Add(yb, eb),
                           row.alpha ? I::LoadU8(row.alpha + x) : opaque);
        }
        return x;
    }

    template <RgbFormat F>
    static int PackedAny(PackedToRgbRow const& row, YuvToRgbForms const& forms)
    {
        if (!YuvForms::Standard(forms))
            return PackedGeneral<F>(row, forms);
        if constexpr (HasLumaHigh<I>::value) {
            // The byte multiply that scales the chroma takes 1 << mulShift
            // as a signed byte; forms are fitted with mulShift 0 to 3.
            if (forms.lumaForm.high && UnsignedFloors(forms) && forms.mulShift <= 6)
                return PackedStdAny<F, true>(row, forms);
        }
        return PackedStdAny<F, false>(row, forms);
    }

    static bool UnsignedFloors(YuvToRgbForms const& forms)
    {
        return forms.mub.kFlr >= 0 && forms.mvr.kFlr >= 0 && forms.mug.kFlr >= 0 && forms.mvg.kFlr >= 0;
    }

    template <RgbFormat F, bool kHigh>
    static int PackedStdAny(PackedToRgbRow const& row, YuvToRgbForms const& forms)
    {
        if (row.yvy)
            return row.alpha ? PackedStd<F, true, true, kHigh>(row, forms) : PackedStd<F, true, false, kHigh>(row, forms);
        return row.alpha ? PackedStd<F, false, true, kHigh>(row, forms) : PackedStd<F, false, false, kHigh>(row, forms);
    }

    template <RgbFormat F, ChromaLayout L>
    static int RgbToYuvAny(RgbToYuvRow const& row, RgbToYuvForms const& forms)
    {
        return RgbForms::Standard(forms) ? RgbToYuv<F, L, true>(row, forms) : RgbToYuv<F, L, false>(row, forms);
    }

    template <RgbFormat F>
    static int RgbToYuvLayout(RgbToYuvRow const& row, RgbToYuvForms const& forms)
    {
        switch (row.layout) {
        case ChromaLayout::C420: return RgbToYuvAny<F, ChromaLayout::C420>(row, forms);
        case ChromaLayout::C422: return RgbToYuvAny<F, ChromaLayout::C422>(row, forms);
        case ChromaLayout::C444: return RgbToYuvAny<F, ChromaLayout::C444>(row, forms);
        }
        return 0;
    }

    static int RgbToYuvEntry(RgbToYuvRow const& row, RgbToYuvForms const& forms)
    {
        switch (row.format) {
        case RgbFormat::Rgb24: return RgbToYuvLayout<RgbFormat::Rgb24>(row, forms);
        case RgbFormat::Rgb565: return RgbToYuvLayout<RgbFormat::Rgb565>(row, forms);
        case RgbFormat::Rgb555: return RgbToYuvLayout<RgbFormat::Rgb555>(row, forms);
        case RgbFormat::Argb32: break;
        }
        return 0;
    }

    template <RgbFormat F, ChromaLayout L>
    static int YuvToRgbAny(YuvToRgbRow const& row, YuvToRgbForms const& forms)
    {
        return YuvForms::Standard(forms) ? YuvToRgb<F, L, true>(row, forms) : YuvToRgb<F, L, false>(row, forms);
    }

    template <RgbFormat F>
    static int YuvToRgbLayout(YuvToRgbRow const& row, YuvToRgbForms const& forms)
    {
        switch (row.layout) {
        case ChromaLayout::C420: return YuvToRgbAny<F, ChromaLayout::C420>(row, forms);
        case ChromaLayout::C422: return YuvToRgbAny<F, ChromaLayout::C422>(row, forms);
        case ChromaLayout::C444: return YuvToRgbAny<F, ChromaLayout::C444>(row, forms);
        }
        return 0;
    }

    static int YuvToRgbEntry(YuvToRgbRow const& row, YuvToRgbForms const& forms)
    {
        switch (row.format) {
        case RgbFormat::Rgb24: return YuvToRgbLayout<RgbFormat::Rgb24>(row, forms);
        case RgbFormat::Rgb565: return YuvToRgbLayout<RgbFormat::Rgb565>(row, forms);
        case RgbFormat::Rgb555: return YuvToRgbLayout<RgbFormat::Rgb555>(row, forms);
        case RgbFormat::Argb32: break;
        }
        return 0;
    }

    static int PackedToRgbEntry(PackedToRgbRow const& row, YuvToRgbForms const& forms)
    {
        return row.format == RgbFormat::Argb32 ? PackedAny<RgbFormat::Argb32>(row, forms)
                                               : PackedAny<RgbFormat::Rgb24>(row, forms);
    }

    static ColourKernels const* Table()
    {
        static ColourKernels const k{&RgbToYuvEntry, &YuvToRgbEntry, &PackedToRgbEntry, &I::SplitPairs,
                                     &I::JoinPairs};
        return &k;
    }
};

}  // namespace
}  // namespace palvet::detail

#endif
