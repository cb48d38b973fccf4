#include "failure.h"

#include "winapi/files.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace winapi {

DWORD ErrorFromErrno(int error) noexcept {
    constexpr std::pair<int, DWORD> known[] = {
        {0, ERROR_SUCCESS},
        {ENOENT, ERROR_FILE_NOT_FOUND},
        {ENOTDIR, ERROR_PATH_NOT_FOUND},
        {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
        {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
        {EACCES, ERROR_ACCESS_DENIED},
        {EPERM, ERROR_ACCESS_DENIED},
        {EROFS, ERROR_ACCESS_DENIED},
        {EISDIR, ERROR_ACCESS_DENIED},
        {EBADF, ERROR_INVALID_HANDLE},
        {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
        {EEXIST, ERROR_ALREADY_EXISTS},
        {EINVAL, ERROR_INVALID_PARAMETER},
        {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
        {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
        {ENOSPC, ERROR_DISK_FULL},
        {EDQUOT, ERROR_DISK_FULL},
        {EFBIG, ERROR_DISK_FULL},
        {ELOOP, ERROR_BAD_PATHNAME},
    };
    const auto* const found = std::ranges::find(known, error, &std::pair<int, DWORD>::first);
    return found != std::end(known) ? found->second : ERROR_GEN_FAILURE;
}

void FailErrno() {
    throw Failure{ErrorFromErrno(errno)};
}

}  // namespace winapi
