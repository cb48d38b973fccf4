#include "excelhost/functions/numberformat.h"

#include "excelhost/functions/formatsection.h"
#include "excelhost/numbers.h"

#include <cmath>

namespace excelhost {
namespace {

using Kind = FormatToken::Kind;
using Sections = std::vector<FormatSection>;

constexpr std::size_t kMostSections = 4;  // the fourth is for texts

// The sections for numbers, and the one for texts.
struct Format {
    Sections numbers;
    std::optional<FormatSection> text;
};

std::optional<Format> FormatFrom(TextView text) {
    auto sections = FormatSectionsFrom(Utf8(text));
    if (!sections || sections->size() > kMostSections) return std::nullopt;
    Format format;
    if (sections->size() == kMostSections || sections->back().Has(Kind::At)) {
        format.text = std::move(sections->back());
        sections->pop_back();
    }
    format.numbers = *std::move(sections);
    return format;
}

// Whether a section is for negative numbers alone, and says so by itself.
bool IsForNegatives(const Sections& sections, std::size_t chosen) {
    if (const auto& condition = sections[chosen].condition) {
        return (condition->relation == "<" && condition->limit <= 0) ||
               (condition->relation == "<=" && condition->limit < 0);
    }
    if (chosen != 1) return false;
    const auto& first = sections[0].condition;
    return !first || sections.size() > 2 || (first->limit == 0 && first->relation.front() == '>');
}

// Nothing when the conditions leave the number out.
std::optional<std::size_t> ChosenSection(const Sections& sections, double number) {
    const std::size_t count = sections.size();
    if (sections[0].condition || (count > 1 && sections[1].condition)) {
        const auto holds = [&](std::size_t i) {
            if (sections[i].condition) return sections[i].condition->Holds(number);
            // Without a condition of its own a section has its usual numbers, and the last one all that are left.
            return i + 1 == count || (i == 0 ? number > 0 : i == 1 ? number < 0 : true);
        };
        for (std::size_t i = 0; i < count; ++i) {
            if (holds(i)) return i;
        }
        return std::nullopt;
    }
    return number < 0 && count > 1 ? 1 : number == 0 && count > 2 ? 2 : 0;
}

std::string FormattedGeneral(double number, FormatTokens tokens) {
    std::string text;
    for (const FormatToken& token : tokens) {
        text += token.kind == Kind::General ? NumberText(std::fabs(number)) : token.text;
    }
    return text;
}

// The absolute value. Nothing for parts that don't go together.
std::optional<std::string> Written(double number, const FormatSection& section, bool& isZero) {
    const FormatTokens tokens = section.tokens;
    const bool isFraction = FractionStroke(tokens) < tokens.size();
    if (section.Has(Kind::At) || (section.Has(Kind::Number) && !isFraction)) return std::nullopt;
    if (section.Has(Kind::General)) {
        isZero = number == 0;
        if (section.Has(Kind::Digit)) return std::nullopt;
        return FormattedGeneral(number, tokens);
    }
    if (isFraction) return FormattedFraction(number, tokens, isZero);
    if (section.Has(Kind::Exponent)) return FormattedExponent(number, tokens, isZero);
    return FormattedDigits(number, tokens, isZero);
}

}  // namespace

std::optional<Text> FormattedNumber(double number, TextView format) {
    const auto read = FormatFrom(format);
    if (!read) return std::nullopt;
    // "@" alone is for numbers as well.
    if (read->numbers.empty()) return FormattedText(Wide(NumberText(number)), format);
    const auto chosen = ChosenSection(read->numbers, number);
    if (!chosen) return std::nullopt;
    const FormatSection& section = read->numbers[*chosen];
    if (section.Has(Kind::DatePart) || section.Has(Kind::Elapsed)) {
        const auto date = FormattedDate(number, section.tokens);
        return date ? std::optional(Wide(*date)) : std::nullopt;
    }
    bool isZero = false;
    const auto written = Written(number, section, isZero);
    if (!written) return std::nullopt;
    const bool isSigned = number < 0 && !isZero && !IsForNegatives(read->numbers, *chosen);
    return Wide((isSigned ? "-" : "") + *written);
}

std::optional<Text> FormattedText(TextView text, TextView format) {
    const auto read = FormatFrom(format);
    if (!read) return std::nullopt;
    if (!read->text) return Text(text);
    Text result;
    for (const FormatToken& token : read->text->tokens) {
        if (token.kind == Kind::At) {
            result += text;
        } else if (token.kind == Kind::Literal || token.kind == Kind::Stroke) {
            result += Wide(token.text);
        } else {
            return std::nullopt;
        }
    }
    return result;
}

}  // namespace excelhost
