// The hash tables when memory runs out: every nothrow allocation the library
// makes can be made to fail, one at a time, while a table grows through its
// layouts. A failed add adds nothing; a failure anywhere else (a table
// switching layouts) must leave every entry findable in its order.
#include <palvet/containers/hash_table.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

namespace {

// The nothrow allocation that fails: counted down from the value set, 0 for
// none.
int g_failIn = 0;

bool FailNow()
{
    return g_failIn > 0 && --g_failIn == 0;
}

void* Allocate(std::size_t n)
{
    return FailNow() ? nullptr : std::malloc(n != 0 ? n : 1);
}

void* AllocateAligned(std::size_t n, std::align_val_t al)
{
    auto const a = static_cast<std::size_t>(al);
    return FailNow() ? nullptr : std::aligned_alloc(a, (n + a - 1) / a * a);
}

}  // namespace

// Only the nothrow forms are replaced: the standard library's deletes free
// what malloc and aligned_alloc return.
void* operator new(std::size_t n, std::nothrow_t const&) noexcept
{
    return Allocate(n);
}
void* operator new[](std::size_t n, std::nothrow_t const&) noexcept
{
    return Allocate(n);
}
void* operator new(std::size_t n, std::align_val_t al, std::nothrow_t const&) noexcept
{
    return AllocateAligned(n, al);
}
void* operator new[](std::size_t n, std::align_val_t al, std::nothrow_t const&) noexcept
{
    return AllocateAligned(n, al);
}

namespace {

void const* D(int v)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(v));
}

// Keys over few buckets, so that a table passes through both layouts.
int KeyOf(int i)
{
    return (i * 7) % 23 - 5;
}

// What a table gives for key: its data from FindFirstData on, through
// FindNextData.
template <class Find>
std::multiset<intptr_t> Found(Find find)
{
    std::multiset<intptr_t> got;
    for (void* d = find(true); d != nullptr; d = find(false))
        got.insert(reinterpret_cast<intptr_t>(d));
    return got;
}

TEST(HashTableOutOfMemory, IntTableKeepsWhatItReportsAdded)
{
    constexpr int kAdds = 90;
    for (int failAt = 1; failAt <= 160; ++failAt) {
        SCOPED_TRACE(::testing::Message() << "allocation " << failAt << " fails");
        CHashTable table(8);
        std::map<int, std::multiset<intptr_t>> added;
        int count = 0, failed = 0;
        g_failIn = failAt;
        for (int i = 1; i <= kAdds; ++i) {
            if (table.AddData(KeyOf(i), D(i)) == 0 && table.FindFirstData(KeyOf(i)) != D(i)) {
                ++failed;
                continue;
            }
            added[KeyOf(i)].insert(i);
            ++count;
        }
        g_failIn = 0;
        EXPECT_LE(failed, 1);
        EXPECT_EQ(table.GetCount(), count);
        for (auto const& [key, data] : added) {
            auto const find = [&table, key = key](bool first) {
                return first ? table.FindFirstData(key) : table.FindNextData(key);
            };
            EXPECT_EQ(Found(find), data) << "key " << key;
        }
        int iterated = 0;
        tagHASHPOSITION pos{};
        for (int more = table.GetHeadPosition(pos); more; more = table.MoveHashPositionNext(pos))
            ++iterated;
        EXPECT_EQ(iterated, count);
    }
}

TEST(HashTableOutOfMemory, CrcTableKeepsWhatItReportsAdded)
{
    constexpr int kAdds = 60;
    for (int failAt = 1; failAt <= 160; ++failAt) {
        SCOPED_TRACE(::testing::Message() << "allocation " << failAt << " fails");
        CCRCHashTable table(4);
        std::map<std::string, std::multiset<intptr_t>> added;
        g_failIn = failAt;
        for (int i = 1; i <= kAdds; ++i) {
            std::string const key = "k" + std::to_string(KeyOf(i));
            int const before = table.GetCount();
            table.AddData(key.data(), static_cast<int>(key.size()), D(i));
            if (table.GetCount() != before)
                added[key].insert(i);
        }
        g_failIn = 0;
        int count = 0;
        for (auto const& [key, data] : added) {
            auto const find = [&table, &key = key](bool first) {
                int const len = static_cast<int>(key.size());
                return first ? table.FindFirstData(key.data(), len) : table.FindNextData(key.data(), len);
            };
            EXPECT_EQ(Found(find), data) << "key " << key;
            count += static_cast<int>(data.size());
        }
        EXPECT_GE(count, kAdds - 1);
        EXPECT_EQ(table.GetCount(), count);
    }
}

}  // namespace
