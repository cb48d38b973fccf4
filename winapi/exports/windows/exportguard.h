// How an exported function fails. A caller on Windows takes Windows exceptions, if any, and knows nothing of
// ours: on 32 bits the compiler's unwinder doesn't even get through the caller's frames and ends the process.
// So a C++ exception that leaves the body ends here, and a Windows exception goes on.
#pragma once

#include <windows.h>

#include <cstdlib>

namespace winapi {

// Gives what `body` gives, or raises the Windows exception Failure::Code. `Failure` is a plain record, whose
//   NoteCurrentException()  is called within the handler and raises nothing,
//   Parameters()            gives what the exception carries, an array of ULONG_PTR.
// The record stands in the frame that raises, so that its addresses hold for whoever filters the exception.
template <typename Failure, typename Body>
auto GuardExport(Body body) -> decltype(body()) {
    Failure failure;
    try {
        return body();
    } catch (...) {
        failure.NoteCurrentException();
    }
    // Behind the handler: everything is unwound, and the C++ exception itself is gone. Nobody can continue.
    const auto parameters = failure.Parameters();
    RaiseException(Failure::Code, EXCEPTION_NONCONTINUABLE, static_cast<DWORD>(parameters.size()),
                   parameters.data());
    std::abort();
}

}  // namespace winapi
