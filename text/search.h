// Trimming, case and replacement as functions that give a new text, and search that ignores case.
//
// The forms for standard strings go by way of a CStringA or CStringW, so their text ends at its first zero
// unit. White space and case are those of the string classes. Zero-terminated texts may not be null.
#pragma once

#include "text/strings.h"

#include <concepts>

// A pointer to the first place in `text` where `sought` stands if case is ignored, or null; an empty `sought`
// is found nowhere. Case is that of toupper and towupper in the runtime library's current locale, ASCII in
// any locale as in English. In a double-byte code page two bytes of one character are never taken apart, and
// have no case.
[[nodiscard]] const char* FindNoCaseA(const char* text, const char* sought) noexcept;
[[nodiscard]] const WCHAR* FindNoCaseW(const WCHAR* text, const WCHAR* sought) noexcept;

// Negative, zero or positive, as CompareNoCase.
[[nodiscard]] inline int CompareNoCaseStd(const std::string& left, const std::string& right) {
    return CStringA(left.c_str()).CompareNoCase(right.c_str());
}
[[nodiscard]] inline int CompareNoCaseStd(const StdWString& left, const StdWString& right) {
    return CStringW(left.c_str()).CompareNoCase(right.c_str());
}

namespace kestrolumen::detail {

template <typename Text>
[[nodiscard]] Text Trimmed(Text text) {
    return std::move(text.Trim());
}
template <typename Text>
[[nodiscard]] Text Lower(Text text) {
    return std::move(text.MakeLower());
}
template <typename Text>
[[nodiscard]] Text Upper(Text text) {
    return std::move(text.MakeUpper());
}
template <typename Unit>
[[nodiscard]] CStringOf<Unit> Replaced(CStringOf<Unit> text, const Unit* from, const Unit* to) {
    text.Replace(from, to);
    return text;
}

[[nodiscard]] inline std::string Std(const CStringA& text) {
    return text.GetString();
}
[[nodiscard]] inline StdWString Std(const CStringW& text) {
    return text.GetString();
}

// So that only a standard string itself takes the standard form, and a literal the other.
template <typename Text, typename Unit>
concept StdText = std::same_as<Text, std::basic_string<Unit>>;

}  // namespace kestrolumen::detail

// Without the white space at both ends.
[[nodiscard]] inline CStringA TrimmedA(CStringA text) {
    return kestrolumen::detail::Trimmed(std::move(text));
}
[[nodiscard]] inline CStringW TrimmedW(CStringW text) {
    return kestrolumen::detail::Trimmed(std::move(text));
}
template <kestrolumen::detail::StdText<char> Text>
[[nodiscard]] std::string TrimmedA(const Text& text) {
    return kestrolumen::detail::Std(TrimmedA(CStringA(text.c_str())));
}
template <kestrolumen::detail::StdText<WCHAR> Text>
[[nodiscard]] StdWString TrimmedW(const Text& text) {
    return kestrolumen::detail::Std(TrimmedW(CStringW(text.c_str())));
}

[[nodiscard]] inline CStringA LowerA(const char* text) {
    return kestrolumen::detail::Lower(CStringA(text));
}
[[nodiscard]] inline CStringW LowerW(const WCHAR* text) {
    return kestrolumen::detail::Lower(CStringW(text));
}
[[nodiscard]] inline CStringA UpperA(const char* text) {
    return kestrolumen::detail::Upper(CStringA(text));
}
[[nodiscard]] inline CStringW UpperW(const WCHAR* text) {
    return kestrolumen::detail::Upper(CStringW(text));
}
template <kestrolumen::detail::StdText<char> Text>
[[nodiscard]] std::string LowerA(const Text& text) {
    return kestrolumen::detail::Std(LowerA(text.c_str()));
}
template <kestrolumen::detail::StdText<WCHAR> Text>
[[nodiscard]] StdWString LowerW(const Text& text) {
    return kestrolumen::detail::Std(LowerW(text.c_str()));
}
template <kestrolumen::detail::StdText<char> Text>
[[nodiscard]] std::string UpperA(const Text& text) {
    return kestrolumen::detail::Std(UpperA(text.c_str()));
}
template <kestrolumen::detail::StdText<WCHAR> Text>
[[nodiscard]] StdWString UpperW(const Text& text) {
    return kestrolumen::detail::Std(UpperW(text.c_str()));
}

// With `to` for every `from`, which occurs nowhere if it is empty.
[[nodiscard]] inline CStringA ReplacedA(CStringA text, const CStringA& from, const CStringA& to) {
    return kestrolumen::detail::Replaced<char>(std::move(text), from, to);
}
[[nodiscard]] inline CStringW ReplacedW(CStringW text, const CStringW& from, const CStringW& to) {
    return kestrolumen::detail::Replaced<WCHAR>(std::move(text), from, to);
}
template <kestrolumen::detail::StdText<char> Text>
[[nodiscard]] std::string ReplacedA(const Text& text, const std::string& from, const std::string& to) {
    return kestrolumen::detail::Std(ReplacedA(CStringA(text.c_str()), from.c_str(), to.c_str()));
}
template <kestrolumen::detail::StdText<WCHAR> Text>
[[nodiscard]] StdWString ReplacedW(const Text& text, const StdWString& from, const StdWString& to) {
    return kestrolumen::detail::Std(ReplacedW(CStringW(text.c_str()), from.c_str(), to.c_str()));
}
