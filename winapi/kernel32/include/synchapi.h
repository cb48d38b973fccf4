// Microsoft's synchapi.h, as far as it is needed beside windows.h.
#pragma once

#include "winapi/types.h"

// Lets the thread rest for that long at least; with 0 it gives up the rest of its time slice.
void WINAPI Sleep(DWORD milliseconds) noexcept;
