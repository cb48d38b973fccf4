// References: values that name cells of a sheet without holding their contents. Their makers, and the size of
// a sheet, which Excel's automation interface is asked for.
//
// Rows and columns count from 0, as in XLREF12. A sheet is named by Excel's number for it (xlSheetId).
#pragma once

#include "excelvalues/value.h"

#include <oleauto.h>

#include <cstdint>
#include <vector>

// Addresses as the add-in keeps them. The ends are behind the last row and column, those of XLREF12 on them.
struct SheetCell {
    std::uint32_t sheetId = 0;
    std::int32_t row = 0;
    std::int16_t column = 0;
};
struct CellSpan {
    std::int32_t rowBegin = 0;
    std::int32_t rowEnd = 0;
    std::int16_t columnBegin = 0;
    std::int16_t columnEnd = 0;
};
struct SheetRange {
    std::uint32_t sheetId = 0;
    std::int32_t rowBegin = 0;
    std::int32_t rowEnd = 0;
    std::int16_t columnBegin = 0;
    std::int16_t columnEnd = 0;
};
struct SheetAreas {
    std::uint32_t sheetId = 0;
    std::vector<CellSpan> areas;
};

// xltypeRef with copies of the rectangles. `rectangles` may be null when there are none: such a reference has
// a block too, with room for one rectangle. Raises std::bad_alloc, and std::length_error for a vector of more
// than 65,535 rectangles, which a record can't count.
[[nodiscard]] XXloperPtr XXloperFromRectangles(std::uint32_t sheetId, std::uint16_t count,
                                               const XLREF12* rectangles);
[[nodiscard]] XXloperPtr XXloperFromRectangles(std::uint32_t sheetId, const std::vector<XLREF12>& rectangles);
[[nodiscard]] XXloperPtr XXloperFromRectangle(std::uint32_t sheetId, std::int32_t rwFirst,
                                              std::int32_t rwLast, std::int16_t colFirst,
                                              std::int16_t colLast);
[[nodiscard]] XXloperPtr XXloperFromCell(std::uint32_t sheetId, std::int32_t row, std::int16_t column);
[[nodiscard]] XXloperPtr XXloperFromCell(const SheetCell& cell);
[[nodiscard]] XXloperPtr XXloperFromRange(const SheetRange& range);
[[nodiscard]] XXloperPtr XXloperFromAreas(const SheetAreas& areas);

// xltypeSRef: one rectangle on the current sheet, which the value doesn't name.
[[nodiscard]] XXloperPtr XXloperFromSRef(std::int32_t rwFirst, std::int32_t rwLast, std::int16_t colFirst,
                                         std::int16_t colLast);

// A reference to the sheet with no rectangle; or, with `wholeSheet`, with the one of all its cells, for which
// the sheet's columns and its rows are asked for one after the other.
[[nodiscard]] XXloperPtr XXloperFromSheet(IDispatch* application, std::uint32_t sheetId, bool wholeSheet);

// The size of a sheet: Excel gives the names of its workbook and of itself (xlSheetNm), and `application`,
// Excel's Application, the sheet under these names. Raises _com_error where the object model does, and
// E_INVALIDARG where Excel gives no name of the form "[Book1.xlsx]Sheet1", as for a number that no sheet has.
// `rows` and `columns` are then as they were.
void WorksheetSize(IDispatch* application, std::uint32_t sheetId, std::int32_t& rows, std::int16_t& columns);
[[nodiscard]] std::int32_t WorksheetRowCount(IDispatch* application, std::uint32_t sheetId);
[[nodiscard]] std::int16_t WorksheetColumnCount(IDispatch* application, std::uint32_t sheetId);
