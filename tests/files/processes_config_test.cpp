// Shell commands, processes, shared libraries from the Lib folder,
// configuration text, time records and identifiers.
#include <palvet/palvet.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "support/test_support.h"

namespace {

std::string Capture(void (*run)())
{
    palvet_test::StdoutCapture capture;
    run();
    return capture.Take();
}

TEST(Processes, CommandsRunWithAndWithoutOutput)
{
    CSimpleStringA out;
    out.Set("old", -1);
    do_syscmd(&out, "printf '%%s-%%d' %s %d", "abc", 42);
    EXPECT_STREQ(out.GetString(), "abc-42");

    // Longer than the first 1024-byte attempt, and more output than one read.
    std::string word(3000, 'w');
    do_syscmd(&out, "echo %s; head -c 10000 /dev/zero | tr '\\0' y", word.c_str());
    EXPECT_EQ(std::string(out.GetString()), word + "\n" + std::string(10000, 'y'));

    std::string log = Capture([] { do_syscmd(nullptr, "true"); });
    EXPECT_NE(log.find("Call cmd:true\n"), std::string::npos);
    do_syscmd(&out, "%s", "");
    EXPECT_STREQ(out.GetString(), "");
}

// A child that sleeps, started without a shell so its command line is known.
pid_t StartSleeper(char const* seconds)
{
    pid_t pid = fork();
    if (pid == 0) {
        execlp("sleep", "sleep", seconds, static_cast<char*>(nullptr));
        _exit(127);
    }
    return pid;
}

bool Contains(CPtrCtrl& pids, pid_t pid)
{
    for (int i = 0; i < pids.GetCount(); ++i)
        if (reinterpret_cast<intptr_t>(pids.GetAt(i)) == pid)
            return true;
    return false;
}

TEST(Processes, FindAndKillByNameAndCommandLine)
{
    pid_t a = StartSleeper("31.5");
    pid_t b = StartSleeper("32.5");
    ASSERT_GT(a, 0);
    ASSERT_GT(b, 0);
    usleep(200 * 1000);  // let the children exec

    CPtrArrayCtrl pids;
    GetPidListByName("sleep", &pids);
    EXPECT_TRUE(Contains(pids, a));
    EXPECT_TRUE(Contains(pids, b));
    GetPidListByName("no-such-program-here", &pids);
    EXPECT_EQ(pids.GetCount(), 0);

    GetPidListByNameWithParam("SLEEP 31.5", &pids);  // whole command line, any case
    EXPECT_TRUE(Contains(pids, a));
    EXPECT_FALSE(Contains(pids, b));
    GetPidListByNameWithParam("sleep", &pids);
    EXPECT_FALSE(Contains(pids, a));

    std::string log = Capture([] { KillPidByNameWithParam("sleep 31.5"); });
    EXPECT_NE(log.find("KillPidByName sleep 31.5, pid=" + std::to_string(a) + "..."), std::string::npos);
    int status = 0;
    ASSERT_EQ(waitpid(a, &status, 0), a);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    kill(b, SIGKILL);
    waitpid(b, &status, 0);
}

TEST(Processes, LibraryFolderBesideTheProgramComesFirst)
{
    // The test tree puts Lib/libpalvet_probe.so beside this program, and a
    // different build of it under the bare name on the library path.
    std::string log;
    void* handle = nullptr;
    {
        palvet_test::StdoutCapture capture;
        handle = LoadSystemLibrary("libpalvet_probe.so");
        log = capture.Take();
    }
    ASSERT_NE(handle, nullptr) << log;
    auto where = reinterpret_cast<char const* (*)()>(dlsym(handle, "palvet_probe_where"));
    ASSERT_NE(where, nullptr);
    EXPECT_STREQ(where(), "Lib");
    EXPECT_NE(log.find("/Lib/libpalvet_probe.so)... Success!"), std::string::npos) << log;
    dlclose(handle);

    {
        palvet_test::StdoutCapture capture;
        handle = LoadSystemLibrary("libpalvet_no_such_library.so");
        log = capture.Take();
    }
    EXPECT_EQ(handle, nullptr);
    EXPECT_NE(log.find("Open lib  (libpalvet_no_such_library.so) failed, errro is "), std::string::npos) << log;
}

std::string Get(CSimpleStringA const& config, char const* key)
{
    CSimpleStringA value;
    value.Set("untouched", -1);
    int found = GetAttrValueFromConfig(&config, key, &value);
    return (found ? "+" : "-") + std::string(value.GetString());
}

TEST(Config, ReadAndEditByKey)
{
    CSimpleStringA config;
    config.Set("# box\r\nName=box\r\nVolume=30\r\n", -1);
    EXPECT_EQ(Get(config, "volume="), "+30");
    EXPECT_EQ(Get(config, "Name="), "+box");
    EXPECT_EQ(Get(config, "Mute="), "-untouched");
    EXPECT_EQ(Get(config, "box"), "-untouched");  // only at a line's start

    SetAttrValueToConfig(&config, "Volume=", "40");
    EXPECT_STREQ(config.GetString(), "# box\r\nName=box\r\nVolume=40\r\n");
    SetAttrValueToConfig(&config, "Mute=", "1");
    EXPECT_STREQ(config.GetString(), "# box\r\nName=box\r\nVolume=40\r\nMute=1\n");

    // A key found ignoring case but written differently is left alone.
    config.Set("VOLUME=5", -1);
    SetAttrValueToConfig(&config, "Volume=", "6");
    EXPECT_STREQ(config.GetString(), "VOLUME=5");
    // No final line end: the new line is glued on.
    config.Set("A=1", -1);
    SetAttrValueToConfig(&config, "B=", "2");
    EXPECT_STREQ(config.GetString(), "A=1B=2\n");
    // Duplicate keys: the first one is read, every copy of its text replaced.
    config.Set("K=1\nK=2\nK=1\n", -1);
    EXPECT_EQ(Get(config, "K="), "+1");
    SetAttrValueToConfig(&config, "K=", "9");
    EXPECT_STREQ(config.GetString(), "K=9\nK=2\nK=9\n");
    // Empty value.
    config.Set("E=\n", -1);
    EXPECT_EQ(Get(config, "E="), "+");

    SetAttrValueToConfig(nullptr, "K=", "1");
    EXPECT_EQ(GetAttrValueFromConfig(&config, nullptr, &config), 0);
}

TEST(TimeRecords, ConversionsAndText)
{
    tm t{};
    t.tm_sec = 9;
    t.tm_min = 7;
    t.tm_hour = 13;
    t.tm_mday = 1;
    t.tm_mon = 4;
    t.tm_year = 124;
    t.tm_wday = 3;
    t.tm_yday = 121;
    t.tm_isdst = 1;
    tagSYSTEMTIME st{};
    ConvertTmToSystemTime(&t, &st);
    EXPECT_EQ(st.wYear, 124);
    EXPECT_EQ(st.wMonth, 4);
    EXPECT_EQ(st.wDayOfYear, 121);
    tm back{};
    ConvertSystemTimeToTm(&st, &back);
    EXPECT_EQ(back.tm_sec, 9);
    EXPECT_EQ(back.tm_wday, 3);
    EXPECT_EQ(back.tm_isdst, 0);  // not carried

    std::string log = Capture([] {
        tagSYSTEMTIME s{};
        s.wYear = 124;
        s.wMonth = 4;
        s.wDay = 1;
        s.wHour = 13;
        DumpSystemTime("now", &s);
        DumpSystemTime(nullptr, nullptr);
    });
    EXPECT_NE(log.find("now:0124/04/01 13:00:00\n"), std::string::npos) << log;
    EXPECT_NE(log.find("system time is::1900/00/00 00:00:00\n"), std::string::npos) << log;

    tagSYSTEMTIME parsed{};
    parsed.wDayOfWeek = 77;
    EXPECT_EQ(StringToSystemTime("2024/05/01 13:07:09", &parsed), 6);
    EXPECT_EQ(parsed.wYear, 2024);
    EXPECT_EQ(parsed.wSecond, 9);
    EXPECT_EQ(parsed.wDayOfWeek, 77);
    EXPECT_EQ(StringToSystemTime("2024/05", &parsed), 2);
    EXPECT_EQ(StringToSystemTime("", &parsed), -1);  // sscanf's end of input
}

TEST(Identifiers, RandomUuidAndProductId)
{
    srand(5);
    tagUUID id;
    CreateUUID_Random(&id);
    srand(5);
    unsigned int first = static_cast<unsigned int>(rand());
    EXPECT_EQ(id.timeLow, first);
    EXPECT_EQ(sizeof(tagUUID), 16u);
    CSimpleStringA text;
    UUIDToString(&id, &text);
    std::string s = text.GetString();
    ASSERT_EQ(s.size(), 36u);
    EXPECT_EQ(s[8], '-');
    EXPECT_EQ(s[23], '-');
    char want[9];
    snprintf(want, sizeof want, "%08x", first);
    EXPECT_EQ(s.substr(0, 8), want);

    char buffer[9];
    memset(buffer, 'z', sizeof buffer);
    std::string log;
    {
        palvet_test::StdoutCapture capture;
        GetProductID(buffer, sizeof buffer);
        log = capture.Take();
    }
    if (access("/sys/class/dmi/id/product_uuid", R_OK) == 0) {
        EXPECT_EQ(strlen(buffer), 8u);
        EXPECT_EQ(strchr(buffer, '-'), nullptr);
    } else {
        EXPECT_STREQ(buffer, "");  // zeroed, left empty
        EXPECT_NE(log.find("can not open /sys/class/dmi/id/product_uuid, error:"), std::string::npos);
    }
    GetProductID(buffer, 1);
    GetProductID(nullptr, 9);
}

}  // namespace
