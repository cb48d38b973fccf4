#include "text/quoting.h"

#include "text/detail/cstringlength.h"

#include <algorithm>
#include <cstdint>

namespace {

int CheckedLength(std::uint64_t length) {
    return kestrolumen::detail::CStringLength(length, "quoted text: longer than 2^31 - 2 units");
}

StdWStringView View(const CStringW& text) noexcept {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

CStringW Made(StdWStringView text) {
    return CStringW(text.data(), static_cast<int>(text.size()));
}

// Copies `text` with a second `quote` behind each one.
WCHAR* WriteDoubled(StdWStringView text, WCHAR quote, WCHAR* target) noexcept {
    for (const WCHAR unit : text) {
        *target++ = unit;
        if (unit == quote) *target++ = unit;
    }
    return target;
}

// Doubles the quotes of the middle.
CStringW Doubled(StdWStringView head, StdWStringView middle, StdWStringView tail, WCHAR quote) {
    const auto quotes = static_cast<std::uint64_t>(std::count(middle.begin(), middle.end(), quote));
    const std::uint64_t length = head.size() + middle.size() + quotes + tail.size();
    CStringW doubled;
    WCHAR* target = doubled.GetBufferSetLength(CheckedLength(length));
    target = std::copy(head.begin(), head.end(), target);
    target = WriteDoubled(middle, quote, target);
    std::copy(tail.begin(), tail.end(), target);
    return doubled;
}

CStringW Undoubled(StdWStringView text, StdWStringView tail, WCHAR quote) {
    CStringW undoubled;
    WCHAR* const begin = undoubled.GetBuffer(CheckedLength(text.size() + tail.size()));
    WCHAR* target = begin;
    for (std::size_t i = 0; i < text.size(); ++i) {
        *target++ = text[i];
        if (text[i] == quote && i + 1 < text.size() && text[i + 1] == quote) ++i;
    }
    target = std::copy(tail.begin(), tail.end(), target);
    undoubled.ReleaseBuffer(static_cast<int>(target - begin));
    return undoubled;
}

struct Reference {
    explicit Reference(StdWStringView text) noexcept
        : part(text.substr(0, text.rfind(TEXT('!')))), tail(text.substr(part.size())) {}

    StdWStringView part;
    StdWStringView tail;
};

bool IsEnclosed(StdWStringView text, WCHAR first, WCHAR last) noexcept {
    return text.size() >= 2 && text.front() == first && text.back() == last;
}

CStringW WithoutEnclosing(const CStringW& text, WCHAR first, WCHAR last) {
    return IsEnclosed(View(text), first, last) ? text.Mid(1, text.GetLength() - 2) : text;
}

CStringW WithoutFirst(const CStringW& text, WCHAR first) {
    return View(text).starts_with(first) ? text.Mid(1) : text;
}

StdWStringView TakeField(StdWStringView& record) noexcept {
    const StdWStringView field = record.substr(0, record.find(WCHAR{1}));
    record.remove_prefix(std::min(field.size() + 1, record.size()));
    return field;
}

}  // namespace

CStringW DoubleQuotesDoubled(const CStringW& text) {
    return Doubled({}, View(text), {}, TEXT('"'));
}

CStringW DoubleQuotesUndoubled(const CStringW& text) {
    return Undoubled(View(text), {}, TEXT('"'));
}

CStringW SheetQuotesDoubled(const WCHAR* reference) {
    const Reference split((StdWStringView(reference)));
    const std::size_t enclosing = IsEnclosed(split.part, TEXT('\''), TEXT('\'')) ? 1 : 0;
    const std::size_t end = split.part.size() - enclosing;
    const StdWStringView whole(reference, split.part.size() + split.tail.size());
    return Doubled(whole.substr(0, enclosing), whole.substr(enclosing, end - enclosing), whole.substr(end),
                   TEXT('\''));
}

CStringW SheetQuotesUndoubled(const WCHAR* reference) {
    const Reference split((StdWStringView(reference)));
    return Undoubled(split.part, split.tail, TEXT('\''));
}

CStringW WithLeadingEquals(const CStringW& formula) {
    return View(formula).starts_with(TEXT('=')) ? formula : TEXT("=") + formula;
}

CStringW WithoutLeadingEquals(const CStringW& formula) {
    return WithoutFirst(formula, TEXT('='));
}

CStringW WithoutLeadingAt(const CStringW& text) {
    return WithoutFirst(text, TEXT('@'));
}

CStringW WithoutLeadingAts(const CStringW& text) {
    const auto first = std::min(View(text).find_first_not_of(TEXT('@')), View(text).size());
    return text.Mid(static_cast<int>(first));
}

CStringW WithoutTrailingAts(const CStringW& text) {
    return text.Left(static_cast<int>(View(text).find_last_not_of(TEXT('@')) + 1));
}

CStringW WithoutDoubleQuotes(const CStringW& text) {
    return WithoutEnclosing(text, TEXT('"'), TEXT('"'));
}

CStringW WithoutParentheses(const CStringW& text) {
    return WithoutEnclosing(text, TEXT('('), TEXT(')'));
}

CStringW WithoutSingleQuotes(const CStringW& text) {
    return WithoutEnclosing(text, TEXT('\''), TEXT('\''));
}

CStringW FirstAndFourthField(const CStringW& record) {
    StdWStringView rest = View(record);
    const StdWStringView first = TakeField(rest);
    TakeField(rest);
    TakeField(rest);
    const StdWStringView fourth = TakeField(rest);
    CStringW joined = Made(first);
    if (!first.empty() && !fourth.empty()) joined += TEXT(" / ");
    joined.Append(fourth.data(), static_cast<int>(fourth.size()));
    return joined;
}
