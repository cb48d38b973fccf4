#include "excelhost/functions/criteria.h"

#include "excelhost/calculate.h"
#include "excelhost/numbers.h"

#include <utility>

namespace excelhost {
namespace {

// A text as the value that it would be in a cell.
Value Typed(const Text& text) {
    const std::string utf8 = Utf8(text);
    double number = 0;
    if (ReadTypedNumber(utf8, number)) return number;
    if (SameName(text, TEXT("TRUE"))) return true;
    if (SameName(text, TEXT("FALSE"))) return false;
    if (const int error = ErrorNumber(utf8); error >= 0) return ErrorValue{error};
    return text;
}

bool SameUnit(WCHAR a, WCHAR b) noexcept {
    return std::is_eq(CompareTexts({&a, 1}, {&b, 1}));
}

}  // namespace

// A "*" takes as little as it can; when the rest fails, the last one takes one unit more.
bool MatchesPattern(TextView text, TextView pattern) noexcept {
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t star = TextView::npos;
    std::size_t taken = 0;
    while (t < text.size()) {
        const bool literal = p + 1 < pattern.size() && pattern[p] == '~' &&
                             (pattern[p + 1] == '*' || pattern[p + 1] == '?' || pattern[p + 1] == '~');
        const std::size_t at = literal ? p + 1 : p;
        if (!literal && at < pattern.size() && pattern[at] == '*') {
            star = ++p;
            taken = t;
        } else if (at < pattern.size() &&
                   ((!literal && pattern[at] == '?') || SameUnit(pattern[at], text[t]))) {
            p = at + 1;
            ++t;
        } else if (star != TextView::npos) {
            p = star;
            t = ++taken;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

Criterion::Criterion(const Value& condition) : operand_(condition) {
    if (const int* whole = condition.If<int>()) operand_ = static_cast<double>(*whole);
    if (condition.Is<Empty>()) operand_ = 0.0;
    const Text* text = condition.If<Text>();
    if (text == nullptr) return;
    static constexpr std::pair<TextView, Relation> signs[] = {
        {TEXT("<="), Relation::LessOrEqual}, {TEXT(">="), Relation::GreaterOrEqual},
        {TEXT("<>"), Relation::NotEqual},    {TEXT("<"), Relation::Less},
        {TEXT(">"), Relation::Greater},      {TEXT("="), Relation::Equal}};
    TextView rest = *text;
    bool hasSign = false;
    for (const auto& [sign, relation] : signs) {
        if (!rest.starts_with(sign)) continue;
        rest.remove_prefix(sign.size());
        relation_ = relation;
        hasSign = true;
        break;
    }
    emptyOnly_ = hasSign && rest.empty();
    operand_ = Typed(Text(rest));
}

bool Criterion::IsEqual(const Value& cell) const {
    if (emptyOnly_) return cell.Is<Empty>();
    if (const auto* pattern = operand_.If<Text>()) {
        if (pattern->empty() && cell.Is<Empty>()) return true;
        const auto* text = cell.If<Text>();
        return text != nullptr && MatchesPattern(*text, *pattern);
    }
    const auto* text = cell.If<Text>();
    if (text != nullptr && operand_.Is<double>()) {
        double number = 0;
        return ReadTypedNumber(Utf8(*text), number) && SameNumber(number, *operand_.If<double>());
    }
    if (cell.index() != operand_.index()) return false;
    if (const auto* number = cell.If<double>()) return SameNumber(*number, *operand_.If<double>());
    return cell == operand_;
}

bool Criterion::Holds(const Value& cell) const {
    if (relation_ == Relation::Equal) return IsEqual(cell);
    if (relation_ == Relation::NotEqual) return !IsEqual(cell);
    if (cell.index() != operand_.index() || cell.Is<ErrorValue>()) return false;
    const auto order = CompareScalars(cell, operand_);
    switch (relation_) {
        case Relation::Less:
            return std::is_lt(order);
        case Relation::LessOrEqual:
            return std::is_lteq(order);
        case Relation::Greater:
            return std::is_gt(order);
        default:
            return std::is_gteq(order);
    }
}

}  // namespace excelhost
