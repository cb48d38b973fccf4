// What the library's own exceptions say, for people.
#pragma once

#include <string>

namespace excelhost {

// The exception that is being handled: the key, code, raising operation and arguments of one of errors/vex.h, the
// HRESULT of a _com_error, an empty text for any other. UTF-8. An ExceptionTeller.
[[nodiscard]] std::string TellOwnException();

}  // namespace excelhost
