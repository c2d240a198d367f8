#include <palvet/containers/crc.h>
#include <palvet/containers/hash_table.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

void const* D(int v)
{
    return reinterpret_cast<void const*>(static_cast<uintptr_t>(v));
}

int V(void const* p)
{
    return static_cast<int>(reinterpret_cast<uintptr_t>(p));
}

template <typename Table>
std::vector<int> Iterate(Table& t)
{
    std::vector<int> out;
    tagHASHPOSITION pos{};
    for (int more = t.GetHeadPosition(pos); more; more = t.MoveHashPositionNext(pos)) {
        EXPECT_EQ(t.IsDataAvailable(pos), 1);
        out.push_back(V(t.GetDataAt(pos)));
    }
    EXPECT_EQ(t.IsDataAvailable(pos), 0);
    EXPECT_EQ(t.GetDataAt(pos), nullptr);
    return out;
}

std::vector<int> Values(CPtrCtrl& c)
{
    std::vector<int> out;
    for (int i = 0; i < c.GetCount(); ++i)
        out.push_back(V(c.GetAt(i)));
    return out;
}

}  // namespace

TEST(HashTable, SharedBucketsAndDuplicateKeys)
{
    CHashTable t(16);
    EXPECT_EQ(t.AddData(5, D(105)), 0);
    EXPECT_EQ(t.AddData(21, D(121)), 1);
    EXPECT_EQ(t.AddData(-5, D(95)), 2);
    EXPECT_EQ(V(t.FindFirstData(21)), 121);
    EXPECT_EQ(V(t.FindFirstData(-5)), 95);
    EXPECT_EQ(t.IsDataAvailable(37), 0);

    // The newest entry of a key is found first, then the search goes on
    // outward through the bucket, taken as a ring.
    t.AddData(7, D(1));
    t.AddData(7, D(2));
    t.AddData(23, D(3));
    t.AddData(7, D(4));
    EXPECT_EQ(t.GetCount(), 7);
    EXPECT_EQ(V(t.FindFirstData(7)), 4);
    EXPECT_EQ(V(t.FindNextData(7)), 1);
    EXPECT_EQ(V(t.FindNextData(7)), 2);
    EXPECT_EQ(t.FindNextData(7), nullptr);
    CPtrListCtrl found;
    found.AddData(D(99), -1);
    t.FindAllHashData(&found, 7);
    t.FindAllHashData(&found, 8);
    EXPECT_EQ(Values(found), (std::vector<int>{99, 1, 2, 4}));

    EXPECT_EQ(t.SetData(8, D(0)), 0);
    EXPECT_EQ(t.GetCount(), 7);
    t.SetData(23, D(33));
    EXPECT_EQ(V(t.FindFirstData(23)), 33);

    EXPECT_EQ(t.DeleteFirstData(8), nullptr);
    EXPECT_EQ(t.GetCount(), 7);
    // Bucket 7 holds 1, 2, 33, 4 and was last touched at 33.
    EXPECT_EQ(V(t.DeleteFirstData(7)), 4);
    EXPECT_EQ(V(t.DeleteNextData(7)), 2);
    EXPECT_EQ(t.GetCount(), 5);
    EXPECT_EQ(V(t.FindFirstData(7)), 1);
    EXPECT_EQ(Iterate(t), (std::vector<int>{105, 121, 95, 1, 33}));
}

TEST(HashTable, IterationVisitsBucketsInOrder)
{
    CHashTable t(12);
    EXPECT_EQ(Iterate(t), std::vector<int>{});
    t.AddData(9, D(9));
    t.AddData(3, D(3));
    t.AddData(15, D(15));
    t.AddData(21, D(21));
    EXPECT_EQ(Iterate(t), (std::vector<int>{3, 15, 9, 21}));

    tagHASHPOSITION outside{12, 0};
    EXPECT_EQ(t.IsDataAvailable(outside), 0);
    EXPECT_EQ(t.MoveHashPositionNext(outside), 0);
    tagHASHPOSITION negative{-1, 0};
    EXPECT_EQ(t.GetDataAt(negative), nullptr);
    EXPECT_EQ(t.MoveHashPositionNext(negative), 0);

    t.DeleteAll();
    EXPECT_EQ(t.GetCount(), 0);
    EXPECT_EQ(Iterate(t), std::vector<int>{});
    EXPECT_EQ(t.FindFirstData(3), nullptr);
    t.AddData(3, D(30));
    EXPECT_EQ(Iterate(t), std::vector<int>{30});
}

TEST(HashTable, DeleteAllDataDropsTheWholeBucket)
{
    CHashTable t(10);
    t.AddData(4, D(1));
    t.AddData(14, D(2));
    t.AddData(5, D(3));
    t.DeleteAllData(4);
    EXPECT_EQ(t.GetCount(), 3);  // not adjusted
    EXPECT_EQ(t.FindFirstData(14), nullptr);
    EXPECT_EQ(Iterate(t), std::vector<int>{3});
    t.DeleteAllData(24);  // the bucket is gone: nothing happens
    t.AddData(24, D(4));
    EXPECT_EQ(V(t.FindFirstData(24)), 4);
    t.DeleteAll();
    EXPECT_EQ(t.GetCount(), 0);

    // Here the count follows; one bucket, so every key goes.
    CCRCHashTable c(1);
    c.AddData("alpha", 5, D(1));
    c.AddData("alpha", 5, D(2));
    c.AddData("beta", 4, D(3));
    c.DeleteAllData("alpha", 5);
    EXPECT_EQ(c.GetCount(), 0);
    EXPECT_EQ(c.FindFirstData("beta", 4), nullptr);
    c.AddData("beta", 4, D(3));
    EXPECT_EQ(V(c.FindFirstData("beta", 4)), 3);
}

TEST(HashTable, UnusableBucketCountsFailSafely)
{
    CHashTable zero(0);
    EXPECT_EQ(zero.AddData(1, D(1)), 0);
    EXPECT_EQ(zero.FindFirstData(1), nullptr);
    EXPECT_EQ(zero.GetCount(), 0);
    tagHASHPOSITION pos{};
    EXPECT_EQ(zero.GetHeadPosition(pos), 0);
    CCRCHashTable negative(-3);
    negative.AddData("k", 1, D(1));
    EXPECT_EQ(negative.GetCount(), 0);
    EXPECT_EQ(negative.IsDataAvailable("k", 1), 0);

    CHashTable one(1);
    one.AddData(INT32_MIN, D(5));
    EXPECT_EQ(V(one.FindFirstData(INT32_MIN)), 5);
    EXPECT_EQ(one.InitHashTable(), 1);  // empties the table
    EXPECT_EQ(one.GetCount(), 0);
    EXPECT_EQ(one.FindFirstData(INT32_MIN), nullptr);
}

TEST(CRCHashTable, KeysAreCopiedBytesOfAGivenLength)
{
    CCRCHashTable t(8);
    char key[] = "abcdef";
    t.AddData(key, 3, D(3));
    t.AddData(key, 4, D(4));
    t.AddData(key, -1, D(6));  // measured: all six bytes
    t.AddData(nullptr, 0, D(100));
    memcpy(key, "xyzxyz", 6);  // the table holds its own copies
    EXPECT_EQ(t.GetCount(), 4);
    EXPECT_EQ(V(t.FindFirstData("abc", 3)), 3);
    EXPECT_EQ(V(t.FindFirstData("abcd", 4)), 4);
    EXPECT_EQ(V(t.FindFirstData("abcdef", 6)), 6);
    EXPECT_EQ(V(t.FindFirstData("", 0)), 100);
    EXPECT_EQ(t.FindFirstData("abd", 3), nullptr);
    EXPECT_EQ(t.IsDataAvailable(key, 3), 0);

    t.AddData("abc", 3, D(33));
    EXPECT_EQ(V(t.FindFirstData("abc", 3)), 33);
    EXPECT_EQ(V(t.FindNextData("abc", 3)), 3);
    EXPECT_EQ(t.SetData("abc", 3, D(34)), 1);
    CPtrArrayCtrl found;
    found.AddData(D(1), -1);
    t.FindAllCRCHashData(&found, "abc", 3);
    EXPECT_EQ(Values(found), (std::vector<int>{1, 34, 33}));

    // Collecting touched each match in turn, so the newest is nearest again.
    EXPECT_EQ(V(t.DeleteFirstData("abc", 3)), 33);
    EXPECT_EQ(t.DeleteFirstData("zzz", 3), nullptr);
    EXPECT_EQ(t.GetCount(), 4);
    std::vector<int> all = Iterate(t);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, (std::vector<int>{4, 6, 34, 100}));
    t.DeleteAll();
    EXPECT_EQ(t.GetCount(), 0);
    EXPECT_EQ(Iterate(t), std::vector<int>{});
}

TEST(CRCHashTable, FindCallbacksCompareKeys)
{
    int const key = -42;
    struct {
        int key;
        void const* data;
    } entry{-42, nullptr};
    EXPECT_EQ(HashFind(&entry, reinterpret_cast<void const*>(static_cast<intptr_t>(key))), 1);
    EXPECT_EQ(HashFind(&entry, reinterpret_cast<void const*>(static_cast<intptr_t>(42))), 0);

    unsigned char bytes[] = {1, 2, 3};
    unsigned char same[] = {1, 2, 3};
    struct Probe {
        unsigned char* bytes;
        int length;
        unsigned int digest;
    };
    Probe a{bytes, 3, CCRC::CalculateDigest(bytes, 3)};
    Probe b{same, 3, a.digest};
    EXPECT_EQ(CRCHashFind(&a, &b), 1);
    b.digest ^= 1;  // digests differ: the bytes are not even compared
    EXPECT_EQ(CRCHashFind(&a, &b), 0);
    b = Probe{same, 2, CCRC::CalculateDigest(same, 2)};
    EXPECT_EQ(CRCHashFind(&a, &b), 0);
}
