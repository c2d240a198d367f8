#include <palvet/containers/ptr_collection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
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
    int const x = static_cast<Item const*>(a)->key;
    int const y = static_cast<Item const*>(b)->key;
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
    std::vector<int> Ids() const
    {
        std::vector<int> out;
        for (void* p : ptrs)
            out.push_back(static_cast<Item*>(p)->id);
        return out;
    }
    std::vector<int> Keys() const
    {
        std::vector<int> out;
        for (void* p : ptrs)
            out.push_back(static_cast<Item*>(p)->key);
        return out;
    }
};

}  // namespace

TEST(Quicksort, SwapCountsAndOrderOfEqualKeysAreExact)
{
    // The final order of equal keys and the count pin down the pivot choice,
    // both scans and the rule that leaves pivot-equal pairs alone.
    Sortable s({5, 3, 5, 1, 3, 5, 2, 1, 4, 3, 5, 2});
    int swaps = -1;
    QuicksortBuffer(s.ptrs.data(), 0, 11, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 7);
    EXPECT_EQ(s.Ids(), (std::vector<int>{3, 7, 6, 11, 4, 9, 1, 8, 2, 5, 10, 0}));

    Sortable small({3, 1, 2});
    calls = 0;
    QuicksortBuffer(small.ptrs.data(), 0, 2, ByKey, 0, 0, &swaps);
    EXPECT_EQ(small.Keys(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(swaps, 2);
    EXPECT_EQ(calls, 9);

    Sortable reversed({10, 9, 8, 7, 6, 5, 4, 3, 2, 1});
    QuicksortBuffer(reversed.ptrs.data(), 0, 9, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 5);
}

TEST(Quicksort, OrderedAndEqualInputsReportNoSwaps)
{
    Sortable sorted({1, 2, 2, 3, 4, 4, 4, 9});
    Sortable equal(std::vector<int>(40, 7));
    int swaps = -1;
    QuicksortBuffer(sorted.ptrs.data(), 0, 7, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 0);
    QuicksortBuffer(equal.ptrs.data(), 0, 39, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 0);
    EXPECT_EQ(equal.Ids()[0], 0);

    calls = 0;
    QuicksortBuffer(sorted.ptrs.data(), 3, 3, ByKey, 0, 0, &swaps);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(swaps, 0);
}

TEST(Quicksort, BoundsHandling)
{
    std::vector<int> const keys{9, 8, 7, 6, 5, 4, 3};
    Sortable a(keys);
    int swaps = -1;
    QuicksortBuffer(a.ptrs.data(), 5, 2, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 0);
    EXPECT_EQ(a.Keys(), keys);

    // The engine itself takes the bounds either way round, and accumulates.
    int total = 100;
    QuicksortBuffer_Stack(a.ptrs.data(), 5, 2, ByKey, 0, 0, total);
    EXPECT_GT(total, 100);
    EXPECT_EQ(a.Keys(), (std::vector<int>{9, 8, 4, 5, 6, 7, 3}));

    Sortable b(keys);
    QuicksortBuffer(b.ptrs.data(), -4, -1, ByKey, 0, 0, &swaps);  // both raised to 0
    EXPECT_EQ(b.Keys(), keys);
    QuicksortBuffer(b.ptrs.data(), -4, 3, ByKey, 0, 0, &swaps);
    EXPECT_EQ(b.Keys(), (std::vector<int>{6, 7, 8, 9, 5, 4, 3}));

    swaps = 55;
    QuicksortBuffer(nullptr, 0, 3, ByKey, 0, 0, &swaps);
    EXPECT_EQ(swaps, 55);
    EXPECT_EQ(PartitionBuffer(nullptr, 0, 3, ByKey, 0, 0, swaps), -1);
    EXPECT_EQ(Quicksort_AllocStack(-1), nullptr);
    Quicksort_DestroyStack(nullptr);
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
    EXPECT_EQ(stack.Keys(), keys);
    EXPECT_EQ(stack.Ids(), direct.Ids());
    EXPECT_EQ(stack_swaps, direct_swaps);
    EXPECT_GT(stack_swaps, 0);
}

TEST(Quicksort, InconsistentComparisonStaysInsideTheRange)
{
    // Sorting the middle of a larger buffer with a comparison that is not an
    // order: the order that comes out is undefined, but the sort ends, keeps
    // every element and reads nothing outside the range (the sanitizer
    // build checks the last part).
    std::mt19937 rng(3);
    std::vector<int> keys(300);
    for (int& k : keys)
        k = static_cast<int>(rng() % 20);
    Sortable s(keys);
    std::vector<void*> window(s.ptrs.begin() + 100, s.ptrs.begin() + 200);
    for (int round = 0; round < 3; ++round) {
        QuicksortBuffer(window.data(), 0, 99, NeverEqual, 0, 0, nullptr);
        std::vector<void*> a(window), b(s.ptrs.begin() + 100, s.ptrs.begin() + 200);
        std::sort(a.begin(), a.end());
        std::sort(b.begin(), b.end());
        ASSERT_EQ(a, b);
    }
}

TEST(Quicksort, StringComparisonFlags)
{
    char const* abc = "abc";
    char const* ABC = "ABC";
    char const* abd = "abd";
    EXPECT_EQ(SortCmpStringA(abc, ABC, 1, 0), 0);                  // ascending, any case
    EXPECT_GT(SortCmpStringA(abc, ABC, 65537, 0), 0);              // ascending, case-sensitive
    EXPECT_GT(SortCmpStringA(abc, abd, 2, 0), 0);                  // descending: abc after abd
    EXPECT_LT(SortCmpStringA(abc, abd, 0xFFFFFFFF00000001ULL, 99), 0);  // high half ignored
    EXPECT_EQ(SortCmpStringA(nullptr, abc, 65537, 0), -1);
    EXPECT_EQ(SortCmpStringA(nullptr, abc, 0, 0), 1);
    EXPECT_EQ(SortCmpStringA(abc, nullptr, 1, 0), 1);
    EXPECT_EQ(SortCmpStringA(nullptr, nullptr, 1, 0), 0);

    EXPECT_EQ(SortCmpStringW(L"abc", L"ABC", 1, 0), 0);
    EXPECT_LT(SortCmpStringW(L"ABC", L"abc", 0x10001, 0), 0);
    EXPECT_GT(SortCmpStringW(L"abc", L"abd", 3, 0), 0);
    EXPECT_EQ(SortCmpStringW(L"x", nullptr, 2, 0), -1);

    char const* names[] = {"pear", "Apple", "fig", "apple"};
    void* ptrs[4];
    for (int i = 0; i < 4; ++i)
        ptrs[i] = const_cast<char*>(names[i]);
    QuicksortBuffer(ptrs, 0, 3, SortCmpStringA, 0x10001, 0, nullptr);
    EXPECT_STREQ(static_cast<char*>(ptrs[0]), "Apple");
    EXPECT_STREQ(static_cast<char*>(ptrs[3]), "pear");
}
