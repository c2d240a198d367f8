#include <palvet/containers/ptr_collection.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>
#include <strings.h>
#include <utility>

namespace {

using SortCmp = int (*)(void const*, void const*, unsigned long long, unsigned long long);

// One frame of the non-recursive sort; the frame stack is an array of these.
struct Frame {
    int lo;
    int hi;
    int split;          // what partitioning [lo, hi] returned
    int right_started;  // 0 while [lo, split] is sorted, 1 once [split+1, hi] began
};
static_assert(sizeof(Frame) == 16, "frames are four 32-bit integers");

// A comparison that is not a consistent order (say, one that never returns
// 0) can make partitioning hand back a split that does not shrink the range.
// Keeping the split inside [lo, hi - 1] guarantees progress and bounds the
// frame stack; with a proper comparison it is always there already.
inline int ClampSplit(int split, int lo, int hi)
{
    if (split >= hi)
        return hi - 1;
    if (split < lo)
        return lo;
    return split;
}

// Decodes the flags word of the string comparisons.
struct StringOrder {
    bool ascending;
    bool case_sensitive;
};

inline StringOrder DecodeOrder(unsigned long long user1)
{
    unsigned int const w = static_cast<unsigned int>(user1 & 0xFFFFFFFFu);
    return {(w & 0xFFFFu) == 1u, (w >> 16) != 0u};
}

template <typename Char, typename Cmp>
int CompareStrings(void const* a, void const* b, unsigned long long user1, Cmp compare)
{
    StringOrder const order = DecodeOrder(user1);
    auto const* sa = static_cast<Char const*>(a);
    auto const* sb = static_cast<Char const*>(b);
    if (sa == nullptr && sb != nullptr)
        return order.ascending ? -1 : 1;
    if (sa != nullptr && sb == nullptr)
        return order.ascending ? 1 : -1;
    // Two nulls compare equal instead of reaching the C library, which would
    // dereference them.
    if (sa == nullptr)
        return 0;
    int const r = compare(sa, sb, order.case_sensitive);
    return order.ascending ? r : -r;
}

}  // namespace

unsigned char* Quicksort_AllocStack(int n)
{
    if (n < 0 || static_cast<size_t>(n) + 1 > SIZE_MAX / sizeof(Frame))
        return nullptr;
    return new (std::nothrow) unsigned char[(static_cast<size_t>(n) + 1) * sizeof(Frame)];
}

void Quicksort_DestroyStack(unsigned char* stack)
{
    delete[] stack;
}

// How far ahead of each scan the elements' targets are prefetched. The
// comparison almost always reads what the element points to, and a scan's
// order is known in advance while its next step waits on the comparison.
// Prefetching never faults, whatever the pointer.
constexpr int kAhead = 16;

namespace {

// The partition pass, inlined into the sort loop: most passes are over a
// few elements, where a call's entry and exit cost as much as the pass.
inline __attribute__((always_inline)) int Partition(void** buf, int left, int right, SortCmp cmp,
                                                    unsigned long long user1, unsigned long long user2, int& swaps)
{
    int const mid = static_cast<int>((static_cast<long long>(left) + right) / 2);
    // The pivot is the pointer value, held for the whole pass even when the
    // element that carried it moves.
    void* const pivot = buf[mid];
    // Pointers rather than indexes: fewer values live across the calls. The
    // up scan's index i is kept as next = i + 1, so that no pointer goes in
    // front of the range.
    void** const first = buf + left;
    void** const last = buf + right;
    void** next = first;
    void** pj = last + 1;
    int count = 0;
    for (;;) {
        int ca;
        int cb;
        // The pj > first test never decides with a consistent comparison
        // (the pivot itself stops the first scan); it keeps an inconsistent
        // one from reading in front of the range.
        do {
            --pj;
            if (pj - first >= kAhead)
                __builtin_prefetch(pj[-kAhead]);
            ca = cmp(*pj, pivot, user1, user2);
        } while (pj >= next && pj > first && ca > 0);
        do {
            if (last - next >= kAhead)
                __builtin_prefetch(next[kAhead]);
            cb = cmp(*next, pivot, user1, user2);
            ++next;
        } while (next <= pj && cb < 0);
        if (pj < next) {
            swaps += count;
            return left + static_cast<int>(pj - first);
        }
        // Two pivot-equal elements stay where they are, so equal runs cost
        // no exchanges and an ordered input reports none.
        if (ca != 0 || cb != 0) {
            std::swap(next[-1], *pj);
            ++count;
        }
    }
}

}  // namespace

int PartitionBuffer(void** buf, int left, int right, SortCmp cmp, unsigned long long user1,
                    unsigned long long user2, int& swaps)
{
    if (buf == nullptr)
        return -1;
    return Partition(buf, left, right, cmp, user1, user2, swaps);
}

void QuicksortBuffer_Stack(void** buf, int left, int right, SortCmp cmp, unsigned long long user1,
                           unsigned long long user2, int& swaps)
{
    if (buf == nullptr)
        return;
    if (left > right)
        std::swap(left, right);
    long long const span = static_cast<long long>(right) - left;
    if (span > INT32_MAX)
        return;
    unsigned char* const raw = Quicksort_AllocStack(static_cast<int>(span));
    if (raw == nullptr)
        return;
    // The frames nest strictly (each range lies inside the one below it and
    // holds at least two elements), so the depth stays below the element count.
    Frame* const stack = reinterpret_cast<Frame*>(raw);
    int depth = 0;
    int lo = left;
    int hi = right;
    for (;;) {
        while (hi > lo) {
            int const split = ClampSplit(Partition(buf, lo, hi, cmp, user1, user2, swaps), lo, hi);
            stack[depth++] = Frame{lo, hi, split, 0};
            hi = split;
        }
        for (;;) {
            if (depth == 0) {
                Quicksort_DestroyStack(raw);
                return;
            }
            Frame& top = stack[depth - 1];
            if (top.right_started == 0) {
                top.right_started = 1;
                lo = top.split + 1;
                hi = top.hi;
                break;
            }
            --depth;
        }
    }
}

void QuickSortBufferDirectly(void** buf, int left, int right, SortCmp cmp, unsigned long long user1,
                             unsigned long long user2, int& swaps)
{
    if (buf == nullptr)
        return;
    while (left < right) {
        int const split = ClampSplit(PartitionBuffer(buf, left, right, cmp, user1, user2, swaps), left, right);
        QuickSortBufferDirectly(buf, left, split, cmp, user1, user2, swaps);
        left = split + 1;
    }
}

void QuicksortBuffer(void** buf, int left, int right, SortCmp cmp, unsigned long long user1,
                     unsigned long long user2, int* swaps)
{
    if (buf == nullptr)
        return;
    if (right < 0)
        right = 0;
    if (left < 0)
        left = 0;
    if (left > right)
        left = right;
    int count = 0;
    QuicksortBuffer_Stack(buf, left, right, cmp, user1, user2, count);
    if (swaps != nullptr)
        *swaps = count;
}

int SortCmpStringA(void const* a, void const* b, unsigned long long user1, unsigned long long)
{
    return CompareStrings<char>(a, b, user1, [](char const* x, char const* y, bool cs) {
        return cs ? strcmp(x, y) : strcasecmp(x, y);
    });
}

int SortCmpStringW(void const* a, void const* b, unsigned long long user1, unsigned long long)
{
    return CompareStrings<wchar_t>(a, b, user1, [](wchar_t const* x, wchar_t const* y, bool cs) {
        return cs ? wcscmp(x, y) : wcscasecmp(x, y);
    });
}
