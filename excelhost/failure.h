// What is told of a C++ exception that an add-in lets out.
#pragma once

#include <cstdint>
#include <span>
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

// Kestrolumen's exports end on Windows in a structured exception of this code, which no C++ handler takes.
inline constexpr std::uint32_t kExportFailureCode = 0xE04B4C55;
// Its parameters, in words: the list's version (1), the kind of the failure, its number, and the address of a wide
// text that holds as long as the exception is being filtered. A list of another version is named as such.
[[nodiscard]] std::string ExportFailureText(std::span<const std::uintptr_t> parameters);

}  // namespace excelhost
