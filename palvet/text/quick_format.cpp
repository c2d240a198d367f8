#include "quick_format_internal.h"

#include <cstdint>
#include <cstring>
#include <sys/types.h>
#include <type_traits>

namespace palvet::detail {

namespace {

// The output so far; Fits says whether n more characters leave room for
// the terminator.
struct Out {
    char* p;
    size_t left;  // room, terminator included

    bool Fits(size_t n) const { return n < left; }
    // Pieces are a few characters long: plain loops beat calls into the C
    // library, which cost more than the copy.
    void Put(char const* s, size_t n)
    {
        if (n > 32) {
            memcpy(p, s, n);
        } else {
            for (size_t i = 0; i < n; ++i)
                p[i] = s[i];
        }
        p += n;
        left -= n;
    }
    void Fill(char c, size_t n)
    {
        if (n > 32) {
            memset(p, c, n);
        } else {
            for (size_t i = 0; i < n; ++i)
                p[i] = c;
        }
        p += n;
        left -= n;
    }
};

struct Directive {
    bool minus = false, plus = false, space = false, alt = false, zero = false;
    int width = 0;
    int precision = -1;  // none
};

// A width or precision that could never fit is as good as unsupported.
constexpr int kMaxField = 1 << 20;

// Reads digits into v; false on a field too large.
bool ReadNumber(char const*& f, int& v)
{
    v = 0;
    while (*f >= '0' && *f <= '9') {
        v = v * 10 + (*f++ - '0');
        if (v > kMaxField)
            return false;
    }
    return true;
}

// Digits of v written backwards in front of end; constant bases let the
// compiler divide by multiplying, in the narrowest type that holds v.
template <unsigned kBase>
char* Digits(uintmax_t v, char* end, char const* digit_set)
{
    while (v > UINT32_MAX) {
        *--end = digit_set[v % kBase];
        v /= kBase;
    }
    auto w = static_cast<std::uint32_t>(v);
    if constexpr (kBase == 10) {
        // Two digits per division halve the chain of dependent divisions.
        static constexpr char kPairs[] =
            "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
            "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
            "8081828384858687888990919293949596979899";
        while (w >= 100) {
            std::uint32_t const pair = w % 100;
            w /= 100;
            end -= 2;
            end[0] = kPairs[2 * pair];
            end[1] = kPairs[2 * pair + 1];
        }
        if (w >= 10) {
            end -= 2;
            end[0] = kPairs[2 * w];
            end[1] = kPairs[2 * w + 1];
            return end;
        }
        *--end = static_cast<char>('0' + w);
        return end;
    }
    do {
        *--end = digit_set[w % kBase];
        w /= kBase;
    } while (w != 0);
    return end;
}

bool PutInteger(Out& out, Directive const& s, uintmax_t magnitude, bool negative, bool is_signed, char conv)
{
    unsigned const base = conv == 'o' ? 8u : (conv == 'x' || conv == 'X' ? 16u : 10u);
    char const* const digit_set = conv == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
    char digits[3 * sizeof(uintmax_t)];
    char* const end = digits + sizeof digits;
    char* d = end;
    if (!(magnitude == 0 && s.precision == 0)) {
        if (base == 10)
            d = Digits<10>(magnitude, d, digit_set);
        else if (base == 16)
            d = Digits<16>(magnitude, d, digit_set);
        else
            d = Digits<8>(magnitude, d, digit_set);
    }
    size_t const ndigits = static_cast<size_t>(end - d);

    char prefix[2];
    size_t nprefix = 0;
    if (is_signed) {
        if (negative)
            prefix[nprefix++] = '-';
        else if (s.plus)
            prefix[nprefix++] = '+';
        else if (s.space)
            prefix[nprefix++] = ' ';
    } else if (s.alt && base == 16 && ndigits != 0 && !(ndigits == 1 && *d == '0')) {
        prefix[nprefix++] = '0';
        prefix[nprefix++] = conv;
    }

    size_t zeros = s.precision > 0 && static_cast<size_t>(s.precision) > ndigits
                       ? static_cast<size_t>(s.precision) - ndigits
                       : 0;
    // The alternate octal form starts with a 0, added only when the digits
    // do not already.
    if (s.alt && base == 8 && zeros == 0 && (ndigits == 0 || *d != '0'))
        zeros = 1;
    size_t const body = nprefix + zeros + ndigits;
    size_t const width = static_cast<size_t>(s.width);
    if (s.zero && !s.minus && s.precision < 0 && width > body)
        zeros += width - body;
    size_t const total = nprefix + zeros + ndigits;
    size_t const pad = width > total ? width - total : 0;
    if (!out.Fits(total + pad))
        return false;
    if (!s.minus)
        out.Fill(' ', pad);
    out.Put(prefix, nprefix);
    out.Fill('0', zeros);
    out.Put(d, ndigits);
    if (s.minus)
        out.Fill(' ', pad);
    return true;
}

bool PutText(Out& out, Directive const& s, char const* text, size_t n)
{
    size_t const width = static_cast<size_t>(s.width);
    size_t const pad = width > n ? width - n : 0;
    if (!out.Fits(n + pad))
        return false;
    if (!s.minus)
        out.Fill(' ', pad);
    out.Put(text, n);
    if (s.minus)
        out.Fill(' ', pad);
    return true;
}

}  // namespace

int QuickFormat(char* buffer, size_t size, char const* format, va_list args)
{
    if (size == 0 || size > static_cast<size_t>(INT32_MAX))
        return -1;
    Out out{buffer, size};
    char const* f = format;
    for (;;) {
        char const* const literal = f;
        while (*f != '\0' && *f != '%')
            ++f;
        size_t const n = static_cast<size_t>(f - literal);
        if (n != 0) {
            if (!out.Fits(n))
                return -1;
            out.Put(literal, n);
        }
        if (*f == '\0')
            break;
        ++f;  // '%'
        if (*f == '%') {
            if (!out.Fits(1))
                return -1;
            out.Put(f, 1);
            ++f;
            continue;
        }

        Directive s;
        for (;; ++f) {
            if (*f == '-')
                s.minus = true;
            else if (*f == '+')
                s.plus = true;
            else if (*f == ' ')
                s.space = true;
            else if (*f == '#')
                s.alt = true;
            else if (*f == '0')
                s.zero = true;
            else
                break;  // grouping (') and the rest are left to the C library
        }
        if (*f == '*') {
            ++f;
            int const w = va_arg(args, int);
            if (w < 0) {
                if (w < -kMaxField)
                    return -1;
                s.minus = true;
                s.width = -w;
            } else {
                if (w > kMaxField)
                    return -1;
                s.width = w;
            }
        } else {
            char const* const start = f;
            if (!ReadNumber(f, s.width))
                return -1;
            if (*f == '$' && f != start)
                return -1;  // positional arguments
        }
        if (*f == '.') {
            ++f;
            if (*f == '*') {
                ++f;
                int const p = va_arg(args, int);
                if (p > kMaxField)
                    return -1;
                s.precision = p < 0 ? -1 : p;
            } else if (!ReadNumber(f, s.precision)) {
                return -1;
            }
        }

        enum class Len { None, Hh, H, L, Ll, J, Z, T } len = Len::None;
        if (f[0] == 'h' && f[1] == 'h') {
            len = Len::Hh;
            f += 2;
        } else if (f[0] == 'l' && f[1] == 'l') {
            len = Len::Ll;
            f += 2;
        } else if (*f == 'h' || *f == 'l' || *f == 'j' || *f == 'z' || *f == 't') {
            len = *f == 'h' ? Len::H : *f == 'l' ? Len::L : *f == 'j' ? Len::J : *f == 'z' ? Len::Z : Len::T;
            ++f;
        }

        char const conv = *f++;
        switch (conv) {
        case 'd':
        case 'i': {
            if (s.alt)
                return -1;  // undefined by the standard; the C library decides
            intmax_t v;
            switch (len) {
            case Len::Hh: v = static_cast<signed char>(va_arg(args, int)); break;
            case Len::H: v = static_cast<short>(va_arg(args, int)); break;
            case Len::L: v = va_arg(args, long); break;
            case Len::Ll: v = va_arg(args, long long); break;
            case Len::J: v = va_arg(args, intmax_t); break;
            case Len::Z: v = va_arg(args, ssize_t); break;
            case Len::T: v = va_arg(args, ptrdiff_t); break;
            default: v = va_arg(args, int); break;
            }
            uintmax_t const magnitude = v < 0 ? 0 - static_cast<uintmax_t>(v) : static_cast<uintmax_t>(v);
            if (!PutInteger(out, s, magnitude, v < 0, true, 'd'))
                return -1;
            break;
        }
        case 'u':
        case 'o':
        case 'x':
        case 'X': {
            if (s.plus || s.space || (s.alt && conv == 'u'))
                return -1;  // as for d
            uintmax_t v;
            switch (len) {
            case Len::Hh: v = static_cast<unsigned char>(va_arg(args, unsigned)); break;
            case Len::H: v = static_cast<unsigned short>(va_arg(args, unsigned)); break;
            case Len::L: v = va_arg(args, unsigned long); break;
            case Len::Ll: v = va_arg(args, unsigned long long); break;
            case Len::J: v = va_arg(args, uintmax_t); break;
            case Len::Z: v = va_arg(args, size_t); break;
            case Len::T: v = static_cast<std::make_unsigned_t<ptrdiff_t>>(va_arg(args, ptrdiff_t)); break;
            default: v = va_arg(args, unsigned); break;
            }
            if (!PutInteger(out, s, v, false, false, conv))
                return -1;
            break;
        }
        case 'c': {
            // Flags other than '-' and a length are for the C library.
            if (len != Len::None || s.plus || s.space || s.alt || s.zero)
                return -1;
            char const c = static_cast<char>(static_cast<unsigned char>(va_arg(args, int)));
            if (!PutText(out, s, &c, 1))
                return -1;
            break;
        }
        case 's': {
            if (len != Len::None || s.plus || s.space || s.alt || s.zero)
                return -1;
            char const* const text = va_arg(args, char const*);
            if (text == nullptr)
                return -1;  // its spelling is the C library's
            size_t const n = s.precision < 0 ? strlen(text) : strnlen(text, static_cast<size_t>(s.precision));
            if (!PutText(out, s, text, n))
                return -1;
            break;
        }
        default:
            return -1;
        }
    }
    *out.p = '\0';
    return static_cast<int>(size - out.left);
}

}  // namespace palvet::detail
