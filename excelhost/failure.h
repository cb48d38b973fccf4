// What is told of a C++ exception that an add-in lets out.
#pragma once

#include <string>

namespace excelhost {

// The exception that is being handled, in words: what the teller says, else what() of a standard one, else that
// nothing is known of it.
[[nodiscard]] std::string CurrentExceptionText();

// A teller knows the exceptions of one library: it rethrows the one that is being handled and puts its data
// into words; an empty text for others. It is there for a program that knows more than this library, which links
// no add-in's code. Null for none.
using ExceptionTeller = std::string (*)();
void SetExceptionTeller(ExceptionTeller teller) noexcept;

}  // namespace excelhost
