#include "crtfailure.h"

#include "winapi/files.h"

int winapi::ErrnoFromError(DWORD error) noexcept {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_NO_MORE_FILES:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
            return ENOENT;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return EACCES;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return EEXIST;
        case ERROR_TOO_MANY_OPEN_FILES:
            return EMFILE;
        case ERROR_NOT_ENOUGH_MEMORY:
            return ENOMEM;
        case ERROR_DISK_FULL:
            return ENOSPC;
        case ERROR_DIR_NOT_EMPTY:
            return ENOTEMPTY;
        default:
            return EINVAL;
    }
}
