#ifndef PALVET_CONTAINERS_CRC_H
#define PALVET_CONTAINERS_CRC_H

// Checksums: a 32-bit CRC over the reflected polynomial 0xEDB88320, and a
// 16-bit CRC (polynomial 0x1021, most significant bit first, start 0, no
// final XOR) computed three ways.

#include <palvet/core/export.h>

// Accumulates a 32-bit CRC. The register starts at 0xABCDABCD (not the usual
// all-ones) and the digest is the inverted register. Integers are fed as
// little-endian bytes whatever the host order. Copying an object copies the
// running register. One object must not be fed from two threads at once;
// the static functions are safe anywhere.
class PALVET_API CCRC {
public:
    CCRC() : m_crc(0xABCDABCDu) {}

    // Fills Table; returns 256. Already done when the library is loaded.
    static int InitTable();

    // Feed one value (integers as little-endian bytes) or a block of bytes.
    void UpdateBYTE(unsigned char value);
    void UpdateUINT16(unsigned short value);
    void UpdateUINT32(unsigned int value);
    void UpdateUINT64(unsigned long long value);
    void Update(void const* data, unsigned int length);

    // The inverted register; feeding may go on afterwards.
    unsigned int GetDigest() const;

    // One-shot digest of a block, from the same starting register.
    static unsigned int CalculateDigest(void const* data, unsigned int length);
    // 1 when CalculateDigest of the block equals digest, else 0.
    static int VerifyDigest(unsigned int digest, void const* data, unsigned int length);

    // Byte table of the polynomial, filled when the library is loaded.
    static unsigned int Table[256];

private:
    unsigned int m_crc;
};

// Zero at load; the library does not use it.
extern PALVET_API bool g_CRCTableInit;

// Byte table and nibble table of the 16-bit CRC (each entry a 16-bit value).
extern PALVET_API unsigned int crc_ta_8[256];
extern PALVET_API unsigned int crc_ta_4[16];

// The 16-bit CRC of len bytes at ptr (at most 255): bit by bit, with the
// 256-entry table and with the 16-entry table; all three agree. Length 0
// gives 0.
PALVET_API unsigned int crc_cal_by_bit(unsigned char* ptr, unsigned char len);
PALVET_API unsigned int crc_cal_by_byte(unsigned char* ptr, unsigned char len);
PALVET_API unsigned int crc_cal_by_halfbyte(unsigned char* ptr, unsigned char len);

#endif
