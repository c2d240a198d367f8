#include <palvet/files/file_utils.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>

#include "support/test_support.h"

namespace {

// c: CombinePathName(a, b), p: GetFileParentDir(a), s: GetFileShortName(a),
// e: SetFileExtName(a, b). Each writes into a heap array of exactly the room
// its contract asks for, so the address checker sees any write beyond it.
std::string Apply(char op, char const* a, char const* b = "")
{
    size_t const room = op == 'c' ? 1025 : 1024;
    std::unique_ptr<char[]> out(new char[room]);
    switch (op) {
    case 'c': CombinePathName(out.get(), a, b); break;
    case 'p': GetFileParentDir(out.get(), a); break;
    case 's': GetFileShortName(out.get(), a); break;
    default: strcpy(out.get(), a); SetFileExtName(out.get(), b);
    }
    return out.get();
}

}  // namespace

TEST(PathUtils, ProgramLocation)
{
    char name[1024], folder[1024];
    ASSERT_EQ(GetProgramName(name, sizeof name), name);
    std::string const full = name;
    EXPECT_EQ(full.substr(full.rfind('/')), "/files_tests");
    // A path that fills size - 1 characters may have been cut: refused.
    int const exact = static_cast<int>(full.size());
    EXPECT_EQ(GetProgramName(name, exact + 1), nullptr);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(GetProgramName(name, exact + 2), name);
    EXPECT_EQ(GetProgramPath(folder, sizeof folder), full.substr(0, full.rfind('/')));
    EXPECT_EQ(GetProgramPath(folder, 4), full.substr(0, 3));
}

TEST(PathUtils, PathText)
{
    struct { char op; char const* a; char const* b; char const* want; } const cases[] = {
        {'c', "/tmp", "x", "/tmp/x"}, {'c', "/tmp/", "x", "/tmp/x"}, {'c', "a/", "/b", "a//b"},
        {'c', nullptr, "x", "x"}, {'c', "/tmp", nullptr, "/tmp/"}, {'c', "", "x", "x"},
        {'p', "/a/b.txt", "", "/a"}, {'p', "/usr/bin/", "", "/usr"}, {'p', "/usr", "", ""},
        {'p', "/", "", ""}, {'p', "b.txt", "", ""}, {'s', "/a/b.txt", "", "b.txt"},
        {'s', "b.txt", "", "b.txt"}, {'s', "/a/", "", ""}, {'e', "a.bmp", "txt", "a.txt"},
        {'e', "a.bmp", ".txt", "a.txt"}, {'e', "a.bmp", "x.y.txt", "a.txt"}, {'e', "a.b", "", "a"},
        {'e', "a", "txt", "a.txt"}, {'e', "a", "", "a"}, {'e', "/a.dir/file", "txt", "/a.txt"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(Apply(c.op, c.a, c.b), c.want) << c.op << (c.a ? c.a : "-") << (c.b ? c.b : "-");

    // Copies are cut to 1023 characters; the folder's '/' comes on top.
    std::string const f(1500, 'f');
    EXPECT_EQ(Apply('c', f.c_str(), "x"), f.substr(0, 1023) + "/");
    EXPECT_EQ(Apply('c', f.substr(0, 1000).c_str(), f.c_str()),
              f.substr(0, 1000) + "/" + f.substr(0, 22));
    EXPECT_EQ(Apply('p', ("/" + f + "/e").c_str()), "");  // its last '/' was cut off

    char path[16] = "/x/y/";
    EXPECT_EQ(FixToPathName(path), 5);  // already ends in '/'
    GetFileParentDir(path, path);
    EXPECT_EQ(FixToPathName(path), 2);
    EXPECT_STREQ(path, "/x/");
}

TEST(PathUtils, FileSystemChecks)
{
    palvet_test::TempDir dir;
    std::string const file = dir.File("f"), link = dir.File("l"), missing = dir.File("m");
    palvet_test::WriteWholeFile(file, "x");
    ASSERT_EQ(symlink(dir.path().c_str(), link.c_str()), 0);
    EXPECT_EQ(IsDir(dir.path().c_str()) + IsDir(link.c_str()), 2);
    EXPECT_EQ(IsDir(file.c_str()) + IsDir(missing.c_str()) + IsDir(nullptr), 0);
    EXPECT_EQ(IsFileExist(file.c_str()) + IsFileExist(dir.path().c_str()), 2);
    EXPECT_EQ(IsFileExist(missing.c_str()) + IsFileExist(nullptr), 0);
}
