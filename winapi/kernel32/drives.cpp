#include "winapi/drives.h"

#include "errhandlingapi.h"
#include "failure.h"

#include <atomic>
#include <cerrno>
#include <string_view>

#include <sys/statvfs.h>

namespace {

bool IsTheRoot(LPCSTR root) noexcept {
    const std::string_view text(root != nullptr ? root : "Z:\\");
    return text == "Z:\\" || text == "z:\\" || text == "\\";
}

std::atomic<UINT> errorMode = 0;

}  // namespace

UINT WINAPI GetDriveTypeA(LPCSTR root) noexcept {
    return IsTheRoot(root) ? DRIVE_FIXED : DRIVE_NO_ROOT_DIR;
}

BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD labelSize, LPDWORD serial,
                                  LPDWORD longestName, LPDWORD flags, LPSTR fileSystem,
                                  DWORD fileSystemSize) noexcept {
    struct statvfs facts {};
    const DWORD error = !IsTheRoot(root)            ? ERROR_PATH_NOT_FOUND
                        : statvfs("/", &facts) != 0 ? winapi::ErrorFromErrno(errno)
                                                    : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return FALSE;
    }
    if (label != nullptr && labelSize != 0) *label = '\0';
    if (serial != nullptr) {
        const std::uint64_t identifier = facts.f_fsid;
        *serial = static_cast<DWORD>(identifier ^ identifier >> 32);
    }
    if (longestName != nullptr) *longestName = static_cast<DWORD>(facts.f_namemax);
    if (flags != nullptr) *flags = 0;
    if (fileSystem != nullptr && fileSystemSize != 0) *fileSystem = '\0';
    return TRUE;
}

UINT WINAPI SetErrorMode(UINT mode) noexcept {
    return errorMode.exchange(mode);
}
