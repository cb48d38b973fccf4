// Sheets: the input is a CSV text, whose fields are values and formulas. What is wrong with it is told at a cell of it;
// what calculates is a table again, of the same size, and the same each time.
#include "fuzz.h"

#include "excelhost/host.h"
#include "excelhost/sheet.h"

#include <optional>
#include <string>

using fuzz::Check;

namespace {

// Whether it is a fault of the sheet that any text may have.
bool IsWithin(const std::vector<excelhost::CellFault>& faults) {
    for (const excelhost::CellFault& fault : faults) {
        if (fault.Row() == 0 || fault.Column() == 0 || *fault.what() == '\0') return false;
    }
    return true;
}

// The calculated sheet as CSV; nothing for a text that is no sheet.
std::optional<std::string> Calculated(std::string_view csv) {
    excelhost::Host host;
    host.KeepTrace(false);
    try {
        excelhost::Sheet sheet(csv);
        Check(IsWithin(sheet.Calculate(host, 1, TEXT("[Book1]Sheet1"))),
              "what couldn't be called is a cell's");
        Check(host.GetAccount().Balanced(), "nothing is left of the calls");
        return sheet.Csv();
    } catch (const excelhost::SheetFaults& faults) {
        Check(!faults.All().empty() && IsWithin(faults.All()), "a fault is a cell's");
        return std::nullopt;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string csv(reinterpret_cast<const char*>(data), size);
    const std::optional<std::string> values = Calculated(csv);
    if (!values) return 0;
    const excelhost::CsvTable before = excelhost::ParseCsv(csv);
    const excelhost::CsvTable after = excelhost::ParseCsv(*values);
    Check(before.size() == after.size(), "as many rows");
    Check(before.empty() || before.front().size() == after.front().size(), "as many columns");
    std::string written;
    for (const auto& row : after) written += excelhost::CsvLine(row);
    Check(written == *values, "what is read is written again");
    Check(Calculated(csv) == values, "the same each time");
    return 0;
}
