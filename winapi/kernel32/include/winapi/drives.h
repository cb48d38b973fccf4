// The drives: "Z:\" is the file system's root, and no other drive exists.
#pragma once

#include "winapi/errorcodes.h"

#define DRIVE_NO_ROOT_DIR 1
#define DRIVE_FIXED 3
#define DRIVE_REMOTE 4

// Of a drive's root such as "C:\"; DRIVE_FIXED or DRIVE_NO_ROOT_DIR.
[[nodiscard]] UINT WINAPI GetDriveTypeA(LPCSTR root) noexcept;

// The volume's serial number alone, made of the file system's identifier: all other pointers must be null, else
// ERROR_INVALID_PARAMETER. ERROR_PATH_NOT_FOUND for a drive that isn't there.
BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD labelSize, LPDWORD serial,
                                  LPDWORD longestName, LPDWORD flags, LPSTR fileSystem,
                                  DWORD fileSystemSize) noexcept;
