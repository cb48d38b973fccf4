// Thread-local storage by index.
#pragma once

#include "winapi/types.h"

#define TLS_OUT_OF_INDEXES (static_cast<DWORD>(0xFFFFFFFF))

// A free index, whose value is null on every thread, or TLS_OUT_OF_INDEXES: there are as many as the C library
// has keys, 1024.
[[nodiscard]] DWORD WINAPI TlsAlloc() noexcept;
// Gives the index back. The values stored under it are forgotten, not freed.
BOOL WINAPI TlsFree(DWORD index) noexcept;
// The calling thread's value. Null is a value too: ERROR_SUCCESS as the last error tells it from a failure.
[[nodiscard]] LPVOID WINAPI TlsGetValue(DWORD index) noexcept;
// Stores the calling thread's value. An index that isn't allocated is refused with ERROR_INVALID_PARAMETER
// (Windows leaves this open).
BOOL WINAPI TlsSetValue(DWORD index, LPVOID value) noexcept;
