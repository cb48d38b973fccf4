// Formulas of cells: their language and the form in which they are calculated.
//
// The language is Excel's, without names and array constants:
//   1.5E-3  "text with "" in it"  TRUE  #N/A  A1  $B$2  A1:C3  A:C  1:3  Sheet!A1  'My sheet'!A1:B2  F(x, , y)  (x)
//   - and + in front; % behind; ^; * and /; + and -; &; = <> < <= > >=
// in Excel's order of precedence ("Calculation operators and precedence in Excel"), which puts the sign
// before ^: -2^2 is 4. Operators of one rank go from left to right.
#pragma once

#include "excelhost/value.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace excelhost {

struct Builtin;

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
enum class Step : std::uint8_t {
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
    Call,    // calls `builtin`, or the function named by `value`, with the `count` topmost values
    Branch,  // takes a condition: goes on if true, to step `count` if false, behind the whole IF on an error
    Jump,    // goes to step `count`
    Select,  // ends an IF among array operators: of an array condition and both values takes each element
};

// Small, for a sheet may have millions. A formula has fewer steps than units.
struct FormulaStep {
    Value value;
    const Builtin* builtin = nullptr;
    std::uint16_t count = 0;
    std::uint16_t end = 0;  // of a Branch: the step behind the whole IF
    Step step = Step::Push;
    bool wholeArrays = false;  // it takes arrays element by element instead of a cell of each
};

// A formula as steps for a stack machine, which needs no depth of its own stack whatever the formula.
struct Formula {
    std::vector<FormulaStep> steps;
    // The last step is an addition or subtraction of the whole formula, outside of parentheses.
    bool endsInSum = false;
};

// How operators of a formula take cells and arrays.
enum class ArrayRule : std::uint8_t {
    OneValue,  // one of each, as in a cell's formula; whole ones inside functions that want arrays
    Whole,     // element by element everywhere, as an array formula does
};

// `text` with its leading "=". FormulaFault when it isn't a formula; names of functions aren't looked up, but
// those that are built in must have a fitting number of arguments. `sheets` are the names of the sheets that it
// may refer to, by their ids from 1 on.
[[nodiscard]] Formula ParseFormula(TextView text, std::span<const Text> sheets = {},
                                   ArrayRule rule = ArrayRule::OneValue);

}  // namespace excelhost
