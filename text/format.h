// Printf-style text in Microsoft's dialect (msformat.h tells it), as a string: %I64d takes 64 bits, and in a
// wide format %s and %c take wide arguments, %S and %C narrow ones.
//
// The typed forms take numbers, pointers and strings of any class as they are; strings travel as their
// character pointers, so text inside them ends at its first zero unit. What else a caller passes doesn't
// compile. A format and its arguments have to agree, as in every printf.
#pragma once

#include "text/strings.h"

#include <cstddef>
#include <type_traits>

[[nodiscard]] CStringA CStringAFormatV(const char* format, va_list arguments);
[[nodiscard]] CStringW CStringWFormatV(const WCHAR* format, va_list arguments);

namespace kestrolumen::detail {

CStringA FormatCStringA(const char* format, ...);
CStringW FormatCStringW(const WCHAR* format, ...);
std::string FormatStdString(const char* format, ...);
StdWString FormatStdWString(const WCHAR* format, ...);

template <typename Type>
inline constexpr bool isFormatValue = std::is_arithmetic_v<Type> || std::is_pointer_v<Type> ||
                                      std::is_null_pointer_v<Type> ||
                                      (std::is_enum_v<Type> && std::is_convertible_v<Type, long long>);

template <typename Type>
auto FormatArgument(const Type& argument) noexcept {
    using Value = std::decay_t<const Type&>;
    static_assert(isFormatValue<Value>, "only numbers, pointers and strings can be formatted");
    return static_cast<Value>(argument);
}
template <typename Unit>
const Unit* FormatArgument(const CStringT<Unit>& argument) noexcept {
    return argument.GetString();
}
template <typename Unit>
const Unit* FormatArgument(const std::basic_string<Unit>& argument) noexcept {
    return argument.c_str();
}

}  // namespace kestrolumen::detail

template <typename... Arguments>
[[nodiscard]] CStringA CStringAFormat(const char* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatCStringA(format, kestrolumen::detail::FormatArgument(arguments)...);
}
template <typename... Arguments>
[[nodiscard]] CStringW CStringWFormat(const WCHAR* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatCStringW(format, kestrolumen::detail::FormatArgument(arguments)...);
}
// The standard strings end at the first zero unit of the formatted text.
template <typename... Arguments>
[[nodiscard]] std::string StdStringFormat(const char* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatStdString(format, kestrolumen::detail::FormatArgument(arguments)...);
}
template <typename... Arguments>
[[nodiscard]] StdWString StdWStringFormat(const WCHAR* format, const Arguments&... arguments) {
    return kestrolumen::detail::FormatStdWString(format, kestrolumen::detail::FormatArgument(arguments)...);
}
