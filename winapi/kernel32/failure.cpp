#include "failure.h"

#include "winapi/files.h"

#include <cerrno>

namespace winapi {

DWORD ErrorFromErrno(int error) noexcept {
    switch (error) {
        case 0:
            return ERROR_SUCCESS;
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EMFILE:
        case ENFILE:
            return ERROR_TOO_MANY_OPEN_FILES;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
            return ERROR_ACCESS_DENIED;
        case EBADF:
            return ERROR_INVALID_HANDLE;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EEXIST:
            return ERROR_ALREADY_EXISTS;
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        case ENOTEMPTY:
            return ERROR_DIR_NOT_EMPTY;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return ERROR_DISK_FULL;
        case ELOOP:
            return ERROR_BAD_PATHNAME;
        default:
            return ERROR_GEN_FAILURE;
    }
}

void FailErrno() {
    throw Failure{ErrorFromErrno(errno)};
}

}  // namespace winapi
