#include <palvet/containers/ptr_collection.h>

#include "collection_test_util.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>
#include <vector>

using palvet_test::Contents;
using palvet_test::Fill;
using palvet_test::P;
using palvet_test::V;
using Ints = std::vector<int>;

namespace {

int Equals(void const* element, void const* key)
{
    return element == key;
}

int ByValue(void const* a, void const* b, unsigned long long, unsigned long long)
{
    return (V(a) > V(b)) - (V(a) < V(b));
}

std::string DumpOf(CPtrCtrl& c, bool ascending)
{
    palvet_test::StdoutCapture capture;
    c.Dump(ascending);
    return capture.Take();
}

// Behaviour both kinds share, exercised through the common interface; where
// the kinds deliberately differ, the expectation names both results.
template <typename T>
class Collection : public ::testing::Test {
protected:
    static constexpr bool kList = std::is_same<T, CPtrListCtrl>::value;
    T concrete;
    CPtrCtrl& c = concrete;
};

using Kinds = ::testing::Types<CPtrArrayCtrl, CPtrListCtrl>;
TYPED_TEST_SUITE(Collection, Kinds);

}  // namespace

TYPED_TEST(Collection, PositionalEditing)
{
    CPtrCtrl& c = this->c;
    EXPECT_EQ(c.DeleteTail(), nullptr);
    Fill(c, {1, 2, 3});
    EXPECT_EQ(c.AddData(P(4), 100), 3);
    EXPECT_EQ(c.AddData(P(5), -7), 4);
    EXPECT_EQ(c.Set(5, P(8)), -1);
    EXPECT_EQ(c.Set(4, P(6)), 4);
    EXPECT_EQ(V(c.GetTail()), 6);
    EXPECT_EQ(c.Set(0, P(6)), 0);  // made current, so the nearer 6 is found
    EXPECT_EQ(c.FindFirst(P(6), nullptr), 0);
    EXPECT_EQ(c.DeleteAt(5, 1), nullptr);
    // n = 0 removes nothing; only the array still answers with the element.
    EXPECT_EQ(V(c.DeleteAt(1, 0)), TestFixture::kList ? 0 : 2);
    EXPECT_EQ(V(c.DeleteAt(1, 10)), 2);
    EXPECT_EQ(Contents(c), Ints{6});
}

TYPED_TEST(Collection, RingSearchGoesOutwardFromTheCurrentPosition)
{
    CPtrCtrl& c = this->c;
    int const k = 20, y = 30;
    Fill(c, {10, k, y, k});
    c.GetAt(0);
    EXPECT_EQ(c.FindFirst(P(k), nullptr), 1);
    EXPECT_EQ(c.FindNext(P(k), nullptr), 3);
    EXPECT_EQ(c.FindNext(P(k), nullptr), -1);
    // The array collects the indices of the matches, and only with a
    // callback; the list's FindAll does nothing at all.
    CPtrListCtrl found;
    Fill(found, {77});
    this->concrete.FindAll(&found, P(k), nullptr);
    EXPECT_EQ(Contents(found), Ints{77});
    this->concrete.FindAll(&found, P(k), Equals);
    EXPECT_EQ(Contents(found), (TestFixture::kList ? Ints{77} : Ints{1, 3}));

    // From 3 of 7: the match 2 back (1) comes before the one 3 ahead (6),
    // and each element is looked at once.
    c.DeleteAll();
    Fill(c, {0, k, y, 0, y, 0, k});
    c.GetAt(3);
    EXPECT_EQ(c.FindFirst(P(k), Equals), 1);
    EXPECT_EQ(c.FindNext(P(k), Equals), 6);
    EXPECT_EQ(c.FindNext(P(k), Equals), -1);
    // At equal distance the forward candidate wins.
    c.GetAt(3);
    EXPECT_EQ(c.FindFirst(P(y), nullptr), 4);
    EXPECT_EQ(c.FindNext(P(y), nullptr), 2);

    // A find state left from a longer sequence stays in range.
    c.DeleteAt(2, 5);
    EXPECT_EQ(c.FindNext(P(k), nullptr), -1);
    c.DeleteAll();
    EXPECT_EQ(c.FindFirst(P(k), nullptr), -1);
}

TYPED_TEST(Collection, CurrentPositionAfterCopiesAndSearches)
{
    bool const list = TestFixture::kList;
    CPtrCtrl& c = this->c;
    // After a copy the array restarts at 0; the list stays on its last element.
    CPtrArrayCtrl src;
    Fill(src, {1, 9, 2, 9});
    Fill(c, {0, 0, 0});
    c.GetAt(2);
    c.CopyPtrCtrl(&src);
    EXPECT_EQ(c.FindFirst(P(9), nullptr), list ? 3 : 1);

    // A search leaves the list on the last element probed, the array where
    // it was.
    c.DeleteAll();
    Fill(c, {1, 2, 0, 0, 1});
    c.GetAt(2);
    EXPECT_EQ(c.FindFirst(P(2), nullptr), 1);
    EXPECT_EQ(c.FindFirst(P(1), nullptr), list ? 0 : 4);
    // The list's GetHead and GetTail leave its position, and IsDataAvailable
    // moves it; for the array it is the other way round.
    c.GetAt(2);
    c.GetTail();
    c.GetHead();
    EXPECT_EQ(c.FindFirst(P(1), nullptr), list ? 4 : 0);
    c.GetAt(2);
    c.IsDataAvailable(0);
    EXPECT_EQ(c.FindFirst(P(1), nullptr), list ? 0 : 4);
}

TYPED_TEST(Collection, MoveDataEdgesAndDump)
{
    CPtrCtrl& c = this->c;
    EXPECT_EQ(DumpOf(c, true), "Dump, Asce\n");
    Fill(c, {1, 2, 4000000});
    EXPECT_EQ(c.MoveData(5, 3, 0), 1);  // from clamped to the last element
    EXPECT_EQ(c.MoveData(1, 1, 1), 0);
    EXPECT_EQ(c.MoveData(0, 0, 2), 0);
    EXPECT_EQ(c.MoveData(-1, 1, 2), 0);
    EXPECT_EQ(DumpOf(c, true), "Dump, Asce\n4000000\n1\n2\n");
    EXPECT_EQ(DumpOf(c, false), "Dump, Desc\n2\n1\n4000000\n");

    c.AddData(P(3), 1);
    EXPECT_EQ(c.MoveData(0, 2, 3), 1);  // a block of two cannot start at 3
    EXPECT_EQ(Contents(c), (Ints{1, 2, 4000000, 3}));
    // A negative destination: the array moves to the front, the list appends.
    EXPECT_EQ(c.MoveData(0, 1, -3), TestFixture::kList ? 1 : 0);
    EXPECT_EQ(Contents(c), (TestFixture::kList ? Ints{2, 4000000, 3, 1} : Ints{1, 2, 4000000, 3}));
}

TYPED_TEST(Collection, QuickSortClampsAndCountsSwaps)
{
    CPtrCtrl& c = this->c;
    int swaps = -1;
    Fill(c, {5});
    c.QuickSort(0, 0, ByValue, 0, 0, &swaps);
    EXPECT_EQ(swaps, -1);  // fewer than two elements: not written
    Fill(c, {3, 9, 1, 7});
    c.QuickSort(3, 1, ByValue, 0, 0, &swaps);
    EXPECT_EQ(swaps, 0);
    c.QuickSort(-5, 3, ByValue, 0, 0, &swaps);
    EXPECT_EQ(Contents(c), (Ints{1, 3, 5, 9, 7}));
    EXPECT_EQ(swaps, 2);
    c.QuickSort(2, 99, ByValue, 0, 0, &swaps);
    EXPECT_EQ(Contents(c), (Ints{1, 3, 5, 7, 9}));
    EXPECT_EQ(swaps, 1);
}

TYPED_TEST(Collection, AddPtrCtrlResultsAndCopies)
{
    // The array answers with the insert index when the source is an array
    // (leaving its current position alone), otherwise with the position
    // after the insert, made current, or -1 when appending; the list answers
    // with the number of elements added.
    bool const list = TestFixture::kList;
    CPtrCtrl& c = this->c;
    CPtrArrayCtrl array, empty;
    CPtrListCtrl other;
    Fill(c, {5, 6, 5});
    Fill(array, {7, 8});
    Fill(other, {3, 4});
    EXPECT_EQ(c.AddPtrCtrl(nullptr, 0), list ? 0 : -1);
    EXPECT_EQ(c.AddPtrCtrl(&empty, 0), list ? 0 : -1);
    c.GetAt(0);
    EXPECT_EQ(c.AddPtrCtrl(&array, 3), list ? 2 : 3);
    EXPECT_EQ(c.FindFirst(P(5), nullptr), 0);
    EXPECT_EQ(c.AddPtrCtrl(&array, 50), list ? 2 : 5);
    EXPECT_EQ(c.AddPtrCtrl(&other, 1), list ? 2 : 3);
    EXPECT_EQ(c.FindFirst(P(8), nullptr), list ? 8 : 6);
    EXPECT_EQ(c.AddPtrCtrl(&other, -1), list ? 2 : -1);
    EXPECT_EQ(c.AddPtrCtrl(&c, 0), list ? 11 : 0);
    Ints once{5, 3, 4, 6, 5, 7, 8, 7, 8, 3, 4}, twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(Contents(c), twice);

    EXPECT_EQ(c.CopyPtrCtrl(nullptr), 0);
    EXPECT_EQ(c.CopyPtrCtrl(&other), 2);
    TypeParam copied(&c);
    TypeParam again(this->concrete);
    TypeParam sum = copied + again;
    sum += array;
    copied = other;
    copied = sum;  // same kind: a deep copy, not a shared array or node chain
    sum.DeleteAll();
    EXPECT_EQ(Contents(copied), (Ints{3, 4, 3, 4, 7, 8}));
}

TYPED_TEST(Collection, RandomEditsMatchAModel)
{
    CPtrCtrl& c = this->c;
    Ints model;
    std::mt19937 rng(11);
    for (int step = 0; step < 3000; ++step) {
        int const n = static_cast<int>(model.size());
        int const op = static_cast<int>(rng() % 5);
        int const pos = n > 0 ? static_cast<int>(rng() % n) : 0;
        if (op <= 1 || n < 2) {
            int const at = static_cast<int>(rng() % (n + 1));
            ASSERT_EQ(c.AddData(P(step + 1), at), at);
            model.insert(model.begin() + at, step + 1);
        } else if (op == 2) {
            int const k = 1 + static_cast<int>(rng() % 3);
            ASSERT_EQ(V(c.DeleteAt(pos, k)), model[pos]);
            model.erase(model.begin() + pos, model.begin() + std::min(n, pos + k));
        } else if (op == 3) {
            int const len = 1 + static_cast<int>(rng() % (n - pos));
            int const to = static_cast<int>(rng() % (n - len + 1));
            Ints block(model.begin() + pos, model.begin() + pos + len);
            model.erase(model.begin() + pos, model.begin() + pos + len);
            model.insert(model.begin() + to, block.begin(), block.end());
            ASSERT_EQ(c.MoveData(pos, len, to), to == pos ? 0 : 1);
        } else {
            ASSERT_EQ(V(c.GetAt(pos)), model[pos]);
        }
    }
    EXPECT_EQ(Contents(c), model);
    std::string expected = "Dump, Desc\n";  // walks the reverse links
    for (auto it = model.rbegin(); it != model.rend(); ++it)
        expected += std::to_string(*it) + "\n";
    EXPECT_EQ(DumpOf(c, false), expected);
}

TEST(PtrArray, CapacityHysteresis)
{
    // Grows from 32 by doubling; shrinks only while the count is above 32
    // and below half the capacity.
    CPtrArrayCtrl a;
    int const steps[][2] = {{0, 0},     {1, 32},    {32, 32},   {33, 64},  {1, 64},
                            {200, 256}, {128, 256}, {127, 128}, {32, 128}, {33, 64}};
    for (auto const& step : steps) {
        while (a.GetCount() < step[0])
            a.AddData(P(a.GetCount()), 0);
        if (a.GetCount() > step[0])
            a.DeleteAt(0, a.GetCount() - step[0]);
        EXPECT_EQ(a.GetCapability(), step[1]) << step[0];
    }
    a.DeleteAll();
    EXPECT_EQ(a.GetCapability(), 0);
    EXPECT_EQ(a.IncreaseCapability(0, 5), 8);
    EXPECT_EQ(a.DecreaseCapability(256, 0), 0);
}

TEST(PtrList, CacheFollowsDeletions)
{
    int const x = 1, k = 2, y = 3;
    CPtrListCtrl l;
    // Deleting the cached node hands the cache to the next node, same index.
    Fill(l, {x, k, x, y});
    l.GetAt(1);
    l.DeleteAt(1, 1);
    EXPECT_EQ(l.FindFirst(P(x), nullptr), 1);
    // Deleting the cached tail hands it to the new tail.
    l.DeleteAll();
    Fill(l, {y, x, y, k});
    l.GetAt(3);
    l.DeleteTail();
    EXPECT_EQ(l.FindFirst(P(y), nullptr), 2);

    CPtrListCtrl::tagDATALIST* node = l.SearchToPos(2);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(V(node->data), y);
    EXPECT_EQ(node->next, nullptr);
    EXPECT_EQ(l.SearchToPos(0)->prev->next, l.SearchToPos(0));  // the head node
    EXPECT_EQ(l.SearchToPos(3), nullptr);
}
