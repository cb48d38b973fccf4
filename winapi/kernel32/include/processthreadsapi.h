// The calling process and its access token, as Microsoft's processthreadsapi.h describes them.
#pragma once

#include "winapi/handles.h"
#include "winapi/sysinfo.h"

#define TOKEN_QUERY 0x0008

using PHANDLE = HANDLE*;

// A handle that stands for the process in each call that takes one, and needs no closing.
[[nodiscard]] HANDLE WINAPI GetCurrentProcess() noexcept;

// The token of the calling process; ERROR_INVALID_HANDLE for another one.
BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, PHANDLE token) noexcept;
