// Text from the format engine, with its forms checked against each other on the way.
#pragma once

#include <msformat.h>

#include <cstdarg>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// Measures, fills at exactly that size, and fills one unit less: all three must agree on the length, and
// nothing may be written outside the room.
template <typename Unit>
std::basic_string<Unit> FormattedV(const Unit* format, va_list arguments) {
    constexpr Unit guard = 0x5A;
    const std::size_t length = msformat::Measure(format, arguments);
    std::vector<Unit> room(length + 2, guard);
    EXPECT_EQ(msformat::Fill(room.data() + 1, length, format, arguments), length);
    EXPECT_EQ(room.front(), guard);
    EXPECT_EQ(room.back(), guard);
    if (length > 0) {
        std::vector<Unit> narrow(length, guard);
        EXPECT_EQ(msformat::Fill(narrow.data(), length - 1, format, arguments), length);
        EXPECT_EQ(narrow.back(), guard);
    }
    return {room.data() + 1, length};
}

template <typename Unit>
std::basic_string<Unit> FormattedListed(const Unit* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::basic_string<Unit> text = FormattedV(format, arguments);
    va_end(arguments);
    return text;
}

// The same from arguments that know their types.
template <typename Unit>
std::basic_string<Unit> FormattedTyped(const Unit* format, const std::vector<msformat::Argument>& arguments) {
    std::basic_string<Unit> text(msformat::Fill(static_cast<Unit*>(nullptr), 0, format, arguments), 0x5A);
    EXPECT_EQ(msformat::Fill(text.data(), text.size(), format, arguments), text.size());
    return text;
}

// A format that its arguments agree with: both ways have to give the same text.
template <typename Unit, typename... Values>
std::basic_string<Unit> Formatted(const Unit* format, Values... values) {
    std::basic_string<Unit> text = FormattedListed(format, values...);
    EXPECT_EQ(FormattedTyped(format, {msformat::Argument(values)...}), text);
    return text;
}

inline std::basic_string<WCHAR> Widened(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

// A format of numbers only: both widths have to give the same text.
template <typename... Values>
std::string Both(const char* format, Values... values) {
    std::string narrow = Formatted(format, values...);
    EXPECT_EQ(Formatted(Widened(format).c_str(), values...), Widened(narrow)) << format;
    return narrow;
}
