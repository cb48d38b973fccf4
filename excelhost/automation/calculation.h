// Formulas of the automation server's cells, read and calculated by the simulated Excel's engine.
#pragma once

#include "excelhost/automation/model.h"

namespace excelhost::automation {

// Refuses text that begins with "=" and that Excel couldn't read, or that is longer than `limit` units. The
// language is that of excelhost/formula.h: names and other sheets aren't in it.
void CheckFormula(TextView text, std::size_t limit);

// The value of a formula in a cell of the sheet; a formula that can't be read gives #NAME?.
[[nodiscard]] Variant CalculateText(const SheetNode& sheet, LONG row, LONG column, TextView text);

// The VARIANT of an error value, such as xlerrNA: VT_ERROR 0x800A07FA.
[[nodiscard]] Variant ErrorVariant(int number) noexcept;

}  // namespace excelhost::automation
