// The shell's folders, as Microsoft's shlobj.h and shlobj_core.h describe them.
#pragma once

#include "winapi/errorcodes.h"

using HWND = struct HWND__*;

#define CSIDL_APPDATA 0x001A
#define CSIDL_COMMON_APPDATA 0x0023

// The user's folder for settings (XDG_CONFIG_HOME, else ~/.config) or the machine's for data of programs
// (/usr/share), without a trailing backslash; `path` takes MAX_PATH units. Window, token and flags aren't
// looked at. E_INVALIDARG for another folder, and else the error of a folder that isn't there; `path` is then
// empty.
HRESULT WINAPI SHGetFolderPathW(HWND window, int folder, HANDLE token, DWORD flags, LPWSTR path) noexcept;
