#include <palvet/containers/ptr_collection.h>

#include "ring_search_internal.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr int kMinCapacity = 32;
constexpr char kArrayClassName[] = "CPtrArrayCtrl";

}  // namespace

CPtrCtrl::~CPtrCtrl() = default;

CPtrArrayCtrl::CPtrArrayCtrl()
    : m_data(nullptr), m_count(0), m_capacity(0), m_curPos(-1), m_findStart(-1), m_findBackward(-1),
      m_findForward(-1)
{
}

CPtrArrayCtrl::CPtrArrayCtrl(CPtrArrayCtrl& src) : CPtrArrayCtrl()
{
    CopyPtrCtrl(&src);
}

CPtrArrayCtrl::CPtrArrayCtrl(CPtrCtrl* src) : CPtrArrayCtrl()
{
    CopyPtrCtrl(src);
}

CPtrArrayCtrl::~CPtrArrayCtrl()
{
    DeleteAll();
}

int CPtrArrayCtrl::IncreaseCapability(int capacity, int new_count)
{
    int c = capacity;
    if (c == 0) {
        if (new_count < 2)
            return 1;
        c = 1;
    }
    while (c < new_count) {
        if (c > INT_MAX / 2)
            return INT_MAX;  // not allocatable anyway; OnSizeChange reports it
        c *= 2;
    }
    return c;
}

int CPtrArrayCtrl::DecreaseCapability(int capacity, int new_count)
{
    if (new_count < 1)
        return 0;
    int c = capacity;
    while (new_count <= c / 2)
        c /= 2;
    return c;
}

int CPtrArrayCtrl::OnSizeChange(int new_count)
{
    int c = std::max(m_capacity, kMinCapacity);
    if (c < new_count)
        c = IncreaseCapability(c, new_count);
    else if (new_count > kMinCapacity && new_count < c / 2)
        c = DecreaseCapability(c, new_count);
    if (c == m_capacity)
        return 1;

    void const** grown = nullptr;
    if (c > 0 && static_cast<size_t>(c) <= SIZE_MAX / sizeof(void const*) / 2)
        grown = new (std::nothrow) void const*[static_cast<size_t>(c)];
    if (grown == nullptr) {
        // The old storage goes as well. The count goes with it, so that no
        // later call reads through the lost array.
        delete[] m_data;
        m_data = nullptr;
        m_count = 0;
        m_capacity = 0;
        m_curPos = -1;
        return 0;
    }
    // Only the stored pointers are worth copying; slots past the count are
    // never read.
    int const keep = std::min(m_count, c);
    if (keep > 0)
        memcpy(grown, m_data, static_cast<size_t>(keep) * sizeof(void const*));
    delete[] m_data;
    m_data = grown;
    m_capacity = c;
    return 1;
}

int CPtrArrayCtrl::GetCapability()
{
    return m_capacity;
}

void CPtrArrayCtrl::SetCurPos(int pos)
{
    m_curPos = pos;
}

void CPtrArrayCtrl::SetFindData(int start, int backward, int forward)
{
    m_findStart = palvet::detail::ClampFindIndex(start, m_count);
    m_findBackward = palvet::detail::ClampFindIndex(backward, m_count);
    m_findForward = palvet::detail::ClampFindIndex(forward, m_count);
}

int CPtrArrayCtrl::Set(int pos, void const* p)
{
    if (pos < 0 || pos >= m_count)
        return -1;
    m_data[pos] = p;
    m_curPos = pos;
    return pos;
}

int CPtrArrayCtrl::AddData(void const* p, int pos)
{
    if (m_count == INT_MAX || !OnSizeChange(m_count + 1))
        return -1;
    if (pos < 0 || pos > m_count)
        pos = m_count;
    if (pos < m_count)
        memmove(m_data + pos + 1, m_data + pos, static_cast<size_t>(m_count - pos) * sizeof(void const*));
    m_data[pos] = p;
    ++m_count;
    m_curPos = pos;
    return pos;
}

int CPtrArrayCtrl::AddPtrCtrl(CPtrCtrl* src, int pos)
{
    if (src == nullptr || src->GetCount() < 1)
        return -1;
    // Adding an array to itself reads from a snapshot, since the insertion
    // moves the very slots being read.
    CPtrArrayCtrl snapshot;
    if (src == this) {
        snapshot.CopyPtrCtrl(this);
        src = &snapshot;
    }
    int const n = src->GetCount();
    if (n > INT_MAX - m_count || !OnSizeChange(m_count + n))
        return -1;

    if (strcmp(src->GetClassName(), kArrayClassName) == 0) {
        auto const* other = static_cast<CPtrArrayCtrl const*>(src);
        int const at = pos < 0 || pos > m_count ? m_count : pos;
        if (at < m_count)
            memmove(m_data + at + n, m_data + at, static_cast<size_t>(m_count - at) * sizeof(void const*));
        memcpy(m_data + at, other->m_data, static_cast<size_t>(n) * sizeof(void const*));
        m_count += n;
        return at;
    }

    // Element by element: -1 keeps appending; any other position, negative
    // ones included, advances by one per element.
    for (int i = 0; i < n; ++i) {
        AddData(src->GetAt(i), pos);
        if (pos != -1)
            ++pos;
    }
    m_curPos = pos;
    return pos;
}

int CPtrArrayCtrl::CopyPtrCtrl(CPtrCtrl* src)
{
    if (src == nullptr)
        return 0;
    DeleteAll();
    AddPtrCtrl(src, -1);
    m_curPos = 0;
    return m_count;
}

int CPtrArrayCtrl::IsDataAvailable(int pos)
{
    return pos >= 0 && pos < m_count ? 1 : 0;
}

void* CPtrArrayCtrl::GetAt(int pos)
{
    if (pos < 0 || pos >= m_count)
        return nullptr;
    m_curPos = pos;
    return const_cast<void*>(m_data[pos]);
}

void* CPtrArrayCtrl::GetHead()
{
    if (m_count < 1)
        return nullptr;
    m_curPos = 0;
    return const_cast<void*>(m_data[0]);
}

void* CPtrArrayCtrl::GetTail()
{
    if (m_count < 1)
        return nullptr;
    m_curPos = m_count - 1;
    return const_cast<void*>(m_data[m_count - 1]);
}

int CPtrArrayCtrl::FindDataAtPos(int pos, void const* key, int (*cb)(void const*, void const*))
{
    // Out-of-range positions never match rather than reading past the array.
    if (pos < 0 || pos >= m_count)
        return 0;
    void const* const element = m_data[pos];
    if (cb == nullptr)
        return element == key ? 1 : 0;
    return cb(element, key) != 0 ? 1 : 0;
}

int CPtrArrayCtrl::FindFirst(void const* key, int (*cb)(void const*, void const*))
{
    return palvet::detail::CollectionFindFirst(
        m_count, m_curPos, [&](int i) { return FindDataAtPos(i, key, cb) != 0; },
        [this](int s, int b, int f) { SetFindData(s, b, f); });
}

int CPtrArrayCtrl::FindNext(void const* key, int (*cb)(void const*, void const*))
{
    return palvet::detail::RingFindNext(
        m_count, {m_findStart, m_findBackward, m_findForward},
        [&](int i) { return FindDataAtPos(i, key, cb) != 0; },
        [this](int s, int b, int f) { SetFindData(s, b, f); });
}

void CPtrArrayCtrl::FindAll(CPtrCtrl* dst, void const* key, int (*cb)(void const*, void const*))
{
    if (dst == nullptr || cb == nullptr)
        return;
    dst->DeleteAll();
    for (int i = 0; i < m_count; ++i)
        if (cb(m_data[i], key) != 0)
            dst->AddData(reinterpret_cast<void const*>(static_cast<intptr_t>(i)), -1);
}

void* CPtrArrayCtrl::DeleteAt(int pos, int n)
{
    if (pos < 0 || pos >= m_count)
        return nullptr;
    // A negative n would move slots from in front of pos; treat it as 0.
    int const k = std::max(0, std::min(n, m_count - pos));
    void const* const removed = m_data[pos];
    int const tail = m_count - pos - k;
    if (k > 0 && tail > 0)
        memmove(m_data + pos, m_data + pos + k, static_cast<size_t>(tail) * sizeof(void const*));
    m_count -= k;
    OnSizeChange(m_count);
    m_curPos = pos;
    return const_cast<void*>(removed);
}

void* CPtrArrayCtrl::DeleteHead()
{
    return DeleteAt(0, 1);
}

void* CPtrArrayCtrl::DeleteTail()
{
    return DeleteAt(m_count - 1, 1);
}

void CPtrArrayCtrl::DeleteAll()
{
    delete[] m_data;
    m_data = nullptr;
    m_count = 0;
    m_capacity = 0;
    m_curPos = -1;
}

int CPtrArrayCtrl::MoveData(int from, int n, int to)
{
    if (m_count < 2 || n < 1 || from < 0)
        return 0;
    if (from >= m_count)
        from = m_count - 1;
    n = std::min(n, m_count - from);
    if (to >= m_count)
        to = m_count - 1;
    if (to < 0)
        to = 0;
    // A block moved toward the end must still fit in front of the end; a
    // destination beyond that lands the block at the end.
    if (to > from && to > m_count - n)
        to = m_count - n;
    if (from == to)
        return 0;
    // Rotating in place gives the same order as lifting the block out and
    // dropping it back in, without a temporary array.
    if (from < to)
        std::rotate(m_data + from, m_data + from + n, m_data + to + n);
    else
        std::rotate(m_data + to, m_data + from, m_data + from + n);
    m_curPos = to;
    return 1;
}

void CPtrArrayCtrl::QuickSort(int start, int end,
                              int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                              unsigned long long user1, unsigned long long user2, int* swaps)
{
    if (m_count < 2)
        return;
    if (start < 0)
        start = 0;
    else if (start >= m_count)
        start = m_count - 1;
    if (end < 0 || end >= m_count)
        end = m_count - 1;
    QuicksortBuffer(const_cast<void**>(m_data), start, end, cmp, user1, user2, swaps);
}

int CPtrArrayCtrl::GetCount() const
{
    return m_count;
}

int CPtrArrayCtrl::IsEmpty() const
{
    return m_count < 1 ? 1 : 0;
}

char const* CPtrArrayCtrl::GetClassName() const
{
    return kArrayClassName;
}

void CPtrArrayCtrl::Dump(bool ascending)
{
    printf("Dump, %s\n", ascending ? "Asce" : "Desc");
    for (int k = 0; k < m_count; ++k) {
        int const i = ascending ? k : m_count - 1 - k;
        printf("%llu\n", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(m_data[i])));
    }
}

CPtrArrayCtrl& CPtrArrayCtrl::operator=(CPtrCtrl& src)
{
    CopyPtrCtrl(&src);
    return *this;
}

CPtrArrayCtrl& CPtrArrayCtrl::operator+=(CPtrCtrl& src)
{
    AddPtrCtrl(&src, -1);
    return *this;
}

CPtrArrayCtrl operator+(CPtrArrayCtrl& left, CPtrArrayCtrl& right)
{
    CPtrArrayCtrl sum(left);
    sum.AddPtrCtrl(&right, -1);
    return sum;
}
