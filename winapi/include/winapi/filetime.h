// Moments, as Microsoft's minwinbase.h describes them.
#pragma once

#include "winapi/types.h"

// 100-nanosecond steps since the start of the year 1601, UTC.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using PFILETIME = FILETIME*;
using LPFILETIME = FILETIME*;
