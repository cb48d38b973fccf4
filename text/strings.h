// The string types of the library.
//
//   CStringW      UTF-16 units: the main string type. Paths, names, messages.
//   CStringA      bytes of the system's ANSI code page, single- or double-byte.
//   StdWString    as CStringW, for callers that hold standard strings; std::wstring on Windows.
//   std::string   as CStringA, except where an operation's name says Utf8.
//
// All lengths count units of the string's own type; surrogate pairs and double-byte characters count two.
#pragma once

#include <atlstr.h>

#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>

using StdWString = std::basic_string<WCHAR>;
using StdWStringView = std::basic_string_view<WCHAR>;

namespace kestrolumen {

// CStringA or CStringW by its unit, for templates. The class template behind the two isn't the same everywhere.
template <typename Unit>
requires std::same_as<Unit, char> || std::same_as<Unit, WCHAR>
using CStringOf = std::conditional_t<std::is_same_v<Unit, char>, CStringA, CStringW>;

}  // namespace kestrolumen
