// What a caller sees of an add-in that fails. C++ ends at the border: on Windows the exception that leaves an export
// is a Windows exception, which a structured handler can take, the same on 32 and 64 bits.
//
//   code          ExportFailureCode, not continuable
//   parameter 0   1, the version of this list
//   parameter 1   the kind of the failure, a FailureKind
//   parameter 2   its number: one of VexCode, an HRESULT, or 0
//   parameter 3   address of a wide text about it, for people, with a zero unit behind; it stands on the stack of
//                 the export: there for filters, debuggers and crash dumps, gone behind a handler
//
// It is raised when the add-in's own unwinding is over: Excel's alerts are on again, and nothing is held. The next
// call works. In a native build the C++ exception passes as it is.
#pragma once

#include <windows.h>

#include <cstdint>

// The bits of an error that is no Microsoft one, and "KLU".
inline constexpr DWORD ExportFailureCode = 0xE04B4C55;

// What a failure was, told by its class.
enum class FailureKind : std::uint32_t {
    Unknown = 0,
    Vex = 1,          // of the family in errors/vex.h; the text is its key, operation and arguments
    Automation = 2,   // _com_error
    OutOfMemory = 3,  // std::bad_alloc
    Standard = 4,     // any other std::exception
};
