// A sheet of cells from a CSV text, values and formulas, and the calculation of sheets through a host.
#pragma once

#include "excelhost/csv.h"
#include "excelhost/grid.h"
#include "excelhost/host.h"
#include "excelhost/order.h"

#include <exception>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// All that is wrong with a sheet's cells, in their order. Never empty.
class SheetFaults : public std::exception {
  public:
    explicit SheetFaults(std::vector<CellFault> faults, IDSHEET sheet = 1)
        : faults_(std::move(faults)), sheet_(sheet) {}
    [[nodiscard]] const std::vector<CellFault>& All() const noexcept { return faults_; }
    // The sheet's id, when several are calculated.
    [[nodiscard]] IDSHEET Sheet() const noexcept { return sheet_; }
    [[nodiscard]] const char* what() const noexcept override { return faults_.front().what(); }

  private:
    std::vector<CellFault> faults_;
    IDSHEET sheet_;
};

class Sheet {
  public:
    // A field is read as Excel reads one from a CSV file: a number, TRUE or FALSE, an error value, a formula
    // behind "=", text otherwise; an empty field is an empty cell. The formula of
    // one text, ="...", is that text whatever its length. Formulas may refer to the sheets of these names, by their ids from 1 on. SheetFaults when the text
    // is no table, is larger than a sheet, isn't UTF-8 or holds a bad formula.
    explicit Sheet(std::string_view csv, std::span<const Text> names = {});

    // CalculateSheets for one sheet under an id, with the faults of its cells.
    [[nodiscard]] std::vector<CellFault> Calculate(Host& host, IDSHEET id, TextView name);

    // Formulas are empty cells before Calculate.
    [[nodiscard]] const Grid& Values() const noexcept { return values_; }
    // Row by row.
    [[nodiscard]] std::span<const FormulaCell> Formulas() const noexcept { return formulas_; }
    // The values as CSV: numbers in up to 15 digits, one line a row. A text that begins with "=" is written as
    // the formula ="=..." that gives it, which Excel reads back as well.
    [[nodiscard]] std::string Csv() const;

    // Gives a cell its value.
    void Set(Place place, Value value) { values_.Set(place, std::move(value)); }

  private:
    void Read(Place place, const std::string& field, std::span<const Text> names);

    Grid values_;
    std::vector<FormulaCell> formulas_;
};

// A sheet of a workbook that is calculated, under its name as xlSheetNm gives it: "[Book1.xlsx]Sheet1".
struct NamedSheet {
    Text name;
    Sheet* sheet = nullptr;
};

using CalculationProgress = std::function<void(std::size_t done, std::size_t all)>;

// Calculates each formula once, after those that it refers to on any of the sheets, whose ids in the host count
// from `firstId` on (1 whenever formulas refer to other sheets). They are the host's sheets for as long as they
// live, the first one its current sheet at the end. Functions that aren't built in are the host's registered
// ones, and what they have evaluated meanwhile sees these sheets; a missing one gives #NAME? and a fault in the
// result, as does a call with too many arguments. The faults come sheet by sheet. SheetFaults for cells that refer
// to one another in a circle; then no value has changed.
// Of several threads all calculate formulas whose functions are built in or registered as thread-safe; all others
// are calculated by the calling thread, in the order that they have without more threads. The values are the same.
// `progress` hears now and then how many of all formulas are done.
[[nodiscard]] std::vector<std::vector<CellFault>> CalculateSheets(std::span<const NamedSheet> sheets,
                                                                  Host& host, IDSHEET firstId = 1,
                                                                  std::size_t threads = 1,
                                                                  const CalculationProgress& progress = {});

// The table behind a file in UTF-8, as a sheet reads it. SheetFaults for what isn't one.
[[nodiscard]] CsvTable ReadTable(std::string_view csv, RowLength length = RowLength::Equal);

// The value of a field that is no formula, the formula of one text apart.
[[nodiscard]] Value ValueFromField(const std::string& field);

// A cell's value as CSV shows it.
[[nodiscard]] std::string CellText(const Value& value);

}  // namespace excelhost
