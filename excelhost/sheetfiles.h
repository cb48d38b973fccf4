// The sheets of a run, as the command line names them: FILE.csv, or Name=FILE.csv for several sheets that refer
// to one another.
#pragma once

#include "excelhost/report/reportedsheet.h"
#include "excelhost/sheet.h"

#include <deque>
#include <filesystem>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// Something wrong with what the command line names. The text names it.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// UTF-8, as all of the program's arguments are.
[[nodiscard]] std::filesystem::path PathFrom(std::string_view utf8);

// The content of a file under its name in UTF-8. InputError.
[[nodiscard]] std::string ReadInput(const std::string& name);

class SheetFiles {
  public:
    // Reads the files. A name without "=" is the file's own, without folder and extension; a file that is there
    // under the whole operand is taken as it is. Faults in cells are written to `err`, a line each, and make
    // the sheets bad. InputError for a file that can't be read, a name that two sheets have and for no sheets.
    SheetFiles(std::span<const std::string> operands, std::ostream& err);

    // False when a file holds faults; then there is nothing to calculate.
    [[nodiscard]] bool Good() const noexcept { return good_; }

    // The sheets under their names as xlSheetNm gives them; they live as long as this.
    [[nodiscard]] std::vector<NamedSheet> Named();

    // CalculateSheets, with the faults written to `err` by PrintFaults.
    void Calculate(Host& host, std::size_t threads = 1, const CalculationProgress& progress = {});
    // Writes the faults of the calculation; false when there are any.
    [[nodiscard]] bool PrintFaults(std::ostream& err) const;
    // The sheets for a report, with the fields of their files. They show the values of this object, which must live
    // as long; a file that can't be read a second time has no fields.
    [[nodiscard]] std::vector<ReportedSheet> Reported() const;
    // The values as CSV. Of several sheets each has a line "# Name" ahead.
    void Print(std::ostream& out) const;

  private:
    struct Entry {
        std::string name;
        std::string file;
    };

    std::vector<Entry> entries_;
    std::deque<Sheet> sheets_;
    std::vector<std::vector<CellFault>> faults_;
    bool good_ = true;
};

}  // namespace excelhost
