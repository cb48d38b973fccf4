// Names of the machine and of its users, and their security identifiers.
#pragma once

#include "winapi/errorcodes.h"
#include "winapi/security.h"

#define ERROR_BUFFER_OVERFLOW 111
#define ERROR_NONE_MAPPED 1332
#define MAX_COMPUTERNAME_LENGTH 15

// Both take the units that the buffer has room for, and give those of the name: the user's with the
// terminator, the machine's without it. For a buffer that is too small they tell the size it takes, with the
// terminator: ERROR_INSUFFICIENT_BUFFER for the user, ERROR_BUFFER_OVERFLOW for the machine. The user is that
// of the process. The machine's name is its host name as NetBIOS has it: without the domain, in upper case,
// of at most 15 units.
BOOL WINAPI GetUserNameW(LPWSTR buffer, LPDWORD size) noexcept;
BOOL WINAPI GetComputerNameW(LPWSTR buffer, LPDWORD size) noexcept;

enum SID_NAME_USE { SidTypeUser = 1 };
using PSID_NAME_USE = SID_NAME_USE*;

// A user of this machine, by a name of any case that the user database takes; `system` is not looked at. The
// identifier is S-1-22-1-<uid> and the domain "Unix User", as Samba has them. Sizes in bytes and in units; of
// a buffer that is too small both tell what they take, the domain's with the terminator, and the error is
// ERROR_INSUFFICIENT_BUFFER. ERROR_NONE_MAPPED for a name that nobody has.
BOOL WINAPI LookupAccountNameW(LPCWSTR system, LPCWSTR name, PSID sid, LPDWORD sidSize, LPWSTR domain,
                               LPDWORD domainSize, PSID_NAME_USE use) noexcept;
