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

// Behaviour both kinds share, exercised through the common interface.
template <typename T>
class Collection : public ::testing::Test {
protected:
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
    EXPECT_EQ(c.DeleteAt(5, 1), nullptr);
    // n = 0 removes nothing; only the array still answers with the element.
    EXPECT_EQ(V(c.DeleteAt(1, 0)), (std::is_same<TypeParam, CPtrArrayCtrl>::value ? 2 : 0));
    EXPECT_EQ(V(c.DeleteAt(1, 10)), 2);
    EXPECT_EQ(Contents(c), Ints{1});
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

TYPED_TEST(Collection, CopiesAndOperatorsMixKinds)
{
    CPtrCtrl& c = this->c;
    CPtrListCtrl list;
    CPtrArrayCtrl array;
    Fill(c, {1, 2});
    Fill(list, {3, 4});
    Fill(array, {5});
    EXPECT_EQ(c.CopyPtrCtrl(nullptr), 0);
    c.AddPtrCtrl(&list, 1);
    c.AddPtrCtrl(&array, -1);
    c.AddPtrCtrl(&c, 0);
    EXPECT_EQ(Contents(c), (Ints{1, 3, 4, 2, 5, 1, 3, 4, 2, 5}));
    EXPECT_EQ(c.CopyPtrCtrl(&list), 2);

    TypeParam copied(&c);
    TypeParam again(this->concrete);
    TypeParam sum = copied + again;
    sum += array;
    copied = list;
    copied = sum;  // same kind: a deep copy, not a shared array or node chain
    sum.DeleteAll();
    EXPECT_EQ(Contents(copied), (Ints{3, 4, 3, 4, 5}));
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
    CPtrArrayCtrl a;
    EXPECT_EQ(a.GetCapability(), 0);
    a.AddData(P(1), -1);
    EXPECT_EQ(a.GetCapability(), 32);
    for (int i = 2; i <= 33; ++i)
        a.AddData(P(i), -1);
    EXPECT_EQ(a.GetCapability(), 64);
    a.DeleteAt(0, 32);
    EXPECT_EQ(a.GetCapability(), 64);  // never shrinks at 32 or fewer
    for (int i = 0; i < 199; ++i)
        a.AddData(P(i), 0);
    EXPECT_EQ(a.GetCapability(), 256);
    a.DeleteAt(0, 72);
    EXPECT_EQ(a.GetCapability(), 256);  // 128 is not below half of 256
    a.DeleteHead();
    EXPECT_EQ(a.GetCapability(), 128);
    a.DeleteAt(0, 94);
    EXPECT_EQ(a.GetCapability(), 64);  // 33 left
    a.DeleteAll();
    EXPECT_EQ(a.GetCapability(), 0);
    EXPECT_EQ(a.IncreaseCapability(0, 5), 8);
    EXPECT_EQ(a.DecreaseCapability(256, 0), 0);
}

TEST(PtrArray, AddPtrCtrlResultsAndCurrentPosition)
{
    CPtrArrayCtrl a, other, empty;
    CPtrListCtrl list;
    Fill(a, {5, 6, 5});
    Fill(other, {7, 8});
    Fill(list, {7, 8});
    EXPECT_EQ(a.AddPtrCtrl(nullptr, 0), -1);
    EXPECT_EQ(a.AddPtrCtrl(&empty, 0), -1);
    // From an array: the insert index; the current position stays at 0, so
    // the search finds the 5 there rather than the one next to 3.
    a.GetAt(0);
    EXPECT_EQ(a.AddPtrCtrl(&other, 3), 3);
    EXPECT_EQ(a.FindFirst(P(5), nullptr), 0);
    EXPECT_EQ(a.AddPtrCtrl(&other, 50), 5);
    // From another kind: the position after the last insert, made current,
    // or -1 when appending.
    EXPECT_EQ(a.AddPtrCtrl(&list, 1), 3);
    EXPECT_EQ(a.FindFirst(P(5), nullptr), 4);
    EXPECT_EQ(Contents(a), (Ints{5, 7, 8, 6, 5, 7, 8, 7, 8}));
    EXPECT_EQ(a.AddPtrCtrl(&list, -1), -1);
}

TEST(PtrArray, FindAllYieldsIndicesAndMovesStayInside)
{
    CPtrArrayCtrl a;
    CPtrListCtrl dst;
    Fill(a, {4, 2, 4, 3});
    Fill(dst, {77});
    a.FindAll(&dst, P(4), nullptr);
    EXPECT_EQ(Contents(dst), Ints{77});
    a.FindAll(&dst, P(4), Equals);
    EXPECT_EQ(Contents(dst), (Ints{0, 2}));

    EXPECT_EQ(a.MoveData(0, 2, 3), 1);  // a block of two cannot start at 3
    EXPECT_EQ(Contents(a), (Ints{4, 3, 4, 2}));
    EXPECT_EQ(a.MoveData(0, 1, -3), 0);  // the list would append instead
    CPtrListCtrl l;
    Fill(l, {1, 2, 3});
    EXPECT_EQ(l.MoveData(0, 1, -3), 1);
    EXPECT_EQ(Contents(l), (Ints{2, 3, 1}));
}

TEST(CurrentPosition, ArrayAndListDiffer)
{
    // After a copy the array restarts at 0; the list stays on its last element.
    CPtrArrayCtrl src, a;
    CPtrListCtrl l;
    Fill(src, {1, 9, 2, 9});
    a.CopyPtrCtrl(&src);
    l.CopyPtrCtrl(&src);
    EXPECT_EQ(a.FindFirst(P(9), nullptr), 1);
    EXPECT_EQ(l.FindFirst(P(9), nullptr), 3);

    // A search leaves the list on the last element probed, the array where
    // it was.
    int const m = 1, k = 2;
    a.DeleteAll();
    l.DeleteAll();
    Fill(a, {m, k, 0, 0, m});
    Fill(l, {m, k, 0, 0, m});
    a.GetAt(2);
    l.GetAt(2);
    EXPECT_EQ(a.FindFirst(P(k), nullptr), 1);
    EXPECT_EQ(l.FindFirst(P(k), nullptr), 1);
    EXPECT_EQ(a.FindFirst(P(m), nullptr), 4);
    EXPECT_EQ(l.FindFirst(P(m), nullptr), 0);

    // The list's GetHead/GetTail leave the cache; IsDataAvailable moves it.
    l.GetAt(2);
    l.GetTail();
    l.GetHead();
    EXPECT_EQ(l.FindFirst(P(m), nullptr), 4);
    l.IsDataAvailable(0);
    EXPECT_EQ(l.FindFirst(P(m), nullptr), 0);
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

TEST(PtrList, AddPtrCtrlCountsAndFindAllDoesNothing)
{
    CPtrListCtrl l;
    CPtrArrayCtrl a, dst;
    Fill(l, {1, 2, 3});
    Fill(a, {8, 9});
    EXPECT_EQ(l.AddPtrCtrl(nullptr, 0), 0);
    EXPECT_EQ(l.AddPtrCtrl(&l, -1), 3);
    EXPECT_EQ(l.AddPtrCtrl(&a, 1), 2);
    EXPECT_EQ(Contents(l), (Ints{1, 8, 9, 2, 3, 1, 2, 3}));
    Fill(dst, {5});
    l.FindAll(&dst, P(1), Equals);
    EXPECT_EQ(Contents(dst), Ints{5});
}
