#include <palvet/containers/ptr_collection.h>

#include "ring_search_internal.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

constexpr char kListClassName[] = "CPtrListCtrl";

}  // namespace

CPtrListCtrl::CPtrListCtrl()
    : m_head{nullptr, nullptr, nullptr}, m_tail(nullptr), m_cached(nullptr), m_count(0), m_cachedIndex(-1),
      m_findStart(-1), m_findBackward(-1), m_findForward(-1), m_relinkDepth(0)
{
}

CPtrListCtrl::CPtrListCtrl(CPtrListCtrl& src) : CPtrListCtrl()
{
    CopyPtrCtrl(&src);
}

CPtrListCtrl::CPtrListCtrl(CPtrCtrl* src) : CPtrListCtrl()
{
    CopyPtrCtrl(src);
}

CPtrListCtrl::~CPtrListCtrl()
{
    DeleteAll();
    m_head = tagDATALIST{nullptr, nullptr, nullptr};
}

void CPtrListCtrl::SetCurPos(int pos, tagDATALIST* node)
{
    if (m_relinkDepth > 0)
        return;
    m_cached = node;
    m_cachedIndex = node != nullptr ? pos : -1;
}

void CPtrListCtrl::SetFindData(int start, int backward, int forward)
{
    auto clamp = [this](int v) { return v < -1 || v >= m_count ? -1 : v; };
    m_findStart = clamp(start);
    m_findBackward = clamp(backward);
    m_findForward = clamp(forward);
}

CPtrListCtrl::tagDATALIST* CPtrListCtrl::SearchToPos(int pos)
{
    if (pos < 0 || pos >= m_count)
        return nullptr;
    int const d_head = pos;
    // One more than the steps really needed from the tail; the tie-breaks
    // below depend on it.
    int const d_tail = m_tail != nullptr ? m_count - pos : INT_MAX;
    int const d_cache = m_cachedIndex >= 0 ? std::abs(pos - m_cachedIndex) : INT_MAX;

    enum { kFromHead, kFromTail, kFromCache } from;
    if (d_cache <= std::min(d_head, d_tail))
        from = d_cache == d_head ? kFromHead : d_cache == d_tail ? kFromTail : kFromCache;
    else
        from = d_head <= d_tail ? kFromHead : kFromTail;

    tagDATALIST* node = nullptr;
    switch (from) {
    case kFromHead:
        node = &m_head;
        for (int k = 0; k <= pos && node != nullptr; ++k)
            node = node->next;
        break;
    case kFromTail:
        node = m_tail;
        for (int i = m_count - 1; i > pos && node != nullptr; --i)
            node = node->prev;
        break;
    case kFromCache:
        node = m_cached;
        if (pos > m_cachedIndex)
            for (int i = m_cachedIndex; i < pos && node != nullptr; ++i)
                node = node->next;
        else
            for (int i = m_cachedIndex; i > pos && node != nullptr; --i)
                node = node->prev;
        break;
    }
    SetCurPos(pos, node);
    return node;
}

int CPtrListCtrl::Set(int pos, void const* p)
{
    tagDATALIST* const node = SearchToPos(pos);
    if (node == nullptr)
        return -1;
    node->data = p;
    return pos;
}

int CPtrListCtrl::AddData(void const* p, int pos)
{
    if (m_count == INT_MAX)
        return -1;
    int const index = pos < 0 || pos > m_count ? m_count : pos;
    tagDATALIST* const before = index == 0 ? &m_head : SearchToPos(index - 1);
    if (before == nullptr)
        return -1;
    auto* const node = new (std::nothrow) tagDATALIST{p, before->next, before};
    if (node == nullptr)
        return -1;
    ++m_relinkDepth;
    if (before->next != nullptr)
        before->next->prev = node;
    before->next = node;
    if (m_tail == nullptr || index == m_count)
        m_tail = node;
    ++m_count;
    --m_relinkDepth;
    SetCurPos(index, node);
    return index;
}

void* CPtrListCtrl::DeleteOne(int pos)
{
    // The lookup caches the node, so the cache is always the node that goes.
    tagDATALIST* const node = SearchToPos(pos);
    if (node == nullptr)
        return nullptr;
    ++m_relinkDepth;
    tagDATALIST* const prev = node->prev;
    tagDATALIST* const next = node->next;
    prev->next = next;
    if (next != nullptr)
        next->prev = prev;
    if (node == m_tail)
        m_tail = prev != &m_head ? prev : nullptr;
    --m_count;
    if (node == m_cached) {
        if (next != nullptr) {
            m_cached = next;  // same index
        } else if (prev != &m_head) {
            m_cached = prev;
            --m_cachedIndex;
        } else {
            m_cached = nullptr;
            m_cachedIndex = -1;
        }
    }
    --m_relinkDepth;
    void const* const data = node->data;
    delete node;
    return const_cast<void*>(data);
}

void* CPtrListCtrl::DeleteAt(int pos, int n)
{
    if (pos < 0 || pos >= m_count || n < 1)
        return nullptr;
    void* const first = DeleteOne(pos);
    for (int k = 1; k < n && pos < m_count; ++k)
        DeleteOne(pos);
    return first;
}

void* CPtrListCtrl::DeleteHead()
{
    return DeleteAt(0, 1);
}

void* CPtrListCtrl::DeleteTail()
{
    return DeleteAt(m_count - 1, 1);
}

void CPtrListCtrl::DeleteAll()
{
    while (m_tail != nullptr && m_count >= 1)
        DeleteAt(0, 1);
}

int CPtrListCtrl::AddPtrCtrl(CPtrCtrl* src, int pos)
{
    if (src == nullptr)
        return 0;
    // Adding a list to itself reads from a snapshot, since the insertions
    // would otherwise be read back.
    CPtrListCtrl snapshot;
    if (src == this) {
        snapshot.CopyPtrCtrl(this);
        src = &snapshot;
    }
    int const n = src->GetCount();
    if (n < 1)
        return n;
    int p = pos;
    for (int i = 0; i < n; ++i) {
        AddData(src->GetAt(i), p);
        if (p != -1)
            ++p;
    }
    return n;
}

int CPtrListCtrl::CopyPtrCtrl(CPtrCtrl* src)
{
    if (src == nullptr)
        return 0;
    DeleteAll();
    AddPtrCtrl(src, -1);
    return m_count;
}

int CPtrListCtrl::IsDataAvailable(int pos)
{
    return SearchToPos(pos) != nullptr ? 1 : 0;
}

void* CPtrListCtrl::GetAt(int pos)
{
    tagDATALIST* const node = SearchToPos(pos);
    return node != nullptr ? const_cast<void*>(node->data) : nullptr;
}

void* CPtrListCtrl::GetHead()
{
    return m_head.next != nullptr ? const_cast<void*>(m_head.next->data) : nullptr;
}

void* CPtrListCtrl::GetTail()
{
    return m_tail != nullptr ? const_cast<void*>(m_tail->data) : nullptr;
}

int CPtrListCtrl::FindDataAtPos(int pos, void const* key, int (*cb)(void const*, void const*))
{
    void const* const element = GetAt(pos);
    if (cb == nullptr)
        return element == key ? 1 : 0;
    return cb(element, key) != 0 ? 1 : 0;
}

int CPtrListCtrl::FindFirst(void const* key, int (*cb)(void const*, void const*))
{
    // Only the index is reset: with index 0 the lookup walks from the head
    // and never uses the stale node.
    return palvet::detail::CollectionFindFirst(
        m_count, m_cachedIndex, [&](int i) { return FindDataAtPos(i, key, cb) != 0; },
        [this](int s, int b, int f) { SetFindData(s, b, f); });
}

int CPtrListCtrl::FindNext(void const* key, int (*cb)(void const*, void const*))
{
    return palvet::detail::RingFindNext(
        m_count, {m_findStart, m_findBackward, m_findForward},
        [&](int i) { return FindDataAtPos(i, key, cb) != 0; },
        [this](int s, int b, int f) { SetFindData(s, b, f); });
}

void CPtrListCtrl::FindAll(CPtrCtrl*, void const*, int (*)(void const*, void const*))
{
    // Deliberately a no-op, whatever the arguments: applications gather a
    // list's matches through an array copy and expect the destination to be
    // left alone here.
}

int CPtrListCtrl::MoveData(int from, int n, int to)
{
    if (m_count < 2 || n < 1 || from < 0)
        return 0;
    if (from >= m_count)
        from = m_count - 1;
    if (n > m_count - from)
        n = m_count - from;
    if (to >= m_count)
        to = m_count - 1;
    else if (to < 0)
        to = m_count;  // a negative destination appends
    if (from == to)
        return 0;
    void const** const block = new (std::nothrow) void const*[static_cast<size_t>(n)];
    if (block == nullptr)
        return 0;
    int taken = 0;
    for (int k = 0; k < n; ++k)
        if (from < m_count)
            block[taken++] = DeleteAt(from, 1);
    for (int k = 0; k < taken; ++k)
        AddData(block[k], to + k);
    delete[] block;
    return 1;
}

void CPtrListCtrl::QuickSort(int start, int end,
                             int (*cmp)(void const*, void const*, unsigned long long, unsigned long long),
                             unsigned long long user1, unsigned long long user2, int* swaps)
{
    CPtrArrayCtrl sorted(this);
    sorted.QuickSort(start, end, cmp, user1, user2, swaps);
    CopyPtrCtrl(&sorted);
}

int CPtrListCtrl::GetCount() const
{
    return m_count;
}

int CPtrListCtrl::IsEmpty() const
{
    return m_count < 1 ? 1 : 0;
}

char const* CPtrListCtrl::GetClassName() const
{
    return kListClassName;
}

void CPtrListCtrl::Dump(bool ascending)
{
    printf("Dump, %s\n", ascending ? "Asce" : "Desc");
    if (ascending) {
        for (tagDATALIST const* node = m_head.next; node != nullptr; node = node->next)
            printf("%llu\n", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(node->data)));
    } else {
        for (tagDATALIST const* node = m_tail; node != nullptr && node != &m_head; node = node->prev)
            printf("%llu\n", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(node->data)));
    }
}

CPtrListCtrl& CPtrListCtrl::operator=(CPtrCtrl& src)
{
    CopyPtrCtrl(&src);
    return *this;
}

CPtrListCtrl& CPtrListCtrl::operator+=(CPtrCtrl& src)
{
    AddPtrCtrl(&src, -1);
    return *this;
}

CPtrListCtrl operator+(CPtrListCtrl& left, CPtrListCtrl& right)
{
    CPtrListCtrl sum(left);
    sum.AddPtrCtrl(&right, -1);
    return sum;
}
