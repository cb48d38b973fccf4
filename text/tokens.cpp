#include "text/tokens.h"

#include "text/ansicodepage.h"

#include <algorithm>
#include <array>

namespace {

// A set of units, which is small as a rule.
template <typename Unit>
class UnitSet {
  public:
    explicit UnitSet(std::basic_string_view<Unit> units) noexcept : units_(units) {
        // Those that a block is searched for: the last one takes the places that are left.
        const std::size_t count = std::min(units.size(), needles_.size());
        if (count > 0)
            std::fill(std::copy_n(units.begin(), count, needles_.begin()), needles_.end(), units[count - 1]);
    }
    [[nodiscard]] bool Holds(Unit unit) const noexcept { return units_.find(unit) != units_.npos; }

    // The first place of a unit of the set, or `end`.
    [[nodiscard]] const Unit* FindIn(const Unit* begin, const Unit* end) const noexcept {
        if (units_.empty()) return end;
        if (units_.size() <= needles_.size()) {
            while (static_cast<std::size_t>(end - begin) >= blockSize && !IsInBlock(begin))
                begin += blockSize;
        }
        return std::find_if(begin, end, [this](Unit unit) { return Holds(unit); });
    }

  private:
    static constexpr std::size_t blockSize = 64 / sizeof(Unit);

    // Goes through the whole block, so that the compiler makes vector instructions of it.
    [[nodiscard]] bool IsInBlock(const Unit* block) const noexcept {
        const auto [a, b, c] = needles_;
        std::make_unsigned_t<Unit> found = 0;
        for (std::size_t i = 0; i < blockSize; ++i) {
            const int isOne = (block[i] == a) | (block[i] == b) | (block[i] == c);
            found = static_cast<std::make_unsigned_t<Unit>>(found | isOne);
        }
        return found != 0;
    }

    std::basic_string_view<Unit> units_;
    std::array<Unit, 3> needles_{};
};

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
    std::vector<CStringW> tokens;
    for (const WCHAR* at = text.GetString();;) {
        while (at != end && set.Holds(*at)) ++at;
        if (at == end) return tokens;
        const WCHAR* const begin = at;
        at = set.FindIn(begin, end);
        CStringW token(begin, static_cast<int>(at - begin));
        if (!trim || !token.Trim().IsEmpty()) tokens.push_back(std::move(token));
    }
}

CStringW TokenizeQuotedW(const CStringW& text, const CStringW& delimiters, int& position) {
    const auto token =
        NextQuoted(text.GetString(), text.GetLength(), UnitSet<WCHAR>(delimiters.GetString()), position);
    return CStringW(token.begin, token.length);
}

CStringA TokenizeQuotedA(const CStringA& text, const CStringA& delimiters, int& position) {
    if (detail::LongestAnsiCharacter() != 1) return TokenizeQuotedW(text, delimiters, position);
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
    return Abbreviated(text, head, tail);
}

CStringW AbbreviatedW(const CStringW& text, std::uint32_t head, std::uint32_t tail) {
    return Abbreviated(text, head, tail);
}
