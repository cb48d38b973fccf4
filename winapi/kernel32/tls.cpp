#include "winapi/tls.h"

#include "failure.h"

#include <climits>

#include <pthread.h>

// An index is a key of POSIX: the C library forgets the values of a deleted one in all threads, too.
DWORD WINAPI TlsAlloc() noexcept {
    pthread_key_t index = 0;
    if (pthread_key_create(&index, nullptr) == 0) return index;
    SetLastError(ERROR_NO_MORE_ITEMS);
    return TLS_OUT_OF_INDEXES;
}

BOOL WINAPI TlsFree(DWORD index) noexcept {
    const int error = pthread_key_delete(index);
    if (error != 0) SetLastError(winapi::ErrorFromErrno(error));
    return error == 0;
}

LPVOID WINAPI TlsGetValue(DWORD index) noexcept {
    SetLastError(index < PTHREAD_KEYS_MAX ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER);
    return pthread_getspecific(index);
}

BOOL WINAPI TlsSetValue(DWORD index, LPVOID value) noexcept {
    const int error = pthread_setspecific(index, value);
    if (error != 0) SetLastError(winapi::ErrorFromErrno(error));
    return error == 0;
}
