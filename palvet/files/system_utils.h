#ifndef PALVET_FILES_SYSTEM_UTILS_H
#define PALVET_FILES_SYSTEM_UTILS_H

// Folders, file management, processes and shell commands, configuration
// text, time records and identifiers.
//
// Paths are built in 1025-byte arrays inside the library (CombinePathName
// can make 1023 characters of folder plus a '/'); pass arrays of that size
// where a function writes a path for you.

#include <cstdio>
#include <ctime>

#include <palvet/core/export.h>

class CPtrCtrl;
class CSimpleStringA;

// ---- Folder listing and search -------------------------------------------
//
// File lists hold names as char arrays allocated with new[], in the order the
// folder gives them (not sorted); release them with FreeFileList. "." and
// "..", empty names and, unless showHidden is set, names that begin with '.'
// are never listed. An extension filter is a text like ".bmp;.jpg": a file is
// kept when the text from its last '.' on is one of the items (case
// matters); with a filter, names without a '.' are dropped. A null or empty
// filter keeps everything.

// Deletes every item of the list (array delete; null items skipped) and
// empties it. Nothing for a null list.
PALVET_API void FreeFileList(CPtrCtrl* list);

// Empties the given lists (without freeing their items), then appends the
// bare names of folder's entries: directories to folders, everything else
// (links to folders included) to files. A null list skips its entries; the
// filter applies to files only. Unreadable folders give empty lists.
PALVET_API void GetLocalFolderFileList(char const* folder, CPtrCtrl* folders, CPtrCtrl* files,
                                       char const* filter, int showHidden);

// Appends to out (not emptied first) the files of root/sub as paths relative
// to root, each in a 1024-byte array; with recurse, the files of every
// subfolder first, depth-first, before the folder's own.
PALVET_API void GetSubFolderFileList(char const* root, char const* sub, CPtrCtrl* out,
                                     char const* filter, int showHidden, int recurse);

// 1 when folder has an entry named exactly name (file or folder), else 0.
PALVET_API int FindFileInFolder(char const* folder, char const* name, int showHidden);

// Looks for name in root/sub, then (with recurse) depth-first in its
// subfolders; the first match wins. On success writes the full path into
// outPath when given (1025 bytes hold any result) and returns 1; else 0.
PALVET_API int FindFileInSubFolder(char const* root, char const* sub, char const* name, int showHidden,
                                   int recurse, char* outPath);

// ---- File management ----------------------------------------------------

// Told how a copy advances. The library calls OnCopyProgress only (the third
// virtual slot, after the destructor's two) and ignores its result.
class IFileCopyProgressListener {
public:
    virtual ~IFileCopyProgressListener() {}
    // user: the value given to CopyFile; done and total in bytes.
    virtual int OnCopyProgress(unsigned long long user, unsigned long long done,
                               unsigned long long total) = 0;
};

// Bytes free, in all and available to unprivileged users on the file system
// of path, for each output given (zeros when path cannot be queried).
// Returns 1.
PALVET_API int GetDiskFreeSpaceEx(char const* path, unsigned long long* freeBytes,
                                  unsigned long long* totalBytes, unsigned long long* availBytes);

// Sets out to "%.2f B", "%.2f K", "%.2f M", "%.2f G" or "%.2f T" by the first
// unit under which size stays below 1024; the value is computed in single
// precision, so large sizes show its rounding.
PALVET_API void FormatFileSize(unsigned long long size, CSimpleStringA* out);

// Copies src to dst (created or truncated) through one 1 MiB block. A
// listener hears (user, 0, size) before the first block and (user, copied,
// size) after each. 1 when all bytes were copied (an empty file at once,
// without listener calls); 0 for a null path, a file that cannot be opened,
// or a short read or write, which leaves the partial dst in place.
PALVET_API int CopyFile(char const* src, char const* dst, IFileCopyProgressListener* listener,
                        unsigned long long user);

// Renames src to dst; failing that (across file systems, say), copies and
// then unlinks src. 1 on success.
PALVET_API int MoveFile(char const* src, char const* dst);

// Creates one folder level with mode. 0 when it exists or was made
// (including when another creator won), -1 otherwise; -1 with errno ENOTDIR
// when path exists but is no folder.
PALVET_API int do_mkdir(char const* path, unsigned int mode);

// Unlinks the files of folder that pass filter (hidden ones included); with
// recurse, first does the same in each subfolder and, with removeFolders,
// then removes that subfolder if it is empty. folder itself stays. Failures
// are ignored.
PALVET_API void RemoveFile(char const* folder, char const* filter, int removeFolders, int recurse);

// File names built into buffer (at most 1023 characters and a terminator;
// nothing for a null buffer): prefix, then the variable part, then ext (a
// '.' is put before an ext that has none). Null prefix or ext: left out.
// By number: "%d".
PALVET_API void GetFileNameByNumberA(char* buffer, char const* ext, char const* prefix, int number);
// By time: "YYYY_MM_DD_" when withDate, "hh_mm_ss", and "_mmm" (the
// millisecond tick modulo 1000) when withMillis; when is local time, null
// for now.
PALVET_API void GetFileNameByDateA(char* buffer, char const* ext, char const* prefix, tm const* when,
                                   int withDate, int withMillis);
// By count random characters from rand() (not seeded here): for each, two
// draws, the second choosing lower case (3 in 7), upper case (3 in 7, a
// third draw picking the letter) or a digit (from the first draw).
PALVET_API void GetFileNameByRandomA(char* buffer, char const* ext, char const* prefix, int count);

// ---- Processes and shell commands -----------------------------------------

// dlopen(RTLD_LAZY) of name from the folder "Lib" beside the executable,
// then by the system's search path; each attempt is logged. The handle, or
// null when both fail.
PALVET_API void* LoadSystemLibrary(char const* name);

// popen and pclose, unchanged.
PALVET_API FILE* vpopen(char const* command, char const* mode);
PALVET_API int vpclose(FILE* stream);

// Formats a command (any length), logs "Call cmd:..." and runs it: with
// output, through a pipe whose whole output replaces output's text;
// without, through system(). The exit status is not reported.
PALVET_API void do_syscmd(CSimpleStringA* output, char const* format, ...)
    __attribute__((format(printf, 2, 3)));

// Empties pids, then appends (as integers stored in the pointer slots) the
// ids that pidof reports for name.
PALVET_API void GetPidListByName(char const* name, CPtrCtrl* pids);
// The same from "ps ax": processes whose whole command line, arguments
// included, equals commandLine ignoring case.
PALVET_API void GetPidListByNameWithParam(char const* commandLine, CPtrCtrl* pids);
// Sends SIGKILL to every process the matching lookup finds, logging each.
PALVET_API void KillPidByName(char const* name);
PALVET_API void KillPidByNameWithParam(char const* commandLine);

// ---- Configuration text -------------------------------------------------
//
// Lines separated by CR and/or LF; an attribute is a line that begins with
// its key (the separator included, e.g. "Volume="), followed by the value up
// to the line's end. Nothing is trimmed.

// Sets value to the rest of the first line that begins with key, compared
// ignoring case, and returns 1; 0 (value untouched) when no line does or an
// argument is null.
PALVET_API int GetAttrValueFromConfig(CSimpleStringA const* config, char const* key, CSimpleStringA* value);

// Replaces key + old value by key + newValue everywhere in the text (case
// sensitive, so a line whose key differs in case stays as it is), or when the
// key is missing appends "key newValue\n" (glued to a last line that lacks
// its line end).
PALVET_API void SetAttrValueToConfig(CSimpleStringA* config, char const* key, char const* newValue);

// ---- Time records and identifiers -----------------------------------------

// The first eight fields of tm, in tm's order and numbering (months from 0,
// years since 1900 when made from tm).
struct tagSYSTEMTIME {
    int wSecond;
    int wMinute;
    int wHour;
    int wDay;
    int wMonth;
    int wYear;
    int wDayOfWeek;
    int wDayOfYear;
};

// A 128-bit identifier; its text form is the six parts in this order.
struct tagUUID {
    unsigned int timeLow;
    unsigned short timeMid;
    unsigned short timeHigh;
    unsigned short clockSeq;
    unsigned short nodeHigh;
    unsigned int nodeLow;
};

// Field by field, the daylight-saving flag not carried.
PALVET_API void ConvertTmToSystemTime(tm const* from, tagSYSTEMTIME* to);
PALVET_API void ConvertSystemTimeToTm(tagSYSTEMTIME const* from, tm* to);

// Logs "<title>:YYYY/MM/DD hh:mm:ss" with the raw field values (a record made
// from tm shows its year as e.g. 0124); title defaults to "system time is:";
// a null record logs 1900/00/00 00:00:00.
PALVET_API void DumpSystemTime(char const* title, tagSYSTEMTIME const* time);

// Parses "YYYY/MM/DD hh:mm:ss" into the six fields (raw numbers); returns
// how many were read. Both pointers must be valid.
PALVET_API int StringToSystemTime(char const* text, tagSYSTEMTIME* time);

// Fills the identifier from rand() (not seeded here; no version bits).
PALVET_API void CreateUUID_Random(tagUUID* uuid);
// Sets out to the 8-4-4-4-12 lower-case hex form.
PALVET_API void UUIDToString(tagUUID* uuid, CSimpleStringA* out);

// Writes the machine's identifier from /sys/class/dmi/id/product_uuid,
// without its dashes, cut to size - 1 characters; the buffer is zeroed first
// and stays empty when the file cannot be read. Nothing for a null buffer or
// a size below 2.
PALVET_API void GetProductID(char* buffer, int size);

#endif
