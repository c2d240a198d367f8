// palvet ls | find | cp | mv | df | mkdir | rm
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "tool_common.h"

namespace tool {
namespace {

void NeedFolder(std::string const& path)
{
    if (!IsDir(path.c_str()))
        Fail(path + ": no such folder");
}

// Copies of 1023 characters at most are what the library's path functions
// make; longer arguments are refused rather than silently cut.
void NeedPathLength(std::string const& path)
{
    if (path.size() > 1023)
        BadUsage("path longer than 1023 characters: " + path.substr(0, 40) + "...");
}

struct ListOptions {
    std::string dir, ext;
    bool recurse = false, all = false, folders = false;
};

void List(ListOptions const& o)
{
    NeedPathLength(o.dir);
    NeedFolder(o.dir);
    char const* filter = o.ext.empty() ? nullptr : o.ext.c_str();
    CPtrListCtrl files;
    if (o.recurse) {
        // Paths relative to the folder; each folder's files after those of
        // its subfolders.
        GetSubFolderFileList(o.dir.c_str(), "", &files, filter, o.all, 1);
    } else {
        CPtrListCtrl folders;
        GetLocalFolderFileList(o.dir.c_str(), o.folders ? &folders : nullptr, &files, filter, o.all);
        for (int i = 0; i < folders.GetCount(); ++i)
            fprintf(Out(), "%s/\n", static_cast<char const*>(folders.GetAt(i)));
        FreeFileList(&folders);
    }
    for (int i = 0; i < files.GetCount(); ++i)
        fprintf(Out(), "%s\n", static_cast<char const*>(files.GetAt(i)));
    FreeFileList(&files);
}

void Find(std::string const& dir, std::string const& name, bool recurse, bool all)
{
    NeedPathLength(dir);
    NeedFolder(dir);
    char found[1025] = {0};
    if (!FindFileInSubFolder(dir.c_str(), "", name.c_str(), all, recurse, found))
        Fail(name + ": not found in " + dir);
    fprintf(Out(), "%s\n", found);
}

std::string Target(std::string const& src, std::string const& dst)
{
    if (!IsDir(dst.c_str()))
        return dst;
    char shortName[1025];
    GetFileShortName(shortName, src.c_str());
    char joined[1025];
    CombinePathName(joined, dst.c_str(), shortName);
    return joined;
}

void NeedRegularFile(std::string const& src)
{
    struct stat st;
    if (stat(src.c_str(), &st) != 0)
        Fail(src + ": " + strerror(errno));
    if (!S_ISREG(st.st_mode))
        Fail(src + ": not a regular file");
}

// Copies through the library into a temporary name beside the target and
// renames it over the target once the copy is complete.
void CopyWithProgress(std::string const& src, std::string const& dst, bool quiet)
{
    PendingFile out(dst);
    ProgressBar bar(src, !quiet && StderrIsTerminal());
    if (!CopyFile(src.c_str(), out.Temp(), &bar, 0))
        Fail("cannot copy " + src + " to " + dst);
    bar.Finish();
    out.Commit();
}

void Cp(std::string const& src, std::string const& dstArg, bool quiet)
{
    NeedPathLength(src);
    NeedPathLength(dstArg);
    NeedRegularFile(src);
    CopyWithProgress(src, Target(src, dstArg), quiet);
}

void Mv(std::string const& src, std::string const& dstArg, bool quiet)
{
    NeedPathLength(src);
    NeedPathLength(dstArg);
    struct stat st;
    if (lstat(src.c_str(), &st) != 0)
        Fail(src + ": " + strerror(errno));
    std::string dst = Target(src, dstArg);
    char parent[1025];
    GetFileParentDir(parent, dst.c_str());
    struct stat dirSt;
    bool sameFs = stat(parent[0] ? parent : ".", &dirSt) == 0 && dirSt.st_dev == st.st_dev;
    // Within one file system MoveFile renames; across file systems a regular
    // file is copied with progress shown, then the source removed.
    if (sameFs || !S_ISREG(st.st_mode) || quiet || !StderrIsTerminal()) {
        if (!MoveFile(src.c_str(), dst.c_str()))
            Fail("cannot move " + src + " to " + dst);
        return;
    }
    CopyWithProgress(src, dst, quiet);
    if (unlink(src.c_str()) != 0)
        Fail(src + ": copied, but not removed: " + strerror(errno));
}

void Df(std::vector<std::string> const& paths)
{
    fprintf(Out(), "%-10s %-10s %-10s %s\n", "total", "free", "available", "path");
    for (auto const& p : paths) {
        if (!IsFileExist(p.c_str()))
            Fail(p + ": no such file or folder");
        unsigned long long freeBytes = 0, total = 0, avail = 0;
        GetDiskFreeSpaceEx(p.c_str(), &freeBytes, &total, &avail);
        CSimpleStringA t, f, a;
        FormatFileSize(total, &t);
        FormatFileSize(freeBytes, &f);
        FormatFileSize(avail, &a);
        fprintf(Out(), "%-10s %-10s %-10s %s\n", t.GetString(), f.GetString(), a.GetString(), p.c_str());
    }
}

void Mkdir(std::vector<std::string> const& paths, bool parents)
{
    for (auto const& p : paths) {
        NeedPathLength(p);
        if (parents) {
            // One level at a time, as the library creates them.
            for (size_t at = p.find('/', 1); at != std::string::npos; at = p.find('/', at + 1))
                if (do_mkdir(p.substr(0, at).c_str(), 0777) != 0)
                    Fail(p.substr(0, at) + ": " + strerror(errno));
        } else if (IsDir(p.c_str())) {
            Fail(p + ": already exists");
        }
        if (do_mkdir(p.c_str(), 0777) != 0)
            Fail(p + ": " + strerror(errno));
    }
}

struct RmOptions {
    std::string dir, ext;
    bool recurse = false, folders = false;
};

void Rm(RmOptions const& o)
{
    NeedPathLength(o.dir);
    NeedFolder(o.dir);
    RemoveFile(o.dir.c_str(), o.ext.empty() ? nullptr : o.ext.c_str(), o.folders, o.recurse);
}

}  // namespace

void AddFileCommands(CLI::App& app)
{
    static ListOptions lo;
    CLI::App* ls = app.add_subcommand("ls", "List a folder's files in the order the folder gives them");
    ls->add_option("DIR", lo.dir, "Folder")->required();
    ls->add_option("--ext", lo.ext, "Extensions to keep, with dots, separated by ';' (e.g. \".bmp;.jpg\")");
    ls->add_flag("-r,--recursive", lo.recurse, "Walk subfolders; print paths relative to DIR");
    ls->add_flag("-a,--all", lo.all, "Include names that begin with '.'");
    ls->add_flag("-d,--folders", lo.folders, "Also list subfolders (with a trailing '/'; not with -r)");
    SetAction(ls, [] { List(lo); });

    static std::string findDir, findName;
    static bool findRecurse = true, findAll = false;
    CLI::App* find = app.add_subcommand("find", "Find a file or folder by exact name; prints its path");
    find->add_option("DIR", findDir, "Folder to search")->required();
    find->add_option("NAME", findName, "Name to find")->required();
    find->add_flag("!--no-recursive", findRecurse, "Look in DIR only");
    find->add_flag("-a,--all", findAll, "Also look at names that begin with '.'");
    SetAction(find, [] { Find(findDir, findName, findRecurse, findAll); });

    static std::string src, dst;
    static bool quiet = false;
    CLI::App* cp = app.add_subcommand("cp", "Copy a file in 1 MiB blocks, with a progress bar on a terminal");
    cp->add_option("SRC", src, "Source file")->required();
    cp->add_option("DST", dst, "Target file or folder")->required();
    cp->add_flag("-q,--quiet", quiet, "No progress bar");
    SetAction(cp, [] { Cp(src, dst, quiet); });

    CLI::App* mv = app.add_subcommand("mv", "Move a file (renamed in place, or copied and removed across file systems)");
    mv->add_option("SRC", src, "Source")->required();
    mv->add_option("DST", dst, "Target file or folder")->required();
    mv->add_flag("-q,--quiet", quiet, "No progress bar");
    SetAction(mv, [] { Mv(src, dst, quiet); });

    static std::vector<std::string> paths;
    CLI::App* df = app.add_subcommand("df", "Size and free space of the file systems holding paths");
    df->add_option("PATH", paths, "Paths")->required();
    SetAction(df, [] { Df(paths); });

    static bool parents = false;
    CLI::App* mkdir = app.add_subcommand("mkdir", "Create folders");
    mkdir->add_option("DIR", paths, "Folders")->required();
    mkdir->add_flag("-p,--parents", parents, "Create missing parents; no error if it exists");
    SetAction(mkdir, [] { Mkdir(paths, parents); });

    static RmOptions ro;
    CLI::App* rm = app.add_subcommand("rm", "Delete the files in a folder (the folder itself stays)");
    rm->add_option("DIR", ro.dir, "Folder")->required();
    rm->add_option("--ext", ro.ext, "Delete only files with these extensions (\".tmp;.log\")");
    rm->add_flag("-r,--recursive", ro.recurse, "Also empty subfolders");
    rm->add_flag("--folders", ro.folders, "With -r, remove the emptied subfolders too");
    SetAction(rm, [] { Rm(ro); });
}

}  // namespace tool
