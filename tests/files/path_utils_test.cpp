#include <palvet/files/file_utils.h>

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

#include "support/test_support.h"

namespace {

char g_out[1100];

std::string Combine(char const* folder, char const* name)
{
    CombinePathName(g_out, folder, name);
    return g_out;
}

std::string Parent(char const* path)
{
    GetFileParentDir(g_out, path);
    return g_out;
}

std::string Short(char const* path)
{
    GetFileShortName(g_out, path);
    return g_out;
}

std::string WithExt(std::string name, char const* ext)
{
    name.copy(g_out, name.size());
    g_out[name.size()] = '\0';
    SetFileExtName(g_out, ext);
    return g_out;
}

}  // namespace

TEST(PathUtils, ProgramNameAndPath)
{
    char name[1024];
    ASSERT_EQ(GetProgramName(name, sizeof name), name);
    std::string full = name;
    EXPECT_EQ(full.substr(full.rfind('/')), "/files_tests");

    // A path that fills size - 1 characters may have been cut: refused.
    int const exact = static_cast<int>(full.size());
    EXPECT_EQ(GetProgramName(name, exact + 1), nullptr);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(GetProgramName(name, exact + 2), name);
    EXPECT_EQ(GetProgramName(name, 1), nullptr);
    EXPECT_STREQ(name, "");

    char folder[1024];
    ASSERT_EQ(GetProgramPath(folder, sizeof folder), folder);
    EXPECT_EQ(folder, full.substr(0, full.rfind('/')));
    EXPECT_STREQ(GetProgramPath(folder, 4), full.substr(0, 3).c_str());
    EXPECT_STREQ(GetProgramPath(folder, 1), "");
    EXPECT_EQ(GetProgramPath(nullptr, 10), nullptr);
}

TEST(PathUtils, TrailingSlash)
{
    char path[16] = "/a/b";
    EXPECT_EQ(FixToPathName(path), 4);
    EXPECT_STREQ(path, "/a/b/");
    EXPECT_EQ(FixToPathName(path), 5);
    EXPECT_STREQ(path, "/a/b/");
    char empty[4] = "";
    EXPECT_EQ(FixToPathName(empty), 0);
    EXPECT_STREQ(empty, "");

    char twice[16] = "/a//";
    FixToFileName(twice);
    EXPECT_STREQ(twice, "/a/");
}

TEST(PathUtils, CombinePathName)
{
    EXPECT_EQ(Combine("/tmp", "x.txt"), "/tmp/x.txt");
    EXPECT_EQ(Combine("/tmp/", "x.txt"), "/tmp/x.txt");
    EXPECT_EQ(Combine("a/", "/b"), "a//b");
    EXPECT_EQ(Combine(nullptr, "x"), "x");
    EXPECT_EQ(Combine("/tmp", nullptr), "/tmp/");
    EXPECT_EQ(Combine("", "x"), "x");
    EXPECT_EQ(CombinePathName(nullptr, "a", "b"), 0);

    // The folder is cut to 1023 before its '/' is added; the name then gets
    // whatever room is left of the 1023.
    std::string folder(1500, 'f');
    EXPECT_EQ(Combine(folder.c_str(), "x"), std::string(1023, 'f') + "/");
    EXPECT_EQ(Combine(folder.substr(0, 1000).c_str(), folder.c_str()),
              folder.substr(0, 1000) + "/" + std::string(22, 'f'));
}

TEST(PathUtils, ParentAndShortName)
{
    EXPECT_EQ(Parent("/a/b.txt"), "/a");
    EXPECT_EQ(Parent("/usr/bin/"), "/usr");
    EXPECT_EQ(Parent("/usr"), "");
    EXPECT_EQ(Parent("/"), "");
    EXPECT_EQ(Parent("b.txt"), "");
    EXPECT_EQ(GetFileParentDir(g_out, nullptr), 0);
    EXPECT_EQ(GetFileParentDir(nullptr, "/a"), 0);

    char inPlace[32] = "/x/y/z";
    GetFileParentDir(inPlace, inPlace);
    EXPECT_STREQ(inPlace, "/x/y");
    std::string deep = "/" + std::string(1100, 'd') + "/e";
    EXPECT_EQ(Parent(deep.c_str()), "");  // cut to 1023: the last '/' is lost

    EXPECT_EQ(Short("/a/b.txt"), "b.txt");
    EXPECT_EQ(Short("b.txt"), "b.txt");
    EXPECT_EQ(Short("/a/"), "");
    EXPECT_EQ(GetFileShortName(g_out, nullptr), 0);
}

TEST(PathUtils, SetFileExtName)
{
    EXPECT_EQ(WithExt("a.bmp", "txt"), "a.txt");
    EXPECT_EQ(WithExt("a.bmp", ".txt"), "a.txt");
    EXPECT_EQ(WithExt("a.bmp", "x.y.txt"), "a.txt");
    EXPECT_EQ(WithExt("a.bmp", ""), "a");
    EXPECT_EQ(WithExt("a.bmp", "x."), "a");
    EXPECT_EQ(WithExt("a", "txt"), "a.txt");
    EXPECT_EQ(WithExt("a", ""), "a");
    EXPECT_EQ(WithExt("/a.dir/file", "txt"), "/a.txt");
    EXPECT_EQ(WithExt("a.tar.gz", "bz2"), "a.tar.bz2");

    char name[16] = "ab";
    SetFileExtName(name, name);  // the extension taken from the name itself
    EXPECT_STREQ(name, "ab.ab");
}

TEST(PathUtils, FileSystemChecks)
{
    palvet_test::TempDir dir;
    std::string file = dir.File("f");
    std::string link = dir.File("l");
    palvet_test::WriteWholeFile(file, "x");
    ASSERT_EQ(symlink(dir.path().c_str(), link.c_str()), 0);

    EXPECT_EQ(IsDir(dir.path().c_str()), 1);
    EXPECT_EQ(IsDir(link.c_str()), 1);
    EXPECT_EQ(IsDir(file.c_str()), 0);
    EXPECT_EQ(IsDir(dir.File("missing").c_str()), 0);
    EXPECT_EQ(IsDir(nullptr), 0);
    EXPECT_EQ(IsFileExist(file.c_str()), 1);
    EXPECT_EQ(IsFileExist(dir.path().c_str()), 1);
    EXPECT_EQ(IsFileExist(dir.File("missing").c_str()), 0);
    EXPECT_EQ(IsFileExist(nullptr), 0);
}
