#ifndef PALVET_CONTAINERS_PTR_COLLECTION_H
#define PALVET_CONTAINERS_PTR_COLLECTION_H

// Ordered collections of untyped pointers addressed by zero-based int
// positions, and the quicksort engine behind their sorting.
//
// A collection owns only its own storage (the pointer array or the list
// nodes); it never frees, copies or inspects what the pointers point to.
// Collections take no lock, and even searches update the remembered
// position, so callers serialise access to a shared one.
//
// Find callbacks: int cb(void const* element, void const* key), non-zero on
// a match; a null callback matches by pointer identity.
// Sort comparisons: int cmp(void const* element, void const* pivot,
// unsigned long long user1, unsigned long long user2), negative / zero /
// positive; the user words are passed through untouched.

#include <palvet/core/export.h>

namespace palvet::detail {
struct PtrArrayAccess;  // the library's own containers built on arrays
}

// ---------------------------------------------------------------------------
// Sort engine. All ranges are inclusive [left, right].

// Frame stack for QuicksortBuffer_Stack: n + 1 frames of 16 bytes for
// n = hi - lo, allocated with new[]; null when n is negative or the memory
// cannot be had.
PALVET_API unsigned char* Quicksort_AllocStack(int n);
// Frees a frame stack; null is ignored.
PALVET_API void Quicksort_DestroyStack(unsigned char* stack);

// Hoare partition of buf[left..right] around the middle element. Returns the
// split j: [left, j] compares not greater than the pivot, [j + 1, right] not
// less. Two elements that both equal the pivot are not exchanged. Adds one
// to swaps per exchange. -1 when buf is null.
PALVET_API int PartitionBuffer(void** buf, int left, int right,
                               int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                               unsigned long long user1, unsigned long long user2, int& swaps);

// Sorts buf[left..right] (bounds exchanged when reversed) without recursion,
// always taking the left part first. Adds to swaps; never resets it. Leaves
// the range unsorted when the frame stack cannot be allocated.
PALVET_API void QuicksortBuffer_Stack(void** buf, int left, int right,
                                      int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                                      unsigned long long user1, unsigned long long user2, int& swaps);

// The same sort by recursion on the left part and a loop on the right part.
PALVET_API void QuickSortBufferDirectly(void** buf, int left, int right,
                                        int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                                        unsigned long long user1, unsigned long long user2, int& swaps);

// Public entry: negative bounds become 0, a left above right sorts nothing.
// Stores the number of exchanges through swaps when it is not null (0 means
// the range was already in order). A null buf returns without writing it.
PALVET_API void QuicksortBuffer(void** buf, int left, int right,
                                int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                                unsigned long long user1, unsigned long long user2, int* swaps);

// Ready-made comparisons of char / wchar_t strings for the sorts above.
// user1 bits 0-15: exactly 1 sorts ascending, anything else descending;
// bits 16-31: non-zero compares case-sensitively. A null string sorts first
// when ascending and last when descending; user2 is ignored.
PALVET_API int SortCmpStringA(void const* a, void const* b, unsigned long long user1, unsigned long long user2);
PALVET_API int SortCmpStringW(void const* a, void const* b, unsigned long long user1, unsigned long long user2);

// ---------------------------------------------------------------------------

// The one collection interface. Operations that take another collection use
// only these virtual operations on it, so array and list mix freely.
class PALVET_API CPtrCtrl {
public:
    virtual ~CPtrCtrl();

    // Stores p at an existing position; returns pos, or -1 when out of range.
    virtual int Set(int pos, void const* p) = 0;
    // Inserts p so that it ends up at pos (negative or beyond the end:
    // appends). Returns the index used, or -1 when storage ran out.
    virtual int AddData(void const* p, int pos) = 0;
    // Inserts all of src's pointers, in order, at pos. The result differs by
    // kind; see the concrete classes.
    virtual int AddPtrCtrl(CPtrCtrl* src, int pos) = 0;
    // Replaces the content with src's; returns the new count, 0 for null src.
    virtual int CopyPtrCtrl(CPtrCtrl* src) = 0;
    virtual int IsDataAvailable(int pos) = 0;
    virtual void* GetAt(int pos) = 0;
    virtual void* GetHead() = 0;
    virtual void* GetTail() = 0;
    // Index of the match nearest to the current position, looking both ways
    // round the sequence as a ring (forward wins a tie); -1 when none.
    virtual int FindFirst(void const* key, int (*cb)(void const*, void const*)) = 0;
    // Continues outward from where the last FindFirst/FindNext stopped.
    virtual int FindNext(void const* key, int (*cb)(void const*, void const*)) = 0;
    // Removes up to n pointers from pos; returns the one that stood at pos.
    virtual void* DeleteAt(int pos, int n) = 0;
    virtual void* DeleteHead() = 0;
    virtual void* DeleteTail() = 0;
    virtual void DeleteAll() = 0;
    // Moves n pointers from position from so the block starts at to.
    virtual int MoveData(int from, int n, int to) = 0;
    virtual void QuickSort(int start, int end,
                           int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                           unsigned long long user1, unsigned long long user2, int* swaps) = 0;
    virtual int GetCount() const = 0;
    virtual int IsEmpty() const = 0;
    virtual char const* GetClassName() const = 0;
    // Prints "Dump, Asce" or "Dump, Desc" and one "%llu" line per pointer to
    // standard output.
    virtual void Dump(bool ascending) = 0;
};

// Growable contiguous array. Capacity is 0 or 32 times a power of two; it
// shrinks only when the count is above 32 and below half the capacity.
class PALVET_API CPtrArrayCtrl : public CPtrCtrl {
public:
    CPtrArrayCtrl();
    // Copies of another collection's pointers (not of what they point to).
    CPtrArrayCtrl(CPtrArrayCtrl& src);
    CPtrArrayCtrl(CPtrCtrl* src);
    ~CPtrArrayCtrl() override;

    int Set(int pos, void const* p) override;
    int AddData(void const* p, int pos) override;
    // Returns the insert index when src is an array (one block copy, current
    // position unchanged); otherwise adds one by one and returns the final
    // insert position (pos + n, or -1 when appending), which also becomes
    // current. -1 for a null or empty src or when storage ran out.
    int AddPtrCtrl(CPtrCtrl* src, int pos) override;
    // Also makes position 0 current.
    int CopyPtrCtrl(CPtrCtrl* src) override;
    int IsDataAvailable(int pos) override;
    void* GetAt(int pos) override;
    void* GetHead() override;
    void* GetTail() override;
    int FindFirst(void const* key, int (*cb)(void const*, void const*)) override;
    int FindNext(void const* key, int (*cb)(void const*, void const*)) override;
    void* DeleteAt(int pos, int n) override;
    void* DeleteHead() override;
    void* DeleteTail() override;
    // Frees the storage; the find state is kept.
    void DeleteAll() override;
    int MoveData(int from, int n, int to) override;
    void QuickSort(int start, int end,
                   int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                   unsigned long long user1, unsigned long long user2, int* swaps) override;
    int GetCount() const override;
    int IsEmpty() const override;
    char const* GetClassName() const override;
    void Dump(bool ascending) override;

    // Resizes the storage for new_count elements; 1 on success, 0 when the
    // memory could not be had (the content is then lost and the array left
    // empty).
    int OnSizeChange(int new_count);
    int IncreaseCapability(int capacity, int new_count);
    int DecreaseCapability(int capacity, int new_count);
    int GetCapability();
    void SetCurPos(int pos);
    void SetFindData(int start, int backward, int forward);
    int FindDataAtPos(int pos, void const* key, int (*cb)(void const*, void const*));
    // Empties dst and fills it with the indices (as pointer-sized integers)
    // of the matching elements, ascending. Does nothing for a null dst or cb.
    void FindAll(CPtrCtrl* dst, void const* key, int (*cb)(void const*, void const*));

    CPtrArrayCtrl& operator=(CPtrCtrl& src);
    CPtrArrayCtrl& operator+=(CPtrCtrl& src);
    // Deep copy; without it the implicit member-wise copy would share (and
    // twice free) the storage.
    CPtrArrayCtrl& operator=(CPtrArrayCtrl const& src)
    {
        CopyPtrCtrl(const_cast<CPtrArrayCtrl*>(&src));
        return *this;
    }

private:
    // The hash tables keep their buckets' storage in blocks of their own.
    friend struct palvet::detail::PtrArrayAccess;

    void const** m_data;
    int m_count;
    int m_capacity;
    int m_curPos;
    int m_findStart;
    int m_findBackward;
    int m_findForward;
};

// A new array holding left's pointers followed by right's.
PALVET_API CPtrArrayCtrl operator+(CPtrArrayCtrl& left, CPtrArrayCtrl& right);

// Doubly linked list with a cached current node: a positional lookup walks
// from the head, the tail or the cached node, whichever is nearest, so
// sequential access costs one step per call.
class PALVET_API CPtrListCtrl : public CPtrCtrl {
public:
    // One node of the list.
    struct tagDATALIST {
        void const* data;    // the element
        tagDATALIST* next;   // the following node, null at the tail
        // The first node's prev is the list's embedded head node.
        tagDATALIST* prev;
    };

    CPtrListCtrl();
    // Copies of another collection's pointers (not of what they point to).
    CPtrListCtrl(CPtrListCtrl& src);
    CPtrListCtrl(CPtrCtrl* src);
    ~CPtrListCtrl() override;

    // Set, GetAt and IsDataAvailable make pos the cached position.
    int Set(int pos, void const* p) override;
    int AddData(void const* p, int pos) override;
    // Returns the number of pointers added (0 for a null src).
    int AddPtrCtrl(CPtrCtrl* src, int pos) override;
    // Leaves the last appended element cached.
    int CopyPtrCtrl(CPtrCtrl* src) override;
    int IsDataAvailable(int pos) override;
    void* GetAt(int pos) override;
    // GetHead and GetTail leave the cached position alone.
    void* GetHead() override;
    void* GetTail() override;
    int FindFirst(void const* key, int (*cb)(void const*, void const*)) override;
    int FindNext(void const* key, int (*cb)(void const*, void const*)) override;
    void* DeleteAt(int pos, int n) override;
    void* DeleteHead() override;
    void* DeleteTail() override;
    void DeleteAll() override;
    // A negative destination appends.
    int MoveData(int from, int n, int to) override;
    // Sorts through a temporary array; every node is new afterwards.
    void QuickSort(int start, int end,
                   int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                   unsigned long long user1, unsigned long long user2, int* swaps) override;
    int GetCount() const override;
    int IsEmpty() const override;
    char const* GetClassName() const override;
    void Dump(bool ascending) override;

    // The node at pos (made the cached one), or null when out of range.
    tagDATALIST* SearchToPos(int pos);
    void SetCurPos(int pos, tagDATALIST* node);
    void SetFindData(int start, int backward, int forward);
    int FindDataAtPos(int pos, void const* key, int (*cb)(void const*, void const*));
    // Does nothing, whatever the arguments: to collect the matches of a
    // list, copy it into a CPtrArrayCtrl and use that array's FindAll.
    void FindAll(CPtrCtrl* dst, void const* key, int (*cb)(void const*, void const*));
    void* DeleteOne(int pos);

    CPtrListCtrl& operator=(CPtrCtrl& src);
    CPtrListCtrl& operator+=(CPtrCtrl& src);
    // Deep copy; the implicit one would share nodes and the head link.
    CPtrListCtrl& operator=(CPtrListCtrl const& src)
    {
        CopyPtrCtrl(const_cast<CPtrListCtrl*>(&src));
        return *this;
    }

private:
    tagDATALIST m_head;
    tagDATALIST* m_tail;
    tagDATALIST* m_cached;
    int m_count;
    int m_cachedIndex;
    int m_findStart;
    int m_findBackward;
    int m_findForward;
    int m_relinkDepth;
};

// A new list holding left's pointers followed by right's.
PALVET_API CPtrListCtrl operator+(CPtrListCtrl& left, CPtrListCtrl& right);

#endif
