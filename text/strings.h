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

#include <string>
#include <string_view>

using StdWString = std::basic_string<WCHAR>;
using StdWStringView = std::basic_string_view<WCHAR>;
