// Printf-style text in Microsoft's dialect (msformat.h tells it), as a string: %I64d takes 64 bits, and in a
// wide format %s and %c take wide arguments, %S and %C narrow ones.
//
// The typed forms take numbers, pointers and strings of any class as they are; strings travel as their
// character pointers, so text inside them ends at its first zero unit. What else a caller passes doesn't
// compile, and no format makes them read what isn't there: a text is taken in its own width, an argument that
// its conversion can't take is written as what it is, and where one is missing nothing is written (msformat.h).
#pragma once

#include "text/strings.h"

#include <msformat.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <span>

// Arguments of which only the caller knows the types: they have to agree with the format.
[[nodiscard]] CStringA CStringAFormatV(const char* format, va_list arguments);
[[nodiscard]] CStringW CStringWFormatV(const WCHAR* format, va_list arguments);

namespace kestrolumen::detail {

using FormatArguments = std::span<const msformat::Argument>;

CStringA FormatCStringA(const char* format, FormatArguments arguments);
CStringW FormatCStringW(const WCHAR* format, FormatArguments arguments);
std::string FormatStdString(const char* format, FormatArguments arguments);
StdWString FormatStdWString(const WCHAR* format, FormatArguments arguments);

template <typename Type>
requires std::constructible_from<msformat::Argument, const Type&> msformat::Argument FormatArgument(
    const Type& argument)
noexcept {
    return msformat::Argument(argument);
}
template <typename Unit>
msformat::Argument FormatArgument(const std::basic_string<Unit>& argument) noexcept {
    return argument.c_str();
}

template <typename Type>
concept Formattable = requires(const Type& argument) {
    FormatArgument(argument);
};

template <std::size_t Count>
using FormatRow = std::array<msformat::Argument, Count>;

}  // namespace kestrolumen::detail

template <kestrolumen::detail::Formattable... Arguments>
[[nodiscard]] CStringA CStringAFormat(const char* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatCStringA(format,
                                               kestrolumen::detail::FormatRow<sizeof...(arguments)>{
                                                   kestrolumen::detail::FormatArgument(arguments)...});
}
template <kestrolumen::detail::Formattable... Arguments>
[[nodiscard]] CStringW CStringWFormat(const WCHAR* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatCStringW(format,
                                               kestrolumen::detail::FormatRow<sizeof...(arguments)>{
                                                   kestrolumen::detail::FormatArgument(arguments)...});
}
// The standard strings end at the first zero unit of the formatted text.
template <kestrolumen::detail::Formattable... Arguments>
[[nodiscard]] std::string StdStringFormat(const char* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatStdString(format,
                                                kestrolumen::detail::FormatRow<sizeof...(arguments)>{
                                                    kestrolumen::detail::FormatArgument(arguments)...});
}
template <kestrolumen::detail::Formattable... Arguments>
[[nodiscard]] StdWString StdWStringFormat(const WCHAR* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatStdWString(format,
                                                 kestrolumen::detail::FormatRow<sizeof...(arguments)>{
                                                     kestrolumen::detail::FormatArgument(arguments)...});
}
