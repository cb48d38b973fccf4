// Comma-separated values as RFC 4180 describes them, UTF-8. Lines may end with LF as well as CRLF, a
// byte-order mark in front is skipped, and the end of the last line may be missing.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// Something wrong at a cell of the input; both numbers count from 1.
class CellFault : public std::runtime_error {
  public:
    CellFault(std::size_t row, std::size_t column, const std::string& message)
        : std::runtime_error(message), row_(row), column_(column) {}
    [[nodiscard]] std::size_t Row() const noexcept { return row_; }
    [[nodiscard]] std::size_t Column() const noexcept { return column_; }

  private:
    std::size_t row_;
    std::size_t column_;
};

// Fields row by row. Every row has as many fields as the first one; an empty text has no row.
using CsvTable = std::vector<std::vector<std::string>>;

// Whether rows may differ in their number of fields. An empty line is a row of one empty field.
enum class RowLength { Equal, Any };

// CellFault for a quote that isn't closed or stands inside an unquoted field, text behind a closing quote, a
// lone carriage return, and a row of another length.
[[nodiscard]] CsvTable ParseCsv(std::string_view text, RowLength length = RowLength::Equal);

// One line with its LF; a field is quoted where it must be.
[[nodiscard]] std::string CsvLine(const std::vector<std::string>& fields);

}  // namespace excelhost
