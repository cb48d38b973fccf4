// How the runtime library's calls report failures: they turn the errors of Windows into errno.
#pragma once

#include "kernel32/failure.h"

#include <cerrno>

namespace winapi {

// As Microsoft's library maps them: it tells neither a missing folder from a missing file nor a shared file
// from a forbidden one.
[[nodiscard]] int ErrnoFromError(DWORD error) noexcept;

// Runs the body of a call, which throws Failure; errno is set where it does.
template <class Result, class Body>
[[nodiscard]] Result AtCrtBorder(Result onFailure, Body&& body) noexcept {
    try {
        return body();
    } catch (const Failure& failure) {
        errno = ErrnoFromError(failure.code);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
    }
    return onFailure;
}

}  // namespace winapi
