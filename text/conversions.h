// Text from one encoding to another. No conversion reports loss: what can't be carried over is replaced, by
// the code page's default character towards ANSI and by U+FFFD from and to UTF-8. The only failures are
// std::bad_alloc, and std::length_error for texts beyond 2^31 - 1 units.
#pragma once

#include "text/strings.h"

#include <vector>

// Zero-terminated text of the ANSI code page to wide text and back, as the constructors of the strings do it.
[[nodiscard]] inline CStringW CStringWFromAnsi(const char* text) {
    return CStringW(text);
}
[[nodiscard]] inline CStringA CStringAFromWide(const WCHAR* text) {
    return CStringA(text);
}

// A lone surrogate becomes U+FFFD, a pair one sequence of four bytes. A zero unit ends the text.
[[nodiscard]] std::string Utf8FromWString(StdWStringView text);
[[nodiscard]] std::string Utf8FromCStringW(const CStringW& text);

// An ill-formed sequence becomes U+FFFD. A zero byte ends the text.
[[nodiscard]] StdWString WStringFromUtf8(std::string_view text);

// The bytes up to the first zero, or all of them if there is none.
[[nodiscard]] CStringW CStringWFromUtf8(const std::vector<char>& bytes);
// The zero-terminated `text`, whatever `size` says; but empty for a null `text` or a `size` of 0.
[[nodiscard]] CStringW CStringWFromUtf8(const char* text, std::size_t size);
