// A sheet of cells from a CSV text: values and formulas, calculated by need through a host.
#pragma once

#include "excelhost/csv.h"
#include "excelhost/formula.h"
#include "excelhost/grid.h"
#include "excelhost/host.h"

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// All that is wrong with a sheet's cells, in their order. Never empty.
class SheetFaults : public std::exception {
  public:
    explicit SheetFaults(std::vector<CellFault> faults) : faults_(std::move(faults)) {}
    [[nodiscard]] const std::vector<CellFault>& All() const noexcept { return faults_; }
    [[nodiscard]] const char* what() const noexcept override { return faults_.front().what(); }

  private:
    std::vector<CellFault> faults_;
};

class Sheet {
  public:
    // A field is read as Excel reads one from a CSV file: a number, TRUE or FALSE, an error value, a formula
    // behind "=", text otherwise; an empty field is an empty cell. SheetFaults when the text is no table, is
    // larger than a sheet, isn't UTF-8 or holds a bad formula.
    explicit Sheet(std::string_view csv);

    // Calculates each formula once, after those that it refers to. A reference counts for that wherever it
    // stands, in a branch of IF that isn't taken, too. Becomes the host's sheet of this id and its current
    // one for as long as the sheet lives. Functions that aren't built in are the host's registered ones; a
    // missing one gives #NAME? and a fault in the result, as does a call with too many arguments. SheetFaults
    // for cells that refer to one another in a circle; then no value has changed.
    [[nodiscard]] std::vector<CellFault> Calculate(Host& host, IDSHEET id, TextView name);

    // Formulas are empty cells before Calculate.
    [[nodiscard]] const Grid& Values() const noexcept { return values_; }
    // The values as CSV: numbers in up to 15 digits, one line a row.
    [[nodiscard]] std::string Csv() const;

  private:
    void Read(Place place, const std::string& field);
    [[nodiscard]] std::vector<Place> Order() const;
    void CheckCalls(const Host& host, Place place, std::vector<CellFault>& faults) const;
    [[nodiscard]] const Formula* FormulaAt(Place place) const;

    Grid values_;
    std::vector<std::optional<Formula>> formulas_;  // by Grid::Index
};

// A cell's value as CSV shows it.
[[nodiscard]] std::string CellText(const Value& value);

}  // namespace excelhost
