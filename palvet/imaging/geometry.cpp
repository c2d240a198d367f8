#include <palvet/imaging/geometry.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

// Float-to-int truncation without undefined behaviour: values beyond the int
// range saturate and NaN gives 0.
int TruncToInt(double v)
{
    if (std::isnan(v))
        return 0;
    if (v >= 2147483647.0)
        return INT_MAX;
    if (v <= -2147483648.0)
        return INT_MIN;
    return static_cast<int>(v);
}

// strtol with the 32-bit target's range, so a 64-bit host saturates alike.
int ParseInt(char const* token)
{
    long v = std::strtol(token, nullptr, 10);
    if (v > INT_MAX)
        return INT_MAX;
    if (v < INT_MIN)
        return INT_MIN;
    return static_cast<int>(v);
}

// a + b as 32-bit two's-complement hardware adds: computed unsigned, so a
// sum beyond the int range wraps instead of being undefined.
int WrapAdd(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

int WrapSub(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
}

unsigned long long Magnitude(long long v)
{
    return v < 0 ? 0ull - static_cast<unsigned long long>(v) : static_cast<unsigned long long>(v);
}

}  // namespace

tagRECT* SetRectXY(tagRECT* rc, int x, int y, int w, int h)
{
    rc->left = x;
    rc->top = y;
    rc->right = WrapAdd(x, w);
    rc->bottom = WrapAdd(y, h);
    return rc;
}

void GetRelativeRect(tagRECT* out, tagRECT const* rc)
{
    int const w = WrapSub(rc->right, rc->left);
    int const h = WrapSub(rc->bottom, rc->top);
    out->left = 0;
    out->top = 0;
    out->right = w;
    out->bottom = h;
}

tagRECT* ScaleRect(tagRECT* rc, float sx, float sy)
{
    rc->left = TruncToInt(static_cast<float>(rc->left) * sx);
    rc->right = TruncToInt(static_cast<float>(rc->right) * sx);
    rc->top = TruncToInt(static_cast<float>(rc->top) * sy);
    rc->bottom = TruncToInt(static_cast<float>(rc->bottom) * sy);
    return rc;
}

void InflatRect(tagRECT* rc, int dx, int dy)
{
    // Translates rather than grows: callers depend on it.
    rc->left = WrapAdd(rc->left, dx);
    rc->right = WrapAdd(rc->right, dx);
    rc->top = WrapAdd(rc->top, dy);
    rc->bottom = WrapAdd(rc->bottom, dy);
}

void UnionRect(tagRECT* out, tagRECT const* a, tagRECT const* b)
{
    if (IsRectEmpty(a)) {
        *out = *b;
        return;
    }
    if (IsRectEmpty(b)) {
        *out = *a;
        return;
    }
    tagRECT const r = {std::min(a->left, b->left), std::min(a->top, b->top),
                       std::max(a->right, b->right), std::max(a->bottom, b->bottom)};
    *out = r;
}

void BoundRect(tagRECT* out, tagRECT const* a, tagRECT const* b)
{
    tagRECT r = {std::max(a->left, b->left), std::max(a->top, b->top),
                 std::min(a->right, b->right), std::min(a->bottom, b->bottom)};
    if (r.right < r.left)
        r.left = r.right;
    if (r.bottom < r.top)
        r.top = r.bottom;
    *out = r;
}

int IsRectEmpty(tagRECT const* rc)
{
    return (rc->left >= rc->right || rc->top >= rc->bottom) ? 1 : 0;
}

int IsRectEqual(tagRECT const* a, tagRECT const* b)
{
    return (a->left == b->left && a->top == b->top && a->right == b->right &&
            a->bottom == b->bottom) ? 1 : 0;
}

int PtInRect(tagRECT const* rc, tagPOINT pt)
{
    if (IsRectEmpty(rc))
        return 0;
    // Right and bottom count as inside, unlike the emptiness test.
    bool const inX = std::min(rc->left, rc->right) <= pt.x && pt.x <= std::max(rc->left, rc->right);
    bool const inY = std::min(rc->top, rc->bottom) <= pt.y && pt.y <= std::max(rc->top, rc->bottom);
    return (inX && inY) ? 1 : 0;
}

int IsPointInPolySides(int x, int y, tagPOINT* pts, int n)
{
    if (n < 3 || pts == nullptr)
        return -1;
    bool inside = false;
    for (int i = 0, j = n - 1; i < n; j = i++) {
        long long const xi = pts[i].x, yi = pts[i].y;
        long long const xj = pts[j].x, yj = pts[j].y;
        if (yi != yj) {
            if ((yi > y && yj <= y) || (yi <= y && yj > y)) {
                // y lies within the edge's span, so |y - yi| <= |yj - yi| and
                // the quotient is no larger than |xj - xi| < 2^32. The
                // magnitudes' product is below 2^64: exact in unsigned 64-bit,
                // where a signed product could overflow.
                unsigned long long const q =
                    Magnitude(y - yi) * Magnitude(xj - xi) / Magnitude(yj - yi);
                bool const negative = (((y - yi) < 0) != ((xj - xi) < 0)) != ((yj - yi) < 0);
                long long const xc = negative ? xi - static_cast<long long>(q) : xi + static_cast<long long>(q);
                if (x == xc)
                    return 0;
                if (x < xc)
                    inside = !inside;
            }
        } else if (y == yi && std::min(xi, xj) <= x && x <= std::max(xi, xj)) {
            return 0;
        }
    }
    return inside ? 1 : -1;
}

int ParserRectFromString(char const* text, tagRECT* rc)
{
    if (text == nullptr || rc == nullptr)
        return 0;
    char buf[32];
    std::strncpy(buf, text, sizeof(buf) - 1);
    buf[sizeof(buf) - 1] = '\0';

    // strtok_r: the same tokens as strtok (empty fields vanish) without its
    // process-wide state.
    char* tokens[4];
    int count = 0;
    char* save = nullptr;
    for (char* t = strtok_r(buf, ",", &save); t != nullptr && count < 4; t = strtok_r(nullptr, ",", &save))
        tokens[count++] = t;
    if (count < 4) {
        SetRectXY(rc, 0, 0, 0, 0);
        return 0;
    }
    int const saved = errno;
    int const x = ParseInt(tokens[0]);
    int const y = ParseInt(tokens[1]);
    int const w = ParseInt(tokens[2]);
    int const h = ParseInt(tokens[3]);
    errno = saved;
    SetRectXY(rc, x, y, w, h);
    return 1;
}

void GetRectByMode(tagRECT& dst, tagRECT& src, int scale, int mode)
{
    int const dw = dst.right - dst.left;
    int const dh = dst.bottom - dst.top;
    int const sw = src.right - src.left;
    int const sh = src.bottom - src.top;

    if (scale != 0 && (sw != dw || sh != dh)) {
        if ((mode & (1 | 16)) == 0)
            return;  // the caller stretches over the whole destination
        double const fx = static_cast<double>(sw) / dw;
        double const fy = static_cast<double>(sh) / dh;
        double const f = fx > fy ? fx : fy;
        int const nw = TruncToInt(sw / f);
        int const nh = TruncToInt(sh / f);
        // Relative to the destination's own origin: existing callers add
        // the offset themselves.
        SetRectXY(&dst, (dw - nw) / 2, (dh - nh) / 2, nw, nh);
        return;
    }

    if (mode & 1) {
        if (sw < dw)
            dst.left += (dw - sw) / 2;
        else
            src.left += (sw - dw) / 2;
    } else if (mode & 4) {
        // Assigned, not added (unlike the bottom alignment); kept as callers
        // expect.
        if (sw < dw)
            dst.left = dw - sw;
        else
            src.left += sw - dw;
    }

    if (mode & 16) {
        if (sh < dh)
            dst.top += (dh - sh) / 2;
        else
            src.top += (sh - dh) / 2;
    } else if (mode & 64) {
        if (sh < dh)
            dst.top += dh - sh;
        else
            src.top += sh - dh;
    }
}

void GetTextRectByDirect(tagRECT area, int w, int h, int align, tagRECT* out)
{
    tagRECT r = area;
    int const aw = area.right - area.left;
    int const ah = area.bottom - area.top;
    if (align & 1) {
        r.left = area.left + (aw - w) / 2;
        r.right = r.left + w;
    }
    if (align & 2) {
        r.left = area.left;
        r.right = area.left + w;
    }
    if (align & 4) {
        r.right = area.right;
        r.left = area.right - w;
    }
    if (align & 8) {
        r.top = area.top + (ah - h) / 2;
        r.bottom = r.top + h;
    }
    if (align & 16) {
        r.top = area.top;
        r.bottom = area.top + h;
    }
    if (align & 32) {
        r.bottom = area.bottom;
        r.top = area.bottom - h;
    }
    BoundRect(&r, &r, &area);
    if (out != nullptr)
        *out = r;
}

// The power functions count in 64 bits and saturate at INT_MAX, and treat a
// base below 2 like 1, so that no argument can make them loop forever.

int IncreaseToPowerOf(int n, int base)
{
    if (base <= 1)
        return n;
    if (n < 2)
        return 1;
    long long p = 1;
    while (n > p)
        p *= base;
    return p > INT_MAX ? INT_MAX : static_cast<int>(p);
}

int DecreaseToPowerOf(int n, int base)
{
    if (base <= 1)
        return n;
    if (n < 2)
        return 1;
    long long p = 1;
    while (n > p * base)
        p *= base;
    return static_cast<int>(p);
}

int GetNearestPowerOf(int n, int base)
{
    if (base <= 1)
        return n;
    long long lo = 1;
    long long hi = 1;
    if (n > 1) {
        while (base * lo < n)
            lo *= base;
        hi = base * lo;
    }
    long long const r = (n - lo > hi - n) ? hi : lo;
    return r > INT_MAX ? INT_MAX : static_cast<int>(r);
}

double Distance(double x1, double y1, double x2, double y2)
{
    return std::sqrt((x1 - x2) * (x1 - x2) + (y1 - y2) * (y1 - y2));
}
