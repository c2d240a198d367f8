#ifndef PALVET_CONTAINERS_RING_SEARCH_INTERNAL_H
#define PALVET_CONTAINERS_RING_SEARCH_INTERNAL_H

// The outward search shared by the array and the list. The sequence is taken
// as a ring; from a start index the search alternates forward and backward
// candidates at growing distance (forward first), so each element is looked
// at once. The find state (start, last backward, last forward) lets a later
// search continue where the previous one stopped.

namespace palvet::detail {

struct FindState {
    int start;
    int backward;
    int forward;
};

// A recorded find index: -1 unless it is a position of the collection.
inline int ClampFindIndex(int v, int count)
{
    return v < -1 || v >= count ? -1 : v;
}

// Index modulo count in [0, count) for any x; count >= 1.
inline int RingIndex(long long x, int count)
{
    if (x >= 0 && x < count)
        return static_cast<int>(x);
    if (x >= count && x < 2LL * count)
        return static_cast<int>(x - count);
    long long r = x % count;
    return static_cast<int>(r < 0 ? r + count : r);
}

// matches(i) tests element i; record(s, b, f) stores the find state.
template <typename Matches, typename Record>
int RingFindFirst(int count, int c, Matches matches, Record record)
{
    int const half = (count + 2) / 2;
    int b = c;
    for (int i = 0;; ++i) {
        int const f = RingIndex(static_cast<long long>(c) + i, count);
        if (matches(f)) {
            record(c, b, f);
            return f;
        }
        b = RingIndex(static_cast<long long>(count) + c - i, count);
        if (b != f && matches(b)) {
            record(c, b, f);
            return b;
        }
        if (i + 1 == half) {
            record(c, b, f);
            return -1;
        }
    }
}

// A new search of a collection of count elements from its cursor: a cursor
// outside the collection is reset to 0 first, and the find state is recorded
// before any element is tested. -1 for an empty collection.
template <typename Matches, typename Record>
int CollectionFindFirst(int count, int& cursor, Matches matches, Record record)
{
    if (count < 1)
        return -1;
    if (cursor < 0 || cursor >= count)
        cursor = 0;
    int const c = cursor;
    record(c, c, c);
    return RingFindFirst(count, c, matches, record);
}

template <typename Matches, typename Record>
int RingFindNext(int count, FindState st, Matches matches, Record record)
{
    if (count < 1)
        return -1;
    long long fwd_done = static_cast<long long>(st.forward) - st.start;
    if (st.forward < st.start)
        fwd_done += count;
    long long back_done = static_cast<long long>(st.start) - st.backward;
    if (st.backward > st.start)
        back_done += count;
    long long const remaining = (count - fwd_done - back_done) / 2;
    if (remaining < 1)
        return -1;
    // The state may be stale after the collection changed; RingIndex keeps
    // every probe inside the sequence regardless.
    long long const f0 = RingIndex(static_cast<long long>(count) + st.forward + 1, count);
    long long const b0 = RingIndex(static_cast<long long>(count) + st.backward - 1, count);
    for (long long i = 0;; ++i) {
        int const fi = RingIndex(f0 + i, count);
        if (matches(fi)) {
            record(st.start, st.backward, fi);
            return fi;
        }
        int const bi = RingIndex(count + b0 - i, count);
        if (bi != fi && matches(bi)) {
            // The forward index keeps its old value: the next search goes on
            // forward from where it was.
            record(st.start, bi, st.forward);
            return bi;
        }
        if (i + 1 == remaining) {
            record(st.start, bi, fi);
            return -1;
        }
    }
}

}  // namespace palvet::detail

#endif
