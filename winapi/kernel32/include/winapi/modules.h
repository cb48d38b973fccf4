// Loaded modules, their paths and their exports.
#pragma once

#include "winapi/types.h"

// The reasons for which the loader calls DllMain. A native shared library gets these calls by linking
// winapi_dllmain; threads that come and go are not told.
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

// A loaded module by its file name or its full path, without regard to case; ".dll" is added to a name
// without an extension, and a trailing point says that there is none. Null means the executable.
// The module's count isn't raised. Null and ERROR_MOD_NOT_FOUND when no such module is loaded.
[[nodiscard]] HMODULE WINAPI GetModuleHandleW(LPCWSTR name) noexcept;

// The full path of a module (null: the executable) and its length without the terminator. A path that
// doesn't fit is cut to size - 1 units and terminated, the result is size and the last error is
// ERROR_INSUFFICIENT_BUFFER. 0 on failure.
DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) noexcept;

// An export of this very module (null: the executable), never one of a library that it uses. Null and
// ERROR_PROC_NOT_FOUND when the module has none of that name; there are no ordinals.
[[nodiscard]] FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) noexcept;

// Loads a library, or raises the count of one that is loaded. A bare name is looked for among the loaded
// modules, in the executable's folder, in the current folder and where the dynamic linker looks.
[[nodiscard]] HMODULE WINAPI LoadLibraryW(LPCWSTR path) noexcept;

// Lowers the module's count, and unloads it at 0.
BOOL WINAPI FreeLibrary(HMODULE module) noexcept;
