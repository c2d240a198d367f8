#ifndef PALVET_TESTS_CONTAINERS_COLLECTION_TEST_UTIL_H
#define PALVET_TESTS_CONTAINERS_COLLECTION_TEST_UTIL_H

#include <palvet/containers/ptr_collection.h>

#include <cstdint>
#include <vector>

namespace palvet_test {

// Stand-in pointers: never dereferenced, told apart by value.
inline void const* P(int v)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(v));
}

inline int V(void const* p)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(p));
}

inline void Fill(CPtrCtrl& c, std::vector<int> const& values)
{
    for (int v : values)
        c.AddData(P(v), -1);
}

// Reads through GetAt, which moves the current position.
inline std::vector<int> Contents(CPtrCtrl& c)
{
    std::vector<int> out;
    for (int i = 0; i < c.GetCount(); ++i)
        out.push_back(V(c.GetAt(i)));
    return out;
}

}  // namespace palvet_test

#endif
