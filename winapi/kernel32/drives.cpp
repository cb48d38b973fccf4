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

BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD, LPDWORD serial, LPDWORD longestName,
                                  LPDWORD flags, LPSTR fileSystem, DWORD) noexcept {
    return winapi::AtBorder(FALSE, [&] {
        const bool asksForMore =
            label != nullptr || longestName != nullptr || flags != nullptr || fileSystem != nullptr;
        if (asksForMore) throw winapi::Failure{ERROR_INVALID_PARAMETER};
        if (!IsTheRoot(root)) throw winapi::Failure{ERROR_PATH_NOT_FOUND};
        struct statvfs facts {};
        if (statvfs("/", &facts) != 0) winapi::FailErrno();
        const std::uint64_t identifier = facts.f_fsid;
        if (serial != nullptr) *serial = static_cast<DWORD>(identifier ^ identifier >> 32);
        return TRUE;
    });
}

UINT WINAPI SetErrorMode(UINT mode) noexcept {
    return errorMode.exchange(mode);
}
