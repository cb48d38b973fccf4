// excelhost run: sheets, calculated through the add-ins and printed.
#include "excelhost/commands/play.h"
#include "excelhost/commands/progress.h"
#include "excelhost/functions/functions.h"
#include "excelhost/program.h"
#include "excelhost/sheetfiles.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace excelhost {
namespace {

constexpr std::uint64_t kMostThreads = 1024;  // Excel's own limit

constexpr std::string_view kSheets =
    R"(Calculates a sheet: loads the add-ins, calculates every formula of the sheet and prints the values as CSV. Cells are
numbers, texts, TRUE, FALSE, error values and formulas (=...). Of several sheets, which formulas refer to as NAME!A1,
each is printed under a line "# NAME". The files are UTF-8.

Formulas know Excel's operators, references (A1, $A$1, A1:C3, A:C, 1:3, NAME!A1), the functions that the add-ins
have registered, and:
)";

constexpr std::string_view kRules = R"(
Values follow Excel's rules: 15 digits of a number count, in what is typed, in comparisons and where a sum that ends
a formula comes out near zero; 1,234.5 and 12% and $5 and (5) are read as numbers. Functions that take arrays have
the operators and functions in their arguments calculated for each element. Where it differs: what is typed as a
date, time or fraction stays a text (dates are serial numbers; DATEVALUE and TIMEVALUE read the texts), texts are
ordered by the units of their upper case instead of a language, and a formula that gives an array shows its first
element. OFFSET and INDIRECT see the values of all formulas but those that themselves wait for such a function
further on. A text that begins with "=" is printed as the formula ="=..." that gives it.

Add-ins may call Excel's own worksheet functions by number (xlfSum and its kin), have formulas calculated
(xlfEvaluate) and leave a procedure's types to their xlAutoRegister12.

The add-in kestrolumen.xll meets its companion workbook first and then has:

  NetOutputPrediction(inputs, network, fallback, low, high)                the likeliest category
  NetOutputProbabilityOfPrediction(inputs, network, fallback, low, high)   its probability
  NetOutputProbabilityOfCategory(inputs, network, category, fallback, low, high)
)";

// The names of the functions that are built in.
std::string FunctionLines() {
    std::string names;
    for (const std::string_view name : BuiltinNames())
        names += (names.empty() ? "" : " ") + std::string(name);
    return Wrapped(names, 2);
}

struct RunOptions {
    SessionOptions session;
    std::uint64_t threads = 1;
};

std::vector<Option> OptionsOf(RunOptions& run) {
    std::vector<Option> options = OptionsOf(run.session);
    options.push_back(CountOption("--threads", "N",
                                  "calculates with up to N threads, as Excel does (1 if left out, 1,024 at "
                                  "most): formulas whose functions "
                                  "are Excel's own or registered as thread-safe ($) by all of them, any "
                                  "other by the main one; the values "
                                  "are the same",
                                  1, run.threads));
    return options;
}

int Run(const RunOptions& run, std::span<const std::string> operands, Surroundings& around) {
    const bool complete = std::none_of(operands.begin(), operands.end(),
                                       [](const std::string& sheet) { return sheet.empty(); });
    if (operands.empty() || !complete) throw UsageError("the name of a sheet is missing");
    SheetFiles sheets(operands, around.err);
    if (!sheets.Good()) return kBadInput;
    const auto threads = static_cast<std::size_t>(std::min(run.threads, kMostThreads));
    const Act act{"the sheet is calculated",
                  [&](Host& host) {
                      ProgressBar bar(run.session.progress && around.errIsTerminal, "run", around.err);
                      sheets.Calculate(host, threads,
                                       [&](std::size_t done, std::size_t all) { bar.Set(done, all); });
                  },
                  [&](Host&) {
                      if (sheets.Good()) sheets.Print(around.out);
                      around.out.flush();
                      return sheets.PrintFaults(around.err) ? kDone : kBadInput;
                  },
                  [&] { return sheets.Reported(); }};
    return Play(run.session, act, around);
}

}  // namespace

Command RunCommand() {
    const auto run = std::make_shared<RunOptions>();
    return {"run",
            "calculates sheets (CSV) through the add-ins and prints the values",
            {"SHEET.csv [options]", "NAME=SHEET.csv NAME=SHEET.csv ... [options]"},
            std::string(kSheets) + FunctionLines() + std::string(kRules),
            OptionsOf(*run),
            [run](std::span<const std::string> operands, Surroundings& around) {
                return Run(*run, operands, around);
            }};
}

}  // namespace excelhost
