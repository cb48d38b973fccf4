// The registry as the text in its file:
//
//     Kestrolumen registry 1
//     ["HKEY_CURRENT_USER\\Software\\Quillmar"] 01DCAA0F36A80000
//     "NumCores"=4:08000000
//     "Program Directory"=1:"C:\\Programs"
//
// A key's line has its path and, in hexadecimal digits, the time of its last write as a FILETIME counts. A
// value's line has its name, its kind, and its data: either the bytes, or, between quotes, text whose
// terminator stands in the data too. A line ends in a line feed. All is ASCII: in quotes, other units than
// the printable ones, and the quote and the backslash, are written \uXXXX, \" and \\.
#pragma once

#include "registrytree.h"

#include <string>
#include <string_view>

namespace winapi {

[[nodiscard]] std::string TextFromRegistry(const Registry& registry);

// Throws Failure{ERROR_BADDB} for what is no such text, and for a path that no key can have.
[[nodiscard]] Registry RegistryFromText(std::string_view text);

}  // namespace winapi
