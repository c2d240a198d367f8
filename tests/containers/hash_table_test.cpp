#include <palvet/containers/hash_table.h>

#include "collection_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>
#include <vector>

using palvet_test::Contents;
using palvet_test::P;
using palvet_test::V;
using Ints = std::vector<int>;

namespace {

template <typename Table>
Ints Iterate(Table& t)
{
    Ints out;
    tagHASHPOSITION pos{};
    for (int more = t.GetHeadPosition(pos); more; more = t.MoveHashPositionNext(pos)) {
        EXPECT_EQ(t.IsDataAvailable(pos), 1);
        out.push_back(V(t.GetDataAt(pos)));
    }
    EXPECT_EQ(t.IsDataAvailable(pos), 0);
    EXPECT_EQ(t.GetDataAt(pos), nullptr);
    return out;
}

}  // namespace

TEST(HashTable, SharedBucketsAndDuplicateKeys)
{
    CHashTable t(16);
    EXPECT_EQ(t.AddData(5, P(105)), 0);
    EXPECT_EQ(t.AddData(21, P(121)), 1);
    EXPECT_EQ(t.AddData(-5, P(95)), 2);
    EXPECT_EQ(V(t.FindFirstData(21)), 121);
    EXPECT_EQ(V(t.FindFirstData(-5)), 95);
    EXPECT_EQ(t.IsDataAvailable(37), 0);

    // The newest entry of a key comes first, then the search goes outward
    // through the bucket taken as a ring.
    for (auto [key, data] : {std::pair{7, 1}, {7, 2}, {23, 3}, {7, 4}})
        t.AddData(key, P(data));
    EXPECT_EQ(t.GetCount(), 7);
    EXPECT_EQ(V(t.FindFirstData(7)), 4);
    EXPECT_EQ(V(t.FindNextData(7)), 1);
    EXPECT_EQ(V(t.FindNextData(7)), 2);
    EXPECT_EQ(t.FindNextData(7), nullptr);
    CPtrListCtrl found;
    found.AddData(P(99), -1);
    t.FindAllHashData(&found, 7);
    t.FindAllHashData(&found, 8);
    EXPECT_EQ(Contents(found), (Ints{99, 1, 2, 4}));

    EXPECT_EQ(t.SetData(8, P(0)), 0);
    EXPECT_EQ(t.DeleteFirstData(8), nullptr);
    EXPECT_EQ(t.GetCount(), 7);
    t.SetData(23, P(33));
    EXPECT_EQ(V(t.FindFirstData(23)), 33);
    // Bucket 7 holds 1, 2, 33, 4 and was last touched at 33.
    EXPECT_EQ(V(t.DeleteFirstData(7)), 4);
    EXPECT_EQ(V(t.DeleteNextData(7)), 2);
    EXPECT_EQ(t.GetCount(), 5);
    EXPECT_EQ(V(t.FindFirstData(7)), 1);
    EXPECT_EQ(Iterate(t), (Ints{105, 121, 95, 1, 33}));
}

TEST(HashTable, IterationVisitsBucketsInOrder)
{
    CHashTable t(12);
    EXPECT_EQ(Iterate(t), Ints{});
    for (int key : {9, 3, 15, 21})
        t.AddData(key, P(key));
    EXPECT_EQ(Iterate(t), (Ints{3, 15, 9, 21}));
    tagHASHPOSITION outside{12, 0}, negative{-1, 0};
    EXPECT_EQ(t.MoveHashPositionNext(outside), 0);
    EXPECT_EQ(t.GetDataAt(negative), nullptr);
    EXPECT_EQ(t.MoveHashPositionNext(negative), 0);

    t.DeleteAll();
    EXPECT_EQ(t.GetCount(), 0);
    EXPECT_EQ(Iterate(t), Ints{});
    t.AddData(3, P(30));
    EXPECT_EQ(Iterate(t), Ints{30});
}

TEST(HashTable, DeleteAllDataDropsTheWholeBucket)
{
    CHashTable t(10);
    t.AddData(4, P(1));
    t.AddData(14, P(2));
    t.AddData(5, P(3));
    t.DeleteAllData(4);
    EXPECT_EQ(t.GetCount(), 3);  // left as it was
    EXPECT_EQ(t.FindFirstData(14), nullptr);
    EXPECT_EQ(Iterate(t), Ints{3});
    t.DeleteAllData(24);  // bucket already gone
    t.AddData(24, P(4));
    EXPECT_EQ(V(t.FindFirstData(24)), 4);

    // The byte-string table subtracts what went; one bucket, so all keys go.
    CCRCHashTable c(1);
    c.AddData("alpha", 5, P(1));
    c.AddData("alpha", 5, P(2));
    c.AddData("beta", 4, P(3));
    c.DeleteAllData("alpha", 5);
    EXPECT_EQ(c.GetCount(), 0);
    EXPECT_EQ(c.FindFirstData("beta", 4), nullptr);
    c.AddData("beta", 4, P(3));
    EXPECT_EQ(V(c.FindFirstData("beta", 4)), 3);
}

TEST(HashTable, UnusableBucketCountsAndExtremeKeys)
{
    CHashTable zero(0);
    EXPECT_EQ(zero.AddData(1, P(1)), 0);
    EXPECT_EQ(Iterate(zero), Ints{});
    CCRCHashTable negative(-3);
    negative.AddData("k", 1, P(1));
    EXPECT_EQ(negative.FindFirstData("k", 1), nullptr);

    CHashTable seven(7);
    seven.AddData(INT_MIN, P(5));
    EXPECT_EQ(V(seven.FindFirstData(INT_MIN)), 5);
    EXPECT_EQ(seven.InitHashTable(), 1);  // starts over empty
    EXPECT_EQ(seven.GetCount(), 0);
    EXPECT_EQ(seven.FindFirstData(INT_MIN), nullptr);
}

TEST(CRCHashTable, KeysAreCopiedBytesOfAGivenLength)
{
    CCRCHashTable t(8);
    char key[] = "abcdef";
    t.AddData(key, 3, P(3));
    t.AddData(key, 4, P(4));
    t.AddData(key, -1, P(6));  // measured: all six bytes
    t.AddData(nullptr, 0, P(100));
    memcpy(key, "xyzxyz", 6);  // the table holds its own copies
    EXPECT_EQ(t.GetCount(), 4);
    EXPECT_EQ(V(t.FindFirstData("abc", 3)), 3);
    EXPECT_EQ(V(t.FindFirstData("abcd", 4)), 4);
    EXPECT_EQ(V(t.FindFirstData("abcdef", 6)), 6);
    EXPECT_EQ(V(t.FindFirstData("", 0)), 100);
    EXPECT_EQ(t.IsDataAvailable(key, 3), 0);

    t.AddData("abc", 3, P(33));
    EXPECT_EQ(V(t.FindFirstData("abc", 3)), 33);
    EXPECT_EQ(V(t.FindNextData("abc", 3)), 3);
    t.SetData("abc", 3, P(34));
    CPtrArrayCtrl found;
    found.AddData(P(1), -1);
    t.FindAllCRCHashData(&found, "abc", 3);
    EXPECT_EQ(Contents(found), (Ints{1, 34, 33}));
    // Collecting touched each match in turn, so the newest is nearest again.
    EXPECT_EQ(V(t.DeleteFirstData("abc", 3)), 33);
    EXPECT_EQ(t.DeleteFirstData("zzz", 3), nullptr);
    EXPECT_EQ(t.GetCount(), 4);
    Ints all = Iterate(t);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, (Ints{4, 6, 34, 100}));
}
