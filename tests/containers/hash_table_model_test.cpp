// The tables against a model built from the specified parts: one
// CPtrArrayCtrl of entry records per bucket, searched with its own
// FindFirst / FindNext and the exported callbacks. Random operation
// sequences over few keys and few buckets exercise duplicates, shared
// buckets, stale cursors and buckets longer than the tables' fast paths.
#include <palvet/containers/crc.h>
#include <palvet/containers/hash_table.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

void const* D(int v)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(v));
}

// Entry layouts as the tables define them, so the exported callbacks read
// them.
struct IntRecord {
    int key;
    void const* data;
};

struct CrcRecord {
    unsigned char* bytes;
    int length;
    unsigned int digest;
    void const* data;
};

struct IntModel {
    static int Bucket(int key, int n)
    {
        return static_cast<int>((key < 0 ? 0u - unsigned(key) : unsigned(key)) % unsigned(n));
    }
    static IntRecord* Make(int key, void const* data) { return new IntRecord{key, data}; }
    static void Free(void* r) { delete static_cast<IntRecord*>(r); }
};

struct Model {
    explicit Model(int n) : buckets(static_cast<size_t>(n)) {}
    ~Model()
    {
        for (auto& b : buckets)
            Drop(b);
    }
    void Drop(std::unique_ptr<CPtrArrayCtrl>& b)
    {
        if (!b)
            return;
        for (int i = 0; i < b->GetCount(); ++i)
            free_record(b->GetAt(i));
        b.reset();
    }
    std::vector<std::unique_ptr<CPtrArrayCtrl>> buckets;
    void (*free_record)(void*) = nullptr;
    void const* (*data_of)(void*) = nullptr;

    // The operations, given a bucket and a probe for the exported callback.
    void const* Find(int b, void const* probe, int (*cb)(void const*, void const*), bool first, bool remove,
                     int& removed)
    {
        removed = 0;
        CPtrArrayCtrl* const a = buckets[static_cast<size_t>(b)].get();
        if (a == nullptr)
            return nullptr;
        int const pos = first ? a->FindFirst(probe, cb) : a->FindNext(probe, cb);
        if (pos < 0)
            return nullptr;
        void* const r = a->GetAt(pos);
        void const* const data = data_of(r);
        if (remove) {
            free_record(r);
            a->DeleteAt(pos, 1);
            removed = 1;
        }
        return data;
    }
};

std::vector<int> Values(CPtrCtrl& c)
{
    std::vector<int> v;
    for (int i = 0; i < c.GetCount(); ++i)
        v.push_back(static_cast<int>(reinterpret_cast<intptr_t>(c.GetAt(i))));
    return v;
}

}  // namespace

TEST(HashTableModel, IntTableMatchesBucketArrays)
{
    // With 16 buckets the table is held between one and two entries per
    // bucket (adds become deletes above that), where it keeps its buckets
    // in cells; the others soon fill beyond.
    for (int buckets : {1, 2, 3, 7, 16}) {
        for (unsigned seed = 1; seed <= 6; ++seed) {
            SCOPED_TRACE(::testing::Message() << "buckets " << buckets << " seed " << seed);
            CHashTable table(buckets);
            Model model(buckets);
            model.free_record = IntModel::Free;
            model.data_of = [](void* r) { return static_cast<IntRecord*>(r)->data; };
            int count = 0;
            // Few keys per bucket count: long buckets with many duplicates
            // (beyond 64 entries for one bucket), and short ones.
            int const keys = seed % 2 ? 5 : 40;
            std::mt19937 rng(seed * 7919u + static_cast<unsigned>(buckets));
            int next = 1;
            for (int step = 0; step < 6000; ++step) {
                int const key = static_cast<int>(rng() % static_cast<unsigned>(keys)) - keys / 3;
                int op = static_cast<int>(rng() % 100);
                if (buckets == 16 && count >= 2 * buckets && op < 45)
                    op = 75;  // DeleteFirstData
                int const b = IntModel::Bucket(key, buckets);
                auto& slot = model.buckets[static_cast<size_t>(b)];
                int removed = 0;
                if (op < 45) {
                    if (!slot)
                        slot = std::make_unique<CPtrArrayCtrl>();
                    int const want = slot->AddData(IntModel::Make(key, D(next)), -1);
                    ASSERT_EQ(table.AddData(key, D(next)), want) << "step " << step;
                    ++next;
                    ++count;
                } else if (op < 60) {
                    ASSERT_EQ(table.FindFirstData(key), model.Find(b, D(key), HashFind, true, false, removed))
                        << "first, step " << step;
                } else if (op < 75) {
                    ASSERT_EQ(table.FindNextData(key), model.Find(b, D(key), HashFind, false, false, removed))
                        << "next, step " << step;
                } else if (op < 82) {
                    ASSERT_EQ(table.DeleteFirstData(key), model.Find(b, D(key), HashFind, true, true, removed));
                    count -= removed;
                } else if (op < 88) {
                    ASSERT_EQ(table.DeleteNextData(key), model.Find(b, D(key), HashFind, false, true, removed));
                    count -= removed;
                } else if (op < 91) {
                    int want = 0;
                    if (slot) {
                        int const pos = slot->FindFirst(D(key), HashFind);
                        if (pos >= 0) {
                            static_cast<IntRecord*>(slot->GetAt(pos))->data = D(next);
                            want = 1;
                        }
                    }
                    ASSERT_EQ(table.SetData(key, D(next)), want);
                    ++next;
                } else if (op < 95) {
                    int const want = slot && slot->FindFirst(D(key), HashFind) >= 0 ? 1 : 0;
                    ASSERT_EQ(table.IsDataAvailable(key), want);
                } else if (op < 98) {
                    CPtrArrayCtrl got, want;
                    table.FindAllHashData(&got, key);
                    if (slot) {
                        CPtrArrayCtrl hits;
                        slot->FindAll(&hits, D(key), HashFind);
                        for (int i = 0; i < hits.GetCount(); ++i)
                            want.AddData(static_cast<IntRecord*>(slot->GetAt(int(reinterpret_cast<intptr_t>(hits.GetAt(i)))))->data, -1);
                    }
                    ASSERT_EQ(Values(got), Values(want));
                } else if (op < 99) {
                    // The whole bucket goes; the table's count stays.
                    table.DeleteAllData(key);
                    model.Drop(slot);
                } else {
                    // Iteration, which also moves each bucket's current
                    // position through GetDataAt.
                    std::vector<int> got, want;
                    tagHASHPOSITION pos{};
                    for (int more = table.GetHeadPosition(pos); more; more = table.MoveHashPositionNext(pos))
                        got.push_back(int(reinterpret_cast<intptr_t>(table.GetDataAt(pos))));
                    for (auto& a : model.buckets)
                        if (a)
                            for (int i = 0; i < a->GetCount(); ++i)
                                want.push_back(int(reinterpret_cast<intptr_t>(static_cast<IntRecord*>(a->GetAt(i))->data)));
                    ASSERT_EQ(got, want);
                }
            }
            EXPECT_EQ(table.GetCount(), count);
        }
    }
}

TEST(HashTableModel, CrcTableMatchesBucketArrays)
{
    std::vector<std::string> const names = {"", "a", "b", "ab", "ba", "abc", "key", "kez", "longer key", "x"};
    for (int buckets : {1, 3}) {
        for (unsigned seed = 1; seed <= 4; ++seed) {
            SCOPED_TRACE(::testing::Message() << "buckets " << buckets << " seed " << seed);
            CCRCHashTable table(buckets);
            Model model(buckets);
            model.free_record = [](void* r) {
                delete[] static_cast<CrcRecord*>(r)->bytes;
                delete static_cast<CrcRecord*>(r);
            };
            model.data_of = [](void* r) { return static_cast<CrcRecord*>(r)->data; };
            std::mt19937 rng(seed);
            int next = 1;
            for (int step = 0; step < 3000; ++step) {
                std::string const& name = names[rng() % names.size()];
                int const len = static_cast<int>(name.size());
                unsigned const digest = CCRC::CalculateDigest(name.data(), static_cast<unsigned>(len));
                CrcRecord probe{reinterpret_cast<unsigned char*>(const_cast<char*>(name.data())), len, digest, nullptr};
                int const b = static_cast<int>(digest % static_cast<unsigned>(buckets));
                auto& slot = model.buckets[static_cast<size_t>(b)];
                int const op = static_cast<int>(rng() % 100);
                int removed = 0;
                if (op < 45) {
                    if (!slot)
                        slot = std::make_unique<CPtrArrayCtrl>();
                    auto* r = new CrcRecord{new unsigned char[static_cast<size_t>(len) + 1], len, digest, D(next)};
                    memcpy(r->bytes, name.data(), static_cast<size_t>(len));
                    slot->AddData(r, -1);
                    table.AddData(name.data(), len, D(next));
                    ++next;
                } else if (op < 65) {
                    ASSERT_EQ(table.FindFirstData(name.data(), len), model.Find(b, &probe, CRCHashFind, true, false, removed));
                } else if (op < 85) {
                    ASSERT_EQ(table.FindNextData(name.data(), len), model.Find(b, &probe, CRCHashFind, false, false, removed));
                } else if (op < 92) {
                    ASSERT_EQ(table.DeleteFirstData(name.data(), len), model.Find(b, &probe, CRCHashFind, true, true, removed));
                } else {
                    ASSERT_EQ(table.DeleteNextData(name.data(), len), model.Find(b, &probe, CRCHashFind, false, true, removed));
                }
            }
        }
    }
}
