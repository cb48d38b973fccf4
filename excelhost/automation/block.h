// Blocks of cells read and written as one VARIANT: a value of its own for one cell, a two-dimensional array
// from 1 on for more.
#pragma once

#include "excelhost/automation/model.h"

namespace excelhost::automation {

// Reads the first area of the range, cell by cell.
[[nodiscard]] Variant ReadBlock(const RangeNode& range,
                                const std::function<Variant(LONG row, LONG column)>& read);

// Writes the range: one value into all of its cells, an array into the first area as far as both reach; cells
// of the area that the array doesn't reach get #N/A.
void WriteBlock(const RangeNode& range, const VARIANT& value,
                const std::function<void(LONG row, LONG column, const VARIANT& value)>& write);

// What a property of single cells says of the whole range: a VT_BOOL, or VT_NULL where the cells differ.
[[nodiscard]] Variant Uniform(const RangeNode& range, const std::function<bool(const Cell&)>& property);
// The same for being part of one of the rectangles.
[[nodiscard]] Variant Covered(const RangeNode& range, const std::vector<Rect>& rectangles);
// The rectangle that holds the range's first cell, or null.
[[nodiscard]] const Rect* Covering(const RangeNode& range, const std::vector<Rect>& rectangles) noexcept;

}  // namespace excelhost::automation
