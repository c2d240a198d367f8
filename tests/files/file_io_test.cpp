#include <palvet/files/file_utils.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

#include "support/test_support.h"

using palvet_test::ReadWholeFile;
using palvet_test::StdoutCapture;
using palvet_test::WriteWholeFile;

namespace {

class FileIo : public ::testing::Test {
protected:
    std::string Path(char const* name) { return dir_.File(name); }
    palvet_test::TempDir dir_;
};

bool EndsWith(std::string const& text, std::string const& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

TEST_F(FileIo, SizeReadAndWriteOnStreams)
{
    std::string path = Path("f");
    WriteWholeFile(path, "0123456789");
    FILE* stream = fopen(path.c_str(), "rb");
    ASSERT_NE(stream, nullptr);
    char buffer[16] = {};
    EXPECT_EQ(FileRead(stream, buffer, 3), 3u);
    EXPECT_EQ(FileSize(stream), 10u);
    EXPECT_EQ(ftell(stream), 3);  // the position survives the size query
    EXPECT_EQ(FileRead(stream, buffer, 0), 0u);
    EXPECT_EQ(ftell(stream), 3);
    EXPECT_EQ(FileRead(stream, buffer, sizeof buffer), 7u);  // stops at the end
    EXPECT_STREQ(buffer, "3456789");

    // The reported value is the stream's error indicator, not errno.
    StdoutCapture capture;
    EXPECT_EQ(FileWrite(stream, "x", 1), 0u);
    fclose(stream);
    stream = fopen(path.c_str(), "ab");
    EXPECT_EQ(FileRead(stream, buffer, 4), 0u);
    fclose(stream);
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    FILE* pipeEnd = fdopen(fds[0], "rb");
    EXPECT_EQ(FileSize(pipeEnd), 0u);
    fclose(pipeEnd);
    close(fds[1]);
    std::string log = capture.Take();
    EXPECT_NE(log.find(" => Write Failed, errno=1\n"), std::string::npos) << log;
    EXPECT_NE(log.find(" => Read Failed, errno=1\n"), std::string::npos) << log;
    EXPECT_TRUE(EndsWith(log, " => ftell error:Illegal seek\n")) << log;
}

TEST_F(FileIo, ReadFileData)
{
    std::string path = Path("data");
    WriteWholeFile(path, "hello");
    unsigned char* data = reinterpret_cast<unsigned char*>(&data);
    ASSERT_EQ(ReadFileData(path.c_str(), &data), 5u);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 5), "hello");
    ReleaseFileData(data);
    EXPECT_EQ(ReadFileData(path.c_str(), nullptr), 5u);

    WriteWholeFile(path, "");
    for (std::string const& bad : {path, dir_.path(), Path("missing")}) {
        data = reinterpret_cast<unsigned char*>(&data);
        EXPECT_EQ(ReadFileData(bad.c_str(), &data), 0u) << bad;
        EXPECT_EQ(data, nullptr) << bad;
    }
    ReleaseFileData(nullptr);
}

TEST_F(FileIo, WriteFileDataAppendsOrReplaces)
{
    std::string path = Path("w");
    WriteFileData(path.c_str(), "abc", 3, 0);
    WriteFileData(path.c_str(), "de", 2, 1);
    EXPECT_EQ(ReadWholeFile(path), "abcde");
    WriteFileData(path.c_str(), "xy", 2, 0);
    EXPECT_EQ(ReadWholeFile(path), "xy");
    WriteFileData(path.c_str(), "", 0, 0);
    EXPECT_EQ(IsFileExist(path.c_str()), 1);
    EXPECT_EQ(ReadWholeFile(path), "");

    StdoutCapture capture;
    std::string missing = Path("no/such");
    WriteFileData(missing.c_str(), "x", 1, 0);
    EXPECT_TRUE(EndsWith(capture.Take(), " => WriteFile failed create file:" + missing +
                                             ", error=No such file or directory\n"));
}

TEST_F(FileIo, IsFileDataEqual)
{
    std::string a = Path("a"), b = Path("b");
    WriteWholeFile(a, "");
    WriteWholeFile(b, "");
    EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()), 1);
    WriteWholeFile(b, "x");
    EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()), 0);
    EXPECT_EQ(IsFileDataEqual(a.c_str(), Path("missing").c_str()), 0);
    EXPECT_EQ(IsFileDataEqual(nullptr, b.c_str()), 0);

    // Three whole chunks: a difference in the first, second and last is found.
    std::string big(3 * 1024 * 1024, '\0');
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 131 + (i >> 12));
    WriteWholeFile(a, big);
    WriteWholeFile(b, big);
    EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()), 1);
    for (size_t at : {size_t{0}, size_t{1024 * 1024}, big.size() - 1}) {
        std::string other = big;
        other[at] ^= 1;
        WriteWholeFile(b, other);
        EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()), 0) << at;
    }
}
