#ifndef PALVET_CORE_DEBUG_OUTPUT_H
#define PALVET_CORE_DEBUG_OUTPUT_H

#include <cstdio>

#include <palvet/core/export.h>

// The process-wide debug file, or null when none is open. Read and written
// without a lock: open it before starting threads, close it after they end.
extern PALVET_API FILE* gDbgOutputFileHandle;

// Formats one message. Level 0 writes the text bare; any other level writes
// "Palvet <local time> (pid:P, lwp:T) => text" on standard output and the
// same line with "tid:" in the debug file, when one is open. No newline is
// added and nothing is flushed.
PALVET_API void DbgOutput(int level, char const* format, ...)
    __attribute__((format(printf, 2, 3)));

// Opens the debug file, appending ("a+b") when append is nonzero, truncating
// ("wb") otherwise. Any file open before is abandoned, not closed. Returns a
// nonzero value on success; on failure prints the reason and returns the
// count of characters printed, so compare gDbgOutputFileHandle with null to
// know the outcome.
PALVET_API int DbgOutputOpenFile(char const* path, int append);

// Closes the debug file and returns fclose's result; 0 when none is open.
PALVET_API int DbgOutputCloseFile();

// Flushes the debug file (not standard output); 0 when none is open.
PALVET_API int DbgFlush();

#endif
