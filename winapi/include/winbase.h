// Microsoft's winbase.h, as far as it is needed beside windows.h.
#pragma once

#include "winapi/accounts.h"
#include "winapi/formatmessage.h"
#include "winapi/types.h"

// Releases memory that a call has allocated for its caller; gives null.
HANDLE WINAPI LocalFree(HANDLE memory) noexcept;
