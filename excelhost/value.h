// A value of the simulated Excel, as a plain C++ value, and the ways between it and Excel's record XLOPER12.
// The host hands out records that it builds from such values and reads back records that others made; nothing
// here keeps a pointer into a record.
#pragma once

#include "excelhost/blocks.h"
#include "excelhost/characters.h"
#include "excelhost/numbers.h"

#include "excelvalues/xlcall.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace excelhost {

// Limits of Excel 2007 and later.
inline constexpr RW kRowLimit = 1048576;
inline constexpr COL kColumnLimit = 16384;
inline constexpr std::size_t kTextLimit = 32767;

// The content of an empty cell, xltypeNil.
struct Empty {
    friend bool operator==(const Empty&, const Empty&) = default;
};

// An argument left out, xltypeMissing.
struct Missing {
    friend bool operator==(const Missing&, const Missing&) = default;
};

// An error value by Excel's number, one of the xlerr... constants.
struct ErrorValue {
    int number = xlerrValue;
    friend bool operator==(const ErrorValue&, const ErrorValue&) = default;
};

// One rectangle on the current sheet, xltypeSRef.
struct Area {
    XLREF12 rectangle{};

    [[nodiscard]] std::size_t Rows() const noexcept {
        return static_cast<std::size_t>(rectangle.rwLast - rectangle.rwFirst) + 1;
    }
    [[nodiscard]] std::size_t Columns() const noexcept {
        return static_cast<std::size_t>(rectangle.colLast - rectangle.colFirst) + 1;
    }
    friend bool operator==(const Area& a, const Area& b) noexcept;
};

// Rectangles on a sheet named by its number, xltypeRef.
struct Reference {
    IDSHEET sheet = 0;
    std::vector<Area> areas;
    friend bool operator==(const Reference&, const Reference&) = default;
};

// Memory of the host's own, xltypeBigData, whose handle is its address. It isn't copied: who lends it keeps it.
struct BigData {
    const void* data = nullptr;
    std::int32_t size = 0;  // bytes
    friend bool operator==(const BigData&, const BigData&) = default;
};

struct Value;

// A block of values row by row, xltypeMulti. `cells` has rows * columns elements; both are at least 1.
struct Array {
    std::size_t rows = 0;
    std::size_t columns = 0;
    std::vector<Value> cells;

    [[nodiscard]] const Value& At(std::size_t row, std::size_t column) const;
    friend bool operator==(const Array& a, const Array& b);
};

// double is xltypeNum, int is xltypeInt, bool is xltypeBool, Text is xltypeStr. Equal means: of the same type
// and content; 1 and 1.0 differ.
struct Value
    : std::variant<Empty, Missing, double, int, bool, Text, ErrorValue, Area, Reference, Array, BigData> {
    using variant::variant;

    template <class T>
    [[nodiscard]] bool Is() const noexcept {
        return std::holds_alternative<T>(*this);
    }
    template <class T>
    [[nodiscard]] const T* If() const noexcept {
        return std::get_if<T>(this);
    }
};

inline const Value& Array::At(std::size_t row, std::size_t column) const {
    return cells[row * columns + column];
}

// A record with the value; what it points to is added to `blocks`. Text is cut to 32,767 units.
[[nodiscard]] XLOPER12 RecordFrom(const Value& value, Blocks& blocks);

// The value in a record, copied. A record that can't be read (a null pointer behind a string or an array, a
// negative or absurd size, arrays nested more than 8 deep, an unknown type) gives #VALUE!.
[[nodiscard]] Value ValueFrom(const XLOPER12& record);

// The text of a string record that can be read; nothing for any other.
[[nodiscard]] std::optional<Text> TextOf(const XLOPER12& record);

// The memory that a record points to, null when its type has none.
[[nodiscard]] const void* PayloadOf(const XLOPER12& record) noexcept;

// xltype without its flags.
[[nodiscard]] inline DWORD TypeOf(const XLOPER12& record) noexcept {
    return record.xltype & 0xFFF;
}

// A record or value in a few words, UTF-8, for traces and messages: 0.5, "text", #N/A, TRUE, A1:B2,
// (missing), (empty), 2x3 array. Long text is cut, with an ellipsis.
[[nodiscard]] std::string Describe(const XLOPER12& record);
[[nodiscard]] std::string Describe(const Value& value);

// Describe with the elements of arrays, as {1,2;3,4}: for the messages of test libraries.
std::ostream& operator<<(std::ostream& out, const Value& value);

// "A1", "AB12", or "A1:B2" for more than one cell. Zero-based in, as people write it out.
[[nodiscard]] std::string CellName(RW row, COL column);
[[nodiscard]] std::string AreaName(const Area& area);

// "#N/A" and its kin; "#ERROR 99" for a number that Excel doesn't have. The error's number, or -1, for such
// text.
[[nodiscard]] std::string ErrorName(int number);
[[nodiscard]] int ErrorNumber(std::string_view name) noexcept;

}  // namespace excelhost
