// The conditions of COUNTIF, SUMIF and their kin, and the wildcards of MATCH and SEARCH.
#pragma once

#include "excelhost/value.h"

namespace excelhost {

// Whether a text has the form of a pattern, case aside: "*" stands for any text, "?" for one unit, and "~" ahead
// of either takes it as it is.
[[nodiscard]] bool MatchesPattern(TextView text, TextView pattern) noexcept;

// A condition as Excel reads one: a value that cells must equal, or a text with =, <>, <, <=, > or >= ahead of
// one. Numbers meet numbers and texts that read as numbers, texts meet texts, by pattern for = and <>. ""
// meets empty cells and empty texts, "=" empty cells alone, "<>" all others. An empty cell as condition is 0.
class Criterion {
  public:
    explicit Criterion(const Value& condition);
    [[nodiscard]] bool Holds(const Value& cell) const;

  private:
    enum class Relation { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

    [[nodiscard]] bool IsEqual(const Value& cell) const;

    Relation relation_ = Relation::Equal;
    bool emptyOnly_ = false;  // "=" or "<>" alone
    Value operand_;
};

}  // namespace excelhost
