#include <palvet/containers/ptr_collection.h>

#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

// Stand-in pointers: never dereferenced, told apart by value.
void const* P(int v)
{
    return reinterpret_cast<void const*>(static_cast<uintptr_t>(v));
}

int V(void const* p)
{
    return static_cast<int>(reinterpret_cast<uintptr_t>(p));
}

void Fill(CPtrCtrl& c, std::vector<int> const& values)
{
    for (int v : values)
        c.AddData(P(v), -1);
}

// Reads through GetAt, which moves the current position.
std::vector<int> Contents(CPtrCtrl& c)
{
    std::vector<int> out;
    for (int i = 0; i < c.GetCount(); ++i)
        out.push_back(V(c.GetAt(i)));
    return out;
}

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
    EXPECT_EQ(c.IsEmpty(), 1);
    EXPECT_EQ(c.GetHead(), nullptr);
    EXPECT_EQ(c.DeleteTail(), nullptr);
    Fill(c, {1, 2, 3});
    EXPECT_EQ(c.AddData(P(4), 100), 3);
    EXPECT_EQ(c.AddData(P(5), -7), 4);
    EXPECT_EQ(c.AddData(P(0), 0), 0);
    EXPECT_EQ(c.AddData(P(9), 2), 2);
    EXPECT_EQ(Contents(c), (std::vector<int>{0, 1, 9, 2, 3, 4, 5}));

    EXPECT_EQ(c.Set(7, P(8)), -1);
    EXPECT_EQ(c.Set(-1, P(8)), -1);
    EXPECT_EQ(c.Set(6, P(6)), 6);
    EXPECT_EQ(c.IsDataAvailable(6), 1);
    EXPECT_EQ(c.IsDataAvailable(7), 0);
    EXPECT_EQ(c.GetAt(7), nullptr);
    EXPECT_EQ(V(c.GetHead()), 0);
    EXPECT_EQ(V(c.GetTail()), 6);

    EXPECT_EQ(V(c.DeleteAt(2, 1)), 9);
    EXPECT_EQ(V(c.DeleteHead()), 0);
    EXPECT_EQ(V(c.DeleteTail()), 6);
    EXPECT_EQ(c.DeleteAt(4, 1), nullptr);
    // n = 0 removes nothing; the array still answers with the element.
    EXPECT_EQ(V(c.DeleteAt(1, 0)), (std::is_same<TypeParam, CPtrArrayCtrl>::value ? 2 : 0));
    EXPECT_EQ(V(c.DeleteAt(1, 10)), 2);
    EXPECT_EQ(Contents(c), (std::vector<int>{1}));
    c.DeleteAll();
    EXPECT_EQ(c.GetCount(), 0);
    EXPECT_EQ(c.GetTail(), nullptr);
}

TYPED_TEST(Collection, RingSearchGoesOutwardFromTheCurrentPosition)
{
    CPtrCtrl& c = this->c;
    int const x = 10, k = 20, y = 30;
    Fill(c, {x, k, y, k});
    c.GetAt(0);
    EXPECT_EQ(c.FindFirst(P(k), nullptr), 1);
    EXPECT_EQ(c.FindNext(P(k), nullptr), 3);
    EXPECT_EQ(c.FindNext(P(k), nullptr), -1);
    EXPECT_EQ(c.FindNext(P(k), nullptr), -1);

    // Seven elements from position 3: the match at distance 2 backward (1)
    // comes before the one at distance 3 forward (6); each element is
    // looked at once.
    c.DeleteAll();
    Fill(c, {0, k, 0, 0, 0, 0, k});
    c.GetAt(3);
    EXPECT_EQ(c.FindFirst(P(k), Equals), 1);
    EXPECT_EQ(c.FindNext(P(k), Equals), 6);
    EXPECT_EQ(c.FindNext(P(k), Equals), -1);
    EXPECT_EQ(c.FindFirst(P(99), Equals), -1);

    // At equal distance the forward candidate wins.
    c.Set(2, P(y));
    c.Set(4, P(y));
    c.GetAt(3);
    EXPECT_EQ(c.FindFirst(P(y), nullptr), 4);
    EXPECT_EQ(c.FindNext(P(y), nullptr), 2);

    // A find state left over from a longer sequence stays in range.
    c.FindFirst(P(k), nullptr);
    c.DeleteAt(2, 5);
    EXPECT_EQ(c.FindNext(P(k), nullptr), -1);
    c.DeleteAll();
    EXPECT_EQ(c.FindFirst(P(k), nullptr), -1);
}

TYPED_TEST(Collection, MoveData)
{
    CPtrCtrl& c = this->c;
    Fill(c, {1, 2, 3});
    EXPECT_EQ(c.MoveData(0, 1, 2), 1);
    EXPECT_EQ(Contents(c), (std::vector<int>{2, 3, 1}));
    EXPECT_EQ(c.MoveData(2, 1, 0), 1);
    EXPECT_EQ(Contents(c), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(c.MoveData(5, 3, 0), 1);  // from clamped to the last element
    EXPECT_EQ(Contents(c), (std::vector<int>{3, 1, 2}));
    EXPECT_EQ(c.MoveData(1, 1, 1), 0);
    EXPECT_EQ(c.MoveData(0, 0, 2), 0);
    EXPECT_EQ(c.MoveData(-1, 1, 2), 0);
    c.DeleteAt(1, 2);
    EXPECT_EQ(c.MoveData(0, 1, 1), 0);
}

TYPED_TEST(Collection, DumpPrintsPointerValues)
{
    CPtrCtrl& c = this->c;
    EXPECT_EQ(DumpOf(c, true), "Dump, Asce\n");
    Fill(c, {7, 4000000});
    EXPECT_EQ(DumpOf(c, true), "Dump, Asce\n7\n4000000\n");
    EXPECT_EQ(DumpOf(c, false), "Dump, Desc\n4000000\n7\n");
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
    EXPECT_EQ(Contents(c), (std::vector<int>{5, 3, 9, 1, 7}));
    c.QuickSort(-5, 3, ByValue, 0, 0, &swaps);
    EXPECT_EQ(Contents(c), (std::vector<int>{1, 3, 5, 9, 7}));
    EXPECT_EQ(swaps, 2);
    c.QuickSort(2, 99, ByValue, 0, 0, &swaps);
    EXPECT_EQ(Contents(c), (std::vector<int>{1, 3, 5, 7, 9}));
    EXPECT_EQ(swaps, 1);
}

TYPED_TEST(Collection, CopiesAndOperatorsMixKinds)
{
    CPtrCtrl& c = this->c;
    Fill(c, {1, 2});
    CPtrListCtrl list;
    Fill(list, {3, 4});
    CPtrArrayCtrl array;
    Fill(array, {5});

    EXPECT_EQ(c.CopyPtrCtrl(nullptr), 0);
    EXPECT_EQ(Contents(c), (std::vector<int>{1, 2}));
    c.AddPtrCtrl(&list, 1);
    c.AddPtrCtrl(&array, -1);
    EXPECT_EQ(Contents(c), (std::vector<int>{1, 3, 4, 2, 5}));
    c.AddPtrCtrl(&c, 0);
    EXPECT_EQ(Contents(c), (std::vector<int>{1, 3, 4, 2, 5, 1, 3, 4, 2, 5}));
    EXPECT_EQ(c.CopyPtrCtrl(&list), 2);
    EXPECT_EQ(Contents(c), (std::vector<int>{3, 4}));

    TypeParam copied(&c);
    TypeParam again(this->concrete);
    TypeParam sum = copied + again;
    sum += array;
    EXPECT_EQ(Contents(sum), (std::vector<int>{3, 4, 3, 4, 5}));
    copied = list;
    copied = sum;  // deep copy between two objects of the same kind
    sum.DeleteAll();
    EXPECT_EQ(Contents(copied), (std::vector<int>{3, 4, 3, 4, 5}));
}

TYPED_TEST(Collection, RandomEditsMatchAModel)
{
    CPtrCtrl& c = this->c;
    std::vector<int> model;
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
            std::vector<int> block(model.begin() + pos, model.begin() + pos + len);
            model.erase(model.begin() + pos, model.begin() + pos + len);
            model.insert(model.begin() + to, block.begin(), block.end());
            ASSERT_EQ(c.MoveData(pos, len, to), to == pos ? 0 : 1);
        } else {
            ASSERT_EQ(V(c.GetAt(pos)), model[pos]);
        }
        ASSERT_EQ(c.GetCount(), static_cast<int>(model.size()));
    }
    EXPECT_EQ(Contents(c), model);
    // Walking backward checks the reverse links too.
    std::string expected = "Dump, Desc\n";
    for (auto it = model.rbegin(); it != model.rend(); ++it)
        expected += std::to_string(*it) + "\n";
    EXPECT_EQ(DumpOf(c, false), expected);
}

// ---------------------------------------------------------------------------

TEST(PtrArray, CapacityHysteresis)
{
    CPtrArrayCtrl a;
    EXPECT_EQ(a.GetCapability(), 0);
    a.AddData(P(1), -1);
    EXPECT_EQ(a.GetCapability(), 32);
    for (int i = 2; i <= 33; ++i)
        a.AddData(P(i), -1);
    EXPECT_EQ(a.GetCapability(), 64);
    a.DeleteTail();
    EXPECT_EQ(a.GetCapability(), 64);
    a.DeleteAt(0, 31);
    EXPECT_EQ(a.GetCount(), 1);
    EXPECT_EQ(a.GetCapability(), 64);  // never shrinks at 32 or fewer
    for (int i = 0; i < 199; ++i)
        a.AddData(P(i), 0);
    EXPECT_EQ(a.GetCapability(), 256);
    a.DeleteAt(0, 72);
    EXPECT_EQ(a.GetCapability(), 256);  // 128 is not below half of 256
    a.DeleteHead();
    EXPECT_EQ(a.GetCapability(), 128);
    a.DeleteAt(0, 94);
    EXPECT_EQ(a.GetCount(), 33);
    EXPECT_EQ(a.GetCapability(), 64);
    a.DeleteAll();
    EXPECT_EQ(a.GetCapability(), 0);

    EXPECT_EQ(a.IncreaseCapability(0, 1), 1);
    EXPECT_EQ(a.IncreaseCapability(0, 5), 8);
    EXPECT_EQ(a.IncreaseCapability(48, 40), 48);
    EXPECT_EQ(a.IncreaseCapability(32, 100), 128);
    EXPECT_EQ(a.DecreaseCapability(256, 33), 64);
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

    // From an array: the insert index, and the current position stays (0
    // here, so the search finds the 5 at 0, not the one next to 3).
    a.GetAt(0);
    EXPECT_EQ(a.AddPtrCtrl(&other, 3), 3);
    EXPECT_EQ(a.FindFirst(P(5), nullptr), 0);
    EXPECT_EQ(a.AddPtrCtrl(&other, 50), 5);
    // From another kind: the position after the last insert, which becomes
    // current (3 here, so the 5 at 4 is nearer than the one at 0), or -1
    // when appending.
    a.GetAt(0);
    EXPECT_EQ(a.AddPtrCtrl(&list, 1), 3);
    EXPECT_EQ(a.FindFirst(P(5), nullptr), 4);
    EXPECT_EQ(Contents(a), (std::vector<int>{5, 7, 8, 6, 5, 7, 8, 7, 8}));
    EXPECT_EQ(a.AddPtrCtrl(&list, -1), -1);
    EXPECT_EQ(a.GetCount(), 11);
}

TEST(CurrentPosition, ArrayAndListDiffer)
{
    // CopyPtrCtrl: the array restarts at 0, the list stays on its last
    // element.
    CPtrArrayCtrl src;
    Fill(src, {1, 9, 2, 9});
    CPtrArrayCtrl a;
    CPtrListCtrl l;
    a.CopyPtrCtrl(&src);
    l.CopyPtrCtrl(&src);
    EXPECT_EQ(a.FindFirst(P(9), nullptr), 1);
    EXPECT_EQ(l.FindFirst(P(9), nullptr), 3);

    // A search moves the list's cached position to the last element probed,
    // never the array's.
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

    // The list's GetHead/GetTail leave the cache alone; IsDataAvailable
    // moves it.
    l.GetAt(2);
    l.GetTail();
    l.GetHead();
    EXPECT_EQ(l.FindFirst(P(m), nullptr), 4);
    l.IsDataAvailable(0);
    EXPECT_EQ(l.FindFirst(P(m), nullptr), 0);
}

TEST(PtrArray, FindAllYieldsIndices)
{
    CPtrArrayCtrl a;
    Fill(a, {4, 2, 4, 3, 4});
    CPtrListCtrl dst;
    Fill(dst, {77});
    a.FindAll(&dst, P(4), nullptr);
    EXPECT_EQ(Contents(dst), (std::vector<int>{77}));
    a.FindAll(&dst, P(4), Equals);
    EXPECT_EQ(Contents(dst), (std::vector<int>{0, 2, 4}));
    a.FindAll(nullptr, P(4), Equals);
}

TEST(PtrArray, MoveTowardTheEndStopsAtTheEnd)
{
    CPtrArrayCtrl a;
    Fill(a, {1, 2, 3, 4});
    EXPECT_EQ(a.MoveData(0, 2, 3), 1);  // a block of two cannot start at 3
    EXPECT_EQ(Contents(a), (std::vector<int>{3, 4, 1, 2}));
    EXPECT_EQ(a.MoveData(0, 1, -3), 0);  // the destination is raised to 0
    EXPECT_EQ(Contents(a), (std::vector<int>{3, 4, 1, 2}));
}

TEST(PtrList, NegativeDestinationAppends)
{
    CPtrListCtrl l;
    CPtrArrayCtrl a;
    Fill(l, {1, 2, 3});
    Fill(a, {1, 2, 3});
    EXPECT_EQ(l.MoveData(0, 1, -3), 1);
    EXPECT_EQ(Contents(l), (std::vector<int>{2, 3, 1}));
    EXPECT_EQ(a.MoveData(0, 1, -3), 0);
    EXPECT_EQ(Contents(a), (std::vector<int>{1, 2, 3}));
}

TEST(PtrList, CacheFollowsDeletions)
{
    int const x = 1, k = 2, y = 3;
    CPtrListCtrl l;
    Fill(l, {x, k, x, y});
    // Deleting the cached node hands the cache to the next node, same index.
    l.GetAt(1);
    l.DeleteAt(1, 1);
    EXPECT_EQ(l.FindFirst(P(x), nullptr), 1);
    // Deleting the cached tail hands it to the new tail.
    l.DeleteAll();
    Fill(l, {y, x, y, k});
    l.GetAt(3);
    l.DeleteTail();
    EXPECT_EQ(l.FindFirst(P(y), nullptr), 2);
    l.DeleteAll();
    l.AddData(P(x), -1);
    l.DeleteAt(0, 1);
    EXPECT_EQ(l.SearchToPos(0), nullptr);
    EXPECT_EQ(l.FindFirst(P(x), nullptr), -1);

    Fill(l, {x, y});
    CPtrListCtrl::tagDATALIST* node = l.SearchToPos(1);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(V(node->data), y);
    EXPECT_EQ(node->next, nullptr);
    EXPECT_EQ(V(node->prev->data), x);
    EXPECT_EQ(node->prev->prev->next, node->prev);  // the embedded head node
}

TEST(PtrList, AddPtrCtrlCountsAndFindAllDoesNothing)
{
    CPtrListCtrl l;
    CPtrArrayCtrl a;
    Fill(l, {1, 2, 3});
    Fill(a, {8, 9});
    EXPECT_EQ(l.AddPtrCtrl(nullptr, 0), 0);
    EXPECT_EQ(l.AddPtrCtrl(&l, -1), 3);
    EXPECT_EQ(l.AddPtrCtrl(&a, 1), 2);
    EXPECT_EQ(Contents(l), (std::vector<int>{1, 8, 9, 2, 3, 1, 2, 3}));

    CPtrArrayCtrl dst;
    Fill(dst, {5});
    l.FindAll(&dst, P(1), Equals);
    EXPECT_EQ(Contents(dst), (std::vector<int>{5}));
}
