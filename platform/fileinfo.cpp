#include "platform/fileinfo.h"

#include "platform/detail/filestatus.h"
#include "platform/winfile.h"

#include <share.h>
#include <stdio.h>

#include <utility>

namespace {

std::int32_t ZeroUnlessItFits(std::int64_t number) noexcept {
    return std::in_range<std::int32_t>(number) ? static_cast<std::int32_t>(number) : 0;
}

}  // namespace

bool FileExists(const WCHAR* path) noexcept {
    const auto status = kestrolumen::detail::StatusOf(path);
    return status && kestrolumen::detail::IsFile(*status);
}

bool CreateEmptyFile(const WCHAR* path) noexcept {
    if (path == nullptr) return false;
    std::FILE* const stream = _wfsopen(path, TEXT("w"), _SH_DENYRW);
    if (stream != nullptr) static_cast<void>(std::fclose(stream));
    return FileExists(path);
}

std::int32_t FileSize32(const WCHAR* path) noexcept {
    return ZeroUnlessItFits(FileSize64(path));
}

std::int64_t FileSize64(const WCHAR* path) noexcept {
    const auto status = kestrolumen::detail::StatusOf(path);
    return status ? status->st_size : 0;
}

std::int32_t FileModifiedTime32(const WCHAR* path) noexcept {
    return ZeroUnlessItFits(FileModifiedTime64(path));
}

std::int64_t FileModifiedTime64(const WCHAR* path) noexcept {
    const auto status = kestrolumen::detail::StatusOf(path);
    return status ? status->st_mtime : 0;
}

std::int64_t FileLastWriteTime(const WCHAR* path) noexcept {
    try {
        constexpr std::uint32_t shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        const WinFile file(path, GENERIC_READ, shareAll, OPEN_EXISTING, 0);
        FILETIME time;
        if (!GetFileTime(file.handle(), nullptr, nullptr, &time)) return 0;
        return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    } catch (...) {
        return 0;
    }
}

std::int64_t FileLastWriteTime(const StdWString& path) noexcept {
    return FileLastWriteTime(path.c_str());
}
