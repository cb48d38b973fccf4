#include "excelvalues/geometry.h"

#include "excelvalues/callexcel.h"
#include "excelvalues/detail/newvalue.h"
#include "objectmodel/dispatch.h"
#include "objectmodel/msexcel.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// All without an overflow that C++ doesn't define: rectangles come from outside.
constexpr std::int32_t Before(std::int32_t end) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(end) - 1);
}
constexpr std::int16_t Before(std::int16_t end) noexcept {
    return static_cast<std::int16_t>(end - 1);
}

constexpr std::uint64_t Length(std::int32_t first, std::int32_t last) noexcept {
    return static_cast<std::uint64_t>(std::int64_t{last} - first + 1);
}

XLREF12 RectangleOf(const CellSpan& span) noexcept {
    return {span.rowBegin, Before(span.rowEnd), span.columnBegin, Before(span.columnEnd)};
}

// The rectangles of a reference, wherever they stand.
struct Rectangles {
    const XLREF12* first = nullptr;
    std::uint16_t count = 0;

    [[nodiscard]] const XLREF12* begin() const noexcept { return first; }
    [[nodiscard]] const XLREF12* end() const noexcept { return first + count; }
    [[nodiscard]] const XLREF12* Only() const noexcept { return count == 1 ? first : nullptr; }
};

Rectangles RectanglesOf(const XLOPER12& value) noexcept {
    switch (TypeOf(value)) {
        case xltypeSRef:
            return {&value.val.sref.ref, 1};
        case xltypeRef:
            if (const XLMREF12* block = value.val.mref.lpmref) return {block->reflref, block->count};
            return {};
        default:
            return {};
    }
}

// The sheet that Excel knows by this number.
std::shared_ptr<MsExcel::Worksheet> SheetOf(IDispatch* application, std::uint32_t sheetId) {
    const XXloperPtr name = CallExcel(xlSheetNm, XXloperFromSheet(application, sheetId, false));
    const CStringW text = TypeOf(*name) == xltypeStr ? name->ToCStringW() : CStringW();
    const int bracket = text.Find(TEXT(']'));
    if (bracket < 0) IssueError(E_INVALIDARG);
    const int begin = text.GetAt(0) == TEXT('[') ? 1 : 0;
    const CStringW workbook = text.Mid(begin, bracket - begin);
    const CStringW sheet = text.Mid(bracket + 1);
    return MakeApplication(application)->GetWorkbooks()->GetItem(workbook)->GetWorksheets()->GetItem(sheet);
}

}  // namespace

XXloperPtr XXloperFromRectangles(std::uint32_t sheetId, std::uint16_t count, const XLREF12* rectangles) {
    constexpr std::size_t heading = offsetof(XLMREF12, reflref);
    const std::size_t bytes = heading + std::max<std::size_t>(count, 1) * sizeof(XLREF12);
    auto value = kestrolumen::detail::NewValue();
    auto* const block = static_cast<XLMREF12*>(kestrolumen::detail::Malloc(bytes));
    value->xltype = xltypeRef;
    value->val.mref.lpmref = block;
    value->val.mref.idSheet = sheetId;
    std::memset(block, 0, bytes);
    block->count = count;
    std::copy_n(rectangles, count, block->reflref);
    return value;
}

XXloperPtr XXloperFromRectangles(std::uint32_t sheetId, const std::vector<XLREF12>& rectangles) {
    if (rectangles.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw std::length_error("XXloperFromRectangles: more rectangles than a value can count");
    }
    return XXloperFromRectangles(sheetId, static_cast<std::uint16_t>(rectangles.size()), rectangles.data());
}

XXloperPtr XXloperFromRectangle(std::uint32_t sheetId, std::int32_t rwFirst, std::int32_t rwLast,
                                std::int16_t colFirst, std::int16_t colLast) {
    const XLREF12 rectangle{rwFirst, rwLast, colFirst, colLast};
    return XXloperFromRectangles(sheetId, 1, &rectangle);
}

XXloperPtr XXloperFromCell(std::uint32_t sheetId, std::int32_t row, std::int16_t column) {
    return XXloperFromRectangle(sheetId, row, row, column, column);
}

XXloperPtr XXloperFromCell(const SheetCell& cell) {
    return XXloperFromCell(cell.sheetId, cell.row, cell.column);
}

XXloperPtr XXloperFromRange(const SheetRange& range) {
    const XLREF12 rectangle = RectangleOf({range.rowBegin, range.rowEnd, range.columnBegin, range.columnEnd});
    return XXloperFromRectangles(range.sheetId, 1, &rectangle);
}

XXloperPtr XXloperFromAreas(const SheetAreas& areas) {
    std::vector<XLREF12> rectangles(areas.areas.size());
    std::ranges::transform(areas.areas, rectangles.begin(), RectangleOf);
    return XXloperFromRectangles(areas.sheetId, rectangles);
}

XXloperPtr XXloperFromSRef(std::int32_t rwFirst, std::int32_t rwLast, std::int16_t colFirst,
                           std::int16_t colLast) {
    auto value = kestrolumen::detail::NewValue();
    value->xltype = xltypeSRef;
    value->val.sref.count = 1;
    value->val.sref.ref = {rwFirst, rwLast, colFirst, colLast};
    return value;
}

XXloperPtr XXloperFromSheet(IDispatch* application, std::uint32_t sheetId, bool wholeSheet) {
    if (!wholeSheet) return XXloperFromRectangles(sheetId, 0, nullptr);
    const std::int16_t columns = WorksheetColumnCount(application, sheetId);
    const std::int32_t rows = WorksheetRowCount(application, sheetId);
    return XXloperFromRange({sheetId, 0, rows, 0, columns});
}

std::uint16_t XXloper::AreaCount() const noexcept {
    return RectanglesOf(*this).count;
}

std::int32_t XXloper::RowCount() const noexcept {
    const XLREF12* const rectangle = RectanglesOf(*this).Only();
    if (rectangle == nullptr) return -1;
    return static_cast<std::int32_t>(Length(rectangle->rwFirst, rectangle->rwLast));
}

std::uint16_t XXloper::ColumnCount() const noexcept {
    const XLREF12* const rectangle = RectanglesOf(*this).Only();
    if (rectangle == nullptr) return 0xFFFF;
    return static_cast<std::uint16_t>(Length(rectangle->colFirst, rectangle->colLast));
}

std::int64_t XXloper::ReferenceCellCount() const noexcept {
    std::uint64_t cells = 0;
    for (const XLREF12& area : RectanglesOf(*this)) {
        cells += Length(area.rwFirst, area.rwLast) * Length(area.colFirst, area.colLast);
    }
    return static_cast<std::int64_t>(cells);
}

std::int64_t XXloper::CellCount(bool countEmpty) const noexcept {
    switch (TypeOf(*this)) {
        case xltypeNum:
        case xltypeStr:
        case xltypeBool:
        case xltypeErr:
        case xltypeInt:
            return 1;
        case xltypeRef:
        case xltypeSRef:
            return ReferenceCellCount();
        case xltypeMulti: {
            const auto* const elements = static_cast<const XXloper*>(val.array.lparray);
            const std::uint64_t count = elements != nullptr ? ElementCount(*this) : 0;
            std::uint64_t cells = 0;
            for (std::uint64_t i = 0; i < count; ++i) {
                cells += static_cast<std::uint64_t>(elements[i].CellCount(countEmpty));
            }
            return static_cast<std::int64_t>(cells);
        }
        case xltypeFlow:
        case xltypeMissing:
        case xltypeNil:
            return countEmpty ? 1 : 0;
        default:
            return 0;
    }
}

void WorksheetSize(IDispatch* application, std::uint32_t sheetId, std::int32_t& rows, std::int16_t& columns) {
    const std::shared_ptr<MsExcel::Worksheet> sheet = SheetOf(application, sheetId);
    const LONG rowCount = sheet->GetCells()->GetRows()->GetCount();
    const LONG columnCount = sheet->GetCells()->GetColumns()->GetCount();
    rows = rowCount;
    columns = static_cast<std::int16_t>(columnCount);
}

std::int32_t WorksheetRowCount(IDispatch* application, std::uint32_t sheetId) {
    std::int32_t rows = 0;
    std::int16_t columns = 0;
    WorksheetSize(application, sheetId, rows, columns);
    return rows;
}

std::int16_t WorksheetColumnCount(IDispatch* application, std::uint32_t sheetId) {
    std::int32_t rows = 0;
    std::int16_t columns = 0;
    WorksheetSize(application, sheetId, rows, columns);
    return columns;
}
