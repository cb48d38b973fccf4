#include "excelhost/grid.h"

#include "excelhost/numbers.h"

#include <cmath>
#include <utility>

namespace excelhost {
namespace {

const Value kEmptyCell = Empty{};

}  // namespace

Grid::Grid(RW rows, COL columns)
    : rows_(rows),
      columns_(columns),
      cells_(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns)) {}

std::size_t Grid::Index(Place place) const noexcept {
    return static_cast<std::size_t>(place.row) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(place.column);
}

bool Grid::Contains(Place place) const noexcept {
    return place.row >= 0 && place.row < rows_ && place.column >= 0 && place.column < columns_;
}

const Value& Grid::At(Place place) const noexcept {
    return Contains(place) ? cells_[Index(place)] : kEmptyCell;
}

void Grid::Set(Place place, Value value) {
    cells_[Index(place)] = std::move(value);
}

std::optional<Area> Grid::Inside(const Area& area) const noexcept {
    Area inside = area;
    inside.rectangle.rwLast = std::min(inside.rectangle.rwLast, rows_ - 1);
    inside.rectangle.colLast = std::min(inside.rectangle.colLast, columns_ - 1);
    const bool any = inside.rectangle.rwFirst <= inside.rectangle.rwLast &&
                     inside.rectangle.colFirst <= inside.rectangle.colLast;
    return any ? std::optional(inside) : std::nullopt;
}

Value Grid::Read(const Area& area) const {
    const XLREF12& r = area.rectangle;
    if (area.Rows() == 1 && area.Columns() == 1) return At({r.rwFirst, r.colFirst});
    if (area.Rows() > kMaterialLimit / area.Columns()) return ErrorValue{xlerrValue};
    Array array{area.Rows(), area.Columns(), {}};
    array.cells.reserve(array.rows * array.columns);
    for (RW row = r.rwFirst; row <= r.rwLast; ++row) {
        for (COL column = r.colFirst; column <= r.colLast; ++column) array.cells.push_back(At({row, column}));
    }
    return array;
}

std::optional<Cells::Range> Cells::Find(const Value& reference) const noexcept {
    const Reference* named = reference.If<Reference>();
    const Area* area = reference.If<Area>();
    if (named != nullptr && named->areas.size() == 1) area = &named->areas.front();
    const IDSHEET sheet = named != nullptr ? named->sheet : own_;
    if (area == nullptr || sheet < 1 || sheet > sheets_.size()) return std::nullopt;
    return Range{sheets_[sheet - 1], *area};
}

Value Cells::Scalar(const Value& value) const {
    if (value.Is<Missing>()) return Empty{};
    if (const Array* array = value.If<Array>()) {
        return array->cells.empty() ? Value(ErrorValue{xlerrValue}) : Scalar(array->cells.front());
    }
    if (!IsReference(value)) return value;
    const auto range = Find(value);
    if (!range) return ErrorValue{xlerrRef};
    const auto& [grid, area] = *range;
    const XLREF12& r = area.rectangle;
    if (area.Rows() == 1 && area.Columns() == 1) return grid->At({r.rwFirst, r.colFirst});
    if (area.Columns() == 1 && place_.row >= r.rwFirst && place_.row <= r.rwLast) {
        return grid->At({place_.row, r.colFirst});
    }
    if (area.Rows() == 1 && place_.column >= r.colFirst && place_.column <= r.colLast) {
        return grid->At({r.rwFirst, place_.column});
    }
    return ErrorValue{xlerrValue};
}

Area Cells::Bounded(const Area& area) const noexcept {
    Area bounded = area;
    RW rows = 1;
    COL columns = 1;
    for (const Grid* grid : sheets_) {
        rows = std::max(rows, grid->Rows());
        columns = std::max(columns, grid->Columns());
    }
    if (area.Rows() == kRowLimit) bounded.rectangle.rwLast = rows - 1;
    if (area.Columns() == kColumnLimit) bounded.rectangle.colLast = columns - 1;
    return bounded;
}

Value Cells::Read(const Value& value) const {
    if (!IsReference(value)) return value.Is<Missing>() ? Value(Empty{}) : value;
    const auto range = Find(value);
    return range ? range->grid->Read(Bounded(range->area)) : Value(ErrorValue{xlerrRef});
}

std::optional<ErrorValue> ToNumber(const Value& scalar, double& number) {
    if (const auto* error = scalar.If<ErrorValue>()) return *error;
    if (const auto* text = scalar.If<Text>()) {
        if (!ReadTypedNumber(Utf8(*text), number)) return ErrorValue{xlerrValue};
    } else if (const auto* given = scalar.If<double>()) {
        number = *given;
    } else if (const auto* whole = scalar.If<int>()) {
        number = *whole;
    } else if (const auto* truth = scalar.If<bool>()) {
        number = *truth ? 1 : 0;
    } else {
        number = 0;
    }
    return std::nullopt;
}

std::optional<ErrorValue> ToText(const Value& scalar, Text& text) {
    if (const auto* error = scalar.If<ErrorValue>()) return *error;
    if (const auto* given = scalar.If<Text>()) {
        text = *given;
    } else if (const auto* truth = scalar.If<bool>()) {
        text = *truth ? TEXT("TRUE") : TEXT("FALSE");
    } else if (scalar.Is<double>() || scalar.Is<int>()) {
        double number = 0;
        (void)ToNumber(scalar, number);
        text = Wide(NumberText(number));
    } else {
        text.clear();
    }
    return std::nullopt;
}

std::optional<ErrorValue> ToTruth(const Value& scalar, bool& truth) {
    if (const auto* text = scalar.If<Text>()) {
        truth = SameName(*text, TEXT("TRUE"));
        if (!truth && !SameName(*text, TEXT("FALSE"))) return ErrorValue{xlerrValue};
        return std::nullopt;
    }
    double number = 0;
    const auto error = ToNumber(scalar, number);
    truth = number != 0;
    return error;
}

Value FiniteNumber(double number) {
    return std::isfinite(number) ? Value(number) : Value(ErrorValue{xlerrNum});
}

Value PowerOf(double base, double exponent) {
    if (base == 0 && exponent == 0) return ErrorValue{xlerrNum};
    if (base == 0 && exponent < 0) return ErrorValue{xlerrDiv0};
    return FiniteNumber(std::pow(base, exponent));
}

}  // namespace excelhost
