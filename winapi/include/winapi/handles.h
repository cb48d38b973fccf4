// What all kernel handles have in common.
#pragma once

#include "winapi/types.h"

#define INFINITE 0xFFFFFFFFU
#define WAIT_OBJECT_0 0U
#define WAIT_ABANDONED 0x80U
#define WAIT_TIMEOUT 258U
#define WAIT_FAILED 0xFFFFFFFFU
#define DELETE 0x00010000
#define SYNCHRONIZE 0x00100000
#define STANDARD_RIGHTS_REQUIRED 0x000F0000

// Ends the handle, and its object with the last one. ERROR_INVALID_HANDLE for what isn't an open handle.
BOOL WINAPI CloseHandle(HANDLE handle) noexcept;

// Waits until the object is signalled, at most `milliseconds` (0 only looks, INFINITE waits for good).
// WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT, or WAIT_FAILED with the last error set.
DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD milliseconds) noexcept;
