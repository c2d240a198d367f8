#include <palvet/files/system_utils.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/files/file_utils.h>
#include <palvet/text/split.h>

#include <cstring>
#include <dirent.h>
#include <new>

namespace {

// Closes the folder on every way out.
class Folder {
public:
    explicit Folder(char const* path) : dir_(path != nullptr ? opendir(path) : nullptr) {}
    ~Folder()
    {
        if (dir_ != nullptr)
            closedir(dir_);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    explicit operator bool() const { return dir_ != nullptr; }
    dirent* Next() { return readdir(dir_); }

private:
    DIR* dir_;
};

bool Listed(char const* name, int showHidden)
{
    if (name[0] == '\0' || strcmp(name, ".") == 0 || strcmp(name, "..") == 0)
        return false;
    return showHidden || name[0] != '.';
}

bool PassesFilter(char const* name, char const* filter, int filterLength)
{
    if (filterLength == 0)
        return true;
    char const* dot = strrchr(name, '.');
    if (dot == nullptr)
        return false;
    return FindStringFromStringWithSeprator(filter, filterLength, dot, static_cast<int>(strlen(dot)), ";", 1) != 0;
}

// A local list whose items are freed on every way out.
struct OwnedList {
    CPtrListCtrl list;
    ~OwnedList() { FreeFileList(&list); }
};

}  // namespace

void FreeFileList(CPtrCtrl* list)
{
    if (list == nullptr)
        return;
    for (int i = 0, n = list->GetCount(); i < n; ++i)
        delete[] static_cast<char*>(list->GetAt(i));
    list->DeleteAll();
}

void GetLocalFolderFileList(char const* folder, CPtrCtrl* folders, CPtrCtrl* files, char const* filter,
                            int showHidden)
{
    if (folders != nullptr)
        folders->DeleteAll();
    if (files != nullptr)
        files->DeleteAll();
    Folder dir(folder);
    if (!dir)
        return;
    int filterLength = filter != nullptr ? static_cast<int>(strlen(filter)) : 0;
    while (dirent* entry = dir.Next()) {
        char const* name = entry->d_name;
        if (!Listed(name, showHidden))
            continue;
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            // Some file systems do not tell the type while listing.
            char path[1025];
            CombinePathName(path, folder, name);
            isFolder = IsDir(path) != 0;
        }
        CPtrCtrl* target = isFolder ? folders : files;
        if (target == nullptr)
            continue;
        if (!isFolder && !PassesFilter(name, filter, filterLength))
            continue;
        size_t length = strlen(name);
        char* copy = new (std::nothrow) char[length + 1];
        if (copy == nullptr)
            continue;
        memcpy(copy, name, length + 1);
        target->AddData(copy, -1);
    }
}

void GetSubFolderFileList(char const* root, char const* sub, CPtrCtrl* out, char const* filter, int showHidden,
                          int recurse)
{
    OwnedList folders, files;
    char here[1025];
    CombinePathName(here, root, sub);
    GetLocalFolderFileList(here, recurse ? &folders.list : nullptr, &files.list, filter, showHidden);
    for (int i = 0, n = folders.list.GetCount(); i < n; ++i) {
        char below[1025];
        CombinePathName(below, sub, static_cast<char const*>(folders.list.GetAt(i)));
        GetSubFolderFileList(root, below, out, filter, showHidden, recurse);
    }
    if (out == nullptr)
        return;
    for (int i = 0, n = files.list.GetCount(); i < n; ++i) {
        // CombinePathName writes up to 1024 characters and a terminator;
        // the items are 1024 bytes, so the path is built apart and cut.
        char path[1025];
        CombinePathName(path, sub, static_cast<char const*>(files.list.GetAt(i)));
        char* item = new (std::nothrow) char[1024];
        if (item == nullptr)
            break;
        strncpy(item, path, 1023);
        item[1023] = '\0';
        out->AddData(item, -1);
    }
}

int FindFileInFolder(char const* folder, char const* name, int showHidden)
{
    if (folder == nullptr || name == nullptr)
        return 0;
    Folder dir(folder);
    if (!dir)
        return 0;
    while (dirent* entry = dir.Next())
        if (Listed(entry->d_name, showHidden) && strcmp(entry->d_name, name) == 0)
            return 1;
    return 0;
}

int FindFileInSubFolder(char const* root, char const* sub, char const* name, int showHidden, int recurse,
                        char* outPath)
{
    char here[1025];
    CombinePathName(here, root, sub);
    if (FindFileInFolder(here, name, showHidden)) {
        if (outPath != nullptr)
            CombinePathName(outPath, here, name);
        return 1;
    }
    if (!recurse)
        return 0;
    OwnedList folders;
    GetLocalFolderFileList(here, &folders.list, nullptr, nullptr, showHidden);
    for (int i = 0, n = folders.list.GetCount(); i < n; ++i) {
        char below[1025];
        CombinePathName(below, sub, static_cast<char const*>(folders.list.GetAt(i)));
        if (FindFileInSubFolder(root, below, name, showHidden, recurse, outPath))
            return 1;
    }
    return 0;
}
