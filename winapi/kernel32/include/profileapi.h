// Microsoft's profileapi.h, as far as it is needed beside windows.h.
#pragma once

#include "winapi/types.h"

// A clock that only goes forward, in nanoseconds.
BOOL WINAPI QueryPerformanceCounter(PLARGE_INTEGER count) noexcept;
