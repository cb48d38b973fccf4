// One formula, calculated.
#pragma once

#include "excelhost/formula.h"
#include "excelhost/grid.h"

#include <compare>
#include <functional>
#include <span>

namespace excelhost {

// A function that isn't built in. Arguments come as the formula gives them: references as references, omitted
// ones as Missing.
using FunctionCaller = std::function<Value(TextView name, std::span<const Value> arguments)>;

// The value that the formula's cell shows: a number (double), text, a boolean or an error. References read the
// sheets as they are. An array gives its first element, an empty cell 0; an operator's first error wins.
// Numbers are compared by 15 digits, and a formula that ends in a sum of numbers which cancel out in as many
// digits gives 0.
[[nodiscard]] Value CalculateFormula(const Formula& formula, const Cells& cells, const FunctionCaller& call);
// The same, but an array that the formula gives comes as a whole, and so do the cells behind a reference.
[[nodiscard]] Value CalculateWhole(const Formula& formula, const Cells& cells, const FunctionCaller& call);

// Excel's order of two scalars that are no errors: numbers before texts before booleans; an empty one is the 0,
// the "" or the FALSE of what it is compared with.
[[nodiscard]] std::partial_ordering CompareScalars(const Value& left, const Value& right);

}  // namespace excelhost
