#include "text/format.h"

#include <iterator>
#include <limits>
#include <stdexcept>

namespace {

// Most texts are short: they are formatted once. Only a longer one is formatted again, at its size.
template <typename Unit, typename Short, typename Long>
auto Formatted(const Unit* format, kestrolumen::detail::FormatArguments arguments, Short makeShort,
               Long makeLong) {
    Unit local[256];
    const std::size_t length = msformat::Fill(local, std::size(local), format, arguments);
    if (length <= std::size(local)) return makeShort(local, length);
    if (length >= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::length_error("formatted text: longer than 2^31 - 2 units");
    }
    return makeLong(length);
}

template <typename Text, typename Unit>
Text FormattedCString(const Unit* format, kestrolumen::detail::FormatArguments arguments) {
    return Formatted(
        format, arguments,
        [](const Unit* units, std::size_t length) { return Text(units, static_cast<int>(length)); },
        [&](std::size_t length) {
            Text text;
            const int units = static_cast<int>(length);
            msformat::Fill(text.GetBuffer(units), length, format, arguments);
            text.ReleaseBufferSetLength(units);
            return text;
        });
}

template <typename Unit>
std::basic_string<Unit> FormattedStdString(const Unit* format,
                                           kestrolumen::detail::FormatArguments arguments) {
    return Formatted(
        format, arguments,
        [](const Unit* units, std::size_t length) {
            const std::basic_string_view<Unit> text(units, length);
            return std::basic_string<Unit>(text.substr(0, text.find(Unit{0})));
        },
        [&](std::size_t length) {
            std::basic_string<Unit> text(length, Unit{0});
            msformat::Fill(text.data(), length, format, arguments);
            if (const auto zero = text.find(Unit{0}); zero != text.npos) text.resize(zero);
            return text;
        });
}

}  // namespace

CStringA CStringAFormatV(const char* format, va_list arguments) {
    CStringA text;
    text.AppendFormatV(format, arguments);
    return text;
}

CStringW CStringWFormatV(const WCHAR* format, va_list arguments) {
    CStringW text;
    text.AppendFormatV(format, arguments);
    return text;
}

namespace kestrolumen::detail {

CStringA FormatCStringA(const char* format, FormatArguments arguments) {
    return FormattedCString<CStringA>(format, arguments);
}

CStringW FormatCStringW(const WCHAR* format, FormatArguments arguments) {
    return FormattedCString<CStringW>(format, arguments);
}

std::string FormatStdString(const char* format, FormatArguments arguments) {
    return FormattedStdString(format, arguments);
}

StdWString FormatStdWString(const WCHAR* format, FormatArguments arguments) {
    return FormattedStdString(format, arguments);
}

}  // namespace kestrolumen::detail
