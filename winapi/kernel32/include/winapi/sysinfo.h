// Facts of the machine and of the calling process and thread.
#pragma once

#include "winapi/types.h"

#define PROCESSOR_ARCHITECTURE_INTEL 0
#define PROCESSOR_ARCHITECTURE_ARM64 12
#define PROCESSOR_ARCHITECTURE_AMD64 9
#define PROCESSOR_ARCHITECTURE_UNKNOWN 0xFFFF

// Without the obsolete dwOemId that shares the first four bytes; type, level and revision are 0.
struct SYSTEM_INFO {
    WORD wProcessorArchitecture;
    WORD wReserved;
    DWORD dwPageSize;
    LPVOID lpMinimumApplicationAddress;
    LPVOID lpMaximumApplicationAddress;
    DWORD_PTR dwActiveProcessorMask;
    DWORD dwNumberOfProcessors;
    DWORD dwProcessorType;
    DWORD dwAllocationGranularity;
    WORD wProcessorLevel;
    WORD wProcessorRevision;
};
using LPSYSTEM_INFO = SYSTEM_INFO*;

// The machine as the calling process sees it: the architecture is that of the process, and only the
// processors it may run on are counted.
void WINAPI GetSystemInfo(LPSYSTEM_INFO info) noexcept;

// Gives the rest of the calling thread's time slice to a thread that is ready.
BOOL WINAPI SwitchToThread() noexcept;

[[nodiscard]] DWORD WINAPI GetCurrentProcessId() noexcept;
[[nodiscard]] DWORD WINAPI GetCurrentThreadId() noexcept;
