#include <palvet/containers/ptr_collection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace {

struct Item {
    int key;
    int id;
};

int calls = 0;

int ByKey(void const* a, void const* b, unsigned long long, unsigned long long)
{
    ++calls;
    int const x = static_cast<Item const*>(a)->key, y = static_cast<Item const*>(b)->key;
    return (x > y) - (x < y);
}

// Not a consistent order: never reports equality.
int NeverEqual(void const* a, void const* b, unsigned long long, unsigned long long)
{
    return static_cast<Item const*>(a)->key < static_cast<Item const*>(b)->key ? -1 : 1;
}

struct Sortable {
    std::vector<Item> items;
    std::vector<void*> ptrs;

    explicit Sortable(std::vector<int> const& keys)
    {
        for (size_t i = 0; i < keys.size(); ++i)
            items.push_back({keys[i], static_cast<int>(i)});
        for (auto& it : items)
            ptrs.push_back(&it);
    }
    std::vector<int> Field(int Item::*field) const
    {
        std::vector<int> out;
        for (void* p : ptrs)
            out.push_back(static_cast<Item*>(p)->*field);
        return out;
    }
};

}  // namespace

TEST(Quicksort, SwapCountsAndOrderOfEqualKeysAreExact)
{
    // The order of equal keys, the count and the number of comparisons pin
    // down the pivot, both scans, the frame walk and the rule that leaves
    // pivot-equal pairs alone.
    Sortable s({5, 3, 5, 1, 3, 5, 2, 1, 4, 3, 5, 2});
    int swaps = -1;
    QuicksortBuffer(s.ptrs.data(), 0, 11, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 7);
    EXPECT_EQ(s.Field(&Item::id), (std::vector<int>{3, 7, 6, 11, 4, 9, 1, 8, 2, 5, 10, 0}));

    Sortable small({3, 1, 2});
    calls = 0;
    QuicksortBuffer(small.ptrs.data(), 0, 2, ByKey, 0, 0, &swaps);
    EXPECT_EQ(small.Field(&Item::key), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(swaps, 2);
    EXPECT_EQ(calls, 9);

    Sortable reversed({10, 9, 8, 7, 6, 5, 4, 3, 2, 1});
    QuicksortBuffer(reversed.ptrs.data(), 0, 9, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 5);

    // Ordered or all-equal input: no exchanges; one element: no comparison.
    QuicksortBuffer(reversed.ptrs.data(), 0, 9, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 0);
    Sortable equal(std::vector<int>(40, 7));
    QuicksortBuffer(equal.ptrs.data(), 0, 39, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 0);
    calls = 0;
    QuicksortBuffer(equal.ptrs.data(), 3, 3, ByKey, 0, 0, &swaps);
    EXPECT_EQ(calls, 0);
}

TEST(Quicksort, BoundsHandling)
{
    std::vector<int> const keys{9, 8, 7, 6, 5, 4, 3};
    Sortable a(keys);
    int swaps = -1;
    QuicksortBuffer(a.ptrs.data(), 5, 2, ByKey, 0, 0, &swaps);  // reversed: nothing
    EXPECT_EQ(swaps, 0);
    EXPECT_EQ(a.Field(&Item::key), keys);
    int total = 100;  // the engine takes either order and accumulates
    QuicksortBuffer_Stack(a.ptrs.data(), 5, 2, ByKey, 0, 0, total);
    EXPECT_GT(total, 100);
    EXPECT_EQ(a.Field(&Item::key), (std::vector<int>{9, 8, 4, 5, 6, 7, 3}));

    Sortable b(keys);
    QuicksortBuffer(b.ptrs.data(), -4, 3, ByKey, 0, 0, &swaps);
    EXPECT_EQ(b.Field(&Item::key), (std::vector<int>{6, 7, 8, 9, 5, 4, 3}));

    swaps = 55;
    QuicksortBuffer(nullptr, 0, 3, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 55);
    EXPECT_EQ(PartitionBuffer(nullptr, 0, 3, ByKey, 0, 0, swaps), -1);
}

TEST(Quicksort, StackAndRecursiveSortsAgreeWithStdSort)
{
    std::mt19937 rng(7);
    std::vector<int> keys(5000);
    for (int& k : keys)
        k = static_cast<int>(rng() % 600);
    Sortable stack(keys), direct(keys);
    int stack_swaps = 0, direct_swaps = 0;
    QuicksortBuffer_Stack(stack.ptrs.data(), 0, 4999, ByKey, 0, 0, stack_swaps);
    QuickSortBufferDirectly(direct.ptrs.data(), 0, 4999, ByKey, 0, 0, direct_swaps);
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(stack.Field(&Item::key), keys);
    EXPECT_EQ(stack.Field(&Item::id), direct.Field(&Item::id));
    EXPECT_EQ(stack_swaps, direct_swaps);
}

namespace {

// The partition and the frame walk written plainly from their definition,
// for the comparison log below.
std::vector<std::pair<int, int>> journal;

int Logged(void const* a, void const* b, unsigned long long, unsigned long long)
{
    journal.emplace_back(static_cast<Item const*>(a)->id, static_cast<Item const*>(b)->id);
    int const x = static_cast<Item const*>(a)->key, y = static_cast<Item const*>(b)->key;
    return (x > y) - (x < y);
}

int PlainPartition(std::vector<void*>& buf, int left, int right, int& swaps)
{
    void* const pivot = buf[static_cast<size_t>((left + right) / 2)];
    int i = left - 1, j = right + 1;
    for (;;) {
        int ca, cb;
        do {
            --j;
            ca = Logged(buf[static_cast<size_t>(j)], pivot, 0, 0);
        } while (j > i && ca > 0);
        do {
            ++i;
            cb = Logged(buf[static_cast<size_t>(i)], pivot, 0, 0);
        } while (i < j && cb < 0);
        if (j <= i)
            return j;
        if (ca != 0 || cb != 0) {
            std::swap(buf[static_cast<size_t>(i)], buf[static_cast<size_t>(j)]);
            ++swaps;
        }
    }
}

void PlainSort(std::vector<void*>& buf, int lo, int hi, int& swaps)
{
    while (lo < hi) {
        int const split = PlainPartition(buf, lo, hi, swaps);
        PlainSort(buf, lo, split, swaps);
        lo = split + 1;
    }
}

}  // namespace

TEST(Quicksort, EveryComparisonAndSwapAsDefined)
{
    std::mt19937 rng(11);
    for (int round = 0; round < 400; ++round) {
        int const n = static_cast<int>(rng() % 120) + 1;
        std::vector<int> keys(static_cast<size_t>(n));
        int const range = round % 3 == 0 ? 4 : 1000;  // many equal keys, or few
        for (int& k : keys)
            k = static_cast<int>(rng() % static_cast<unsigned>(range));
        if (round % 7 == 0)
            std::sort(keys.begin(), keys.end());
        int const lo = static_cast<int>(rng() % static_cast<unsigned>(n));
        int const hi = lo + static_cast<int>(rng() % static_cast<unsigned>(n - lo));
        Sortable want(keys), got(keys);
        int want_swaps = 0, got_swaps = -1;
        journal.clear();
        PlainSort(want.ptrs, lo, hi, want_swaps);
        auto const want_log = journal;
        journal.clear();
        QuicksortBuffer(got.ptrs.data(), lo, hi, Logged, 0, 0, &got_swaps);
        ASSERT_EQ(journal, want_log) << "round " << round;
        ASSERT_EQ(got_swaps, want_swaps);
        ASSERT_EQ(got.Field(&Item::id), want.Field(&Item::id));
    }
}

TEST(Quicksort, InconsistentComparisonStaysInsideTheRange)
{
    // Sorting the middle of a buffer with a comparison that is no order: the
    // result order is undefined, but the sort ends, keeps every element and
    // reads nothing outside the range (checked by the sanitizer build).
    std::mt19937 rng(3);
    std::vector<int> keys(300);
    for (int& k : keys)
        k = static_cast<int>(rng() % 20);
    Sortable s(keys);
    std::vector<void*> window(s.ptrs.begin() + 100, s.ptrs.begin() + 200);
    QuicksortBuffer(window.data(), 0, 99, NeverEqual, 0, 0, nullptr);
    std::vector<void*> before(s.ptrs.begin() + 100, s.ptrs.begin() + 200);
    std::sort(window.begin(), window.end());
    std::sort(before.begin(), before.end());
    EXPECT_EQ(window, before);
}

TEST(Quicksort, StringComparisonFlags)
{
    EXPECT_EQ(SortCmpStringA("abc", "ABC", 1, 0), 0);                      // ascending, any case
    EXPECT_GT(SortCmpStringA("abc", "ABC", 65537, 0), 0);                  // case-sensitive
    EXPECT_GT(SortCmpStringA("abc", "abd", 2, 0), 0);                      // descending
    EXPECT_LT(SortCmpStringA("abc", "abd", 0xFFFFFFFF00000001ULL, 9), 0);  // high half ignored
    EXPECT_EQ(SortCmpStringA(nullptr, "abc", 65537, 0), -1);
    EXPECT_EQ(SortCmpStringA(nullptr, "abc", 0, 0), 1);
    EXPECT_EQ(SortCmpStringA(nullptr, nullptr, 1, 0), 0);
    EXPECT_EQ(SortCmpStringW(L"abc", L"ABC", 1, 0), 0);
    EXPECT_LT(SortCmpStringW(L"ABC", L"abc", 0x10001, 0), 0);
    EXPECT_EQ(SortCmpStringW(L"x", nullptr, 2, 0), -1);
}
