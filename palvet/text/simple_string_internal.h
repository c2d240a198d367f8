#ifndef PALVET_TEXT_SIMPLE_STRING_INTERNAL_H
#define PALVET_TEXT_SIMPLE_STRING_INTERNAL_H

// The storage engine shared by CSimpleStringA and CSimpleStringW, written
// once over the character type. StringBody works on the three fields of a
// string object through references; SimpleStringAccess (a friend of both
// classes) hands them out, also to the tests that check capacities.

#include <palvet/text/simple_string.h>
#include <palvet/text/text_utils.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>
#include <strings.h>

namespace palvet::detail {

template <class Ch>
struct TextTraits;

template <>
struct TextTraits<char> {
    using Other = wchar_t;
    static size_t Length(char const* s) { return strlen(s); }
    static int Compare(char const* a, char const* b, size_t n, int nocase)
    {
        return nocase ? strncasecmp(a, b, n) : strncmp(a, b, n);
    }
    static char* Convert(wchar_t const* s, int n) { return AllocCopyAStringFromWString(s, n); }
    static void Release(char* s) { FreeAString(s); }
    static char const* Empty() { return ""; }
};

template <>
struct TextTraits<wchar_t> {
    using Other = char;
    static size_t Length(wchar_t const* s) { return wcslen(s); }
    static int Compare(wchar_t const* a, wchar_t const* b, size_t n, int nocase)
    {
        return nocase ? wcsncasecmp(a, b, n) : wcsncmp(a, b, n);
    }
    static wchar_t* Convert(char const* s, int n) { return AllocCopyWStringFromAString(s, n); }
    static void Release(wchar_t* s) { FreeWString(s); }
    static wchar_t const* Empty() { return L""; }
};

template <class Ch>
class StringBody {
public:
    using Traits = TextTraits<Ch>;
    using Other = typename Traits::Other;

    StringBody(Ch*& data, int& length, int& capacity) : data_(data), length_(length), capacity_(capacity) {}

    Ch const* Text() const { return data_ != nullptr ? data_ : Traits::Empty(); }

    // Zero-terminated length, limited to what a string can count.
    static int Measure(Ch const* text)
    {
        size_t n = Traits::Length(text);
        return n < static_cast<size_t>(INT_MAX) ? static_cast<int>(n) : INT_MAX - 1;
    }

    static int Increase(int current, int need)
    {
        if (need <= current)
            return current;
        int value = current != 0 ? current : 1;
        while (value < need) {
            // Doubling past the int range cannot be allocated anyway; the
            // exact need then keeps the value meaningful.
            if (value > INT_MAX / 2)
                return need;
            value <<= 1;
        }
        return value;
    }

    static int Decrease(int current, int need)
    {
        if (need < 1)
            return 0;
        int value = current;
        while (need <= value >> 1)
            value >>= 1;
        return value;
    }

    void Free()
    {
        delete[] data_;
        data_ = nullptr;
        length_ = 0;
        capacity_ = 0;
    }

    // Storage is kept until the need falls below half of it, so a string
    // that alternates around a size does not reallocate.
    bool Keeps(int need) const { return capacity_ >= need && need >= capacity_ >> 1; }

    int ReAlloc(int need)
    {
        if (Keeps(need))
            return 1;
        int capacity = capacity_ < need ? Increase(capacity_, need) : Decrease(capacity_, need);
        if (capacity == capacity_)
            return 1;
        Ch* fresh = capacity > 0 ? new (std::nothrow) Ch[capacity] : nullptr;
        if (fresh == nullptr) {
            Free();
            return 0;
        }
        if (data_ == nullptr) {
            length_ = 0;
        } else {
            if (length_ > capacity - 1)
                length_ = capacity - 1;
            memcpy(fresh, data_, sizeof(Ch) * length_);
            delete[] data_;
        }
        fresh[length_] = 0;
        data_ = fresh;
        capacity_ = capacity;
        return 1;
    }

    void Trunk(int length)
    {
        if (length < 0)
            length = 0;
        if (length_ <= length)
            return;
        if (ReAlloc(length + 1)) {
            data_[length] = 0;
            length_ = length;
        }
    }

    void Append(Ch const* text, int count)
    {
        if (text == nullptr)
            return;
        if (count < 0)
            count = Measure(text);
        if (count == 0 || count > INT_MAX - 1 - length_)
            return;
        int need = length_ + count + 1;
        if (Keeps(need)) {  // the usual case, kept short
            memmove(data_ + length_, text, sizeof(Ch) * count);
            length_ += count;
            data_[length_] = 0;
            return;
        }
        // Text from this string's own storage would be read after ReAlloc
        // released it, so it is copied first.
        Ch* copy = nullptr;
        if (Inside(text, capacity_)) {
            copy = new (std::nothrow) Ch[count];
            if (copy == nullptr)
                return;
            memcpy(copy, text, sizeof(Ch) * count);
            text = copy;
        }
        if (ReAlloc(need)) {
            memcpy(data_ + length_, text, sizeof(Ch) * count);
            length_ += count;
            data_[length_] = 0;
        }
        delete[] copy;
    }

    void AppendOther(Other const* text, int count)
    {
        if (text == nullptr)
            return;
        if (count < 0)
            count = StringBody<Other>::Measure(text);
        if (count == 0)
            return;
        Ch* converted = Traits::Convert(text, count);
        if (converted == nullptr)
            return;
        Append(converted, -1);
        Traits::Release(converted);
    }

    // The content afterwards is exactly what giving up the storage and
    // appending count characters leaves, with the capacity grown from
    // nothing; storage of that very capacity is simply reused. The text may
    // lie anywhere in the string's own storage.
    void Assign(Ch const* text, int count)
    {
        if (text != nullptr && count < 0)
            count = Measure(text);
        if (text == nullptr || count <= 0 || count > INT_MAX - 1) {
            Free();
            return;
        }
        int capacity = Increase(0, count + 1);
        if (data_ != nullptr && capacity == capacity_) {
            memmove(data_, text, sizeof(Ch) * count);
        } else {
            Ch* fresh = new (std::nothrow) Ch[capacity];
            if (fresh == nullptr) {
                Free();
                return;
            }
            memcpy(fresh, text, sizeof(Ch) * count);
            delete[] data_;
            data_ = fresh;
            capacity_ = capacity;
        }
        length_ = count;
        data_[count] = 0;
    }

    void Set(Ch const* text, int count)
    {
        if (Equal(text, count, 0))
            return;  // no reallocation for unchanged text
        Assign(text, count);
    }

    void SetOther(Other const* text, int count, bool equal)
    {
        if (equal)
            return;
        if (text != nullptr && count < 0)
            count = StringBody<Other>::Measure(text);
        Ch* converted = text != nullptr && count > 0 ? Traits::Convert(text, count) : nullptr;
        Assign(converted, -1);
        if (converted != nullptr)
            Traits::Release(converted);
    }

    int Equal(Ch const* text, int count, int nocase) const
    {
        if (count < 0)
            count = text != nullptr ? Measure(text) : 0;
        if (length_ != count)
            return 0;
        if (count == 0)
            return 1;
        if (text == nullptr)
            return 0;
        if (nocase == 0 && count <= 32) {
            // Short texts (formatted ones, mostly): the comparison inline,
            // with the same stop at a terminator as the library's.
            for (int i = 0; i < count; ++i) {
                if (data_[i] != text[i])
                    return 0;
                if (data_[i] == 0)
                    return 1;
            }
            return 1;
        }
        return Traits::Compare(data_, text, static_cast<size_t>(count), nocase) == 0;
    }

private:
    bool Inside(Ch const* text, int extent) const
    {
        uintptr_t p = reinterpret_cast<uintptr_t>(text);
        uintptr_t begin = reinterpret_cast<uintptr_t>(data_);
        return data_ != nullptr && p >= begin && p < begin + sizeof(Ch) * static_cast<size_t>(extent);
    }

    Ch*& data_;
    int& length_;
    int& capacity_;
};

struct SimpleStringAccess {
    static StringBody<char> Body(CSimpleStringA const& s)
    {
        CSimpleStringA& m = const_cast<CSimpleStringA&>(s);
        return StringBody<char>(m.m_pData, m.m_nLength, m.m_nCapacity);
    }
    static StringBody<wchar_t> Body(CSimpleStringW const& s)
    {
        CSimpleStringW& m = const_cast<CSimpleStringW&>(s);
        return StringBody<wchar_t>(m.m_pData, m.m_nLength, m.m_nCapacity);
    }
    static int Capacity(CSimpleStringA const& s) { return s.m_nCapacity; }
    static int Capacity(CSimpleStringW const& s) { return s.m_nCapacity; }
    static char* Storage(CSimpleStringA const& s) { return s.m_pData; }
    static wchar_t* Storage(CSimpleStringW const& s) { return s.m_pData; }
};

}  // namespace palvet::detail

#endif
