// A number format in pieces ("Number format codes"): its sections, what each is made of, and how a section writes a
// number.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

struct FormatToken {
    enum class Kind {
        Literal,  // stands as it is
        Digit,    // a placeholder: 0, # or ?
        Point,
        Comma,
        Percent,
        Exponent,  // E+ or E-
        Stroke,    // of a fraction, when digits stand on both sides
        Number,    // 16 as a fraction's denominator
        DatePart,  // letters, in lower case: y m d h s, am/pm or a/p
        Elapsed,   // letters, in lower case: hours, minutes or seconds that don't begin again
        General,   // a number in up to 15 digits
        At,        // the text
    } kind;
    std::string text;
};

// [>100] in front of a section.
struct FormatCondition {
    std::string relation;  // = <> < <= > >=
    double limit = 0;

    [[nodiscard]] bool Holds(double number) const noexcept;
};

struct FormatSection {
    std::optional<FormatCondition> condition;
    std::vector<FormatToken> tokens;

    [[nodiscard]] bool Has(FormatToken::Kind kind) const {
        return std::any_of(tokens.begin(), tokens.end(),
                           [&](const FormatToken& token) { return token.kind == kind; });
    }
};

// The sections between the semicolons, in UTF-8. Colours and "*x" are gone, "_x" is a space. Nothing for a format with
// letters or brackets that aren't known.
[[nodiscard]] std::optional<std::vector<FormatSection>> FormatSectionsFrom(std::string_view format);

// -- Numbers, of which the absolute value is written; `isZero` when nothing but zeros remains of it. Nothing when it
// is too large for what the format makes of it.

using FormatTokens = std::span<const FormatToken>;

// 0 # ? with a point, commas between and behind them, %, General.
[[nodiscard]] std::optional<std::string> FormattedDigits(double number, FormatTokens tokens, bool& isZero);
// With an Exponent among the tokens: a multiple of the number of digits ahead of the point.
[[nodiscard]] std::optional<std::string> FormattedExponent(double number, FormatTokens tokens, bool& isZero);
// With a fraction among the tokens: the nearest with the given denominator, or with one of so many digits.
[[nodiscard]] std::optional<std::string> FormattedFraction(double number, FormatTokens tokens, bool& isZero);
// The place of the Stroke of a fraction, or their count.
[[nodiscard]] std::size_t FractionStroke(FormatTokens tokens);

// A serial number as a date and time, to the last unit that is shown. Nothing for one that is no date, and for digits
// that are no fraction of a second.
[[nodiscard]] std::optional<std::string> FormattedDate(double serial, FormatTokens tokens);

}  // namespace excelhost
