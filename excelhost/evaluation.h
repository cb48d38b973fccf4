// Formulas that stand in no cell: those that add-ins have evaluated, and those of a command line.
#pragma once

#include "excelhost/calculate.h"
#include "excelhost/formula.h"
#include "excelhost/grid.h"
#include "excelhost/host.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace excelhost {

// Serves xlfEvaluate and worksheet functions by number from sheets for as long as it lives.
class Evaluation {
  public:
    // The sheets by their ids, which count from 1 in formulas and from `firstId` in the host; `names` are as
    // xlSheetNm gives them. The grids must outlive it.
    Evaluation(Host& host, std::span<const Grid* const> grids, std::span<const Text> names, IDSHEET firstId);
    ~Evaluation() { host_.SetEvaluator({}); }
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;

    // A formula's value, an array as a whole, as the cell `caller` of one of the sheets sees it.
    [[nodiscard]] Value Calculate(const Formula& formula, const std::optional<Reference>& caller) const;

  private:
    [[nodiscard]] Value Evaluate(TextView text) const;
    [[nodiscard]] Value Call(const Builtin& function, std::span<const Value> arguments) const;
    [[nodiscard]] Cells CellsOf(const std::optional<Reference>& caller) const;
    [[nodiscard]] FunctionCaller CallerFrom(const std::optional<Reference>& caller) const;

    Host& host_;
    std::span<const Grid* const> grids_;
    std::vector<Text> names_;
    IDSHEET firstId_;
};

// The name of a sheet in formulas: "[Book1.xlsx]Sheet1" is Sheet1 there.
[[nodiscard]] inline Text NameInFormulas(TextView sheet) {
    return Text(sheet.substr(sheet.rfind(WCHAR{']'}) + 1));
}

// Which functions a host lacks, and how many arguments those take that it has; asked for once a name.
class KnownFunctions {
  public:
    explicit KnownFunctions(const Host& host) : host_(host) {}

    // What stands in the way of each call of a formula, in words.
    [[nodiscard]] std::vector<std::string> Faults(const Formula& formula);

  private:
    [[nodiscard]] std::optional<std::size_t> Arity(const Text& name);

    const Host& host_;
    std::map<Text, std::optional<std::size_t>> arities_;
};

}  // namespace excelhost
