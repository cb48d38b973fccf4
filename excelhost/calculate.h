// One formula, calculated.
#pragma once

#include "excelhost/formula.h"
#include "excelhost/grid.h"

#include <functional>
#include <span>

namespace excelhost {

// A function that isn't built in. Arguments come as the formula gives them: references as references, omitted
// ones as Missing.
using FunctionCaller = std::function<Value(TextView name, std::span<const Value> arguments)>;

// The value that a cell at `place` shows: a number (double), text, a boolean or an error. References read the
// grid as it is. An array gives its first element, an empty cell 0; an operator's first error wins.
[[nodiscard]] Value CalculateFormula(const Formula& formula, Place place, const Grid& grid,
                                     const FunctionCaller& call);

}  // namespace excelhost
