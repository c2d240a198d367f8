#ifndef PALVET_TEXT_BUFFER_H
#define PALVET_TEXT_BUFFER_H

#include <palvet/core/export.h>

// A growable byte block with a data size. It either owns its storage
// (allocated with new[]) or is bound to memory the caller owns, which it never
// frees. No terminating zero is ever added.
class PALVET_API CBuffer {
public:
    CBuffer();
    virtual ~CBuffer();
    CBuffer(CBuffer const&) = delete;  // would free the block twice
    CBuffer& operator=(CBuffer const&) = delete;

    // Points the buffer at caller memory: capacity and data size both become
    // size. Storage owned before is not freed, so bind only empty buffers.
    void BindBuffer(void const* data, unsigned int size);

    // Replaces the content with size bytes. When the block is large enough it
    // is reused (written in place, even when bound) and the data size becomes
    // size, also with a null source. Otherwise a block of exactly size bytes
    // is allocated; a null source then leaves it empty.
    void SetBuffer(void const* source, unsigned int size);

    // Adds size bytes at the end. Without room the capacity grows by exactly
    // size; a null source then only reserves the room, and with room to spare
    // a null source does nothing. The source may lie inside this buffer.
    void AppendBuffer(void const* source, unsigned int size);

    // Frees owned storage (bound memory is left alone); all sizes become 0.
    void Delete();

    unsigned char* GetBuffer() const;   // the block (null when empty)
    unsigned int GetAvailSize() const;  // bytes of data held
    unsigned int GetLeftSize() const;   // room left without reallocation
    unsigned int GetBufSize() const;    // capacity
    int IsBindBuffer();                 // 1 when bound to caller memory

private:
    unsigned char* m_pData;
    unsigned int m_nCapacity;
    unsigned int m_nLength;
    int m_bBound;
};

#endif
