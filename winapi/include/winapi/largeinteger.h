#pragma once

#include "winapi/types.h"

// Whole numbers of 64 bits, without the halves that Windows has beside them.
struct LARGE_INTEGER {
    LONGLONG QuadPart;
};
using PLARGE_INTEGER = LARGE_INTEGER*;

struct ULARGE_INTEGER {
    ULONGLONG QuadPart;
};
using PULARGE_INTEGER = ULARGE_INTEGER*;
