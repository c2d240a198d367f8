#include <palvet/files/file_utils.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

#include "support/test_support.h"

using palvet_test::WriteWholeFile;

TEST(FileIo, StreamsAndTheirFailureLines)
{
    palvet_test::TempDir dir;
    std::string const path = dir.File("f");
    WriteWholeFile(path, "0123456789");
    FILE* stream = fopen(path.c_str(), "rb");
    char buffer[16] = {};
    EXPECT_EQ(FileRead(stream, buffer, 3) + FileRead(stream, buffer, 0), 3u);
    EXPECT_EQ(FileSize(stream), 10u);
    EXPECT_EQ(ftell(stream), 3);  // kept
    EXPECT_EQ(FileRead(stream, buffer, sizeof buffer), 7u);  // stops at the end

    // The number logged is the stream's error indicator, not errno.
    palvet_test::StdoutCapture capture;
    EXPECT_EQ(FileWrite(stream, "x", 1), 0u);
    fclose(stream);
    stream = fopen(path.c_str(), "ab");
    EXPECT_EQ(FileRead(stream, buffer, 4), 0u);
    fclose(stream);
    stream = popen("true", "r");
    EXPECT_EQ(FileSize(stream), 0u);
    pclose(stream);
    WriteFileData(dir.File("no/such").c_str(), "x", 1, 0);
    std::string const log = capture.Take();
    std::string const lines[] = {"Write Failed, errno=1\n", "Read Failed, errno=1\n",
                                 "ftell error:Illegal seek\n",
                                 "WriteFile failed create file:" + dir.File("no/such") +
                                     ", error=No such file or directory\n"};
    for (std::string const& line : lines)
        EXPECT_NE(log.find(") => " + line), std::string::npos) << line << log;
}

TEST(FileIo, WholeFiles)
{
    palvet_test::TempDir dir;
    std::string const path = dir.File("f");
    WriteFileData(path.c_str(), "hel", 3, 0);
    WriteFileData(path.c_str(), "lo", 2, 1);
    unsigned char* data = nullptr;
    ASSERT_EQ(ReadFileData(path.c_str(), &data), 5u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 5), "hello");
    ReleaseFileData(data);
    EXPECT_EQ(ReadFileData(path.c_str(), nullptr), 5u);  // size only
    WriteFileData(path.c_str(), "xy", 2, 0);
    EXPECT_EQ(palvet_test::ReadWholeFile(path), "xy");

    WriteFileData(path.c_str(), "", 0, 0);  // still truncates
    for (std::string const& bad : {path, dir.path(), dir.File("missing")}) {
        data = reinterpret_cast<unsigned char*>(&data);
        EXPECT_EQ(ReadFileData(bad.c_str(), &data), 0u) << bad;
        EXPECT_EQ(data, nullptr) << bad;
    }
}

TEST(FileIo, IsFileDataEqual)
{
    palvet_test::TempDir dir;
    std::string const a = dir.File("a"), b = dir.File("b");
    WriteWholeFile(a, "");
    WriteWholeFile(b, "");
    EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()), 1);
    WriteWholeFile(b, "x");
    EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()) + IsFileDataEqual(a.c_str(), "/no/such"), 0);

    // Three whole chunks: a difference in the first, second or last is found.
    std::string big(3 << 20, '\0');
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 131 + (i >> 12));
    WriteWholeFile(a, big);
    for (size_t at : {size_t{0}, size_t{1} << 20, big.size() - 1, big.size()}) {
        std::string other = big;
        if (at < big.size())
            other[at] ^= 1;
        WriteWholeFile(b, other);
        EXPECT_EQ(IsFileDataEqual(a.c_str(), b.c_str()), at == big.size() ? 1 : 0) << at;
    }
}
