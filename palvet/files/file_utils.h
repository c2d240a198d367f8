#ifndef PALVET_FILES_FILE_UTILS_H
#define PALVET_FILES_FILE_UTILS_H

// Path text, program location and whole-file I/O.
//
// Paths are slash-separated texts in caller-owned char arrays. Functions that
// make a copy cut it to 1023 characters; they do not check the room in the
// destination, so give them 1024-byte arrays (1025 for CombinePathName, whose
// result can be a 1023-character folder plus the '/' it adds).

#include <cstdio>

#include <palvet/core/export.h>

// Full path of the running executable in buffer (at most size - 1 characters).
// Returns buffer, or null with buffer set to "" when the path cannot be read
// or may have been cut (it fills size - 1 characters or more).
PALVET_API char* GetProgramName(char* buffer, int size);

// Folder of the running executable, without a trailing '/', cut to size - 1
// characters; "" when the path is unknown or size is below 2. Returns buffer
// (null for a null buffer).
PALVET_API char* GetProgramPath(char* buffer, int size);

// Appends '/' to a non-empty path that does not end in one; the caller
// provides the room. Returns the length before appending.
PALVET_API int FixToPathName(char* path);

// Removes one trailing '/', if any.
PALVET_API void FixToFileName(char* path);

// dest = folder + '/' + name, with folder cut to 1023 characters and the
// whole to 1023 characters plus the separator: up to 1024 characters and the
// terminator, so dest needs 1025 bytes. A null folder gives name
// alone, a null name the folder with its '/'. No separator is dropped from
// the front of name: "a/" and "/b" give "a//b". 0 when dest is null, else 1.
PALVET_API int CombinePathName(char* dest, char const* folder, char const* name);

// Folder part of path (cut to 1023 characters) after dropping one trailing
// '/': "/usr/bin/" gives "/usr"; "/usr", "/" and a bare name give "".
// dest may be path itself. 0 for a null argument, else 1.
PALVET_API int GetFileParentDir(char* dest, char const* path);

// Last component of path: what follows its last '/', "" when it ends in '/'.
// 0 for a null argument, else 1.
PALVET_API int GetFileShortName(char* dest, char const* path);

// Replaces what follows the last '.' of name with the part of ext after its
// own last '.' (so "txt", ".txt" and "x.txt" all mean "txt"); an empty
// extension removes the '.' too. A name without '.' gets ".ext" appended.
// The last '.' is searched in the whole text, folder names included.
PALVET_API void SetFileExtName(char* name, char const* ext);

// 1 when path names a directory (links followed), else 0.
PALVET_API int IsDir(char const* path);

// 1 when path exists, else 0.
PALVET_API int IsFileExist(char const* path);

// Size of an open stream (64-bit offsets); the position is kept. 0 on failure,
// logging "ftell error:..." when the position cannot be told.
PALVET_API unsigned long long FileSize(FILE* stream);

// Reads count bytes, retrying short reads; stops early at end of file or on a
// stream error (logged). Returns the bytes read.
PALVET_API unsigned int FileRead(FILE* stream, void* buffer, unsigned int count);

// Writes count bytes, retrying short writes; stops on a stream error (logged).
// Returns the bytes written.
PALVET_API unsigned int FileWrite(FILE* stream, void const* buffer, unsigned int count);

// Loads a whole file into a new block stored in *out (free it with
// ReleaseFileData) and returns the bytes read. With a null out, returns only
// the file size. Returns 0 for a directory, a missing, unreadable or empty
// file. When the block cannot be allocated, returns the size with *out null.
PALVET_API unsigned long long ReadFileData(char const* path, unsigned char** out);

// Stores size bytes of data in path, appending when append is nonzero and
// replacing the file otherwise. A size of 0 still creates or truncates it.
PALVET_API void WriteFileData(char const* path, void const* data, unsigned int size, int append);

// Frees a block from ReadFileData; null is ignored.
PALVET_API void ReleaseFileData(unsigned char* data);

// 1 when both files can be opened and hold the same bytes, else 0. Compares
// in 1 MiB chunks, so it needs 2 MiB of memory whatever the file sizes.
PALVET_API int IsFileDataEqual(char const* path1, char const* path2);

#endif
