#ifndef PALVET_CORE_CLOCK_H
#define PALVET_CORE_CLOCK_H

#include <palvet/core/export.h>

// The calling thread's kernel thread id (equals the process id on the main
// thread), not its pthread handle.
PALVET_API int getlwpid();

// Monotonic clock in microseconds and milliseconds since an arbitrary origin
// (boot); unaffected by changes of the wall clock.
PALVET_API unsigned long long GetTickCountUS();
PALVET_API unsigned long long GetTickCount();

// Waits with select(); returns 0 after the full wait or -1 when a signal cut
// it short. An interrupted wait is not resumed.
PALVET_API int USleep(unsigned long long microseconds);
PALVET_API int Sleep(unsigned long long milliseconds);

#endif
