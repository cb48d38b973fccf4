// The value type of the add-in and the one handle to it.
//
// A value crosses the add-in's border in one of three situations: Excel lends it for the length of a call,
// Excel produces it as the result of a call and wants it handed back, or the add-in builds it. XXloperPtr
// hides which one applies: the policy chosen where a handle is made does the right thing when its last
// reference goes. Whoever passes values around frees nothing.
//
// A value is immutable once its handle is given out. Handles may be copied and released on any thread; the
// last release of a value under CallExcelToFree calls Excel and has to happen where that is allowed.
#pragma once

#include "excelvalues/xlcall.h"
#include "text/text.h"

#include <cstddef>
#include <memory>
#include <type_traits>

// The part of XLOPER12::xltype that tells the type; the rest are the flags xlbitXLFree and xlbitDLLFree.
inline constexpr DWORD xltypeMask = 0x0FFF;

// The type of a value without its flags. Code never looks at XLOPER12::xltype without this mask.
[[nodiscard]] constexpr DWORD TypeOf(const XLOPER12& value) noexcept {
    return value.xltype & xltypeMask;
}

namespace kestrolumen::detail {

// False for every value that owns nothing, except an xltypeBigData: most values go without a call.
[[nodiscard]] constexpr bool MayOwnBuffers(const XLOPER12& value) noexcept {
    return (value.xltype & (xltypeStr | xltypeRef | xltypeMulti)) != 0;
}

// Frees what a record built by the add-in owns, and leaves the record itself.
void FreeBuffers(const XLOPER12& value) noexcept;

}  // namespace kestrolumen::detail

// An XLOPER12 with operations: no member of its own and no virtual operation, so that it goes to Excel as it
// is, and a record that Excel owns can be read through a pointer to it.
//
// What a record owns when the add-in built it, each a block of the malloc heap:
//   xltypeStr    val.str, (count + 1) * 2 bytes
//   xltypeRef    val.mref.lpmref, count * 16 + 4 bytes
//   xltypeMulti  val.array.lparray, rows * columns records in row order, each with its own buffers
// Every other type owns nothing; xltypeBigData is a view of bytes that stay the caller's.
class XXloper : public XLOPER12 {
  public:
    // An empty value, xltypeNil.
    XXloper() noexcept : XLOPER12{} { xltype = xltypeNil; }

    // The number `x`, bit for bit, or the error that it carries when it is an ErrorNaN (numbers.h). No other
    // coding is looked at.
    explicit XXloper(double x) noexcept;

    // Frees the buffers in the table above, those of array elements first; a null pointer is skipped.
    ~XXloper() {
        if (kestrolumen::detail::MayOwnBuffers(*this)) kestrolumen::detail::FreeBuffers(*this);
    }

    // XXloperCopy (copy.h) makes copies.
    XXloper(const XXloper&) = delete;
    XXloper& operator=(const XXloper&) = delete;

    // The text of a string value, up to its first zero unit. The value has to be an xltypeStr: the type is
    // not tested here. A null val.str reads as empty text.
    [[nodiscard]] CStringW ToCStringW() const;

    // The measures of a reference (geometry.h), an xltypeRef or an xltypeSRef.
    //
    // AreaCount: its rectangles; 0 for a value of another type. RowCount and ColumnCount: of a reference with
    // exactly one rectangle, else -1 and 0xFFFF. ReferenceCellCount: the cells of all rectangles, each
    // counted as often as rectangles hold it; 0 for a value of another type.
    [[nodiscard]] std::uint16_t AreaCount() const noexcept;
    [[nodiscard]] std::int32_t RowCount() const noexcept;
    [[nodiscard]] std::uint16_t ColumnCount() const noexcept;
    [[nodiscard]] std::int64_t ReferenceCellCount() const noexcept;

    // The cells that the value takes up: one for a number, a text, a boolean or an error; those of a
    // reference; those of all elements of an array; one or none, by `countEmpty`, for an empty or missing
    // value and for xltypeFlow; none for xltypeBigData.
    [[nodiscard]] std::int64_t CellCount(bool countEmpty) const noexcept;

    // `crc` with the value folded in, by Crc64Update (platform/checksums.h); complements are the caller's.
    // What is folded, bytes as they lie in memory, is the same on 32 and 64 bits:
    //   always                    xltype with its flags, 4 bytes
    //   xltypeNum, xltypeErr      8 bytes: the number; the error and its return code
    //   xltypeStr                 the count, 2 bytes, and the units
    //   xltypeBool, xltypeInt     4 bytes
    //   xltypeRef                 the low 4 bytes of the sheet's number, the count, 2 bytes, the rectangles
    //   xltypeSRef                the count, 2 bytes, and the rectangle
    //   xltypeMulti               rows and columns, 4 bytes each, then each element by these same rules
    // A null pointer counts as a text, reference or array with nothing in it.
    [[nodiscard]] std::uint64_t Crc64(std::uint64_t crc) const noexcept;
};
static_assert(sizeof(XXloper) == sizeof(XLOPER12) && !std::is_polymorphic_v<XXloper>);

// The shared handle to a value; it may be empty. Counts are atomic.
using XXloperPtr = std::shared_ptr<const XXloper>;

// Policy for values that Excel lends for the length of a call: the last release touches neither the record
// nor Excel.
struct ExcelOwnsItSoDoNotFree {
    void operator()(const XXloper*) const noexcept {}
};

// The handle around a record that Excel lends. Nothing is copied, and the record has to outlive the handle.
// Where the handle stays in one scope, LentXXloper (lent.h) does the same without a block of memory.
[[nodiscard]] inline XXloperPtr XXloperLentByExcel(const XLOPER12* record) {
    return {static_cast<const XXloper*>(record), ExcelOwnsItSoDoNotFree()};
}

// Count of elements of an xltypeMulti value. Rows are 32-bit, columns signed 16-bit: only the low half of
// `columns` counts. An array with a negative count has no elements.
[[nodiscard]] constexpr std::uint64_t ElementCount(const XLOPER12& array) noexcept {
    const std::int64_t rows = array.val.array.rows;
    const std::int64_t columns = static_cast<std::int16_t>(array.val.array.columns);
    return rows > 0 && columns > 0 ? static_cast<std::uint64_t>(rows * columns) : 0;
}

namespace kestrolumen::detail {

// Frees an array's block after the buffers of its first `count` records. `records` may be null.
void FreeRecords(XLOPER12* records, std::uint64_t count) noexcept;

}  // namespace kestrolumen::detail
