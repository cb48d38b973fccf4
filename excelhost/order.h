// The order in which formulas are calculated: each behind those that it refers to.
#pragma once

#include "excelhost/formula.h"
#include "excelhost/grid.h"

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace excelhost {

// A formula in its cell.
struct FormulaCell {
    Place place;
    Formula formula;
};

// The formulas of all sheets, sheet by sheet and each one's row by row.
struct LocatedFormula {
    IDSHEET sheet = 0;
    const FormulaCell* cell = nullptr;
};

// Cells that refer to one another in a circle; the text names them, the middle of a long circle left out.
class CircularReference : public std::runtime_error {
  public:
    CircularReference(LocatedFormula cell, const std::string& message)
        : std::runtime_error(message), cell_(cell) {}
    // The cell that closes the circle.
    [[nodiscard]] LocatedFormula Cell() const noexcept { return cell_; }

  private:
    LocatedFormula cell_;
};

// The numbers of the formulas in the order of their calculation. A reference counts wherever it stands, in a
// branch of IF that isn't taken, too; those to sheets other than `sheets` (by their ids from 1 on) don't. `names` of
// the sheets are for the message about a circle.
// Needs memory in proportion to the formulas, whatever the size of the ranges that they refer to, and time
// that grows little faster than their number. CircularReference.
[[nodiscard]] std::vector<std::uint32_t> CalculationOrder(std::span<const LocatedFormula> formulas,
                                                          std::span<const Grid* const> sheets,
                                                          std::span<const Text> names);

}  // namespace excelhost
