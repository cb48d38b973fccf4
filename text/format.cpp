#include "text/format.h"

#include <msformat.h>

#include <iterator>
#include <limits>
#include <stdexcept>

namespace {

// Most texts are short: they are formatted once. Only a longer one is formatted again, at its size.
template <typename Unit>
std::basic_string<Unit> Formatted(const Unit* format, va_list arguments) {
    Unit local[256];
    const std::size_t length = msformat::Fill(local, std::size(local), format, arguments);
    if (length <= std::size(local)) {
        const std::basic_string_view<Unit> text(local, length);
        return std::basic_string<Unit>(text.substr(0, text.find(Unit{0})));
    }
    if (length >= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::length_error("formatted text: longer than 2^31 - 2 units");
    }
    std::basic_string<Unit> text(length, Unit{0});
    msformat::Fill(text.data(), length, format, arguments);
    if (const auto zero = text.find(Unit{0}); zero != text.npos) text.resize(zero);
    return text;
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

CStringA FormatCStringA(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CStringA text = CStringAFormatV(format, arguments);
    va_end(arguments);
    return text;
}

CStringW FormatCStringW(const WCHAR* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CStringW text = CStringWFormatV(format, arguments);
    va_end(arguments);
    return text;
}

std::string FormatStdString(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string text = Formatted(format, arguments);
    va_end(arguments);
    return text;
}

StdWString FormatStdWString(const WCHAR* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    StdWString text = Formatted(format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace kestrolumen::detail
