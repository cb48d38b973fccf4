// Cell addresses as text, in both reference styles.
#pragma once

#include "excelhost/automation/variant.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace excelhost::automation {

// The size of a sheet, in cells.
struct SheetLimits {
    LONG rows = 1048576;
    LONG columns = 16384;
};

// A rectangle of cells. Rows and columns count from 1, both ends belong to it.
struct Rect {
    LONG row1 = 1;
    LONG column1 = 1;
    LONG row2 = 1;
    LONG column2 = 1;

    [[nodiscard]] LONG Rows() const noexcept { return row2 - row1 + 1; }
    [[nodiscard]] LONG Columns() const noexcept { return column2 - column1 + 1; }
    [[nodiscard]] std::int64_t Cells() const noexcept { return std::int64_t{Rows()} * Columns(); }
    [[nodiscard]] bool Contains(LONG row, LONG column) const noexcept {
        return row >= row1 && row <= row2 && column >= column1 && column <= column2;
    }
    [[nodiscard]] bool Meets(const Rect& other) const noexcept {
        return row1 <= other.row2 && other.row1 <= row2 && column1 <= other.column2 &&
               other.column1 <= column2;
    }
    friend bool operator==(const Rect&, const Rect&) = default;
};

// What an address names: one or more rectangles, and the workbook and the sheet where it says them.
struct Address {
    Text workbook;
    Text sheet;
    std::vector<Rect> areas;
};

// Reads A1-style text such as "$B$2", "A1:B2,C3", "A:A", "2:4", "Sheet1!A1" or "'[My Book.xlsx]My Sheet'!A1".
// Nothing for text of another form or cells outside the limits.
[[nodiscard]] std::optional<Address> ParseAddress(TextView text, const SheetLimits& limits);

// Reads one cell such as "$AB12" at the front of `text` and takes it off. Nothing leaves `text` as it was.
struct CellReference {
    LONG row = 0;
    LONG column = 0;
    bool rowAbsolute = false;
    bool columnAbsolute = false;
};
[[nodiscard]] std::optional<CellReference> TakeCell(TextView& text, const SheetLimits& limits);

// A rectangle in A1 style; whole rows and columns in their short form, "$2:$4" and "$A:$A".
[[nodiscard]] Text FormatA1(const Rect& rect, bool rowAbsolute, bool columnAbsolute,
                            const SheetLimits& limits);

// A cell in R1C1 style; a relative part counts from `base`.
[[nodiscard]] Text FormatR1C1(const CellReference& cell, const CellReference& base);

// "[Book1.xlsx]Sheet1!", in apostrophes where a name needs them.
[[nodiscard]] Text SheetPrefix(TextView workbook, TextView sheet);

// A whole number in decimal digits.
[[nodiscard]] Text Decimal(LONG number);

}  // namespace excelhost::automation
