// The temporary folder.
#pragma once

#include "winapi/types.h"

// The folder for temporary files with its trailing backslash: the first of the environment variables TMP,
// TEMP, TMPDIR and USERPROFILE that is set and not empty, else "Z:\tmp\". Whether it exists isn't tested.
// Gives the length without the terminator, or the size needed with it when `size` is too small.
DWORD WINAPI GetTempPathW(DWORD size, LPWSTR path) noexcept;
