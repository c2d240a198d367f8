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
    EXPECT_EQ(b.GetBufSize() + b.GetAvailSize() + b.GetLeftSize(), 0u);
    EXPECT_EQ(b.IsBindBuffer(), 0);

    b.SetBuffer("0123456789", 10);
    unsigned char* block = b.GetBuffer();
    b.SetBuffer("abcd", 4);
    EXPECT_EQ(b.GetBuffer(), block);
    EXPECT_EQ(b.GetBufSize(), 10u);
    EXPECT_EQ(b.GetLeftSize(), 6u);
    EXPECT_EQ(Content(b), "abcd");

    // A null source only declares bytes valid when the block is big enough,
    // and yields an empty block of exactly that size when it is not.
    b.SetBuffer(nullptr, 8);
    EXPECT_EQ(Content(b), std::string("abcd4567"));
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
    EXPECT_EQ(b.GetBufSize(), 15u);
    b.AppendBuffer(nullptr, 5);  // no room: capacity only
    EXPECT_EQ(b.GetBufSize(), 20u);
    EXPECT_EQ(Content(b), "12345678abcde");
    b.AppendBuffer("xy", 0);
    EXPECT_EQ(b.GetAvailSize(), 13u);
}

TEST(BufferTest, BoundMemoryIsWrittenInPlaceAndNeverFreed)
{
    unsigned char caller[16];
    memset(caller, '.', sizeof caller);
    {
        CBuffer b;
        b.BindBuffer(caller, sizeof caller);
        EXPECT_EQ(b.IsBindBuffer(), 1);
        EXPECT_EQ(b.GetAvailSize(), 16u);
        b.SetBuffer("ABCDEFGH", 8);
        EXPECT_EQ(b.GetBuffer(), caller);
        EXPECT_EQ(b.IsBindBuffer(), 1);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(caller), 9), "ABCDEFGH.");

        b.AppendBuffer("01234567890123456789", 20);
        EXPECT_NE(b.GetBuffer(), caller);
        EXPECT_EQ(b.IsBindBuffer(), 0);
        EXPECT_EQ(b.GetBufSize(), 36u);
        EXPECT_EQ(Content(b), "ABCDEFGH01234567890123456789");

        CBuffer other;
        other.BindBuffer(caller, sizeof caller);
        other.Delete();
        EXPECT_EQ(other.GetBuffer(), nullptr);
        EXPECT_EQ(other.IsBindBuffer(), 0);
        other.BindBuffer(caller, 4);
        other.SetBuffer("0123456789", 10);  // regrowing leaves the caller's block alone
        EXPECT_EQ(other.IsBindBuffer(), 0);
        EXPECT_EQ(caller[0], 'A');
    }
    // The sanitizer build reports any attempt to free the stack array.
    EXPECT_EQ(caller[0], 'A');
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
}

TEST(BufferTest, SizesBeyondThirtyTwoBitsEmptyTheBuffer)
{
    CBuffer b;
    b.SetBuffer("0123456789", 10);
    b.AppendBuffer("x", UINT_MAX - 5);  // capacity + size wraps around
    EXPECT_EQ(b.GetBuffer(), nullptr);
    EXPECT_EQ(b.GetBufSize(), 0u);
    EXPECT_EQ(b.GetAvailSize(), 0u);
}
