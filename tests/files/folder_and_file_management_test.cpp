// Folder listing, search and file management on real folders.
#include <palvet/palvet.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "support/test_support.h"

namespace {

using palvet_test::TempDir;
using Names = std::vector<std::string>;

void Touch(std::string const& path, std::string const& data = "")
{
    palvet_test::WriteWholeFile(path, data);
}

// The items of a file list, freed afterwards.
Names Take(CPtrCtrl& list, bool sorted = true)
{
    Names names;
    for (int i = 0; i < list.GetCount(); ++i)
        names.emplace_back(static_cast<char const*>(list.GetAt(i)));
    FreeFileList(&list);
    EXPECT_EQ(list.GetCount(), 0);
    if (sorted)
        std::sort(names.begin(), names.end());
    return names;
}

class Tree : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(dir.path().empty());
        root = dir.path();
        mkdir((root + "/sub").c_str(), 0755);
        mkdir((root + "/sub/deep").c_str(), 0755);
        mkdir((root + "/empty").c_str(), 0755);
        mkdir((root + "/.hidden dir").c_str(), 0755);
        for (char const* name : {"a.bmp", "b.jpg", "c.BMP", "README", ".profile", "with space.bmp",
                                 "sub/d.bmp", "sub/deep/e.bmp", "sub/deep/f.txt", "\xe5\x9b\xbe.bmp"})
            Touch(root + "/" + name);
        ASSERT_EQ(symlink("sub", (root + "/link-to-sub").c_str()), 0);
    }
    TempDir dir;
    std::string root;
};

TEST_F(Tree, LocalListingSortsEntriesByKindAndFilter)
{
    CPtrListCtrl folders, files;
    GetLocalFolderFileList(root.c_str(), &folders, &files, nullptr, 0);
    EXPECT_EQ(Take(folders), (Names{"empty", "sub"}));
    // A link to a folder is listed as a file; hidden names are not listed.
    EXPECT_EQ(Take(files), (Names{"README", "a.bmp", "b.jpg", "c.BMP", "link-to-sub", "with space.bmp",
                                  "\xe5\x9b\xbe.bmp"}));

    GetLocalFolderFileList(root.c_str(), nullptr, &files, ".bmp;.jpg", 1);
    EXPECT_EQ(Take(files), (Names{"a.bmp", "b.jpg", "with space.bmp", "\xe5\x9b\xbe.bmp"}));
    // Empty items in the filter match nothing more; a partial extension is
    // no item.
    GetLocalFolderFileList(root.c_str(), nullptr, &files, ";;.jp;", 1);
    EXPECT_EQ(Take(files), Names{});

    GetLocalFolderFileList(root.c_str(), &folders, nullptr, nullptr, 1);
    EXPECT_EQ(Take(folders), (Names{".hidden dir", "empty", "sub"}));

    // Lists are emptied first (their items must have been freed before).
    files.AddData(nullptr, -1);
    GetLocalFolderFileList((root + "/missing").c_str(), nullptr, &files, nullptr, 0);
    EXPECT_EQ(files.GetCount(), 0);
    GetLocalFolderFileList(nullptr, nullptr, &files, nullptr, 0);
    FreeFileList(nullptr);
}

TEST_F(Tree, SubfolderListingIsChildrenFirstAndAccumulates)
{
    CPtrListCtrl out;
    GetSubFolderFileList(root.c_str(), "sub", &out, ".bmp", 0, 1);
    EXPECT_EQ(Take(out, false), (Names{"sub/deep/e.bmp", "sub/d.bmp"}));

    GetSubFolderFileList(root.c_str(), "sub", &out, nullptr, 0, 0);
    GetSubFolderFileList(root.c_str(), nullptr, &out, ".txt", 0, 1);
    GetSubFolderFileList(root.c_str(), "", &out, ".txt", 0, 1);
    EXPECT_EQ(Take(out), (Names{"sub/d.bmp", "sub/deep/f.txt", "sub/deep/f.txt"}));
}

TEST_F(Tree, Search)
{
    EXPECT_EQ(FindFileInFolder(root.c_str(), "a.bmp", 0), 1);
    EXPECT_EQ(FindFileInFolder(root.c_str(), "sub", 0), 1);
    EXPECT_EQ(FindFileInFolder(root.c_str(), ".profile", 0), 0);
    EXPECT_EQ(FindFileInFolder(root.c_str(), ".profile", 1), 1);
    EXPECT_EQ(FindFileInFolder(root.c_str(), "A.BMP", 0), 0);
    EXPECT_EQ(FindFileInFolder(nullptr, "a.bmp", 0), 0);

    char found[1025] = {};
    EXPECT_EQ(FindFileInSubFolder(root.c_str(), "", "f.txt", 0, 1, found), 1);
    EXPECT_EQ(std::string(found), root + "/sub/deep/f.txt");
    EXPECT_EQ(FindFileInSubFolder(root.c_str(), "", "f.txt", 0, 0, found), 0);
    EXPECT_EQ(FindFileInSubFolder(root.c_str(), "sub", "e.bmp", 0, 1, nullptr), 1);
    EXPECT_EQ(FindFileInSubFolder(root.c_str(), "", "nothing", 1, 1, found), 0);
}

TEST(FileListing, LongPathsStayInsideTheirArrays)
{
    // A root of 1020 characters: every joined path is cut, none overruns.
    TempDir dir;
    std::string root = dir.path();
    while (root.size() < 1020)
        root += "/x";
    root.resize(1020);
    CPtrListCtrl out;
    GetSubFolderFileList(root.c_str(), "some/sub/folder", &out, nullptr, 1, 1);
    EXPECT_EQ(out.GetCount(), 0);
    char* found = new char[1025];
    EXPECT_EQ(FindFileInSubFolder(root.c_str(), "sub", "name", 1, 1, found), 0);
    delete[] found;
}

struct Recorder : IFileCopyProgressListener {
    std::vector<unsigned long long> done;
    unsigned long long user = 0, total = 0;
    int OnCopyProgress(unsigned long long u, unsigned long long d, unsigned long long t) override
    {
        user = u;
        total = t;
        done.push_back(d);
        return 1;
    }
};

TEST(FileManagement, CopyReportsEachBlock)
{
    TempDir dir;
    std::string data(5 * 512 * 1024, '\0');
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(i * 131 + i / 7);
    Touch(dir.File("src"), data);
    Recorder r;
    ASSERT_EQ(CopyFile(dir.File("src").c_str(), dir.File("dst").c_str(), &r, 42), 1);
    EXPECT_EQ(r.done, (std::vector<unsigned long long>{0, 1u << 20, 2u << 20, data.size()}));
    EXPECT_EQ(r.user, 42u);
    EXPECT_EQ(r.total, data.size());
    EXPECT_EQ(palvet_test::ReadWholeFile(dir.File("dst")), data);

    Touch(dir.File("empty"));
    Recorder none;
    EXPECT_EQ(CopyFile(dir.File("empty").c_str(), dir.File("empty2").c_str(), &none, 0), 1);
    EXPECT_TRUE(none.done.empty());
    EXPECT_EQ(IsFileExist(dir.File("empty2").c_str()), 1);
    EXPECT_EQ(CopyFile(dir.File("missing").c_str(), dir.File("x").c_str(), nullptr, 0), 0);
    EXPECT_EQ(IsFileExist(dir.File("x").c_str()), 0);
    EXPECT_EQ(CopyFile(dir.File("src").c_str(), (dir.File("no/such/folder")).c_str(), nullptr, 0), 0);
    EXPECT_EQ(CopyFile(nullptr, dir.File("x").c_str(), nullptr, 0), 0);
}

TEST(FileManagement, MoveWithinAndAcrossFileSystems)
{
    TempDir dir;
    Touch(dir.File("a"), "moved");
    ASSERT_EQ(MoveFile(dir.File("a").c_str(), dir.File("b").c_str()), 1);
    EXPECT_EQ(IsFileExist(dir.File("a").c_str()), 0);
    EXPECT_EQ(palvet_test::ReadWholeFile(dir.File("b")), "moved");
    EXPECT_EQ(MoveFile(dir.File("a").c_str(), dir.File("c").c_str()), 0);

    struct stat here, shm;
    if (stat("/dev/shm", &shm) != 0 || stat(dir.path().c_str(), &here) != 0 || shm.st_dev == here.st_dev)
        GTEST_SKIP() << "no second file system at /dev/shm for the copy-and-unlink path";
    std::string other = "/dev/shm/palvet-move-" + std::to_string(getpid());
    ASSERT_EQ(MoveFile(dir.File("b").c_str(), other.c_str()), 1);
    EXPECT_EQ(IsFileExist(dir.File("b").c_str()), 0);
    EXPECT_EQ(palvet_test::ReadWholeFile(other), "moved");
    unlink(other.c_str());
}

TEST(FileManagement, FoldersAndRemoval)
{
    TempDir dir;
    EXPECT_EQ(do_mkdir(dir.File("new").c_str(), 0755), 0);
    EXPECT_EQ(IsDir(dir.File("new").c_str()), 1);
    EXPECT_EQ(do_mkdir(dir.File("new").c_str(), 0755), 0);
    Touch(dir.File("file"));
    errno = 0;
    EXPECT_EQ(do_mkdir(dir.File("file").c_str(), 0755), -1);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(do_mkdir(dir.File("a/b").c_str(), 0755), -1);  // one level only

    mkdir(dir.File("new/sub").c_str(), 0755);
    Touch(dir.File("new/.hidden.log"));
    Touch(dir.File("new/keep.txt"));
    Touch(dir.File("new/sub/x.log"));
    RemoveFile(dir.File("new").c_str(), ".log", 1, 1);
    EXPECT_EQ(IsFileExist(dir.File("new/.hidden.log").c_str()), 0);
    EXPECT_EQ(IsFileExist(dir.File("new/keep.txt").c_str()), 1);
    EXPECT_EQ(IsDir(dir.File("new/sub").c_str()), 0);  // emptied, then removed
    RemoveFile(dir.File("new").c_str(), nullptr, 1, 1);
    EXPECT_EQ(IsFileExist(dir.File("new/keep.txt").c_str()), 0);
    EXPECT_EQ(IsDir(dir.File("new").c_str()), 1);  // the folder itself stays
}

TEST(FileManagement, SizesAndSpace)
{
    struct Case { unsigned long long size; char const* text; };
    for (Case c : {Case{0, "0.00 B"}, Case{1023, "1023.00 B"}, Case{1024, "1.00 K"}, Case{1536, "1.50 K"},
                   Case{1048576, "1.00 M"}, Case{3ull << 30, "3.00 G"}, Case{5ull << 40, "5.00 T"}}) {
        CSimpleStringA s;
        s.Set("old", -1);
        FormatFileSize(c.size, &s);
        EXPECT_STREQ(s.GetString(), c.text);
    }
    // Single precision: a double would print 1234567.89 here.
    CSimpleStringA s;
    FormatFileSize((1234567ull << 40) + (89ull << 40) / 100, &s);
    EXPECT_STREQ(s.GetString(), "1234567.88 T");

    unsigned long long freeBytes = 1, total = 1, avail = 1;
    EXPECT_EQ(GetDiskFreeSpaceEx("/", &freeBytes, &total, &avail), 1);
    EXPECT_GT(total, 0u);
    EXPECT_LE(avail, freeBytes);
    EXPECT_LE(freeBytes, total);
    EXPECT_EQ(GetDiskFreeSpaceEx("/no/such/path", &freeBytes, &total, nullptr), 1);
    EXPECT_EQ(total, 0u);
}

TEST(FileManagement, NameBuilders)
{
    char name[1024];
    GetFileNameByNumberA(name, "bmp", "img_", 7);
    EXPECT_STREQ(name, "img_7.bmp");
    GetFileNameByNumberA(name, ".bmp", "img_", 7);
    EXPECT_STREQ(name, "img_7.bmp");
    GetFileNameByNumberA(name, nullptr, nullptr, -3);
    EXPECT_STREQ(name, "-3");
    GetFileNameByNumberA(nullptr, "bmp", "x", 1);

    tm when{};
    when.tm_year = 124;
    when.tm_mon = 4;
    when.tm_mday = 1;
    when.tm_hour = 13;
    when.tm_min = 7;
    when.tm_sec = 9;
    GetFileNameByDateA(name, "jpg", "p", &when, 1, 0);
    EXPECT_STREQ(name, "p2024_05_01_13_07_09.jpg");
    GetFileNameByDateA(name, nullptr, "p", &when, 0, 1);
    EXPECT_EQ(std::string(name).substr(0, 10), "p13_07_09_");
    EXPECT_EQ(strlen(name), 13u);

    // The draws: seed, then replay rand() by the documented rule.
    srand(99);
    GetFileNameByRandomA(name, "t", "r", 200);
    srand(99);
    std::string want = "r";
    for (int i = 0; i < 200; ++i) {
        int r1 = rand(), r2 = rand();
        int kind = r2 % 7;
        want += kind < 3 ? static_cast<char>('a' + rand() % 26)
                         : kind < 6 ? static_cast<char>('A' + rand() % 26) : static_cast<char>('0' + r1 % 10);
    }
    EXPECT_EQ(std::string(name), want + ".t");

    std::string longPrefix(2000, 'p');
    GetFileNameByNumberA(name, "bmp", longPrefix.c_str(), 1);
    EXPECT_EQ(strlen(name), 1023u);
}

}  // namespace
