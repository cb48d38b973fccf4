// A rectangle of values from A1 on, with empty cells all around it, and the reading of values by Excel's
// rules.
#pragma once

#include "excelhost/value.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace excelhost {

// Most cells that a reference given by value may have; Excel has no such limit, our memory does.
inline constexpr std::size_t kMaterialLimit = std::size_t{1} << 22;

// Zero-based.
struct Place {
    RW row = 0;
    COL column = 0;
};

class Grid {
  public:
    Grid() = default;
    // At most Excel's limits of rows and columns.
    Grid(RW rows, COL columns);

    [[nodiscard]] RW Rows() const noexcept { return rows_; }
    [[nodiscard]] COL Columns() const noexcept { return columns_; }
    [[nodiscard]] std::size_t Index(Place place) const noexcept;
    [[nodiscard]] bool Contains(Place place) const noexcept;

    // Empty for a place outside.
    [[nodiscard]] const Value& At(Place place) const noexcept;
    void Set(Place place, Value value);

    // The part of an area that lies inside; nothing when none does.
    [[nodiscard]] std::optional<Area> Inside(const Area& area) const noexcept;

    // What is behind an area: a value for one cell, else an Array with its empty cells; #VALUE! for one of
    // more than kMaterialLimit cells.
    [[nodiscard]] Value Read(const Area& area) const;

    // The one value that an operator takes from an operand: an area of several cells gives its cell in the
    // row or column of `place` (Excel's implicit intersection), #VALUE! when there is none; an array its
    // first element; a missing argument is an empty cell; a reference to a sheet is #REF!.
    [[nodiscard]] Value Scalar(const Value& value, Place place) const;

  private:
    RW rows_ = 0;
    COL columns_ = 0;
    std::vector<Value> cells_;
};

// A scalar as a number: text is read as one that was typed, TRUE is 1, empty is 0. The error that stands in
// the way otherwise.
[[nodiscard]] std::optional<ErrorValue> ToNumber(const Value& scalar, double& number);
// A scalar as text: numbers in up to 15 digits, TRUE and FALSE.
[[nodiscard]] std::optional<ErrorValue> ToText(const Value& scalar, Text& text);
// A scalar as a condition: numbers other than 0 are true, the texts TRUE and FALSE are read.
[[nodiscard]] std::optional<ErrorValue> ToTruth(const Value& scalar, bool& truth);

// The number as a value; #NUM! for one that isn't finite.
[[nodiscard]] Value FiniteNumber(double number);

}  // namespace excelhost
