#include <palvet/text/buffer.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace {

std::string Content(CBuffer const& b)
{
    return std::string(reinterpret_cast<char const*>(b.GetBuffer()), b.GetAvailSize());
}

}  // namespace

TEST(BufferTest, SetBufferAllocatesExactlyAndReusesLargeEnoughBlocks)
{
    CBuffer b;
    EXPECT_EQ(b.GetBuffer(), nullptr);
    EXPECT_EQ(b.GetBufSize() + b.GetAvailSize() + b.IsBindBuffer(), 0u);

    b.SetBuffer("0123456789", 10);
    unsigned char* block = b.GetBuffer();
    b.SetBuffer("abcd", 4);
    EXPECT_EQ(b.GetBuffer(), block);
    EXPECT_EQ(b.GetLeftSize(), 6u);
    EXPECT_EQ(Content(b), "abcd");

    // A null source only declares bytes valid when the block is big enough,
    // and yields an empty block of exactly that size when it is not.
    b.SetBuffer(nullptr, 8);
    EXPECT_EQ(Content(b), "abcd4567");
    b.SetBuffer(nullptr, 100);
    EXPECT_EQ(b.GetBufSize(), 100u);
    EXPECT_EQ(b.GetAvailSize(), 0u);
}

TEST(BufferTest, AppendGrowsByThePieceAndNullSourceOnlyReserves)
{
    CBuffer b;
    b.SetBuffer(nullptr, 10);
    b.SetBuffer("12345678", 8);
    b.AppendBuffer("abcde", 5);
    EXPECT_EQ(b.GetBufSize(), 15u);
    EXPECT_EQ(Content(b), "12345678abcde");

    b.AppendBuffer(nullptr, 2);  // room to spare: nothing at all
    EXPECT_EQ(b.GetAvailSize(), 13u);
    b.AppendBuffer(nullptr, 5);  // no room: capacity only
    EXPECT_EQ(b.GetBufSize(), 20u);
    EXPECT_EQ(Content(b), "12345678abcde");
}

TEST(BufferTest, BoundMemoryIsWrittenInPlaceAndNeverFreed)
{
    // The sanitizer build reports any attempt to free these stack arrays.
    unsigned char caller[16];
    memset(caller, '.', sizeof caller);
    CBuffer b;
    b.BindBuffer(caller, sizeof caller);
    EXPECT_EQ(b.GetAvailSize(), 16u);
    b.SetBuffer("ABCDEFGH", 8);
    EXPECT_EQ(b.IsBindBuffer(), 1);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(caller), 9), "ABCDEFGH.");

    b.AppendBuffer("01234567890123456789", 20);
    EXPECT_EQ(b.IsBindBuffer(), 0);
    EXPECT_EQ(b.GetBufSize(), 36u);
    EXPECT_EQ(Content(b), "ABCDEFGH01234567890123456789");

    unsigned char small[4];
    CBuffer other;
    other.BindBuffer(small, 4);
    other.SetBuffer("0123456789", 10);  // regrowing leaves the caller's block
    EXPECT_EQ(other.IsBindBuffer(), 0);
    other.Delete();
    other.BindBuffer(small, 4);
    other.Delete();
    EXPECT_EQ(other.GetBuffer(), nullptr);
}

TEST(BufferTest, AppendingItsOwnDataWorksInPlaceAndWhenGrowing)
{
    CBuffer b;
    b.SetBuffer(nullptr, 12);
    b.SetBuffer("abcdef", 6);
    b.AppendBuffer(b.GetBuffer() + 1, 3);  // fits
    EXPECT_EQ(Content(b), "abcdefbcd");
    b.AppendBuffer(b.GetBuffer(), 9);  // grows; the source is the old block
    EXPECT_EQ(b.GetBufSize(), 21u);
    EXPECT_EQ(Content(b), "abcdefbcdabcdefbcd");

    b.AppendBuffer("x", UINT_MAX - 5);  // capacity + size would wrap around
    EXPECT_EQ(b.GetBuffer(), nullptr);
    EXPECT_EQ(b.GetBufSize() + b.GetAvailSize(), 0u);
}
