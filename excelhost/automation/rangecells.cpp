// The cells of a Range: values, formulas and what else each of them keeps.
#include "excelhost/automation/block.h"
#include "excelhost/automation/calculation.h"
#include "excelhost/automation/rangecalls.h"

#include <algorithm>

namespace excelhost::automation::ranges {
namespace {

void WriteCell(SheetNode& sheet, LONG row, LONG column, const VARIANT& value) {
    Cell& cell = sheet.At(row, column);
    const bool formula = value.vt == VT_BSTR && BstrText(value).starts_with(TEXT('='));
    cell.formula = formula ? Text(BstrText(value)) : Text();
    cell.value = formula ? Variant() : Variant(value);
}

void WriteCells(const RangeNode& range, const VARIANT& value) {
    SheetNode& sheet = range.sheet;
    for (const Rect& area : range.areas) CheckWritable(sheet, area);
    const std::size_t limit = sheet.workbook.compatible ? 1024 : 8192;
    if (value.vt == VT_BSTR) CheckFormula(BstrText(value), limit);
    for (const Rect& area : range.areas) {
        std::erase_if(sheet.arrays, [&](const Rect& array) { return array.Meets(area); });
        std::erase_if(sheet.spills, [&](const Rect& spill) { return spill.Meets(area); });
    }
    WriteBlock(range, value,
               [&](LONG row, LONG column, const VARIANT& each) { WriteCell(sheet, row, column, each); });
}

Variant FormulaOf(const SheetNode& sheet, LONG row, LONG column) {
    const Cell& cell = sheet.Look(row, column);
    return Variant(cell.formula.empty() ? ShownText(cell.value) : cell.formula);
}

// A protected sheet gives away no formula of a hidden cell.
void CheckReadable(const Call& call) {
    const Variant hidden = Uniform(Self(call), [](const Cell& cell) { return cell.hidden; });
    const bool none = hidden.Type() == VT_BOOL && hidden.Get().boolVal == VARIANT_FALSE;
    if (Sheet(call).protectedContents && !none) throw UnableToGet(call);
}

// A property of cells that is put for all of them and told as Uniform does.
template <bool Cell::*Property>
void FlagProperty(Call& call) {
    if (!call.IsPut())
        return call.Return(Uniform(Self(call), [](const Cell& cell) { return cell.*Property; }));
    const bool flag = call.ValueAs(VT_BOOL).Get().boolVal != VARIANT_FALSE;
    WriteBlock(Self(call), call.Value(),
               [&](LONG row, LONG column, const VARIANT&) { Sheet(call).At(row, column).*Property = flag; });
}

}  // namespace

void ValueProperty(Call& call) {
    if (call.IsPut()) return WriteCells(Self(call), call.Value());
    call.Return(ReadBlock(Self(call), [&](LONG row, LONG column) { return Sheet(call).Value(row, column); }));
}

void FormulaProperty(Call& call) {
    if (call.IsPut()) return WriteCells(Self(call), call.Value());
    CheckReadable(call);
    call.Return(
        ReadBlock(Self(call), [&](LONG row, LONG column) { return FormulaOf(Sheet(call), row, column); }));
}

void FormulaArrayProperty(Call& call) {
    const Rect& rect = Self(call).First();
    SheetNode& sheet = Sheet(call);
    if (!call.IsPut()) {
        CheckReadable(call);
        const Rect* array = Covering(Self(call), sheet.arrays);
        const bool whole =
            rect.Cells() == 1 || (array != nullptr && array->Contains(rect.row2, rect.column2));
        return call.Return(whole ? FormulaOf(sheet, rect.row1, rect.column1) : Variant::Null());
    }
    const Text formula = call.ValueAs(VT_BSTR).AsText();
    CheckWritable(sheet, rect);
    CheckFormula(formula, 255);
    if (!formula.starts_with(TEXT('='))) return WriteCells(Self(call), Variant(formula).Get());
    std::erase_if(sheet.arrays, [&](const Rect& each) { return each.Meets(rect); });
    sheet.PutArray(rect, formula);
}

void ReturnText(Call& call) {
    const RangeNode& range = Self(call);
    const Text first = ShownText(Sheet(call).Value(range.First().row1, range.First().column1));
    const bool same =
        range.Count() == 1 || std::ranges::all_of(Sheet(call).cells, [&](const auto& entry) {
            const auto [row, column] = entry.first;
            return !range.First().Contains(row, column) || ShownText(Sheet(call).Value(row, column)) == first;
        });
    call.Return(same ? Variant(first) : Variant::Null());
}

void NumberFormat(Call& call) {
    if (!call.IsPut()) {
        const Text first = Sheet(call).Look(Self(call).First().row1, Self(call).First().column1).format;
        const Variant same = Uniform(Self(call), [&](const Cell& cell) { return cell.format == first; });
        return call.Return(same.Type() == VT_NULL ? same : Variant(first));
    }
    const Text format = call.ValueAs(VT_BSTR).AsText();
    WriteBlock(Self(call), call.Value(),
               [&](LONG row, LONG column, const VARIANT&) { Sheet(call).At(row, column).format = format; });
}

void ClearCells(Call& call, bool all) {
    SheetNode& sheet = Sheet(call);
    for (const Rect& area : Self(call).areas) {
        CheckWritable(sheet, area);
        std::erase_if(sheet.arrays, [&](const Rect& array) { return array.Meets(area); });
        std::erase_if(sheet.spills, [&](const Rect& spill) { return spill.Meets(area); });
        for (auto& [place, cell] : sheet.cells) {
            if (!area.Contains(place.first, place.second)) continue;
            cell.formula.clear();
            cell.value = Variant();
            if (all) cell = Cell{};
        }
    }
    call.Return(true);
}

// The cells below move up.
void DeleteCells(Call& call) {
    SheetNode& sheet = Sheet(call);
    const Rect rect = Self(call).First();
    CheckWritable(sheet, rect);
    std::map<std::pair<LONG, LONG>, Cell> kept;
    for (auto& [place, cell] : sheet.cells) {
        const auto [row, column] = place;
        if (rect.Contains(row, column)) continue;
        const bool below = row > rect.row2 && column >= rect.column1 && column <= rect.column2;
        kept.emplace(std::pair{below ? row - rect.Rows() : row, column}, std::move(cell));
    }
    sheet.cells = std::move(kept);
    call.Return(true);
}

void LockedProperty(Call& call) {
    FlagProperty<&Cell::locked>(call);
}

void HiddenProperty(Call& call) {
    FlagProperty<&Cell::hidden>(call);
}

}  // namespace excelhost::automation::ranges

namespace excelhost::automation {

void CheckWritable(const SheetNode& sheet, const Rect& rect) {
    for (const Rect& array : sheet.arrays) {
        const bool inside =
            rect.Contains(array.row1, array.column1) && rect.Contains(array.row2, array.column2);
        if (array.Meets(rect) && !inside)
            throw Refusal::Exception(TEXT("You can't change part of an array."));
    }
    if (!sheet.protectedContents) return;
    std::int64_t unlocked = 0;
    for (const auto& [place, cell] : sheet.cells) {
        if (!cell.locked && rect.Contains(place.first, place.second)) ++unlocked;
    }
    if (unlocked < rect.Cells()) {
        throw Refusal::Exception(TEXT("The cell or chart you're trying to change is on a protected sheet."));
    }
}

}  // namespace excelhost::automation
