#include <palvet/containers/hash_table.h>

#include <palvet/containers/crc.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

struct IntEntry {
    int key;
    void const* data;
};

// A byte-string key record; a CrcEntry starts with one, so an entry and a
// lookup probe compare through the same type.
struct CrcKey {
    unsigned char* bytes;
    int length;
    unsigned int digest;
};

struct CrcEntry {
    CrcKey key;
    void const* data;
};

void FreeIntEntry(void* entry)
{
    delete static_cast<IntEntry*>(entry);
}

void FreeCrcEntry(void* entry)
{
    auto* e = static_cast<CrcEntry*>(entry);
    delete[] e->key.bytes;
    delete e;
}

template <typename Entry>
void* DataOf(void* entry)
{
    return const_cast<void*>(static_cast<Entry*>(entry)->data);
}

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

// The bucket table and the operations both kinds share. Buckets hold entry
// pointers; free_entry releases one entry.
struct Buckets {
    CPtrArrayCtrl**& slots;
    int count;

    bool Usable() const { return slots != nullptr && count >= 1; }

    CPtrArrayCtrl* At(int index) const
    {
        return Usable() && index >= 0 && index < count ? slots[index] : nullptr;
    }

    // Frees every entry of one bucket and the bucket itself; returns how
    // many entries there were.
    int Destroy(int index, void (*free_entry)(void*)) const
    {
        CPtrArrayCtrl* const bucket = slots[index];
        int const n = bucket->GetCount();
        for (int i = 0; i < n; ++i)
            free_entry(bucket->GetAt(i));
        bucket->DeleteAll();
        delete bucket;
        slots[index] = nullptr;
        return n;
    }

    void DestroyAll(void (*free_entry)(void*)) const
    {
        if (!Usable())
            return;
        for (int i = 0; i < count; ++i)
            if (slots[i] != nullptr)
                Destroy(i, free_entry);
    }

    bool Allocate() const
    {
        slots = nullptr;
        if (count < 1 || static_cast<size_t>(count) > SIZE_MAX / sizeof(CPtrArrayCtrl*))
            return false;
        slots = new (std::nothrow) CPtrArrayCtrl*[static_cast<size_t>(count)]();
        return slots != nullptr;
    }

    // The slot for a new entry, creating its bucket; null when out of memory.
    CPtrArrayCtrl* Ensure(int index) const
    {
        if (slots[index] == nullptr)
            slots[index] = new (std::nothrow) CPtrArrayCtrl;
        return slots[index];
    }

    int HeadPosition(tagHASHPOSITION& pos) const
    {
        pos.bucket = 0;
        pos.index = 0;
        for (; pos.bucket < count; ++pos.bucket) {
            CPtrArrayCtrl* const bucket = At(pos.bucket);
            if (bucket != nullptr && bucket->GetCount() > 0)
                return 1;
        }
        return 0;
    }

    int MoveNext(tagHASHPOSITION& pos) const
    {
        ++pos.index;
        if (pos.bucket < 0 || pos.bucket >= count || !Usable())
            return 0;
        while (slots[pos.bucket] == nullptr || pos.index >= slots[pos.bucket]->GetCount()) {
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
        return bucket != nullptr && bucket->IsDataAvailable(pos.index) ? 1 : 0;
    }
};

// Lookups inside one bucket, through the array's own outward search.
void* FindIn(CPtrArrayCtrl* bucket, void const* key, int (*match)(void const*, void const*), bool first,
             void* (*data_of)(void*))
{
    if (bucket == nullptr)
        return nullptr;
    int const pos = first ? bucket->FindFirst(key, match) : bucket->FindNext(key, match);
    return pos >= 0 ? data_of(bucket->GetAt(pos)) : nullptr;
}

// Finds, frees and removes one entry; returns its data, or null when none
// matched. removed is set to whether an entry went.
void* DeleteIn(CPtrArrayCtrl* bucket, void const* key, int (*match)(void const*, void const*), bool first,
               void* (*data_of)(void*), void (*free_entry)(void*), bool& removed)
{
    removed = false;
    if (bucket == nullptr)
        return nullptr;
    int const pos = first ? bucket->FindFirst(key, match) : bucket->FindNext(key, match);
    if (pos < 0)
        return nullptr;
    void* const entry = bucket->GetAt(pos);
    void* const data = data_of(entry);
    free_entry(entry);
    bucket->DeleteAt(pos, 1);
    removed = true;
    return data;
}

void CollectIn(CPtrArrayCtrl* bucket, CPtrCtrl* dst, void const* key, int (*match)(void const*, void const*),
               void* (*data_of)(void*))
{
    if (bucket == nullptr || dst == nullptr)
        return;
    CPtrArrayCtrl hits;
    bucket->FindAll(&hits, key, match);
    int const n = hits.GetCount();
    for (int i = 0; i < n; ++i) {
        int const index = static_cast<int>(reinterpret_cast<intptr_t>(hits.GetAt(i)));
        dst->AddData(data_of(bucket->GetAt(index)), -1);
    }
}

}  // namespace

int HashFind(void const* entry, void const* key)
{
    if (entry == nullptr)
        return 0;
    return static_cast<IntEntry const*>(entry)->key == static_cast<int>(reinterpret_cast<intptr_t>(key)) ? 1 : 0;
}

int CRCHashFind(void const* entry, void const* probe)
{
    if (entry == nullptr || probe == nullptr)
        return 0;
    auto const* a = static_cast<CrcKey const*>(entry);
    auto const* b = static_cast<CrcKey const*>(probe);
    if (a->length != b->length || a->digest != b->digest)
        return 0;
    if (a->length <= 0)
        return 1;
    return memcmp(a->bytes, b->bytes, static_cast<size_t>(a->length)) == 0 ? 1 : 0;
}

// ---------------------------------------------------------------------------

CHashTable::CHashTable(int bucket_count) : m_buckets(nullptr), m_bucketCount(bucket_count), m_count(0)
{
    InitHashTable();
}

CHashTable::~CHashTable()
{
    DeleteAll();
    delete[] m_buckets;
}

int CHashTable::InitHashTable()
{
    if (m_buckets != nullptr) {
        DeleteAll();
        delete[] m_buckets;
    }
    return Buckets{m_buckets, m_bucketCount}.Allocate() ? 1 : 0;
}

int CHashTable::AddData(int key, void const* data)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return 0;
    CPtrArrayCtrl* const bucket = b.Ensure(IntBucket(key, m_bucketCount));
    if (bucket == nullptr)
        return 0;
    auto* const entry = new (std::nothrow) IntEntry{key, data};
    if (entry == nullptr)
        return 0;
    int const index = bucket->AddData(entry, -1);
    if (index < 0) {
        delete entry;
        return 0;
    }
    ++m_count;
    return index;
}

int CHashTable::SetData(int key, void const* data)
{
    Buckets const b{m_buckets, m_bucketCount};
    CPtrArrayCtrl* const bucket = b.Usable() ? b.At(IntBucket(key, m_bucketCount)) : nullptr;
    if (bucket == nullptr)
        return 0;
    int const pos = bucket->FindFirst(IntKeyArg(key), HashFind);
    if (pos < 0)
        return 0;
    static_cast<IntEntry*>(bucket->GetAt(pos))->data = data;
    return 1;
}

void* CHashTable::FindFirstData(int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    return FindIn(b.At(IntBucket(key, m_bucketCount)), IntKeyArg(key), HashFind, true, DataOf<IntEntry>);
}

void* CHashTable::FindNextData(int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    return FindIn(b.At(IntBucket(key, m_bucketCount)), IntKeyArg(key), HashFind, false, DataOf<IntEntry>);
}

void* CHashTable::DeleteFirstData(int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    bool removed;
    void* const data = DeleteIn(b.At(IntBucket(key, m_bucketCount)), IntKeyArg(key), HashFind, true,
                                DataOf<IntEntry>, FreeIntEntry, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void* CHashTable::DeleteNextData(int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return nullptr;
    bool removed;
    void* const data = DeleteIn(b.At(IntBucket(key, m_bucketCount)), IntKeyArg(key), HashFind, false,
                                DataOf<IntEntry>, FreeIntEntry, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void CHashTable::DeleteAllData(int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return;
    int const index = IntBucket(key, m_bucketCount);
    // The whole bucket goes, other keys in it included, and the count stays
    // as it was: applications rely on both. The slot is cleared so that no
    // later call reaches the freed bucket.
    if (m_buckets[index] != nullptr)
        b.Destroy(index, FreeIntEntry);
}

void CHashTable::DeleteAll()
{
    Buckets{m_buckets, m_bucketCount}.DestroyAll(FreeIntEntry);
    m_count = 0;
}

int CHashTable::IsDataAvailable(int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    CPtrArrayCtrl* const bucket = b.Usable() ? b.At(IntBucket(key, m_bucketCount)) : nullptr;
    return bucket != nullptr && bucket->FindFirst(IntKeyArg(key), HashFind) >= 0 ? 1 : 0;
}

int CHashTable::GetCount()
{
    return m_count;
}

int CHashTable::GetHeadPosition(tagHASHPOSITION& pos)
{
    return Buckets{m_buckets, m_bucketCount}.HeadPosition(pos);
}

int CHashTable::MoveHashPositionNext(tagHASHPOSITION& pos)
{
    return Buckets{m_buckets, m_bucketCount}.MoveNext(pos);
}

int CHashTable::IsDataAvailable(tagHASHPOSITION pos)
{
    return Buckets{m_buckets, m_bucketCount}.Available(pos);
}

void* CHashTable::GetDataAt(tagHASHPOSITION pos)
{
    Buckets const b{m_buckets, m_bucketCount};
    return b.Available(pos) ? DataOf<IntEntry>(b.At(pos.bucket)->GetAt(pos.index)) : nullptr;
}

void CHashTable::FindAllHashData(CPtrCtrl* dst, int key)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return;
    CollectIn(b.At(IntBucket(key, m_bucketCount)), dst, IntKeyArg(key), HashFind, DataOf<IntEntry>);
}

// ---------------------------------------------------------------------------

CCRCHashTable::CCRCHashTable(int bucket_count) : m_buckets(nullptr), m_bucketCount(bucket_count), m_count(0)
{
    InitCRCHashTable();
}

CCRCHashTable::~CCRCHashTable()
{
    DeleteAll();
    delete[] m_buckets;
}

int CCRCHashTable::InitCRCHashTable()
{
    if (m_buckets != nullptr) {
        DeleteAll();
        delete[] m_buckets;
    }
    return Buckets{m_buckets, m_bucketCount}.Allocate() ? 1 : 0;
}

void CCRCHashTable::AddData(void const* key, int length, void const* data)
{
    Buckets const b{m_buckets, m_bucketCount};
    if (!b.Usable())
        return;
    CrcKey const probe = MakeProbe(key, length);
    CPtrArrayCtrl* const bucket = b.Ensure(static_cast<int>(probe.digest % static_cast<unsigned int>(m_bucketCount)));
    if (bucket == nullptr)
        return;
    auto* const entry = new (std::nothrow) CrcEntry{{nullptr, probe.length, probe.digest}, data};
    if (entry == nullptr)
        return;
    entry->key.bytes = new (std::nothrow) unsigned char[static_cast<size_t>(probe.length)];
    if (entry->key.bytes == nullptr) {
        delete entry;
        return;
    }
    if (probe.length > 0)
        memcpy(entry->key.bytes, probe.bytes, static_cast<size_t>(probe.length));
    if (bucket->AddData(entry, -1) < 0) {
        FreeCrcEntry(entry);
        return;
    }
    ++m_count;
}

namespace {

// The bucket of a byte-string key, or null when there is none; fills probe.
CPtrArrayCtrl* CrcBucket(Buckets const& b, void const* key, int length, CrcKey& probe)
{
    if (!b.Usable())
        return nullptr;
    probe = MakeProbe(key, length);
    return b.At(static_cast<int>(probe.digest % static_cast<unsigned int>(b.count)));
}

}  // namespace

int CCRCHashTable::SetData(void const* key, int length, void const* data)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    if (bucket == nullptr)
        return 0;
    int const pos = bucket->FindFirst(&probe, CRCHashFind);
    if (pos < 0)
        return 0;
    static_cast<CrcEntry*>(bucket->GetAt(pos))->data = data;
    return 1;
}

void* CCRCHashTable::FindFirstData(void const* key, int length)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    return FindIn(bucket, &probe, CRCHashFind, true, DataOf<CrcEntry>);
}

void* CCRCHashTable::FindNextData(void const* key, int length)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    return FindIn(bucket, &probe, CRCHashFind, false, DataOf<CrcEntry>);
}

void* CCRCHashTable::DeleteFirstData(void const* key, int length)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    bool removed;
    void* const data = DeleteIn(bucket, &probe, CRCHashFind, true, DataOf<CrcEntry>, FreeCrcEntry, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void* CCRCHashTable::DeleteNextData(void const* key, int length)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    bool removed;
    void* const data = DeleteIn(bucket, &probe, CRCHashFind, false, DataOf<CrcEntry>, FreeCrcEntry, removed);
    m_count -= removed ? 1 : 0;
    return data;
}

void CCRCHashTable::DeleteAllData(void const* key, int length)
{
    Buckets const b{m_buckets, m_bucketCount};
    CrcKey probe{};
    if (CrcBucket(b, key, length, probe) == nullptr)
        return;
    // Every entry of the bucket goes, whatever its key; unlike CHashTable the
    // count follows. The slot is cleared, as there.
    m_count -= b.Destroy(static_cast<int>(probe.digest % static_cast<unsigned int>(m_bucketCount)), FreeCrcEntry);
}

void CCRCHashTable::DeleteAll()
{
    Buckets{m_buckets, m_bucketCount}.DestroyAll(FreeCrcEntry);
    m_count = 0;
}

int CCRCHashTable::IsDataAvailable(void const* key, int length)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    return bucket != nullptr && bucket->FindFirst(&probe, CRCHashFind) >= 0 ? 1 : 0;
}

int CCRCHashTable::GetCount()
{
    return m_count;
}

int CCRCHashTable::GetHeadPosition(tagHASHPOSITION& pos)
{
    return Buckets{m_buckets, m_bucketCount}.HeadPosition(pos);
}

int CCRCHashTable::MoveHashPositionNext(tagHASHPOSITION& pos)
{
    return Buckets{m_buckets, m_bucketCount}.MoveNext(pos);
}

int CCRCHashTable::IsDataAvailable(tagHASHPOSITION pos)
{
    return Buckets{m_buckets, m_bucketCount}.Available(pos);
}

void* CCRCHashTable::GetDataAt(tagHASHPOSITION pos)
{
    Buckets const b{m_buckets, m_bucketCount};
    return b.Available(pos) ? DataOf<CrcEntry>(b.At(pos.bucket)->GetAt(pos.index)) : nullptr;
}

void CCRCHashTable::FindAllCRCHashData(CPtrCtrl* dst, void const* key, int length)
{
    CrcKey probe{};
    CPtrArrayCtrl* const bucket = CrcBucket(Buckets{m_buckets, m_bucketCount}, key, length, probe);
    CollectIn(bucket, dst, &probe, CRCHashFind, DataOf<CrcEntry>);
}
