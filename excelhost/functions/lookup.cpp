#include "excelhost/functions/functions.h"

#include "excelhost/formula.h"

#include "excelhost/calculate.h"
#include "excelhost/functions/criteria.h"

#include <array>
#include <cmath>
#include <utility>
#include <optional>

namespace excelhost {
namespace {

using Found = std::optional<std::size_t>;

bool SameKind(const Value& a, const Value& b) {
    return a.index() == b.index();
}

// Where the wanted value stands among `count` values; texts may be patterns.
template <class At>
Found FindExact(const Value& wanted, std::size_t count, At at) {
    const Text* pattern = wanted.If<Text>();
    for (std::size_t i = 0; i < count; ++i) {
        const Value& value = at(i);
        if (!SameKind(value, wanted)) continue;
        const bool same = pattern != nullptr ? MatchesPattern(*value.If<Text>(), *pattern)
                                             : std::is_eq(CompareScalars(value, wanted));
        if (same) return i;
    }
    return std::nullopt;
}

// The last of the values that aren't beyond the wanted one, in ascending or descending order; values of other
// types are passed over.
template <class At>
Found FindSorted(const Value& wanted, std::size_t count, bool ascending, At at) {
    Found last;
    for (std::size_t i = 0; i < count; ++i) {
        const Value& value = at(i);
        if (!SameKind(value, wanted)) continue;
        const auto order = CompareScalars(value, wanted);
        if (ascending ? std::is_gt(order) : std::is_lt(order)) break;
        last = i;
        if (!ascending && std::is_eq(order)) break;
    }
    return last;
}

Value Wanted(const Given& given) {
    Value wanted = given.Scalar(0);
    if (wanted.Is<Empty>()) return 0.0;
    return wanted;
}

// VLOOKUP and HLOOKUP(wanted, table, line, [sorted]): along the first column and the first row.
template <bool Vertical>
Value LookUpTable(const Given& given) {
    const Value wanted = Wanted(given);
    const bool sorted = given.Truth(3, true);
    const std::size_t line = given.Whole(2, 1) - 1;
    const Cells::Range range = given.Range(1);
    if (line >= (Vertical ? range.area.Columns() : range.area.Rows())) return ErrorValue{xlerrRef};
    const XLREF12& r = range.area.rectangle;
    const auto cell = [&](std::size_t along, std::size_t across) -> const Value& {
        const auto row = static_cast<RW>(Vertical ? along : across);
        const auto column = static_cast<COL>(Vertical ? across : along);
        return range.grid->At({r.rwFirst + row, r.colFirst + column});
    };
    const auto key = [&](std::size_t i) -> const Value& { return cell(i, 0); };
    const auto inside = range.grid->Inside(range.area);
    const std::size_t count = !inside ? 0 : Vertical ? inside->Rows() : inside->Columns();
    const Found place = sorted ? FindSorted(wanted, count, true, key) : FindExact(wanted, count, key);
    return place ? cell(*place, line) : Value(ErrorValue{xlerrNA});
}

// MATCH(wanted, line, [1 ascending, 0 unsorted, -1 descending])
Value Match(const Given& given) {
    const Value wanted = Wanted(given);
    const Array line = given.Table(1);
    const double order = given.Number(2, 1);
    if (line.rows != 1 && line.columns != 1) return ErrorValue{xlerrNA};
    const auto at = [&](std::size_t i) -> const Value& { return line.cells[i]; };
    const Found place = order == 0 ? FindExact(wanted, line.cells.size(), at)
                                   : FindSorted(wanted, line.cells.size(), order > 0, at);
    return place ? Value(static_cast<double>(*place + 1)) : Value(ErrorValue{xlerrNA});
}

// LOOKUP(wanted, sorted line, [results])
Value LookUp(const Given& given) {
    const Value wanted = Wanted(given);
    const Array keys = given.Table(1);
    const Array results = given.Table(given.Has(2) ? 2 : 1);
    // Along the longer side; of a table without results the last line across is the result.
    const bool across = keys.columns > keys.rows;
    const std::size_t count = across ? keys.columns : keys.rows;
    const Found place = FindSorted(wanted, count, true, [&](std::size_t i) -> const Value& {
        return across ? keys.At(0, i) : keys.At(i, 0);
    });
    if (!place) return ErrorValue{xlerrNA};
    if (given.Has(2))
        return *place < results.cells.size() ? results.cells[*place] : Value(ErrorValue{xlerrNA});
    return across ? keys.At(keys.rows - 1, *place) : keys.At(*place, keys.columns - 1);
}

// XLOOKUP(wanted, line, results, [if not found], [0 exact, -1 or next smaller, 1 or next larger, 2 pattern])
Value ExtendedLookUp(const Given& given) {
    const Value wanted = Wanted(given);
    const Array line = given.Table(1);
    const Array results = given.Table(2);
    const double mode = given.Number(4, 0);
    if (given.SizeOf(1) != given.SizeOf(2)) return ErrorValue{xlerrValue};
    Found best;
    for (std::size_t i = 0; i < line.cells.size(); ++i) {
        const Value& value = line.cells[i];
        if (!SameKind(value, wanted)) continue;
        const auto* text = value.If<Text>();
        const auto order = CompareScalars(value, wanted);
        if (std::is_eq(order) || (mode == 2 && text && MatchesPattern(*text, *wanted.If<Text>()))) {
            return results.cells[i];
        }
        const bool candidate = (mode == -1 && std::is_lt(order)) || (mode == 1 && std::is_gt(order));
        const auto against =
            best ? CompareScalars(value, line.cells[*best]) : std::partial_ordering::unordered;
        if (candidate && (!best || (mode < 0 ? std::is_gt(against) : std::is_lt(against)))) best = i;
    }
    if (best) return results.cells[*best];
    return given.Has(3) && !given.Raw(3).Is<Missing>() ? given.Any(3) : Value(ErrorValue{xlerrNA});
}

// A row and a column from 1 on, all of them for 0.
Value Part(const Array& array, std::size_t row, std::size_t column) {
    if (row > 0 && column > 0) return array.At(row - 1, column - 1);
    Array part{row > 0 ? 1 : array.rows, column > 0 ? 1 : array.columns, {}};
    for (std::size_t i = 0; i < part.rows; ++i) {
        for (std::size_t k = 0; k < part.columns; ++k) {
            part.cells.push_back(array.At(row > 0 ? row - 1 : i, column > 0 ? column - 1 : k));
        }
    }
    return part;
}

// INDEX(table, row, [column]): a reference when the table is one. 0 stands for all rows or columns; of a table
// with one row the second argument is the column.
Value Index(const Given& given) {
    std::size_t row = given.Whole(1, 0);
    std::size_t column = given.Whole(2, 0, 0);
    const Array* array = given.Raw(0).If<Array>();
    if (array == nullptr && !IsReference(given.Raw(0))) return given.Any(0);
    const Cells::Range range = array == nullptr ? given.Range(0) : Cells::Range{};
    const std::size_t rows = array != nullptr ? array->rows : range.area.Rows();
    const std::size_t columns = array != nullptr ? array->columns : range.area.Columns();
    if (!given.Has(2) && rows == 1) std::swap(row, column);
    if (!given.Has(2) && columns == 1) column = 1;
    if (row > rows || column > columns) return ErrorValue{xlerrRef};
    if (array != nullptr) return Part(*array, row, column);
    Area area = range.area;
    XLREF12& r = area.rectangle;
    if (row > 0) r.rwFirst = r.rwLast = r.rwFirst + static_cast<RW>(row) - 1;
    if (column > 0) r.colFirst = r.colLast = r.colFirst + static_cast<COL>(column) - 1;
    const auto* named = given.Raw(0).If<Reference>();
    return named != nullptr ? Value(Reference{named->sheet, {area}}) : Value(area);
}

// OFFSET(reference, rows, columns, [height], [width]): a rectangle so far away; negative sizes reach up and left.
Value Offset(const Given& given) {
    const Cells::Range from = given.Range(0);
    const XLREF12& r = from.area.rectangle;
    // The first and last of a side that has moved; nothing when they are beyond the sheet.
    const auto move = [&](std::size_t by, std::size_t size, double first, double last,
                          double limit) -> std::optional<std::pair<double, double>> {
        first += std::trunc(given.Number(by));
        const bool hasSize = given.Has(size) && !given.Raw(size).Is<Missing>();
        const double count =
            hasSize ? std::trunc(given.Number(size)) : last - (first - std::trunc(given.Number(by))) + 1;
        if (count == 0) return std::nullopt;
        const double end = first + count + (count > 0 ? -1 : 1);
        if (std::min(first, end) < 0 || std::max(first, end) >= limit) return std::nullopt;
        return std::pair(std::min(first, end), std::max(first, end));
    };
    const auto rows = move(1, 3, r.rwFirst, r.rwLast, kRowLimit);
    const auto columns = move(2, 4, r.colFirst, r.colLast, kColumnLimit);
    if (!rows || !columns) return ErrorValue{xlerrRef};
    const Area area{{static_cast<RW>(rows->first), static_cast<RW>(rows->second),
                     static_cast<COL>(columns->first), static_cast<COL>(columns->second)}};
    const auto* named = given.Raw(0).If<Reference>();
    return named != nullptr ? Value(Reference{named->sheet, {area}}) : Value(area);
}

// INDIRECT(text): the reference that a text names, in the form A1.
Value Indirect(const Given& given) try {
    const Text text = given.String(0);
    if (!given.Truth(1, true)) return ErrorValue{xlerrRef};
    const Formula formula = ParseFormula(TEXT("=") + text, given.Sheets().Names());
    const FormulaStep& step = formula.steps.front();
    const bool isReference = formula.steps.size() == 1 && step.step == Step::Push && IsReference(step.value);
    return isReference ? step.value : Value(ErrorValue{xlerrRef});
} catch (const FormulaFault&) {
    return ErrorValue{xlerrRef};
}

// Rows as columns.
Value Transpose(const Given& given) {
    const Array table = given.Table(0);
    Array turned{table.columns, table.rows, {}};
    turned.cells.reserve(table.cells.size());
    for (std::size_t column = 0; column < table.columns; ++column) {
        for (std::size_t row = 0; row < table.rows; ++row) turned.cells.push_back(table.At(row, column));
    }
    return turned;
}

Value Choose(const Given& given) {
    const std::size_t choice = given.Whole(0, 1);
    if (choice >= given.Count()) return ErrorValue{xlerrValue};
    return given.Raw(choice);
}

// The numbers of rows and columns from one on: an array of them for several, as far as arrays go.
template <bool Down>
Value NumberOf(const Given& given) {
    if (!given.Has(0)) {
        const Place here = given.Sheets().Here();
        return 1.0 + (Down ? here.row : here.column);
    }
    const XLREF12 r = given.Sheets().Bounded(given.Range(0).area).rectangle;
    const double first = 1.0 + (Down ? r.rwFirst : r.colFirst);
    const auto count = static_cast<std::size_t>(Down ? r.rwLast - r.rwFirst : r.colLast - r.colFirst) + 1;
    if (count == 1) return first;
    Array numbers{Down ? count : 1, Down ? 1 : count, {}};
    numbers.cells.reserve(count);
    for (std::size_t i = 0; i < count; ++i) numbers.cells.emplace_back(first + static_cast<double>(i));
    return numbers;
}

Value Rows(const Given& given) {
    const Array* array = given.Raw(0).If<Array>();
    return static_cast<double>(array != nullptr ? array->rows : given.Range(0).area.Rows());
}
Value Columns(const Given& given) {
    const Array* array = given.Raw(0).If<Array>();
    return static_cast<double>(array != nullptr ? array->columns : given.Range(0).area.Columns());
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"CHOOSE", 2, kArgumentLimit, Choose, {0b1}},
    {"COLUMN", 0, 1, NumberOf<false>, kReferences},
    {"COLUMNS", 1, 1, Columns, kReferences},
    {"HLOOKUP", 3, 4, LookUpTable<false>, {0b1101}},
    {"INDEX", 2, 3, Index, {0b110, true}},
    {"INDIRECT", 1, 2, Indirect, kReferences, true, true},
    {"LOOKUP", 2, 3, LookUp, {0b1, true}},
    {"MATCH", 2, 3, Match, {0b101, true}},
    {"OFFSET", 3, 5, Offset, kReferences, true, true},
    {"ROW", 0, 1, NumberOf<true>, kReferences},
    {"ROWS", 1, 1, Rows, kReferences},
    {"TRANSPOSE", 1, 1, Transpose, kWholeArrays},
    {"VLOOKUP", 3, 4, LookUpTable<true>, {0b1101}},
    {"XLOOKUP", 3, 5, ExtendedLookUp, {0b11001, true}},
});

}  // namespace

std::span<const Builtin> LookupFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
