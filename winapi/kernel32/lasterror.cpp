#include "winapi/errorcodes.h"

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD WINAPI GetLastError() noexcept {
    return lastError;
}

void WINAPI SetLastError(DWORD code) noexcept {
    lastError = code;
}
