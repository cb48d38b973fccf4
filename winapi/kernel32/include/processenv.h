// The process's environment, as Microsoft's processenv.h describes it.
#pragma once

#include "winapi/types.h"

// `source` with each %NAME% replaced by the environment variable of that name, whose case counts as it does
// on this system; one that isn't set stays as it is, with both its signs. Gives the units of the result with
// its terminator; when that is more than `size`, the buffer holds an empty text, if anything. 0 on failure.
DWORD WINAPI ExpandEnvironmentStringsW(LPCWSTR source, LPWSTR buffer, DWORD size) noexcept;
