#include "excelhost/automation/calculation.h"

#include "excelhost/calculate.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

// Excel's error values travel as VT_ERROR with this facility, 2000 added to their number ("Cell Error
// Values").
constexpr std::uint32_t errorFacility = 0x800A0000;
constexpr int errorBase = 2000;

Variant FromValue(const Value& value) {
    if (const auto* number = value.If<double>()) return Variant(*number);
    if (const auto* whole = value.If<int>()) return Variant(static_cast<double>(*whole));
    if (const auto* flag = value.If<bool>()) return Variant(*flag);
    if (const auto* text = value.If<Text>()) return Variant(*text);
    if (const auto* error = value.If<ErrorValue>()) return ErrorVariant(error->number);
    return value.Is<Empty>() ? Variant(0.0) : ErrorVariant(xlerrValue);
}

Value ToValue(const Variant& variant) {
    switch (variant.Type()) {
        case VT_EMPTY:
            return Empty{};
        case VT_BOOL:
            return variant.Get().boolVal != VARIANT_FALSE;
        case VT_BSTR:
            return Text(BstrText(variant.Get()));
        case VT_ERROR:
            return ErrorValue{(variant.Get().scode & 0xFFFF) - errorBase};
        default:
            return variant.AsNumber();
    }
}

// The cells that the formula refers to, calculated, in a grid that reaches just so far.
Grid ReferencedCells(const SheetNode& sheet, const Formula& formula) {
    const Rect used = sheet.Used();
    std::vector<Rect> areas;
    Rect bounds{1, 1, 0, 0};
    for (const FormulaStep& step : formula.steps) {
        const auto* area = step.value.If<Area>();
        if (area == nullptr) continue;
        const XLREF12& reference = area->rectangle;
        const Rect inside{reference.rwFirst + 1, reference.colFirst + 1,
                          std::min<LONG>(reference.rwLast + 1, used.row2),
                          std::min<LONG>(reference.colLast + 1, used.column2)};
        if (inside.Rows() < 1 || inside.Columns() < 1) continue;
        areas.push_back(inside);
        bounds.row2 = std::max(bounds.row2, inside.row2);
        bounds.column2 = std::max(bounds.column2, inside.column2);
    }
    if (bounds.Cells() > static_cast<std::int64_t>(kMaterialLimit)) throw Refusal::Result(E_OUTOFMEMORY);
    Grid grid(bounds.Rows(), bounds.Columns());
    for (const auto& [place, cell] : sheet.cells) {
        const LONG row = place.first;
        const LONG column = place.second;
        const bool referenced =
            std::ranges::any_of(areas, [=](const Rect& area) { return area.Contains(row, column); });
        if (referenced && !cell.IsEmpty()) grid.Set({row - 1, column - 1}, ToValue(sheet.Value(row, column)));
    }
    return grid;
}

}  // namespace

void CheckFormula(TextView text, std::size_t limit) {
    if (text.empty() || text.front() != TEXT('=')) return;
    if (text.size() > limit) throw Refusal::Exception(TEXT("The formula is too long."));
    try {
        (void)ParseFormula(text);
    } catch (const FormulaFault& fault) {
        throw Refusal::Exception(
            (TEXT("There's a problem with this formula: ") + Wide(fault.what())).c_str());
    }
}

Variant CalculateText(const SheetNode& sheet, LONG row, LONG column, TextView text) {
    try {
        const Formula formula = ParseFormula(text);
        const Grid grid = ReferencedCells(sheet, formula);
        const auto unknown = [](TextView, std::span<const Value>) -> Value { return ErrorValue{xlerrName}; };
        const Grid* const grids[] = {&grid};
        return FromValue(CalculateFormula(formula, Cells(grids, 1, {row - 1, column - 1}), unknown));
    } catch (const FormulaFault&) {
        return ErrorVariant(xlerrName);
    }
}

Variant ErrorVariant(int number) noexcept {
    return Variant::Error(static_cast<SCODE>(errorFacility + static_cast<std::uint32_t>(errorBase + number)));
}

}  // namespace excelhost::automation
