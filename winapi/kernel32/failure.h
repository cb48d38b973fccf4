// How the stand-in's inner code reports failures: it throws a Failure, and the border of each call turns that
// into the last error and the call's failing result.
#pragma once

#include "winapi/errorcodes.h"

#include <new>

namespace winapi {

struct Failure {
    DWORD code;
};

// The Windows error that comes closest to an errno.
[[nodiscard]] DWORD ErrorFromErrno(int error) noexcept;
// Throws it of the errno that the system's last call has left.
[[noreturn]] void FailErrno();

// Runs the body of a call.
template <class Result, class Body>
[[nodiscard]] Result AtBorder(Result onFailure, Body&& body) noexcept {
    try {
        return body();
    } catch (const Failure& failure) {
        SetLastError(failure.code);
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return onFailure;
}

}  // namespace winapi
