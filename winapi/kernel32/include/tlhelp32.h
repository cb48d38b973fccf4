// The process's modules one by one, as Microsoft's tlhelp32.h describes it.
#pragma once

#include "winapi/handles.h"
#include "winapi/modules.h"

#define TH32CS_SNAPMODULE 0x00000008
#define MAX_MODULE_NAME32 255
#define ERROR_NO_MORE_FILES 18

// Without what is not told here.
struct MODULEENTRY32W {
    DWORD dwSize;
    DWORD ProccntUsage;  // LoadLibraryW calls not undone by FreeLibrary; 0xFFFF for what came without one
    HMODULE hModule;
    WCHAR szModule[MAX_MODULE_NAME32 + 1];
    WCHAR szExePath[MAX_PATH];
};
using LPMODULEENTRY32W = MODULEENTRY32W*;

// The modules that this process, 0 or its own number, has loaded now, the executable first; other flags and
// other processes are refused with ERROR_INVALID_PARAMETER. INVALID_HANDLE_VALUE on failure; CloseHandle ends
// the snapshot.
[[nodiscard]] HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD process) noexcept;

// The first module of a snapshot, and the next one. `dwSize` has to tell the size of the entry, else
// ERROR_INSUFFICIENT_BUFFER. ERROR_NO_MORE_FILES behind the last one.
BOOL WINAPI Module32FirstW(HANDLE snapshot, LPMODULEENTRY32W entry) noexcept;
BOOL WINAPI Module32NextW(HANDLE snapshot, LPMODULEENTRY32W entry) noexcept;
