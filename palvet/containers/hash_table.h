#ifndef PALVET_CONTAINERS_HASH_TABLE_H
#define PALVET_CONTAINERS_HASH_TABLE_H

// Chained hash tables mapping keys to untyped data pointers; keys may repeat.
// CHashTable is keyed by an int (bucket |key| mod bucket count),
// CCRCHashTable by a byte string (bucket by its CRC digest). Each bucket is
// a CPtrArrayCtrl of entries and is searched with the array's own outward
// find, so FindFirstData starts next to the bucket's current position (after
// an add, the entry added last) and FindNextData walks on from there.
//
// The tables own their buckets, entries and key copies, never the data. The
// bucket count is used as given and must be at least 1 (with less, keyed
// operations find and add nothing). They take no lock, and even lookups
// change the buckets' find state. Changing a table while iterating over it
// is not supported.

#include <palvet/containers/ptr_collection.h>
#include <palvet/core/export.h>

// Iteration cursor: a bucket index and an entry index within that bucket.
struct tagHASHPOSITION {
    int bucket;  // bucket index
    int index;   // entry index within the bucket
};

// Find callbacks for the bucket arrays. HashFind: the entry's int key equals
// key, which travels as a pointer-sized integer. CRCHashFind: probe is a
// byte-string key record; lengths, digests and then bytes must be equal.
PALVET_API int HashFind(void const* entry, void const* key);
PALVET_API int CRCHashFind(void const* entry, void const* probe);

// A hash table of int keys with duplicates: each bucket is a CPtrArrayCtrl of
// entry records, found through its own find machinery; a remembered position
// serves FindNextData and DeleteNextData.
class PALVET_API CHashTable {
public:
    // A table of bucket_count buckets; the bucket table is allocated by
    // InitHashTable.
    CHashTable(int bucket_count);
    virtual ~CHashTable();

    // Allocates the empty bucket table (emptying the table first if it had
    // one); 1 on success.
    int InitHashTable();

    // Appends an entry, keeping earlier entries of the same key. Returns its
    // index within the bucket, or 0 when memory ran out (nothing added).
    int AddData(int key, void const* data);
    // Replaces the data of an entry of key (the one FindFirstData would give);
    // adds nothing when key is absent. 1 when replaced, else 0.
    int SetData(int key, void const* data);
    void* FindFirstData(int key);
    void* FindNextData(int key);
    // As the finds, and removes the entry found; returns its data.
    void* DeleteFirstData(int key);
    void* DeleteNextData(int key);
    // Drops key's whole bucket: every entry in it goes, whatever its key,
    // and the count is left unchanged.
    void DeleteAllData(int key);
    void DeleteAll();
    int IsDataAvailable(int key);
    int GetCount();

    // Iteration in bucket order, then in insertion order within a bucket.
    int GetHeadPosition(tagHASHPOSITION& pos);
    int MoveHashPositionNext(tagHASHPOSITION& pos);
    int IsDataAvailable(tagHASHPOSITION pos);
    void* GetDataAt(tagHASHPOSITION pos);

    // Appends the data of every entry of key to dst, in bucket order.
    void FindAllHashData(CPtrCtrl* dst, int key);

    // The tables own their entries; a member-wise copy would free them twice.
    CHashTable(CHashTable const&) = delete;
    CHashTable& operator=(CHashTable const&) = delete;

private:
    CPtrArrayCtrl** m_buckets;
    int m_bucketCount;
    int m_count;
};

// A hash table keyed by byte strings, bucketed by the keys' CRC-32; otherwise
// as CHashTable.
class PALVET_API CCRCHashTable {
public:
    // A table of bucket_count buckets, allocated by InitCRCHashTable.
    CCRCHashTable(int bucket_count);
    virtual ~CCRCHashTable();

    // Allocates the empty bucket table (emptying the table first if it had
    // one); 1 on success.
    int InitCRCHashTable();

    // Keys are length bytes at key; the table keeps its own copy. A negative
    // length measures key as a zero-terminated string; a null key is the
    // empty key.
    void AddData(void const* key, int length, void const* data);
    int SetData(void const* key, int length, void const* data);
    void* FindFirstData(void const* key, int length);
    void* FindNextData(void const* key, int length);
    void* DeleteFirstData(void const* key, int length);
    void* DeleteNextData(void const* key, int length);
    // Drops the key's whole bucket and subtracts the entries removed.
    void DeleteAllData(void const* key, int length);
    void DeleteAll();
    int IsDataAvailable(void const* key, int length);
    int GetCount();

    int GetHeadPosition(tagHASHPOSITION& pos);
    int MoveHashPositionNext(tagHASHPOSITION& pos);
    int IsDataAvailable(tagHASHPOSITION pos);
    void* GetDataAt(tagHASHPOSITION pos);

    void FindAllCRCHashData(CPtrCtrl* dst, void const* key, int length);

    CCRCHashTable(CCRCHashTable const&) = delete;
    CCRCHashTable& operator=(CCRCHashTable const&) = delete;

private:
    CPtrArrayCtrl** m_buckets;
    int m_bucketCount;
    int m_count;
};

#endif
