// Formulas of a command line or a file of cases, calculated through the add-ins beside the sheets that they may
// refer to.
#pragma once

#include "excelhost/commandline.h"
#include "excelhost/evaluation.h"
#include "excelhost/sheetfiles.h"

#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// The n-th formula stands in row n of the first column that the first sheet leaves free.
class Formulas {
  public:
    // The sheets as SheetFiles reads them, their faults included. Without any, formulas can't refer to cells.
    Formulas(std::span<const std::string> sheets, std::ostream& err);
    Formulas(const Formulas&) = delete;
    Formulas& operator=(const Formulas&) = delete;

    // False when a sheet holds faults; then there is nothing to calculate.
    [[nodiscard]] bool Good() const noexcept { return !files_ || files_->Good(); }

    // Reads a formula, with or without its "=". InputError, with the formula and what is wrong with it.
    void Add(const std::string& formula);
    [[nodiscard]] std::size_t Count() const noexcept { return formulas_.size(); }

    // The sheets for a report, with the formulas in their cells, which show `shown(index)`. This must live as long.
    [[nodiscard]] std::vector<ReportedSheet> Reported(std::function<std::string(std::size_t)> shown) const;

    // Writes the faults of the sheets' calculation; false when there are any.
    [[nodiscard]] bool PrintFaults(std::ostream& err) const { return !files_ || files_->PrintFaults(err); }

  private:
    friend class OpenFormulas;
    std::optional<SheetFiles> files_;
    Sheet none_{""};
    std::vector<Text> names_;  // of the sheets, in formulas
    std::vector<Formula> formulas_;
    std::vector<std::string> texts_;
};

// Formulas in a host, with the sheets calculated. Neither may go before this.
class OpenFormulas {
  public:
    OpenFormulas(Formulas& formulas, Host& host);

    // The value of a formula, an array as a whole.
    [[nodiscard]] Value Calculate(std::size_t index) const;
    // What stands in the way of a formula's calls: functions that no add-in has registered.
    [[nodiscard]] std::vector<std::string> Faults(std::size_t index) const;

  private:
    const Formulas& formulas_;
    const Host& host_;
    std::vector<const Grid*> grids_;
    std::optional<Evaluation> evaluation_;
};

// A value on one line: texts as they are unless they break it, then quoted as in CSV; arrays as a formula writes
// them, {1,"a";TRUE,#N/A}.
[[nodiscard]] std::string LineOf(const Value& value);

// --sheet, which gathers operands for Formulas.
[[nodiscard]] Option SheetOption(std::vector<std::string>& sheets);

}  // namespace excelhost
