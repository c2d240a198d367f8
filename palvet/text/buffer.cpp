#include <palvet/text/buffer.h>

#include <cstring>
#include <new>

CBuffer::CBuffer() : m_pData(nullptr), m_nCapacity(0), m_nLength(0), m_bBound(0) {}

CBuffer::~CBuffer()
{
    Delete();
}

void CBuffer::BindBuffer(void const* data, unsigned int size)
{
    // Whatever was owned before is abandoned on purpose: callers bind fresh
    // buffers, and freeing here would break those that hand the old block on.
    m_pData = static_cast<unsigned char*>(const_cast<void*>(data));
    m_nCapacity = size;
    m_nLength = size;
    m_bBound = 1;
}

void CBuffer::SetBuffer(void const* source, unsigned int size)
{
    if (m_nCapacity >= size) {
        // A null source declares that many bytes of the present content valid;
        // conversions write into the block first and set the size this way.
        if (source != nullptr && size > 0)
            memmove(m_pData, source, size);
        m_nLength = size;
        return;
    }

    unsigned char* block = new (std::nothrow) unsigned char[size];
    if (block != nullptr && source != nullptr)
        memcpy(block, source, size);
    if (!m_bBound)
        delete[] m_pData;
    m_pData = block;
    m_nCapacity = block != nullptr ? size : 0;
    m_nLength = block != nullptr && source != nullptr ? size : 0;
    m_bBound = 0;
}

void CBuffer::AppendBuffer(void const* source, unsigned int size)
{
    if (size == 0)
        return;
    // length <= capacity always holds, so this is the 32-bit "length + size
    // <= capacity" without its wrap-around.
    if (size <= m_nCapacity - m_nLength) {
        if (source != nullptr) {
            memmove(m_pData + m_nLength, source, size);
            m_nLength += size;
        }
        return;
    }

    // Grows by exactly the piece appended: callers that know the total size
    // reserve it first with SetBuffer(nullptr, total). A capacity beyond 32
    // bits fails like an allocation would.
    unsigned int capacity = m_nCapacity + size;
    unsigned char* block = capacity > m_nCapacity ? new (std::nothrow) unsigned char[capacity] : nullptr;
    unsigned int length = 0;
    if (block != nullptr) {
        if (m_nLength > 0)
            memcpy(block, m_pData, m_nLength);
        length = m_nLength;
        // Copied before the old block goes, so a source inside it stays valid.
        if (source != nullptr) {
            memcpy(block + length, source, size);
            length += size;
        }
    }
    if (!m_bBound)
        delete[] m_pData;
    m_pData = block;
    m_nCapacity = block != nullptr ? capacity : 0;
    m_nLength = length;
    m_bBound = 0;
}

void CBuffer::Delete()
{
    if (!m_bBound)
        delete[] m_pData;
    m_pData = nullptr;
    m_nCapacity = 0;
    m_nLength = 0;
    m_bBound = 0;
}

unsigned char* CBuffer::GetBuffer() const
{
    return m_pData;
}

unsigned int CBuffer::GetAvailSize() const
{
    return m_nLength;
}

unsigned int CBuffer::GetLeftSize() const
{
    return m_nCapacity - m_nLength;
}

unsigned int CBuffer::GetBufSize() const
{
    return m_nCapacity;
}

int CBuffer::IsBindBuffer()
{
    return m_bBound;
}
