// Formulas of cells: their language and the form in which they are calculated.
//
// The language is Excel's, without names, sheets and array constants:
//   1.5E-3  "text with "" in it"  TRUE  #N/A  A1  $B$2  A1:C3  F(x, , y)  (x)
//   - and + in front; % behind; ^; * and /; + and -; &; = <> < <= > >=
// in Excel's order of precedence ("Calculation operators and precedence in Excel"), which puts the sign
// before ^: -2^2 is 4. Operators of one rank go from left to right.
#pragma once

#include "excelhost/value.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// Excel's limits of a formula.
inline constexpr std::size_t kFormulaLimit = 8192;  // UTF-16 units
inline constexpr int kNestingLimit = 64;            // parentheses and functions
inline constexpr std::size_t kArgumentLimit = 255;

// A formula that can't be read. The position counts characters from 1, the "=" included.
class FormulaFault : public std::runtime_error {
  public:
    FormulaFault(std::size_t position, const std::string& message)
        : std::runtime_error(message), position_(position) {}
    [[nodiscard]] std::size_t Position() const noexcept { return position_; }

  private:
    std::size_t position_;
};

// What a step does to the stack of values.
enum class Step {
    Push,    // pushes `value`: a literal, an Area, or Missing
    Negate,  // these take their operands from the stack and push their result
    Percent,
    Power,
    Multiply,
    Divide,
    Add,
    Subtract,
    Concatenate,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Call,    // calls `name` with the `count` topmost values
    Branch,  // takes a condition: goes on if true, to step `count` if false, behind the whole IF on an error
    Jump,    // goes to step `count`
};

struct FormulaStep {
    Step step = Step::Push;
    Value value;
    Text name;
    std::size_t count = 0;
    std::size_t end = 0;       // of a Branch: the step behind the whole IF
    std::size_t position = 0;  // in the formula, from 1
};

// A formula as steps for a stack machine, which needs no depth of its own stack whatever the formula.
struct Formula {
    std::vector<FormulaStep> steps;
};

// `text` with its leading "=". FormulaFault when it isn't a formula; names of functions aren't looked up, but
// those that are built in must have a fitting number of arguments.
[[nodiscard]] Formula ParseFormula(TextView text);

// A number as it is typed: digits with a point and an exponent, a sign, and nothing else. False for other
// text and for one that no double can hold.
[[nodiscard]] bool ReadNumber(std::string_view text, double& number);

}  // namespace excelhost
