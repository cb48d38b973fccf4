#include "excelhost/functions/formatsection.h"

#include "excelhost/characters.h"
#include "excelhost/numbers.h"

#include <array>

namespace excelhost {
namespace {

using Kind = FormatToken::Kind;

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerAscii<char>);
    return lower;
}

// The bytes of the UTF-8 character that a text begins with; 0 of an empty one.
std::size_t CharacterLength(std::string_view text) {
    std::size_t length = std::min<std::size_t>(text.size(), 1);
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80) ++length;
    return length;
}

bool IsColor(std::string_view name) {
    constexpr std::array<std::string_view, 8> names = {"black", "blue",    "cyan",  "green",
                                                       "red",   "magenta", "white", "yellow"};
    if (std::find(names.begin(), names.end(), name) != names.end()) return true;
    constexpr double last = 56;
    double number = 0;
    return name.starts_with("color") && ReadTypedNumber(name.substr(5), number) && number >= 1 &&
           number <= last;
}

// Takes one section apart, up to its semicolon.
class SectionReader {
  public:
    explicit SectionReader(std::string_view& rest) : rest_(rest) {}

    std::optional<FormatSection> Read() {
        while (!rest_.empty() && rest_.front() != ';') {
            if (!(rest_.front() == '[' ? Bracket() : Piece())) return std::nullopt;
        }
        return std::move(section_);
    }

  private:
    // Takes `length` bytes off the rest.
    std::string_view Take(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    bool Add(Kind kind, std::string_view text) {
        section_.tokens.push_back({kind, std::string(text)});
        return true;
    }
    // The character behind a sign such as "\".
    std::string_view TakeNext() {
        Take(1);
        return Take(CharacterLength(rest_));
    }
    bool Begins(std::string_view word) const { return Lower(rest_.substr(0, word.size())) == word; }

    bool Piece() {
        const char c = rest_.front();
        const auto isOneOf = [&](std::string_view signs) { return signs.find(c) != std::string_view::npos; };
        if (c == '"') {
            Take(1);
            Add(Kind::Literal, Take(std::min(rest_.find('"'), rest_.size())));
            Take(1);
            return true;
        }
        if (c == '\\') return Add(Kind::Literal, TakeNext());
        if (c == '_') return TakeNext(), Add(Kind::Literal, " ");
        if (c == '*') return TakeNext(), true;
        if (isOneOf("0#?")) return Add(Kind::Digit, Take(1));
        if (c == '.') return Add(Kind::Point, Take(1));
        if (c == ',') return Add(Kind::Comma, Take(1));
        if (c == '%') return Add(Kind::Percent, Take(1));
        if (c == '/') return Add(Kind::Stroke, Take(1));
        if (c == '@') return Add(Kind::At, Take(1));
        if (Begins("general")) return Add(Kind::General, Take(7));
        if (Begins("e+") || Begins("e-")) return Add(Kind::Exponent, Take(2));
        if (Begins("am/pm")) return Add(Kind::DatePart, Lower(Take(5)));
        if (Begins("a/p")) return Add(Kind::DatePart, Lower(Take(3)));
        if (isOneOf("123456789"))
            return Add(Kind::Number, Take(std::min(rest_.find_first_not_of("0123456789"), rest_.size())));
        if (isOneOf("yYmMdDhHsS")) return Add(Kind::DatePart, Lower(Take(RunLength())));
        if (static_cast<unsigned char>(c) >= 0x80 || isOneOf(" $-+():!^&'~{}<>="))
            return Add(Kind::Literal, Take(CharacterLength(rest_)));
        return false;
    }

    // How often the first letter is there.
    [[nodiscard]] std::size_t RunLength() const {
        std::size_t length = 1;
        while (length < rest_.size() && LowerAscii(rest_[length]) == LowerAscii(rest_.front())) ++length;
        return length;
    }

    bool Bracket() {
        const std::size_t end = rest_.find(']');
        if (end == std::string_view::npos) return false;
        const std::string inside = Lower(rest_.substr(1, end - 1));
        const std::string_view asWritten = Take(end + 1).substr(1, end - 1);
        if (inside.empty()) return false;
        if (IsColor(inside)) return true;
        const char first = inside.front();
        if (inside.find_first_not_of(first) == std::string::npos &&
            (first == 'h' || first == 'm' || first == 's'))
            return Add(Kind::Elapsed, inside);
        if (first == '$') return Currency(asWritten.substr(1));
        return ReadCondition(inside);
    }

    // A sign of currency and behind "-" the language, of which none but US English writes dates as we do.
    bool Currency(std::string_view text) {
        const std::size_t hyphen = std::min(text.find('-'), text.size());
        if (hyphen == 0) return text == "-409";
        return Add(Kind::Literal, text.substr(0, hyphen));
    }

    bool ReadCondition(std::string_view text) {
        const std::size_t length = std::min(text.find_first_not_of("<=>"), text.size());
        constexpr std::array<std::string_view, 6> relations = {"=", "<>", "<", "<=", ">", ">="};
        FormatCondition condition{std::string(text.substr(0, length)), 0};
        if (std::find(relations.begin(), relations.end(), condition.relation) == relations.end())
            return false;
        if (!ReadNumber(text.substr(length), condition.limit)) return false;
        section_.condition = std::move(condition);
        return true;
    }

    std::string_view& rest_;
    FormatSection section_;
};

}  // namespace

bool FormatCondition::Holds(double number) const noexcept {
    const bool orEqual = relation.back() == '=' && number == limit;
    switch (relation.front()) {
        case '<':
            return relation == "<>" ? number != limit : number < limit || orEqual;
        case '>':
            return number > limit || orEqual;
        default:
            return orEqual;
    }
}

std::optional<std::vector<FormatSection>> FormatSectionsFrom(std::string_view format) {
    std::vector<FormatSection> sections;
    for (;;) {
        auto section = SectionReader(format).Read();
        if (!section) return std::nullopt;
        sections.push_back(*std::move(section));
        if (format.empty()) return sections;
        format.remove_prefix(1);
    }
}

}  // namespace excelhost
