// Named mutexes, seen by all processes of the user, of 32 and 64 bits alike.
//
// Names are case-sensitive and have at most 32,767 units behind their prefix; a longer one gives
// ERROR_FILENAME_EXCED_RANGE. "Local\" and no prefix mean the same names, the user's own; names with
// "Global\" are shared by all users; a further backslash gives ERROR_PATH_NOT_FOUND.
// A mutex lives until its last handle closes, whether by CloseHandle or by the end of its process.
//
// The stand-in keeps a file for each name, in a folder that KESTROLUMEN_RUNTIME_DIR, else XDG_RUNTIME_DIR,
// else TMPDIR or /tmp gives; the folder must lie on a local file system. Handles aren't inherited by child
// processes, and security attributes are not looked at.
#pragma once

#include "winapi/handles.h"
#include "winapi/security.h"

#define MUTEX_MODIFY_STATE 0x0001
#define MUTEX_ALL_ACCESS (STANDARD_RIGHTS_REQUIRED | SYNCHRONIZE | MUTEX_MODIFY_STATE)

// Creates a mutex, or opens the one of that name; the last error then says ERROR_ALREADY_EXISTS, and
// `initialOwner` isn't looked at. A null or empty name gives a mutex without one. Null on failure.
[[nodiscard]] HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner,
                                         LPCWSTR name) noexcept;

// Opens the mutex of that name, or gives null and ERROR_FILE_NOT_FOUND.
[[nodiscard]] HANDLE WINAPI OpenMutexW(DWORD access, BOOL inheritHandle, LPCWSTR name) noexcept;

// Undoes one wait of the owning thread. ERROR_NOT_OWNER for any other thread.
BOOL WINAPI ReleaseMutex(HANDLE mutex) noexcept;
