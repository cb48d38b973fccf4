// The cells of sheets, and what a formula sees of them.
#pragma once

#include "excelhost/value.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace excelhost {

// Most cells that a reference given by value may have; Excel has no such limit, our memory does.
inline constexpr std::size_t kMaterialLimit = std::size_t{1} << 22;

// Zero-based.
struct Place {
    RW row = 0;
    COL column = 0;
    friend bool operator==(const Place&, const Place&) = default;
};

// A rectangle of values from A1 on, with empty cells all around it.
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

    // Calls `use` with each cell of the part of an area that lies inside, row by row, while it gives true.
    template <class Use>
    bool Each(const Area& area, Use use) const {
        const auto inside = Inside(area);
        if (!inside) return true;
        const XLREF12& r = inside->rectangle;
        const std::size_t columns = inside->Columns();
        for (RW row = r.rwFirst; row <= r.rwLast; ++row) {
            const std::span<const Value> cells(&cells_[Index({row, r.colFirst})], columns);
            if (!std::all_of(cells.begin(), cells.end(), use)) return false;
        }
        return true;
    }

    // What is behind an area: a value for one cell, else an Array with its empty cells; #VALUE! for one of
    // more than kMaterialLimit cells.
    [[nodiscard]] Value Read(const Area& area) const;

  private:
    RW rows_ = 0;
    COL columns_ = 0;
    std::vector<Value> cells_;
};

// The sheets as a formula in one cell of one of them sees them. Refers to all of it.
class Cells {
  public:
    // `sheets` by their ids, which count from 1; `own` is one of them; `names` are those that formulas know them by.
    Cells(std::span<const Grid* const> sheets, IDSHEET own, Place place,
          std::span<const Text> names = {}) noexcept
        : sheets_(sheets), own_(own), place_(place), names_(names) {}

    [[nodiscard]] std::span<const Text> Names() const noexcept { return names_; }
    [[nodiscard]] Place Here() const noexcept { return place_; }

    // A rectangle on its sheet, behind an Area or a Reference to one rectangle; nothing for other values and
    // for a sheet that isn't there.
    struct Range {
        const Grid* grid = nullptr;
        Area area;
    };
    [[nodiscard]] std::optional<Range> Find(const Value& reference) const noexcept;

    // The one value that an operator takes from an operand: a reference to several cells gives its cell in
    // the row or column of the formula (Excel's implicit intersection), #VALUE! when there is none; an array
    // its first element; a missing argument is an empty cell; a sheet that isn't there is #REF!.
    [[nodiscard]] Value Scalar(const Value& value) const;
    // The area, of whole columns or rows as far as the largest of the sheets reaches: of a million cells that are
    // all empty nothing is to be had, and every operand of an array operation is cut alike.
    [[nodiscard]] Area Bounded(const Area& area) const noexcept;
    // The value as an array or a scalar: what stands behind a reference, bounded, other values as they are.
    [[nodiscard]] Value Read(const Value& value) const;

  private:
    std::span<const Grid* const> sheets_;
    IDSHEET own_;
    Place place_;
    std::span<const Text> names_;
};

// Whether a value is one rectangle or several on a sheet.
[[nodiscard]] inline bool IsReference(const Value& value) noexcept {
    return value.Is<Area>() || value.Is<Reference>();
}

// A scalar as a number: text is read as one that was typed, TRUE is 1, empty is 0. The error that stands in
// the way otherwise.
[[nodiscard]] std::optional<ErrorValue> ToNumber(const Value& scalar, double& number);
// A scalar as text: numbers in up to 15 digits, TRUE and FALSE.
[[nodiscard]] std::optional<ErrorValue> ToText(const Value& scalar, Text& text);
// A scalar as a condition: numbers other than 0 are true, the texts TRUE and FALSE are read.
[[nodiscard]] std::optional<ErrorValue> ToTruth(const Value& scalar, bool& truth);

// The number as a value; #NUM! for one that isn't finite.
[[nodiscard]] Value FiniteNumber(double number);
// A power; #NUM! for 0^0, #DIV/0! for 0 to a negative power.
[[nodiscard]] Value PowerOf(double base, double exponent);

}  // namespace excelhost
