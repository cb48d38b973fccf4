// The members of Range that read, write and search its cells, and what all members of Range start from.
#pragma once

#include "excelhost/automation/classes.h"

namespace excelhost::automation::ranges {

// What a call is about, and the first cell of it.
[[nodiscard]] RangeNode& Self(const Call& call) noexcept;
[[nodiscard]] SheetNode& Sheet(const Call& call) noexcept;
[[nodiscard]] Cell& FirstCell(const Call& call);

// "Unable to get the ... property of the Range class", of the member called.
[[nodiscard]] Refusal UnableToGet(const Call& call);
// A range on the call's sheet; refused for one that leaves it.
void ReturnRect(Call& call, const Rect& rect);
// As a cell shows it: errors by their names.
[[nodiscard]] Text ShownText(const Variant& value);

// rangecells.cpp
void ValueProperty(Call& call);
void FormulaProperty(Call& call);
void FormulaArrayProperty(Call& call);
void ReturnText(Call& call);
void LockedProperty(Call& call);
void HiddenProperty(Call& call);
void NumberFormat(Call& call);
void ClearCells(Call& call, bool all);
void DeleteCells(Call& call);

// rangesearch.cpp
void FindText(Call& call);
void FindNextText(Call& call);
void ReplaceText(Call& call);
void SpecialCells(Call& call);
void GoalSeek(Call& call);

}  // namespace excelhost::automation::ranges
