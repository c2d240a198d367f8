#include <palvet/containers/crc.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

unsigned char kDigits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};

// The plain byte loop over the exported table, from any start.
unsigned int ByteLoop(unsigned int reg, unsigned char const* p, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        reg = CCRC::Table[(reg ^ p[i]) & 0xFF] ^ (reg >> 8);
    return reg;
}

}  // namespace

TEST(Crc32, CheckValues)
{
    EXPECT_EQ(CCRC::CalculateDigest(kDigits, 9), 0xB2BCD2D4u);
    EXPECT_EQ(~ByteLoop(0xFFFFFFFFu, kDigits, 9), 0xCBF43926u);  // same table, customary start
    EXPECT_EQ(CCRC::CalculateDigest(kDigits, 0), 0x54325432u);
    EXPECT_EQ(CCRC::VerifyDigest(0xB2BCD2D4u, kDigits, 9), 1);
    EXPECT_EQ(CCRC::VerifyDigest(0xB2BCD2D5u, kDigits, 9), 0);
    EXPECT_EQ(CCRC::Table[255], 0x2D02EF8Du);
    EXPECT_FALSE(g_CRCTableInit);
}

TEST(Crc32, FeedersAreLittleEndianAndResumable)
{
    CCRC a, b;
    unsigned char const le16[] = {0x34, 0x12};
    a.UpdateUINT16(0x1234);
    b.Update(le16, 2);
    EXPECT_EQ(a.GetDigest(), b.GetDigest());

    unsigned char const le[] = {0x0D, 0xF0, 0xAD, 0x8B, 0x78, 0x56, 0x34, 0x12, 0xEF, 0xBE, 0xAD, 0xDE, 0x7F};
    a.UpdateUINT64(0x123456788BADF00DULL);
    a.UpdateUINT32(0xDEADBEEFu);
    a.UpdateBYTE(0x7F);
    b.Update(le, sizeof le);
    EXPECT_EQ(a.GetDigest(), b.GetDigest());
    EXPECT_EQ(a.GetDigest(), ~ByteLoop(ByteLoop(0xABCDABCDu, le16, 2), le, sizeof le));

    // A long block in two pieces, with a digest taken in between.
    std::vector<unsigned char> data(5000);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<unsigned char>(i * 131 + (i >> 7));
    CCRC pieces;
    pieces.Update(data.data(), 1234);
    (void)pieces.GetDigest();
    pieces.Update(data.data() + 1234, 5000 - 1234);
    EXPECT_EQ(pieces.GetDigest(), ~ByteLoop(0xABCDABCDu, data.data(), data.size()));
    EXPECT_EQ(pieces.GetDigest(), CCRC::CalculateDigest(data.data(), 5000));
}

TEST(Crc16, ThreeMethodsAgree)
{
    std::vector<unsigned char> data(255);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<unsigned char>(i * 37 + 11);
    unsigned int const bit = crc_cal_by_bit(data.data(), 255);
    for (auto crc : {crc_cal_by_bit, crc_cal_by_byte, crc_cal_by_halfbyte}) {
        EXPECT_EQ(crc(kDigits, 9), 0x31C3u);
        EXPECT_EQ(crc(kDigits, 0), 0u);
        EXPECT_EQ(crc(data.data(), 255), bit);
    }
    // The tables hold the CRC of each single byte and nibble.
    for (unsigned int i = 0; i < 256; ++i) {
        unsigned char byte = static_cast<unsigned char>(i);
        ASSERT_EQ(crc_ta_8[i], crc_cal_by_bit(&byte, 1)) << i;
        if (i < 16) {
            ASSERT_EQ(crc_ta_4[i], crc_ta_8[i]) << i;
        }
    }
}
