// Facts of the machine beyond those of windows.h, as Microsoft's sysinfoapi.h and winnt.h describe them.
#pragma once

#include "winapi/errorcodes.h"
#include "winapi/sysinfo.h"

using DWORDLONG = std::uint64_t;

// Milliseconds since the machine started, from 0 on again after 2^32 of them.
[[nodiscard]] DWORD WINAPI GetTickCount() noexcept;

// As GetSystemInfo, but with the architecture of the system, whatever that of the process.
void WINAPI GetNativeSystemInfo(LPSYSTEM_INFO info) noexcept;

// In bytes. The page file stands for memory and swap space together; virtual memory is told as 0.
struct MEMORYSTATUSEX {
    DWORD dwLength;
    DWORD dwMemoryLoad;  // percent
    DWORDLONG ullTotalPhys;
    DWORDLONG ullAvailPhys;
    DWORDLONG ullTotalPageFile;
    DWORDLONG ullAvailPageFile;
    DWORDLONG ullTotalVirtual;
    DWORDLONG ullAvailVirtual;
    DWORDLONG ullAvailExtendedVirtual;
};
using LPMEMORYSTATUSEX = MEMORYSTATUSEX*;

// ERROR_INVALID_PARAMETER unless `dwLength` is the structure's size.
BOOL WINAPI GlobalMemoryStatusEx(LPMEMORYSTATUSEX status) noexcept;

#define VER_PLATFORM_WIN32_NT 2
#define VER_NT_WORKSTATION 1
#define VER_SUITE_WH_SERVER 0x8000

struct OSVERSIONINFOW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
};
struct OSVERSIONINFOEXW : OSVERSIONINFOW {
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};
using LPOSVERSIONINFOW = OSVERSIONINFOW*;

// The version of the Windows that this layer follows: 10.0, a workstation. ERROR_INSUFFICIENT_BUFFER unless
// `dwOSVersionInfoSize` is the size of one of the two structures.
BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW version) noexcept;

// "Z:\usr\lib", the folder of the system's libraries, and its length without the terminator; the size needed
// with it when `size` is too small.
UINT WINAPI GetSystemDirectoryW(LPWSTR path, UINT size) noexcept;

enum LOGICAL_PROCESSOR_RELATIONSHIP { RelationProcessorCore };

struct WINAPI_PROCESSOR_CORE {
    BYTE Flags;  // 1 if the core's logical processors share its units
};
struct SYSTEM_LOGICAL_PROCESSOR_INFORMATION {
    ULONG_PTR ProcessorMask;
    LOGICAL_PROCESSOR_RELATIONSHIP Relationship;
    union {
        WINAPI_PROCESSOR_CORE ProcessorCore;
        ULONGLONG Reserved[2];
    };
};
using PSYSTEM_LOGICAL_PROCESSOR_INFORMATION = SYSTEM_LOGICAL_PROCESSOR_INFORMATION*;

// One entry for each core of the processors that are on line and fit the mask; no other relationships. For a
// buffer of less than the size needed, which `size` tells then: ERROR_INSUFFICIENT_BUFFER.
BOOL WINAPI GetLogicalProcessorInformation(PSYSTEM_LOGICAL_PROCESSOR_INFORMATION buffer,
                                           LPDWORD size) noexcept;
