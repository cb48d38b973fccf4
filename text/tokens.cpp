#include "text/tokens.h"

#include "text/detail/ansicodepage.h"
#include "text/detail/unitset.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

using kestrolumen::detail::UnitSet;

template <typename Unit>
struct Token {
    const Unit* begin;
    int length;
};

// The rules of the tokenizer, over text of one width.
template <typename Unit>
Token<Unit> NextQuoted(const Unit* text, int length, const UnitSet<Unit>& delimiters,
                       int& position) noexcept {
    constexpr Unit quote = '"';
    int at = position;
    while (at >= 0 && at < length && delimiters.Holds(text[at])) ++at;
    if (at < 0 || at >= length) {
        position = -1;
        return {text, 0};
    }
    const int begin = at;
    if (text[at] == quote) {
        bool isQuoted = false;
        for (; at < length && (isQuoted || !delimiters.Holds(text[at])); ++at) {
            isQuoted = isQuoted != (text[at] == quote);
        }
    } else {
        at = static_cast<int>(delimiters.FindIn(text + at, text + length) - text);
    }
    position = at;
    return {text + begin, at - begin};
}

// Steps through zero-terminated text of a double-byte code page, each character of which gives one wide unit.
class DoubleByteText {
  public:
    explicit DoubleByteText(const char* text) noexcept : at_(text) {}

    [[nodiscard]] const char* Place() const noexcept { return at_; }
    [[nodiscard]] bool IsAtEnd() const noexcept { return *at_ == 0; }
    void PassOver(int characters) noexcept {
        for (; characters > 0 && !IsAtEnd(); --characters) Next();
    }
    void PassOverBytes(std::ptrdiff_t count) noexcept {
        const char* const from = at_;
        while (at_ - from < count && !IsAtEnd()) Next();
    }

  private:
    // A first byte at the text's end is a character of its own. ASCII goes by a branch of its own: where a
    // processor foresees it, one step needn't wait for the table's answer to the one before.
    void Next() noexcept {
        const auto first = static_cast<unsigned char>(*at_);
        if (first < 0x80) {  // NOLINT(bugprone-branch-clone)
            ++at_;
        } else if (isLead_[first] && at_[1] != 0) {
            at_ += 2;
        } else {
            ++at_;
        }
    }

    std::array<bool, 256> isLead_ = kestrolumen::detail::AnsiLeadBytes();
    const char* at_;
};

// Converts no more than the token takes, in pieces that grow until one goes beyond it.
CStringA NextQuotedOfDoubleByte(const CStringA& text, const UnitSet<WCHAR>& delimiters, int& position) {
    DoubleByteText end(text.GetString());
    end.PassOver(position);
    const char* const begin = end.Place();
    for (std::ptrdiff_t size = 64;; size *= 2) {
        end.PassOverBytes(size);
        const CStringW piece(begin, static_cast<int>(end.Place() - begin));
        int next = 0;
        const auto token = NextQuoted(piece.GetString(), piece.GetLength(), delimiters, next);
        if (!end.IsAtEnd() && (next < 0 || next == piece.GetLength())) continue;
        position = next < 0 ? -1 : position + next;
        return CStringW(token.begin, token.length);
    }
}

template <typename Unit>
kestrolumen::CStringOf<Unit> Abbreviated(const kestrolumen::CStringOf<Unit>& text, std::uint32_t head,
                                         std::uint32_t tail) {
    constexpr Unit dots[] = {'.', '.', '.'};
    const auto length = static_cast<std::uint64_t>(text.GetLength());
    if (length <= std::uint64_t{head} + tail + std::size(dots)) return text;
    const auto first = static_cast<int>(head);
    const auto last = static_cast<int>(tail);
    kestrolumen::CStringOf<Unit> abbreviated;
    Unit* at = abbreviated.GetBufferSetLength(first + static_cast<int>(std::size(dots)) + last);
    at = std::copy_n(text.GetString(), first, at);
    at = std::copy(std::begin(dots), std::end(dots), at);
    std::copy_n(text.GetString() + text.GetLength() - last, last, at);
    return abbreviated;
}

// The runs of units that are no delimiters, each by its place and length.
template <typename Take>
void ForEachRun(const CStringW& text, const UnitSet<WCHAR>& delimiters, Take take) {
    const WCHAR* const end = text.GetString() + text.GetLength();
    for (const WCHAR* at = text.GetString();;) {
        while (at != end && delimiters.Holds(*at)) ++at;
        if (at == end) return;
        const WCHAR* const begin = at;
        at = delimiters.FindIn(begin, end);
        take(begin, static_cast<int>(at - begin));
    }
}

}  // namespace

std::vector<CStringW> SplitCStringW(const CStringW& text, const CStringW& delimiters, bool trim) {
    const UnitSet<WCHAR> set(delimiters.GetString());
    std::size_t count = 0;
    ForEachRun(text, set, [&count](const WCHAR*, int) { ++count; });
    std::vector<CStringW> tokens;
    tokens.reserve(count);
    ForEachRun(text, set, [&](const WCHAR* begin, int length) {
        CStringW token(begin, length);
        if (!trim || !token.Trim().IsEmpty()) tokens.push_back(std::move(token));
    });
    return tokens;
}

CStringW TokenizeQuotedW(const CStringW& text, const CStringW& delimiters, int& position) {
    const auto token =
        NextQuoted(text.GetString(), text.GetLength(), UnitSet<WCHAR>(delimiters.GetString()), position);
    return CStringW(token.begin, token.length);
}

CStringA TokenizeQuotedA(const CStringA& text, const CStringA& delimiters, int& position) {
    const unsigned longest = kestrolumen::detail::LongestAnsiCharacter();
    if (longest == 2 && position >= 0) {
        const CStringW wide = delimiters;
        return NextQuotedOfDoubleByte(text, UnitSet<WCHAR>(wide.GetString()), position);
    }
    if (longest != 1) return TokenizeQuotedW(text, delimiters, position);
    const UnitSet<char> set(delimiters.GetString());
    const char* const bytes = text.GetString();
    int next = position;
    auto token = NextQuoted(bytes, text.GetLength(), set, next);
    // The wide text ends at a zero byte. No more is searched for it than the token was.
    const std::string_view read(bytes, static_cast<std::size_t>(next < 0 ? text.GetLength() : next));
    if (const auto zero = read.find('\0', static_cast<std::size_t>(std::max(position, 0)));
        zero != read.npos) {
        next = position;
        token = NextQuoted(bytes, static_cast<int>(zero), set, next);
    }
    position = next;
    return CStringW(token.begin, token.length);
}

CStringA AbbreviatedA(const CStringA& text, std::uint32_t head, std::uint32_t tail) {
    return Abbreviated<char>(text, head, tail);
}

CStringW AbbreviatedW(const CStringW& text, std::uint32_t head, std::uint32_t tail) {
    return Abbreviated<WCHAR>(text, head, tail);
}
