#include <palvet/charset/charset_convert.h>

#include <palvet/text/buffer.h>
#include <palvet/text/simple_string.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace {

struct Big5Table {
    static bool IsTrail(unsigned char t) { return t > 0x3F; }
    static int Index(unsigned char lead, unsigned char trail) { return (lead - 0xA1) * 191 + trail - 0x40; }
    static unsigned char const (*Entries())[2] { return g_pBIGToGBTable; }
    static int Count() { return g_pBIGToGBTableSize; }
};

struct GbTable {
    static bool IsTrail(unsigned char t) { return t > 0xA0; }
    static int Index(unsigned char lead, unsigned char trail)
    {
        // Leads 0xA2..0xAF count from 0xA1, all others skip the six unused
        // rows 0xAA..0xAF. Lead 0xA1 thus lands before the table (row -6)
        // and is caught by the range test below.
        int row = lead >= 0xA2 && lead <= 0xAF ? lead - 0xA1 : lead - 0xA7;
        return row * 94 + trail - 0xA1;
    }
    static unsigned char const (*Entries())[2] { return g_pGBToBigTable; }
    static int Count() { return g_pGBToBigTableSize; }
};

// True when one of the eight bytes at p is 0x80 or above.
inline bool AnyHighByte(unsigned char const* p)
{
    uint64_t word;
    memcpy(&word, p, sizeof word);
    return (word & 0x8080808080808080ull) != 0;
}

template <class Table>
void TableConvert(char const* source, int length, char* dest, int capacity)
{
    if (source == nullptr || dest == nullptr || length < 1 || capacity < 1)
        return;
    auto const* in = reinterpret_cast<unsigned char const*>(source);
    auto* out = reinterpret_cast<unsigned char*>(dest);
    int const limit = length < capacity ? length : capacity;
    unsigned char const(*entries)[2] = Table::Entries();
    int const count = Table::Count();

    // Within limit - 1 both bytes of a pair are inside the source and the
    // destination, so the main loop needs no bounds tests of its own.
    int i = 0;
    while (i < limit - 1) {
        // Runs of plain bytes are copied a word at a time.
        while (i + 8 <= limit && !AnyHighByte(in + i)) {
            memcpy(out + i, in + i, 8);
            i += 8;
        }
        if (i >= limit - 1)
            break;
        unsigned char lead = in[i];
        unsigned char trail = in[i + 1];
        if (lead > 0xA0 && Table::IsTrail(trail)) {
            int index = Table::Index(lead, trail);
            if (index >= 0 && index < count)
                memcpy(out + i, entries[index], 2);
            else
                memcpy(out + i, in + i, 2);
            i += 2;
        } else {
            out[i] = lead;
            ++i;
        }
    }
    // One byte of room or of source left: a lone byte is copied; a pair that
    // would end past the capacity is not written at all.
    if (i == limit - 1) {
        bool pair = in[i] > 0xA0 && i + 1 < length && Table::IsTrail(in[i + 1]);
        if (!pair)
            out[i] = in[i];
    }
}

// Converts the string's UTF-8 text (n bytes plus its terminator) through
// `middle` and the table step `tableStep` and writes the result back over
// the string's own storage, cut to n bytes.
void ConvertInPlace(char* text, int n, eCHARSETTYPE middle, void (*tableStep)(char const*, int, char*, int),
                    eCHARSETTYPE back)
{
    unsigned int size = static_cast<unsigned int>(n) + 1;
    // Zeroed, so a conversion that writes nothing leaves empty text for the
    // table step instead of unset memory.
    char* first = new (std::nothrow) char[size]();
    char* second = new (std::nothrow) char[size]();
    if (first != nullptr && second != nullptr) {
        {
            CBuffer in;
            CBuffer out;
            in.BindBuffer(text, size);
            out.BindBuffer(first, size);
            ConvertCharset(CHARSET_UTF8, &in, middle, &out);
        }
        // A converted text that fills every byte has no terminator of its
        // own; measure no further than the scratch array.
        int firstLength = static_cast<int>(strnlen(first, size));
        tableStep(first, firstLength < n + 1 ? firstLength + 1 : n + 1, second, n + 1);
        {
            CBuffer in;
            CBuffer out;
            int secondLength = static_cast<int>(strnlen(second, size));
            in.BindBuffer(second, static_cast<unsigned int>(secondLength < n + 1 ? secondLength + 1 : n + 1));
            out.BindBuffer(text, size);
            ConvertCharset(back, &in, CHARSET_UTF8, &out);
        }
        text[n] = '\0';
    }
    delete[] first;
    delete[] second;
}

}  // namespace

void Big5ToGbA(char const* source, int length, char* dest, int capacity)
{
    TableConvert<Big5Table>(source, length, dest, capacity);
}

void GbToBig5A(char const* source, int length, char* dest, int capacity)
{
    TableConvert<GbTable>(source, length, dest, capacity);
}

int IsChineseA(char lead, char trail)
{
    unsigned a = static_cast<unsigned char>(lead);
    unsigned b = static_cast<unsigned char>(trail);
    if (a >= 0xA1 && a <= 0xF9 && ((b >= 0x40 && b <= 0x7E) || (b >= 0xA1 && b <= 0xFE)))
        return 1;  // Big5
    if (a >= 0x81 && a <= 0xFE && ((b >= 0x40 && b <= 0x7E) || (b >= 0x81 && b <= 0xFE)))
        return 1;  // GBK
    return 0;
}

void CSimpleStringA::ToTraditionalChinese()
{
    if (m_nLength <= 0 || m_pData == nullptr)
        return;
    ConvertInPlace(m_pData, m_nLength, CHARSET_GB2312, GbToBig5A, CHARSET_BIG5);
}

void CSimpleStringA::ToSimpleChinese()
{
    if (m_nLength <= 0 || m_pData == nullptr)
        return;
    ConvertInPlace(m_pData, m_nLength, CHARSET_BIG5, Big5ToGbA, CHARSET_GB2312);
}

void CSimpleStringW::ToTraditionalChinese()
{
    CSimpleStringA narrow(this);
    narrow.ToTraditionalChinese();
    // The narrow text keeps its old length with the terminator possibly
    // earlier; what lies behind that terminator is stale.
    Set(narrow.GetString(), -1);
}

void CSimpleStringW::ToSimpleChinese()
{
    CSimpleStringA narrow(this);
    narrow.ToSimpleChinese();
    // The narrow text keeps its old length with the terminator possibly
    // earlier; what lies behind that terminator is stale.
    Set(narrow.GetString(), -1);
}
