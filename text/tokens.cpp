#include "text/tokens.h"

#include <algorithm>
#include <array>

namespace {

// A set of units: a table for those below 256, which nearly all delimiters are.
template <typename Unit>
class UnitSet {
  public:
    explicit UnitSet(const Unit* units) noexcept : units_(units) {
        for (; *units != 0; ++units) {
            const auto code = static_cast<std::make_unsigned_t<Unit>>(*units);
            if (code < low_.size()) {
                low_[code] = true;
            } else {
                hasHigh_ = true;
            }
        }
    }
    [[nodiscard]] bool Holds(Unit unit) const noexcept {
        const auto code = static_cast<std::make_unsigned_t<Unit>>(unit);
        if (code < low_.size()) return low_[code];
        return hasHigh_ && units_.find(unit) != units_.npos;
    }

  private:
    std::basic_string_view<Unit> units_;
    std::array<bool, 256> low_{};
    bool hasHigh_ = false;
};

template <typename Unit>
struct Token {
    const Unit* begin;
    int length;
};

// The rules of the tokenizer over text of one width; `isEnd` tells where the text ends.
template <typename Unit, typename IsEnd>
Token<Unit> NextQuoted(const Unit* text, IsEnd isEnd, const UnitSet<Unit>& delimiters,
                       int& position) noexcept {
    constexpr Unit quote = '"';
    int at = position;
    while (at >= 0 && !isEnd(at) && delimiters.Holds(text[at])) ++at;
    if (at < 0 || isEnd(at)) {
        position = -1;
        return {text, 0};
    }
    const int begin = at;
    const bool mayQuote = text[at] == quote;
    for (bool isQuoted = false; !isEnd(at) && (isQuoted || !delimiters.Holds(text[at])); ++at) {
        isQuoted = isQuoted != (mayQuote && text[at] == quote);
    }
    position = at;
    return {text + begin, at - begin};
}

bool HasSingleByteCodePage() noexcept {
    CPINFO info;
    return GetCPInfo(CP_ACP, &info) != FALSE && info.MaxCharSize == 1;
}

template <typename Unit>
CStringT<Unit> Abbreviated(const CStringT<Unit>& text, std::uint32_t head, std::uint32_t tail) {
    constexpr Unit dots[] = {'.', '.', '.'};
    const auto length = static_cast<std::uint64_t>(text.GetLength());
    if (length <= std::uint64_t{head} + tail + std::size(dots)) return text;
    const auto first = static_cast<int>(head);
    const auto last = static_cast<int>(tail);
    CStringT<Unit> abbreviated;
    abbreviated.Preallocate(first + last + static_cast<int>(std::size(dots)));
    abbreviated.Append(text.GetString(), first);
    abbreviated.Append(dots, static_cast<int>(std::size(dots)));
    abbreviated.Append(text.GetString() + text.GetLength() - last, last);
    return abbreviated;
}

}  // namespace

std::vector<CStringW> SplitCStringW(const CStringW& text, const CStringW& delimiters, bool trim) {
    const UnitSet<WCHAR> set(delimiters.GetString());
    const WCHAR* const end = text.GetString() + text.GetLength();
    const auto delimits = [&set](WCHAR unit) { return set.Holds(unit); };
    std::vector<CStringW> tokens;
    for (const WCHAR* at = text.GetString();;) {
        const WCHAR* const begin = std::find_if_not(at, end, delimits);
        if (begin == end) return tokens;
        at = std::find_if(begin, end, delimits);
        CStringW token(begin, static_cast<int>(at - begin));
        if (!trim || !token.Trim().IsEmpty()) tokens.push_back(std::move(token));
    }
}

CStringW TokenizeQuotedW(const CStringW& text, const CStringW& delimiters, int& position) {
    const auto isEnd = [length = text.GetLength()](int at) { return at >= length; };
    const auto token = NextQuoted(text.GetString(), isEnd, UnitSet<WCHAR>(delimiters.GetString()), position);
    return CStringW(token.begin, token.length);
}

CStringA TokenizeQuotedA(const CStringA& text, const CStringA& delimiters, int& position) {
    if (!HasSingleByteCodePage()) return TokenizeQuotedW(text, delimiters, position);
    const auto isEnd = [bytes = text.GetString(), length = text.GetLength()](int at) {
        return at >= length || bytes[at] == 0;
    };
    const auto token = NextQuoted(text.GetString(), isEnd, UnitSet<char>(delimiters.GetString()), position);
    return CStringW(token.begin, token.length);
}

CStringA AbbreviatedA(const CStringA& text, std::uint32_t head, std::uint32_t tail) {
    return Abbreviated(text, head, tail);
}

CStringW AbbreviatedW(const CStringW& text, std::uint32_t head, std::uint32_t tail) {
    return Abbreviated(text, head, tail);
}
