#include <palvet/containers/hash_table.h>

#include <palvet/containers/crc.h>

#include "ring_search_internal.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

#include <sys/mman.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#define PALVET_HOT_INLINE inline __attribute__((always_inline))

namespace palvet::detail {

// The hash tables run their buckets' find machinery on storage they lay
// out themselves, so they reach the array's fields directly.
struct PtrArrayAccess {
    static void const**& Data(CPtrArrayCtrl& a) { return a.m_data; }
    static int& Count(CPtrArrayCtrl& a) { return a.m_count; }
    static int& Capacity(CPtrArrayCtrl& a) { return a.m_capacity; }
    static int& Cursor(CPtrArrayCtrl& a) { return a.m_curPos; }
    static FindState Find(CPtrArrayCtrl const& a) { return {a.m_findStart, a.m_findBackward, a.m_findForward}; }
    // As SetFindData, for indexes known to be positions.
    static void RecordFindInRange(CPtrArrayCtrl& a, int start, int backward, int forward)
    {
        // Stored unconditionally: a test of the old values would be a branch
        // on loaded data, mispredicted whenever lookups move around.
        a.m_findStart = start;
        a.m_findBackward = backward;
        a.m_findForward = forward;
    }
    // As SetFindData.
    static void RecordFind(CPtrArrayCtrl& a, int start, int backward, int forward)
    {
        a.m_findStart = ClampFindIndex(start, a.m_count);
        a.m_findBackward = ClampFindIndex(backward, a.m_count);
        a.m_findForward = ClampFindIndex(forward, a.m_count);
    }
    // A FindFirst over count entries from start that met its only match at
    // match, kept as (start, match, -2 - count) and expanded by FindExpanded:
    // recorded positions are never below -1, so the form is unambiguous.
    // Only the hash tables' buckets hold it, and only their own FindNext
    // reads a bucket's find state.
    static void RecordFindDeferred(CPtrArrayCtrl& a, int start, int match, int count)
    {
        a.m_findStart = start;
        a.m_findBackward = match;
        a.m_findForward = -2 - count;
    }
    // The find state, a deferred one expanded: the positions where the
    // outward search stopped, one short of the match backward when forward
    // won (forward distance d <= count - d; not past the start), as far as
    // the match forward when backward won.
    static FindState FindExpanded(CPtrArrayCtrl const& a)
    {
        if (a.m_findForward >= -1)
            return Find(a);
        int const n = -2 - a.m_findForward;
        int const c = a.m_findStart;
        int const j = a.m_findBackward;
        int const d = j >= c ? j - c : j - c + n;
        bool const forward = 2 * d <= n;
        int other = c - d + (forward && d > 0 ? 1 : 0);
        other += other < 0 ? n : 0;
        return forward ? FindState{c, other, j} : FindState{c, j, other};
    }
    // What an array moving elsewhere takes along besides its entries.
    static void CopyState(CPtrArrayCtrl& to, CPtrArrayCtrl const& from)
    {
        to.m_count = from.m_count;
        to.m_curPos = from.m_curPos;
        to.m_findStart = from.m_findStart;
        to.m_findBackward = from.m_findBackward;
        to.m_findForward = from.m_findForward;
    }
};

}  // namespace palvet::detail

namespace {

using palvet::detail::PtrArrayAccess;

// v, unknown to the optimiser: a value computed with masks stays so instead
// of becoming a branch on loaded data.
PALVET_HOT_INLINE int Opaque(int v)
{
    asm("" : "+r"(v));
    return v;
}

// A byte-string key record: what CRCHashFind reads of an entry, and the
// lookup probe, so both compare through the same type.
struct CrcKey {
    unsigned char* bytes;
    int length;
    unsigned int digest;
};

void const* IntKeyArg(int key)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(key));
}

// |key| mod count. Done in unsigned arithmetic so that INT_MIN, whose
// negation overflows, still lands on a valid bucket; every other key gets
// the same bucket as the signed formula.
int IntBucket(int key, int count)
{
    unsigned int const magnitude = key < 0 ? 0u - static_cast<unsigned int>(key) : static_cast<unsigned int>(key);
    return static_cast<int>(magnitude % static_cast<unsigned int>(count));
}

CrcKey MakeProbe(void const* key, int length)
{
    auto* bytes = static_cast<unsigned char*>(const_cast<void*>(key));
    if (bytes == nullptr) {
        length = 0;
    } else if (length < 0) {
        size_t const measured = strlen(static_cast<char const*>(key));
        length = measured > static_cast<size_t>(INT_MAX) ? INT_MAX : static_cast<int>(measured);
    }
    return {bytes, length, CCRC::CalculateDigest(bytes, static_cast<unsigned int>(length))};
}

bool SameKey(CrcKey const& a, CrcKey const& b)
{
    if (a.length != b.length || a.digest != b.digest)
        return false;
    return a.length <= 0 || memcmp(a.bytes, b.bytes, static_cast<size_t>(a.length)) == 0;
}

// Per key kind: the record the find callback reads (Record), the lookup key,
// and the 32-bit tag a bucket keeps of each entry for vector compares.
struct IntTraits {
    // The key itself: the tag array holds the records, and equal tags are
    // equal keys.
    using Record = int;
    using Key = int;
    static constexpr bool kRecordIsTag = true;
    static constexpr bool kTagDecides = true;
    static bool Matches(int record, int key) { return record == key; }
    static std::uint32_t Tag(int key) { return static_cast<std::uint32_t>(key); }
    static void Release(int) {}
    static void const* Callback(int key) { return IntKeyArg(key); }
    static constexpr int (*kFind)(void const*, void const*) = HashFind;
};

struct CrcTraits {
    using Record = CrcKey;
    using Key = CrcKey;
    static constexpr bool kRecordIsTag = false;
    static constexpr bool kTagDecides = false;
    static bool Matches(CrcKey const& record, CrcKey const& key) { return SameKey(record, key); }
    static std::uint32_t Tag(CrcKey const& key) { return key.digest; }
    static void Release(CrcKey& record) { delete[] record.bytes; }
    static void const* Callback(CrcKey const& key) { return &key; }
    static constexpr int (*kFind)(void const*, void const*) = CRCHashFind;
};

// A table reaches its buckets in one of two layouts, switched as it fills.
// In the cell layout the bucket table is an array of cells, one per bucket,
// each a cache line long and aligned: a bucket's CPtrArrayCtrl lives in its
// cell, found from the key's bucket index alone, so that a lookup's first
// load waits for no other. A cell whose array has capacity 0 holds no
// bucket: cells start zeroed and go back to zero when their bucket is
// destroyed. In the slot layout the table holds a pointer per bucket (null
// until its first entry) to a block that starts with the bucket's array.
// Cells suit a table of up to a few entries per bucket, which a lookup then
// mostly reads in one line; the slots, a pointer each, suit sparse tables
// (whose cells would mostly stand empty) and full ones (whose buckets have
// outgrown their cells, and whose slots the caches hold better).
//
// The entries of a bucket live in its storage, [tags][data][records], each
// part capacity long. In the cell layout the storage is in the rest of the
// cell while the entries fit, then in a block of its own. In the slot
// layout it follows the bucket's array in the block the slot points at, the
// bucket's home, so that a lookup finds header and tags together. The
// array's data pointer points at the storage, which grows by doubling. Tag
// i is a packed copy of entry i's key (or digest); data i is its data
// pointer. An int key is its own tag, so the tags are the int table's
// records and it has no record part. A lookup compares the packed tags a vector at a time
// and reads the data beside them; the result is the one the array's find
// machinery gives. The array's own storage management never runs on a
// bucket: every change goes through here, with the array's semantics
// (positions, current position, find state). Nor does its find: a bucket's
// find state may be in the deferred form that only FindExpanded reads.
constexpr size_t kCellBytes = 64;
static_assert(sizeof(CPtrArrayCtrl) <= kCellBytes, "an array fits its cell");

enum class Layout : int { kSlots, kCells };

// In front of the slots or cells, in the same allocation: the table's field
// points just past it.
struct alignas(kCellBytes) TableHead {
    Layout layout;
};
constexpr size_t kHeadBytes = sizeof(TableHead);
static_assert(kHeadBytes == kCellBytes, "cells stay aligned behind the head");

TableHead* Head(CPtrArrayCtrl** table)
{
    return reinterpret_cast<TableHead*>(reinterpret_cast<char*>(table) - kHeadBytes);
}

// Asks for transparent huge pages for the whole 2 MiB pages within the
// bytes at p, before they are first touched. Lookups in cells land anywhere
// in the table, and with 4 KiB pages a table of some megabytes costs most of
// them a page walk too (huge pages measured about 4% faster at a million
// buckets). Where the kernel has no such pages this does nothing.
void AdviseHugePages(void* p, size_t bytes)
{
    constexpr uintptr_t kHugePage = uintptr_t{2} << 20;
    uintptr_t const from = (reinterpret_cast<uintptr_t>(p) + kHugePage - 1) & ~(kHugePage - 1);
    uintptr_t const to = (reinterpret_cast<uintptr_t>(p) + bytes) & ~(kHugePage - 1);
    if (to > from)
        madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
}

// Zeroed slots or cells for count buckets; null when the memory cannot be
// had.
CPtrArrayCtrl** AllocateTable(int count, Layout layout)
{
    size_t const each = layout == Layout::kCells ? kCellBytes : sizeof(CPtrArrayCtrl*);
    if (count < 1 || static_cast<size_t>(count) > (SIZE_MAX - kHeadBytes) / each)
        return nullptr;
    size_t const bytes = kHeadBytes + static_cast<size_t>(count) * each;
    void* const base = ::operator new(bytes, std::align_val_t{kCellBytes}, std::nothrow);
    if (base == nullptr)
        return nullptr;
    if (layout == Layout::kCells)
        AdviseHugePages(base, bytes);
    memset(base, 0, bytes);
    new (base) TableHead{layout};
    return reinterpret_cast<CPtrArrayCtrl**>(static_cast<char*>(base) + kHeadBytes);
}

void FreeTable(CPtrArrayCtrl** table)
{
    if (table == nullptr)
        return;
    ::operator delete(Head(table), std::align_val_t{kCellBytes});
}

template <class Traits>
struct Bucket {
    using Record = typename Traits::Record;
    using Key = typename Traits::Key;
    // Scalars travel in registers, records by reference.
    using KeyArg = std::conditional_t<std::is_scalar_v<Key>, Key, Key const&>;

    static constexpr int kTagGroup = 8;  // tags compared per step
    static constexpr size_t kTagBytes = sizeof(std::uint32_t);
    static constexpr size_t kInlineAt = sizeof(CPtrArrayCtrl);  // the storage within the cell
    static_assert(kInlineAt % alignof(void const*) == 0 && kInlineAt % alignof(Record) == 0,
                  "the storage follows the array");
    static_assert(!Traits::kRecordIsTag || sizeof(Record) == kTagBytes, "a record-tag is a tag");
    static_assert(sizeof(Record) % alignof(void const*) == 0 || Traits::kRecordIsTag, "records stay aligned");

    // Offsets within a storage of the given capacity. Tag slots are an even
    // number so that what follows stays aligned.
    static constexpr size_t TagSlots(int capacity) { return static_cast<size_t>(static_cast<unsigned>((capacity + 1) & -2)); }
    static constexpr size_t DataOffset(int capacity) { return TagSlots(capacity) * kTagBytes; }
    static constexpr size_t RecordsOffset(int capacity) { return DataOffset(capacity) + static_cast<size_t>(capacity) * sizeof(void const*); }
    static constexpr size_t StorageBytes(int capacity)
    {
        return RecordsOffset(capacity) + (Traits::kRecordIsTag ? 0 : static_cast<size_t>(capacity) * sizeof(Record));
    }

    // The entries that fit the cell: the largest power of two, or none.
    static constexpr int InlineCapacity()
    {
        int capacity = 64;
        while (capacity > 0 && kInlineAt + StorageBytes(capacity) > kCellBytes)
            capacity /= 2;
        return capacity;
    }
    static constexpr int kInline = InlineCapacity();
    // With up to two entries, the two probes from the cursor see them all.
    static constexpr bool kProbesCoverInline = Traits::kTagDecides && kInline <= 2;
    // Group reads from tag 0 (32 bytes) stay in the cell, or never happen
    // on a bucket held in its cell.
    static_assert(kInline == 0 || kProbesCoverInline || (kInline <= kTagGroup && kInlineAt + kTagGroup * kTagBytes <= kCellBytes),
                  "a tag group read stays in the cell");

    // Group reads may run past the tags into what follows, never past the
    // block. A bucket of up to eight entries reads one group from tag 0;
    // up to 32 entries (capacity 16 or more), four groups from tag 0;
    // beyond (capacity 64 or more), groups of eight from multiples of eight
    // below the count, which end within the capacity.
    static constexpr size_t BlockBytes(int capacity)
    {
        size_t const bytes = StorageBytes(capacity);
        size_t const reach = (capacity <= kTagGroup ? 1 : capacity <= 4 * kTagGroup ? 4 : 0) * kTagGroup * kTagBytes;
        return bytes < reach ? reach : bytes;
    }

    static char* Storage(CPtrArrayCtrl* a) { return reinterpret_cast<char*>(PtrArrayAccess::Data(*a)); }
    static bool Exists(CPtrArrayCtrl* a) { return PtrArrayAccess::Capacity(*a) != 0; }
    // Of a bucket in a cell: whether its storage is there too.
    static bool StorageInCell(CPtrArrayCtrl* a) { return PtrArrayAccess::Capacity(*a) <= kInline; }

    static std::uint32_t* Tags(CPtrArrayCtrl* a) { return reinterpret_cast<std::uint32_t*>(Storage(a)); }

    static void const** Data(CPtrArrayCtrl* a) { return DataIn(a, Storage(a)); }

    // Data(a), given a's storage.
    static void const** DataIn(CPtrArrayCtrl* a, char* storage)
    {
        int const capacity = PtrArrayAccess::Capacity(*a);
        // A kind whose buckets open with an even capacity only ever has even
        // ones (they double), whose tag slots are the capacity itself: two
        // operations fewer on every lookup's way to its data.
        size_t const offset = kOpenCapacity % 2 == 0 ? static_cast<size_t>(capacity) * kTagBytes : DataOffset(capacity);
        return reinterpret_cast<void const**>(storage + offset);
    }

    // Where a lookup finds the storage: a home's follows its array, so its
    // address needs no load (nor a wait for the header's line).
    static char* LookupStorage(CPtrArrayCtrl* a, bool inCell) { return inCell ? Storage(a) : reinterpret_cast<char*>(a) + kInlineAt; }

    static Record* Records(CPtrArrayCtrl* a)
    {
        if (Traits::kRecordIsTag)
            return reinterpret_cast<Record*>(Tags(a));
        return reinterpret_cast<Record*>(Storage(a) + RecordsOffset(PtrArrayAccess::Capacity(*a)));
    }

    static constexpr int kMaxCapacity = 1 << 26;
    static constexpr int kOpenCapacity = kInline > 0 ? kInline : 1;

    // A zeroed block for the storage of capacity entries, behind room for
    // an array when it is to be a home: group reads cover bytes past the
    // count, masked off afterwards, so every byte is kept defined.
    static char* NewBlock(int capacity, bool home)
    {
        size_t const bytes = (home ? kInlineAt : 0) + BlockBytes(capacity);
        void* const block = ::operator new(bytes, std::nothrow);
        if (block != nullptr)
            memset(block, 0, bytes);
        return static_cast<char*>(block);
    }

    // The first n entries of a storage of capacity fromCapacity, copied to
    // one of capacity toCapacity.
    static void CopyEntries(char* to, int toCapacity, char const* from, int fromCapacity, int n)
    {
        auto const count = static_cast<size_t>(n);
        memcpy(to, from, count * kTagBytes);
        memcpy(to + DataOffset(toCapacity), from + DataOffset(fromCapacity), count * sizeof(void const*));
        if (!Traits::kRecordIsTag)
            memcpy(to + RecordsOffset(toCapacity), from + RecordsOffset(fromCapacity), count * sizeof(Record));
    }

    // An array at at (a cell or a home's room) over the given storage.
    static CPtrArrayCtrl* Place(void* at, char* storage, int capacity)
    {
        auto* const a = new (at) CPtrArrayCtrl;
        PtrArrayAccess::Data(*a) = reinterpret_cast<void const**>(storage);
        PtrArrayAccess::Capacity(*a) = capacity;
        return a;
    }

    // Ends the array at a; its storage is left alone, not the array's to
    // delete.
    static void Unplace(CPtrArrayCtrl* a)
    {
        PtrArrayAccess::Data(*a) = nullptr;
        PtrArrayAccess::Count(*a) = 0;
        a->~CPtrArrayCtrl();
    }

    // Opens a bucket in the empty cell, or (cell null) in a home of its own.
    // Null when memory ran out.
    static CPtrArrayCtrl* Open(CPtrArrayCtrl* cell)
    {
        if (cell != nullptr && kInline > 0)
            return Place(cell, reinterpret_cast<char*>(cell) + kInlineAt, kInline);
        char* const block = NewBlock(kOpenCapacity, cell == nullptr);
        if (block == nullptr)
            return nullptr;
        if (cell != nullptr)
            return Place(cell, block, kOpenCapacity);
        return Place(block, block + kInlineAt, kOpenCapacity);
    }

    // Frees the bucket's storage and the bucket: a cell goes back to zero,
    // a home is freed. The records' own resources must be released first.
    static void Close(CPtrArrayCtrl* a, bool inCell)
    {
        if (!inCell) {
            Unplace(a);
            ::operator delete(static_cast<void*>(a));
            return;
        }
        if (!StorageInCell(a))
            ::operator delete(Storage(a));
        Unplace(a);
        memset(static_cast<void*>(a), 0, kCellBytes);
    }

    // The entries moved to a storage of twice the capacity. A bucket in a
    // cell stays there; one in a home moves to a new home (the slot must
    // follow). Null (and a left intact) when memory ran out.
    static CPtrArrayCtrl* Grow(CPtrArrayCtrl* a, bool inCell)
    {
        int const capacity = PtrArrayAccess::Capacity(*a);
        if (capacity >= kMaxCapacity)
            return nullptr;
        if (!inCell) {
            CPtrArrayCtrl* const b = Copy(a, nullptr, capacity * 2);
            if (b != nullptr)
                Close(a, false);
            return b;
        }
        char* const block = NewBlock(capacity * 2, false);
        if (block == nullptr)
            return nullptr;
        CopyEntries(block, capacity * 2, Storage(a), capacity, PtrArrayAccess::Count(*a));
        if (!StorageInCell(a))
            ::operator delete(Storage(a));
        PtrArrayAccess::Data(*a) = reinterpret_cast<void const**>(block);
        PtrArrayAccess::Capacity(*a) = capacity * 2;
        return a;
    }

    // Appends to the bucket at a: a cell (opened when empty), or a slot
    // (a new home when null; it follows the bucket as it grows). The entry's
    // index, or -1 when memory ran out.
    static int Append(CPtrArrayCtrl*& a, bool inCell, Record const& record, void const* data)
    {
        if (inCell ? !Exists(a) : a == nullptr) {
            CPtrArrayCtrl* const opened = Open(inCell ? a : nullptr);
            if (opened == nullptr)
                return -1;
            a = opened;
        }
        int const n = PtrArrayAccess::Count(*a);
        if (n == PtrArrayAccess::Capacity(*a)) {
            CPtrArrayCtrl* const grown = Grow(a, inCell);
            if (grown == nullptr)
                return -1;
            a = grown;
        }
        Tags(a)[n] = Traits::Tag(record);
        if (!Traits::kRecordIsTag)
            Records(a)[n] = record;
        Data(a)[n] = data;
        PtrArrayAccess::Count(*a) = n + 1;
        PtrArrayAccess::Cursor(*a) = n;  // as AddData
        return n;
    }

    // A copy of bucket a, entries and state, placed in the empty cell (its
    // storage there when the entries fit, else in a block of the given
    // capacity) or, when cell is null, in a new home of that capacity. Null
    // when memory ran out; a is left as it was either way.
    static CPtrArrayCtrl* Copy(CPtrArrayCtrl* a, CPtrArrayCtrl* cell, int capacity)
    {
        int const n = PtrArrayAccess::Count(*a);
        CPtrArrayCtrl* b;
        if (cell != nullptr && kInline > 0 && n <= kInline) {
            capacity = kInline;
            b = Place(cell, reinterpret_cast<char*>(cell) + kInlineAt, capacity);
        } else {
            char* const block = NewBlock(capacity, cell == nullptr);
            if (block == nullptr)
                return nullptr;
            b = cell != nullptr ? Place(cell, block, capacity) : Place(block, block + kInlineAt, capacity);
        }
        CopyEntries(Storage(b), capacity, Storage(a), PtrArrayAccess::Capacity(*a), n);
        PtrArrayAccess::CopyState(*b, *a);
        return b;
    }

    // Starts loading a home's second line while the first is on its way:
    // homes are only 16-byte aligned, so tags and data a lookup reads often
    // lie across the line boundary, and waiting for the first line before
    // asking for the second doubles the latency of a lookup that misses. A
    // bucket in a cell asks for nothing where a cell is one cache line: its
    // storage is mostly in the cell, and a prefetch that has to wait for the
    // cell's line was measured to slow lookups in cells down (by up to 7%).
    // 32-bit ARM cores have 32-byte lines, and the cell's second line holds
    // the storage; its address needs no load.
    static void Prefetch(CPtrArrayCtrl* a, bool inCell)
    {
        if (!inCell)
            __builtin_prefetch(reinterpret_cast<char const*>(a) + 64);
#if defined(__arm__)
        else
            __builtin_prefetch(reinterpret_cast<char const*>(a) + kCellBytes / 2);
#endif
    }

    // Bit j set where tag j of the group at tags equals tag.
    static unsigned GroupMask(std::uint32_t const* tags, std::uint32_t tag)
    {
#if defined(__SSE2__)
        __m128i const t = _mm_set1_epi32(static_cast<int>(tag));
        __m128i const lo = _mm_cmpeq_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const*>(tags)), t);
        __m128i const hi = _mm_cmpeq_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const*>(tags + 4)), t);
        __m128i const words = _mm_packs_epi32(lo, hi);
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(words, words))) & 0xFF;
#else
        unsigned bits = 0;
        for (int j = 0; j < kTagGroup; ++j)
            bits |= static_cast<unsigned>(tags[j] == tag) << j;
        return bits;
#endif
    }

    // As four GroupMasks at tags, tags + 8, tags + 16 and tags + 24. The
    // compare results are narrowed to bytes before the mask is taken: fewer
    // instructions than four separate groups, which matters because a
    // lookup's cost is how many lookups the processor can keep in flight.
    static std::uint32_t QuadGroupMask(std::uint32_t const* tags, std::uint32_t tag)
    {
#if defined(__SSE2__)
        __m128i const t = _mm_set1_epi32(static_cast<int>(tag));
        auto const eq = [&](int at) {
            return _mm_cmpeq_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const*>(tags + at)), t);
        };
        __m128i const b0 = _mm_packs_epi16(_mm_packs_epi32(eq(0), eq(4)), _mm_packs_epi32(eq(8), eq(12)));
        __m128i const b1 = _mm_packs_epi16(_mm_packs_epi32(eq(16), eq(20)), _mm_packs_epi32(eq(24), eq(28)));
        return static_cast<std::uint32_t>(_mm_movemask_epi8(b0)) |
               static_cast<std::uint32_t>(_mm_movemask_epi8(b1)) << 16;
#else
        std::uint32_t bits = 0;
        for (int g = 0; g < 4; ++g)
            bits |= static_cast<std::uint32_t>(GroupMask(tags + g * kTagGroup, tag)) << (g * kTagGroup);
        return bits;
#endif
    }

    // Bit j set where entry j (j < n <= 64) has the key. The group count
    // depends on loaded data, so it is kept to two shapes whose choice is
    // stable for a given table: a single group, or four groups at once (a
    // bucket of more than eight entries has room for the 128-byte read). A
    // loop whose trip count followed n would mispredict on most lookups,
    // and each misprediction throws away the lookups already started
    // behind it.
    PALVET_HOT_INLINE static std::uint64_t MatchMask(CPtrArrayCtrl* a, char* storage, int n, Key const& key)
    {
        std::uint32_t const* const tags = reinterpret_cast<std::uint32_t const*>(storage);
        std::uint32_t const tag = Traits::Tag(key);
        std::uint64_t m;
        if (n <= kTagGroup) {
            m = GroupMask(tags, tag);
        } else if (n <= 4 * kTagGroup) {
            // Capacities are powers of two (1, then doubled), so more than
            // eight entries means room for at least sixteen.
            m = QuadGroupMask(tags, tag);
        } else {
            m = 0;
            for (int g = 0; g < n; g += kTagGroup)
                m |= static_cast<std::uint64_t>(GroupMask(tags + g, tag)) << g;
        }
        // Keeps bits below n; shifting twice keeps n == 64 defined.
        m &= ~((~std::uint64_t{0} << 1) << (n - 1));
        if (!Traits::kTagDecides) {
            Record const* const records =
                reinterpret_cast<Record const*>(storage + RecordsOffset(PtrArrayAccess::Capacity(*a)));
            for (std::uint64_t rest = m; rest != 0; rest &= rest - 1) {
                int const j = __builtin_ctzll(rest);
                if (!Traits::Matches(records[j], key))
                    m &= ~(std::uint64_t{1} << j);
            }
        }
        return m;
    }

    // A FindFirst from c over n entries that met no match: the find state
    // where the outward search stopped, and -1.
    static int RecordMiss(CPtrArrayCtrl* a, int n, int c)
    {
        int const last = (n + 2) / 2 - 1;  // the final probe distance
        int b = c - last, f = c + last;
        b += b < 0 ? n : 0;
        f -= f >= n ? n : 0;
        PtrArrayAccess::RecordFindInRange(*a, c, b, f);
        return -1;
    }

    // FindFirst for buckets of up to 64 entries: all matches at once as a
    // bit mask, then the one the outward search would meet first, with the
    // find state it would leave. Forward probe i (from the cursor c) comes
    // before backward probe i, so the nearer direction wins and forward wins
    // ties. Kept free of branches where it can be: a table lookup is bound
    // by how many lookups overlap their cache misses, and a mispredicted
    // branch on loaded data discards the ones behind it. r has bit i for
    // position c + i (mod n): forward distance i, backward distance n - i.
    PALVET_HOT_INLINE static int FindFirstMasked(CPtrArrayCtrl* a, char* storage, int n, int c, Key const& key)
    {
        std::uint64_t const m = MatchMask(a, storage, n, key);
        if ((m & (m - 1)) == 0 && m != 0) {
            // One match, the usual case: it is the result whichever way the
            // search reached it. The find state is recorded in its deferred
            // form: the twenty-odd operations that would derive it here all
            // wait on the tags' cache miss and fill the processor's window
            // meanwhile, which is what limits how many lookups overlap
            // (shuffled lookups in 64K buckets took a quarter longer with
            // them).
            int const j = __builtin_ctzll(m);
            PtrArrayAccess::RecordFindDeferred(*a, c, j, n);
            return j;
        }
        // Rotating right by c within n bits; the left shift is split so that
        // c == 0 needs no case of its own.
        std::uint64_t const all = ~((~std::uint64_t{0} << 1) << (n - 1));
        std::uint64_t const r = ((m >> c) | ((m << 1) << (n - c - 1))) & all;
        if (r == 0)
            return RecordMiss(a, n, c);
        int const fwd = __builtin_ctzll(r);
        // Bit 0 set keeps clz defined; it stands for "no backward match".
        std::uint64_t const rb = (r & ~std::uint64_t{1}) | 1;
        int const top = 63 - __builtin_clzll(rb);
        int const back = n - top;  // n when no backward match
        // Which direction wins is a coin toss for lookups in no particular
        // order, so the choices below are masks, not conditions the compiler
        // could turn into branches. When forward wins at fwd, the backward
        // search stopped one short of it; when backward wins at back, the
        // forward search went as far.
        int const forward = -static_cast<int>(fwd <= back);
        int const forwardReach = back + ((fwd - back) & forward);
        int const backwardReach = back + ((fwd - (fwd != 0) - back) & forward);
        int f = c + forwardReach;
        f -= n & -static_cast<int>(f >= n);
        int b = c - backwardReach;
        b += n & (b >> 31);
        PtrArrayAccess::RecordFindInRange(*a, c, b, f);
        return b + ((f - b) & forward);
    }

    // FindFirst / FindNext with the key test inlined; the position found, or -1.
    // The cursor of a bucket that holds entries is always one of them
    // (RemoveAt keeps it so), which spares the lookups a range check.
    PALVET_HOT_INLINE static int Find(CPtrArrayCtrl* a, KeyArg key, bool first, bool inCell)
    {
        Prefetch(a, inCell);
        int const n = PtrArrayAccess::Count(*a);
        if (first && static_cast<unsigned>(n - 1) < 64u)
            return FindFirstSmall(a, n, key, inCell);
        if (!Exists(a))
            return -1;
        return FindSearching(a, key, first);
    }

    // FindFirst in a bucket of n entries, 1 <= n <= 64.
    PALVET_HOT_INLINE static int FindFirstSmall(CPtrArrayCtrl* a, int n, KeyArg key, bool inCell)
    {
        int const cursor = PtrArrayAccess::Cursor(*a);
        char* const storage = LookupStorage(a, inCell);
        if (Traits::kTagDecides) {
            // The first two probes, the cursor and the one after it, on
            // their own: they serve repeated lookups of one key and
            // lookups in insertion order, and every instruction saved
            // lets more lookups overlap their cache misses.
            int const c = cursor;
            std::uint32_t const* const tags = reinterpret_cast<std::uint32_t const*>(storage);
            std::uint32_t const tag = Traits::Tag(key);
            if (tags[c] == tag) {
                PtrArrayAccess::RecordFindInRange(*a, c, c, c);
                return c;
            }
            // A select, kept from becoming a branch: whether the cursor
            // is the last entry is a coin toss in small buckets.
            int const after = c + 1;
            int const next = Opaque(after != n ? after : 0);
            if (tags[next] == tag) {  // with one entry, next is the cursor again
                PtrArrayAccess::RecordFindInRange(*a, c, c, next);
                return next;
            }
            if (kProbesCoverInline && n <= kInline)
                return RecordMiss(a, n, c);
        }
        return FindFirstMasked(a, storage, n, cursor, key);
    }

    // The array's outward search, for buckets of more than 64 entries and
    // for FindNext. Kept out of line: its callbacks take the key's address,
    // which would otherwise send every lookup's key through the stack.
    __attribute__((noinline)) static int FindSearching(CPtrArrayCtrl* a, KeyArg key, bool first)
    {
        int const n = PtrArrayAccess::Count(*a);
        Record const* const records = Records(a);
        auto const matches = [&](int i) { return Traits::Matches(records[i], key); };
        auto const record = [a](int s, int b, int f) { PtrArrayAccess::RecordFind(*a, s, b, f); };
        return first ? palvet::detail::CollectionFindFirst(n, PtrArrayAccess::Cursor(*a), matches, record)
                     : palvet::detail::RingFindNext(n, PtrArrayAccess::FindExpanded(*a), matches, record);
    }

    // The data of the entry at pos, made current as GetAt does.
    static void const*& DataAt(CPtrArrayCtrl* a, int pos) { return DataAt(a, pos, Storage(a)); }

    // DataAt, given a's storage.
    static void const*& DataAt(CPtrArrayCtrl* a, int pos, char* storage)
    {
        PtrArrayAccess::Cursor(*a) = pos;
        return DataIn(a, storage)[pos];
    }

    // As DeleteAt(pos, 1): later entries close up and pos becomes current.
    // The caller releases the record first.
    static void RemoveAt(CPtrArrayCtrl* a, int pos)
    {
        int const n = PtrArrayAccess::Count(*a);
        auto const later = static_cast<size_t>(n - pos - 1);
        std::uint32_t* const tags = Tags(a);
        memmove(tags + pos, tags + pos + 1, later * kTagBytes);
        void const** const data = Data(a);
        memmove(static_cast<void*>(data + pos), data + pos + 1, later * sizeof(void const*));
        if (!Traits::kRecordIsTag) {
            Record* const records = Records(a);
            memmove(static_cast<void*>(records + pos), records + pos + 1, later * sizeof(Record));
        }
        PtrArrayAccess::Count(*a) = n - 1;
        // pos, as DeleteAt leaves it; when that was the last entry, 0, where
        // FindFirst would start from it.
        PtrArrayAccess::Cursor(*a) = pos < n - 1 ? pos : 0;
    }

    // Releases every record and the bucket; the number of entries it held.
    static int Destroy(CPtrArrayCtrl* a, bool inCell)
    {
        int const n = PtrArrayAccess::Count(*a);
        Record* const records = Records(a);
        for (int i = 0; i < n; ++i)
            Traits::Release(records[i]);
        Close(a, inCell);
        return n;
    }
};

// The bucket table and the operations both kinds share.
template <class Traits>
struct Buckets {
    using B = Bucket<Traits>;
    using Record = typename Traits::Record;
    using Key = typename Traits::Key;

    // The table's bucket field: the slots or the cells.
    CPtrArrayCtrl**& slots;
    int count;

    bool Usable() const { return slots != nullptr && count >= 1; }
    // Of a usable table.
    bool InCells() const { return Head(slots)->layout == Layout::kCells; }

    // The cell of bucket index (in range, of a usable table in cells).
    CPtrArrayCtrl* Cell(size_t index) const
    {
        return reinterpret_cast<CPtrArrayCtrl*>(reinterpret_cast<char*>(slots) + index * kCellBytes);
    }

    // The bucket, or null when there is none.
    CPtrArrayCtrl* At(int index) const
    {
        if (!Usable() || index < 0 || index >= count)
            return nullptr;
        if (!InCells())
            return slots[index];
        CPtrArrayCtrl* const cell = Cell(index);
        return B::Exists(cell) ? cell : nullptr;
    }

    // Frees one bucket (which must exist) and its entries; how many entries
    // there were.
    int Destroy(int index) const
    {
        if (InCells())
            return B::Destroy(Cell(index), true);
        int const n = B::Destroy(slots[index], false);
        slots[index] = nullptr;
        return n;
    }

    void DestroyAll() const
    {
        if (!Usable())
            return;
        for (int i = 0; i < count; ++i)
            if (At(i) != nullptr)
                Destroy(i);
    }

    // A new table starts in slots: nothing says yet how full it will be.
    bool Allocate() const
    {
        slots = AllocateTable(count, Layout::kSlots);
        return slots != nullptr;
    }

    // Destroys every bucket and frees the table.
    void Release() const
    {
        DestroyAll();
        FreeTable(slots);
        slots = nullptr;
    }

    int Add(int index, Record const& record, void const* data) const
    {
        if (!InCells())
            return B::Append(slots[index], false, record, data);
        CPtrArrayCtrl* cell = Cell(index);
        return B::Append(cell, true, record, data);
    }

    // The layout for a table of entries entries, after an add: cells from
    // half an entry per bucket up to two, slots again beyond three (where a
    // lookup in cells mostly reads the cell and then a block, and slots were
    // measured faster). Between the thresholds neither switch is made, so
    // that a table at a boundary does not go back and forth. Switching
    // changes nothing a caller can see, and it is left undone when memory
    // runs out.
    void Fit(int entries) const
    {
        if (!Usable())
            return;
        long long const e = entries;
        long long const n = count;
        if (InCells() ? e > 3 * n : 2 * e >= n && e <= 2 * n)
            Switch();
    }

    // The table in the other layout: every bucket copied, then the old
    // table freed. Copies are made before anything is freed, so that running
    // out of memory half-way can be undone; then false, nothing changed.
    bool Switch() const
    {
        bool const cells = InCells();
        CPtrArrayCtrl** fresh = AllocateTable(count, cells ? Layout::kSlots : Layout::kCells);
        if (fresh == nullptr)
            return false;
        Buckets const to{fresh, count};
        int copied = 0;
        for (; copied < count; ++copied) {
            CPtrArrayCtrl* const a = At(copied);
            if (a == nullptr)
                continue;
            CPtrArrayCtrl* const b = B::Copy(a, cells ? nullptr : to.Cell(copied), PtrArrayAccess::Capacity(*a));
            if (b == nullptr)
                break;
            if (cells)
                fresh[copied] = b;
        }
        // The table let go takes its buckets' storage along; the records
        // (and their key copies) are the ones kept.
        bool const done = copied == count;
        Buckets const& gone = done ? *this : to;
        for (int i = 0; i < copied; ++i)
            if (CPtrArrayCtrl* const a = gone.At(i))
                B::Close(a, gone.InCells());
        FreeTable(gone.slots);
        if (done)
            slots = fresh;
        return done;
    }

    // The data slot of the entry found (made current), or null.
    void const** Find(int index, Key const& key, bool first) const
    {
        CPtrArrayCtrl* const bucket = At(index);
        if (bucket == nullptr)
            return nullptr;
        int const pos = B::Find(bucket, key, first, InCells());
        return pos >= 0 ? &B::DataAt(bucket, pos) : nullptr;
    }

    // Finds and removes one entry; its data, or null when none matched.
    // removed is set to whether an entry went.
    void* Delete(int index, Key const& key, bool first, bool& removed) const
    {
        removed = false;
        CPtrArrayCtrl* const bucket = At(index);
        if (bucket == nullptr)
            return nullptr;
        int const pos = B::Find(bucket, key, first, InCells());
        if (pos < 0)
            return nullptr;
        void* const data = const_cast<void*>(B::DataAt(bucket, pos));
        Traits::Release(B::Records(bucket)[pos]);
        B::RemoveAt(bucket, pos);
        removed = true;
        return data;
    }

    // As the array's FindAll with the table's callback, whose entries are
    // the records: the data of each match in ascending order, GetAt leaving
    // the last one current. The positions are all taken before any data is
    // handed over.
    void Collect(int index, CPtrCtrl* dst, Key const& key) const
    {
        CPtrArrayCtrl* const bucket = At(index);
        if (bucket == nullptr || dst == nullptr)
            return;
        CPtrArrayCtrl hits;
        int const n = PtrArrayAccess::Count(*bucket);
        Record const* const records = B::Records(bucket);
        for (int i = 0; i < n; ++i)
            if (Traits::kFind(&records[i], Traits::Callback(key)) != 0)
                hits.AddData(reinterpret_cast<void const*>(static_cast<intptr_t>(i)), -1);
        int const found = hits.GetCount();
        for (int i = 0; i < found; ++i) {
            int const pos = static_cast<int>(reinterpret_cast<intptr_t>(hits.GetAt(i)));
            dst->AddData(B::DataAt(bucket, pos), -1);
        }
    }

    int HeadPosition(tagHASHPOSITION& pos) const
    {
        pos.bucket = 0;
        pos.index = 0;
        for (; pos.bucket < count; ++pos.bucket) {
            CPtrArrayCtrl* const bucket = At(pos.bucket);
            if (bucket != nullptr && PtrArrayAccess::Count(*bucket) > 0)
                return 1;
        }
        return 0;
    }

    int MoveNext(tagHASHPOSITION& pos) const
    {
        ++pos.index;
        if (pos.bucket < 0 || pos.bucket >= count || !Usable())
            return 0;
        for (CPtrArrayCtrl* bucket = At(pos.bucket); bucket == nullptr || pos.index >= PtrArrayAccess::Count(*bucket);
             bucket = At(pos.bucket)) {
            ++pos.bucket;
            pos.index = 0;
            if (pos.bucket >= count)
                return 0;
        }
        return 1;
    }

    int Available(tagHASHPOSITION pos) const
    {
        CPtrArrayCtrl* const bucket = At(pos.bucket);
        return bucket != nullptr && pos.index >= 0 && pos.index < PtrArrayAccess::Count(*bucket) ? 1 : 0;
    }

    void* DataAt(tagHASHPOSITION pos) const
    {
        return Available(pos) ? const_cast<void*>(B::DataAt(At(pos.bucket), pos.index)) : nullptr;
    }
};

using IntBuckets = Buckets<IntTraits>;
using CrcBuckets = Buckets<CrcTraits>;

// FindFirstData's lookup in a bucket of more than 64 entries, or of none
// (an empty cell, or a bucket whose entries were deleted). Out of line and reached by a tail call, so that no value on
// the usual path has to outlive a call, which would cost every lookup the
// saving and restoring of a register.
__attribute__((noinline)) void* IntFindFirstSearching(CPtrArrayCtrl* bucket, int key)
{
    using B = Bucket<IntTraits>;
    if (!B::Exists(bucket))
        return nullptr;
    int const pos = B::FindSearching(bucket, key, true);
    return pos >= 0 ? const_cast<void*>(B::DataAt(bucket, pos)) : nullptr;
}

// FindFirstData's lookup in an existing bucket (or cell).
PALVET_HOT_INLINE void* IntFindFirst(CPtrArrayCtrl* bucket, int key, bool inCell)
{
    using B = Bucket<IntTraits>;
    B::Prefetch(bucket, inCell);
    int const n = PtrArrayAccess::Count(*bucket);
    if (static_cast<unsigned>(n - 1) >= 64u)
        return IntFindFirstSearching(bucket, key);
    int const pos = B::FindFirstSmall(bucket, n, key, inCell);
    return pos >= 0 ? const_cast<void*>(B::DataAt(bucket, pos, B::LookupStorage(bucket, inCell))) : nullptr;
}

}  // namespace

int HashFind(void const* entry, void const* key)
{
    if (entry == nullptr)
        return 0;
    // An entry starts with its int key.
    return *static_cast<int const*>(entry) == static_cast<int>(reinterpret_cast<intptr_t>(key)) ? 1 : 0;
}

int CRCHashFind(void const* entry, void const* probe)
{
    if (entry == nullptr || probe == nullptr)
        return 0;
    return SameKey(*static_cast<CrcKey const*>(entry), *static_cast<CrcKey const*>(probe)) ? 1 : 0;
}

// ---------------------------------------------------------------------------

CHashTable::CHashTable(int bucket_count) : m_buckets(nullptr), m_bucketCount(bucket_count), m_count(0)
{
    InitHashTable();
}

CHashTable::~CHashTable()
{
    IntBuckets{m_buckets, m_bucketCount}.Release();
}

int CHashTable::InitHashTable()
{
    IntBuckets const b{m_buckets, m_bucketCount};
    b.Release();
    m_count = 0;
    return b.Allocate() ? 1 : 0;
}

int CHashTable::AddData(int key, void const* data)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return 0;
    int const index = b.Add(IntBucket(key, m_bucketCount), key, data);
    if (index < 0)
        return 0;
    ++m_count;
    b.Fit(m_count);
    return index;
}

int CHashTable::SetData(int key, void const* data)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return 0;
    void const** const slot = b.Find(IntBucket(key, m_bucketCount), key, true);
    if (slot == nullptr)
        return 0;
    *slot = data;
    return 1;
}

void* CHashTable::FindFirstData(int key)
{
    // A table exists only for a bucket count of at least 1.
    if (m_buckets == nullptr)
        return nullptr;
    IntBuckets const b{m_buckets, m_bucketCount};
    // Widened from unsigned, as it was computed, so that it needs no sign
    // extension.
    size_t const index = static_cast<unsigned>(IntBucket(key, m_bucketCount));
    // The layout test is the same for every lookup, and each branch gets the
    // lookup compiled for its layout.
    if (b.InCells())
        return IntFindFirst(b.Cell(index), key, true);
    CPtrArrayCtrl* const bucket = m_buckets[index];
    return bucket != nullptr ? IntFindFirst(bucket, key, false) : nullptr;
}

void* CHashTable::FindNextData(int key)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    void const** const slot = b.Find(IntBucket(key, m_bucketCount), key, false);
    return slot != nullptr ? const_cast<void*>(*slot) : nullptr;
}

void* CHashTable::DeleteFirstData(int key)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    bool removed;
    void* const data = b.Delete(IntBucket(key, m_bucketCount), key, true, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void* CHashTable::DeleteNextData(int key)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    bool removed;
    void* const data = b.Delete(IntBucket(key, m_bucketCount), key, false, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void CHashTable::DeleteAllData(int key)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return;
    int const index = IntBucket(key, m_bucketCount);
    // The whole bucket goes, other keys in it included, and the count stays
    // as it was: applications rely on both. The cell is emptied, so no later
    // call reaches the freed bucket.
    if (b.At(index) != nullptr)
        b.Destroy(index);
}

void CHashTable::DeleteAll()
{
    IntBuckets{m_buckets, m_bucketCount}.DestroyAll();
    m_count = 0;
}

int CHashTable::IsDataAvailable(int key)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return 0;
    CPtrArrayCtrl* const bucket = b.At(IntBucket(key, m_bucketCount));
    return bucket != nullptr && Bucket<IntTraits>::Find(bucket, key, true, b.InCells()) >= 0 ? 1 : 0;
}

int CHashTable::GetCount()
{
    return m_count;
}

int CHashTable::GetHeadPosition(tagHASHPOSITION& pos)
{
    return IntBuckets{m_buckets, m_bucketCount}.HeadPosition(pos);
}

int CHashTable::MoveHashPositionNext(tagHASHPOSITION& pos)
{
    return IntBuckets{m_buckets, m_bucketCount}.MoveNext(pos);
}

int CHashTable::IsDataAvailable(tagHASHPOSITION pos)
{
    return IntBuckets{m_buckets, m_bucketCount}.Available(pos);
}

void* CHashTable::GetDataAt(tagHASHPOSITION pos)
{
    return IntBuckets{m_buckets, m_bucketCount}.DataAt(pos);
}

void CHashTable::FindAllHashData(CPtrCtrl* dst, int key)
{
    IntBuckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return;
    b.Collect(IntBucket(key, m_bucketCount), dst, key);
}

// ---------------------------------------------------------------------------

CCRCHashTable::CCRCHashTable(int bucket_count) : m_buckets(nullptr), m_bucketCount(bucket_count), m_count(0)
{
    InitCRCHashTable();
}

CCRCHashTable::~CCRCHashTable()
{
    CrcBuckets{m_buckets, m_bucketCount}.Release();
}

int CCRCHashTable::InitCRCHashTable()
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    b.Release();
    m_count = 0;
    return b.Allocate() ? 1 : 0;
}

namespace {

// The bucket index of a byte-string key, or -1 when the table has none;
// fills probe.
int CrcIndex(CrcBuckets const& b, void const* key, int length, CrcKey& probe)
{
    if (!b.Usable())
        return -1;
    probe = MakeProbe(key, length);
    return static_cast<int>(probe.digest % static_cast<unsigned int>(b.count));
}

}  // namespace

void CCRCHashTable::AddData(void const* key, int length, void const* data)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    if (index < 0)
        return;
    CrcKey record{nullptr, probe.length, probe.digest};
    record.bytes = new (std::nothrow) unsigned char[static_cast<size_t>(probe.length)];
    if (record.bytes == nullptr)
        return;
    if (probe.length > 0)
        memcpy(record.bytes, probe.bytes, static_cast<size_t>(probe.length));
    if (b.Add(index, record, data) < 0) {
        delete[] record.bytes;
        return;
    }
    ++m_count;
    b.Fit(m_count);
}

int CCRCHashTable::SetData(void const* key, int length, void const* data)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    void const** const slot = index < 0 ? nullptr : b.Find(index, probe, true);
    if (slot == nullptr)
        return 0;
    *slot = data;
    return 1;
}

void* CCRCHashTable::FindFirstData(void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    void const** const slot = index < 0 ? nullptr : b.Find(index, probe, true);
    return slot != nullptr ? const_cast<void*>(*slot) : nullptr;
}

void* CCRCHashTable::FindNextData(void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    void const** const slot = index < 0 ? nullptr : b.Find(index, probe, false);
    return slot != nullptr ? const_cast<void*>(*slot) : nullptr;
}

void* CCRCHashTable::DeleteFirstData(void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    bool removed = false;
    void* const data = index < 0 ? nullptr : b.Delete(index, probe, true, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void* CCRCHashTable::DeleteNextData(void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    bool removed = false;
    void* const data = index < 0 ? nullptr : b.Delete(index, probe, false, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void CCRCHashTable::DeleteAllData(void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    // Every entry of the bucket goes, whatever its key; unlike CHashTable the
    // count follows. The cell is emptied, as there.
    if (index >= 0 && b.At(index) != nullptr)
        m_count -= b.Destroy(index);
}

void CCRCHashTable::DeleteAll()
{
    CrcBuckets{m_buckets, m_bucketCount}.DestroyAll();
    m_count = 0;
}

int CCRCHashTable::IsDataAvailable(void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    CPtrArrayCtrl* const bucket = index < 0 ? nullptr : b.At(index);
    return bucket != nullptr && Bucket<CrcTraits>::Find(bucket, probe, true, b.InCells()) >= 0 ? 1 : 0;
}

int CCRCHashTable::GetCount()
{
    return m_count;
}

int CCRCHashTable::GetHeadPosition(tagHASHPOSITION& pos)
{
    return CrcBuckets{m_buckets, m_bucketCount}.HeadPosition(pos);
}

int CCRCHashTable::MoveHashPositionNext(tagHASHPOSITION& pos)
{
    return CrcBuckets{m_buckets, m_bucketCount}.MoveNext(pos);
}

int CCRCHashTable::IsDataAvailable(tagHASHPOSITION pos)
{
    return CrcBuckets{m_buckets, m_bucketCount}.Available(pos);
}

void* CCRCHashTable::GetDataAt(tagHASHPOSITION pos)
{
    return CrcBuckets{m_buckets, m_bucketCount}.DataAt(pos);
}

void CCRCHashTable::FindAllCRCHashData(CPtrCtrl* dst, void const* key, int length)
{
    CrcBuckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    int const index = CrcIndex(b, key, length, probe);
    if (index >= 0)
        b.Collect(index, dst, probe);
}
