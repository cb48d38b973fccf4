#pragma once

#include <windows.h>

#include <io.h>
#include <sys/stat.h>
#include <wchar.h>

#include <optional>

namespace kestrolumen::detail {

// What the runtime library tells of a path; nothing for one that leads nowhere, and for null.
[[nodiscard]] inline std::optional<struct _stat64> StatusOf(const WCHAR* path) noexcept {
    struct _stat64 status;
    if (path == nullptr || _wstat64(path, &status) != 0) return {};
    return status;
}

[[nodiscard]] inline bool IsFile(const struct _stat64& status) noexcept {
    return (status.st_mode & _S_IFREG) != 0;
}
[[nodiscard]] inline bool IsDirectory(const struct _stat64& status) noexcept {
    return (status.st_mode & _S_IFDIR) != 0;
}

}  // namespace kestrolumen::detail
