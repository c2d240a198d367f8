#include <palvet/core/clock.h>
#include <palvet/core/debug_output.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <regex>
#include <string>
#include <sys/time.h>
#include <unistd.h>

#include "support/test_support.h"

using palvet_test::ReadWholeFile;
using palvet_test::StdoutCapture;
using palvet_test::TempDir;

namespace {

// Every test starts and ends with no debug file open.
class DbgOutputTest : public ::testing::Test {
protected:
    void TearDown() override { DbgOutputCloseFile(); }
    TempDir dir_;
};

// Checks one prefixed line: the head by pattern, the text after " => " exactly
// (long texts are compared directly rather than through a pattern).
::testing::AssertionResult IsPrefixed(std::string const& line, char const* label,
                                      std::string const& text)
{
    size_t arrow = line.find(" => ");
    if (arrow == std::string::npos)
        return ::testing::AssertionFailure() << "no arrow in: " << line;
    std::regex head("Palvet [0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6} \\(pid:" +
                    std::to_string(getpid()) + ", " + label + ":" + std::to_string(getlwpid()) +
                    "\\)");
    if (!std::regex_match(line.substr(0, arrow), head))
        return ::testing::AssertionFailure() << "bad head: " << line.substr(0, arrow);
    if (line.substr(arrow + 4) != text)
        return ::testing::AssertionFailure() << "bad text: " << line.substr(arrow + 4, 80);
    return ::testing::AssertionSuccess();
}

// Formats through a non-literal format so empty formats do not trip -Wformat.
void Emit(int level, std::string const& format) { DbgOutput(level, format.c_str(), 0); }

}  // namespace

TEST_F(DbgOutputTest, PrefixedLineOnConsoleAndFile)
{
    std::string path = dir_.File("dbg.log");
    ASSERT_NE(DbgOutputOpenFile(path.c_str(), 0), 0);
    ASSERT_NE(gDbgOutputFileHandle, nullptr);

    StdoutCapture cap;
    DbgOutput(1, "Read Failed, errno=%d\n", 5);
    std::string out = cap.Take();
    EXPECT_EQ(DbgFlush(), 0);

    EXPECT_TRUE(IsPrefixed(out, "lwp", "Read Failed, errno=5\n"));
    std::string file = ReadWholeFile(path);
    EXPECT_TRUE(IsPrefixed(file, "tid", "Read Failed, errno=5\n"));
    // One instant serves both lines: they differ only in the thread label.
    EXPECT_EQ(file.substr(0, file.find("tid:")), out.substr(0, out.find("lwp:")));
}

TEST_F(DbgOutputTest, TimestampIsLocalTimeOfTheCall)
{
    timeval before{};
    gettimeofday(&before, nullptr);
    StdoutCapture cap;
    DbgOutput(1, "x\n");
    std::string out = cap.Take();
    timeval after{};
    gettimeofday(&after, nullptr);

    std::smatch m;
    ASSERT_TRUE(std::regex_search(
        out, m, std::regex("^Palvet ([0-9]{4})/([0-9]{2})/([0-9]{2}) ([0-9]{2}):([0-9]{2}):([0-9]{2})\\.([0-9]{6}) ")))
        << out;
    tm t{};
    t.tm_year = std::stoi(m[1]) - 1900;
    t.tm_mon = std::stoi(m[2]) - 1;
    t.tm_mday = std::stoi(m[3]);
    t.tm_hour = std::stoi(m[4]);
    t.tm_min = std::stoi(m[5]);
    t.tm_sec = std::stoi(m[6]);
    t.tm_isdst = -1;
    long long stamp = static_cast<long long>(mktime(&t)) * 1000000 + std::stoll(m[7]);
    long long lo = static_cast<long long>(before.tv_sec) * 1000000 + before.tv_usec;
    long long hi = static_cast<long long>(after.tv_sec) * 1000000 + after.tv_usec;
    EXPECT_LE(lo, stamp);
    EXPECT_GE(hi, stamp);
}

TEST_F(DbgOutputTest, LevelZeroIsBareAndOtherLevelsAreLikeOne)
{
    std::string path = dir_.File("dbg.log");
    DbgOutputOpenFile(path.c_str(), 0);

    StdoutCapture cap;
    DbgOutput(0, "bare %s|", "text");
    std::string out = cap.Take();
    DbgFlush();
    EXPECT_EQ(out, "bare text|");
    EXPECT_EQ(ReadWholeFile(path), "bare text|");

    for (int level : {2, 7, -1}) {
        StdoutCapture c;
        DbgOutput(level, "level %d\n", level);
        std::string line = c.Take();
        EXPECT_TRUE(IsPrefixed(line, "lwp", "level " + std::to_string(level) + "\n"));
    }
}

TEST_F(DbgOutputTest, EmptyTextWritesNothingAtAnyLevel)
{
    std::string path = dir_.File("dbg.log");
    DbgOutputOpenFile(path.c_str(), 0);
    StdoutCapture cap;
    Emit(0, "");
    Emit(1, "");
    DbgOutput(1, "%s", "");
    std::string out = cap.Take();
    DbgFlush();
    EXPECT_EQ(out, "");
    EXPECT_EQ(ReadWholeFile(path), "");
}

TEST_F(DbgOutputTest, LongTextIsWrittenWhole)
{
    for (size_t length : {1023u, 1024u, 1025u, 5000u}) {
        std::string path = dir_.File("dbg" + std::to_string(length) + ".log");
        DbgOutputOpenFile(path.c_str(), 0);
        std::string text(length, 'a');
        text.back() = 'z';  // a cut text would lose its last character

        StdoutCapture bare;
        DbgOutput(0, "%s", text.c_str());
        EXPECT_EQ(bare.Take(), text) << length;
        DbgOutputCloseFile();
        EXPECT_EQ(ReadWholeFile(path), text) << length;

        DbgOutputOpenFile(path.c_str(), 0);
        StdoutCapture prefixed;
        DbgOutput(1, "%s", text.c_str());
        EXPECT_TRUE(IsPrefixed(prefixed.Take(), "lwp", text)) << length;
        DbgOutputCloseFile();
        EXPECT_TRUE(IsPrefixed(ReadWholeFile(path), "tid", text)) << length;
    }
}

TEST_F(DbgOutputTest, AppendKeepsAndTruncateEmpties)
{
    std::string path = dir_.File("dbg.log");
    palvet_test::WriteWholeFile(path, "old|");

    DbgOutputOpenFile(path.c_str(), 1);
    DbgOutput(0, "new|");
    DbgOutputCloseFile();
    EXPECT_EQ(ReadWholeFile(path), "old|new|");

    DbgOutputOpenFile(path.c_str(), 0);
    DbgOutputCloseFile();
    EXPECT_EQ(ReadWholeFile(path), "");
}

TEST_F(DbgOutputTest, SecondOpenAbandonsFirstStream)
{
    std::string first = dir_.File("first.log");
    std::string second = dir_.File("second.log");
    DbgOutputOpenFile(first.c_str(), 0);
    FILE* abandoned = gDbgOutputFileHandle;
    DbgOutputOpenFile(second.c_str(), 0);
    EXPECT_NE(gDbgOutputFileHandle, abandoned);

    StdoutCapture cap;
    DbgOutput(0, "msg");
    cap.Take();
    DbgOutputCloseFile();
    EXPECT_EQ(ReadWholeFile(second), "msg");

    // The first stream was left open, not closed: it still accepts writes.
    EXPECT_GE(fputs("still open", abandoned), 0);
    EXPECT_EQ(fclose(abandoned), 0);
    EXPECT_EQ(ReadWholeFile(first), "still open");
}

TEST_F(DbgOutputTest, FailedOpenReportsAndStopsFileOutput)
{
    std::string good = dir_.File("good.log");
    DbgOutputOpenFile(good.c_str(), 0);
    FILE* abandoned = gDbgOutputFileHandle;

    std::string missing = dir_.File("no/such/dir/dbg.log");
    StdoutCapture cap;
    int result = DbgOutputOpenFile(missing.c_str(), 1);
    std::string out = cap.Take();
    std::string expected = std::string("open dbg file , errno=") + std::to_string(ENOENT) + ", " +
                           strerror(ENOENT) + "\n";
    EXPECT_EQ(out, expected);
    EXPECT_EQ(result, static_cast<int>(expected.size()));
    EXPECT_EQ(gDbgOutputFileHandle, nullptr);

    StdoutCapture cap2;
    DbgOutput(0, "after");
    EXPECT_EQ(cap2.Take(), "after");
    fclose(abandoned);
    EXPECT_EQ(ReadWholeFile(good), "");
}

TEST_F(DbgOutputTest, CloseAndFlushWithoutFileReturnZero)
{
    EXPECT_EQ(gDbgOutputFileHandle, nullptr);
    EXPECT_EQ(DbgOutputCloseFile(), 0);
    EXPECT_EQ(DbgFlush(), 0);

    std::string path = dir_.File("dbg.log");
    DbgOutputOpenFile(path.c_str(), 0);
    EXPECT_EQ(DbgOutputCloseFile(), 0);
    EXPECT_EQ(gDbgOutputFileHandle, nullptr);
    EXPECT_EQ(DbgOutputCloseFile(), 0);
}
