#include "excelvalues/arraymakers.h"

#include "excelvalues/copy.h"
#include "excelvalues/makers.h"
#include "excelvalues/detail/newvalue.h"
#include "excelvalues/numbers.h"

#include <algorithm>
#include <limits>
#include <span>
#include <stdexcept>
#include <utility>

namespace {

// Counts of an array that a record can tell and memory might hold.
struct Shape {
    RW rows;
    std::int16_t columns;

    [[nodiscard]] std::size_t Cells() const noexcept { return Rows() * Columns(); }
    [[nodiscard]] std::size_t Rows() const noexcept { return static_cast<std::size_t>(rows); }
    [[nodiscard]] std::size_t Columns() const noexcept { return static_cast<std::size_t>(columns); }
};

// Raises std::length_error.
Shape ShapeOf(std::int64_t rows, std::int64_t columns) {
    constexpr std::int64_t mostRows = std::numeric_limits<RW>::max();
    constexpr std::int64_t mostColumns = std::numeric_limits<std::int16_t>::max();
    const bool counts = rows >= 0 && rows <= mostRows && columns >= 0 && columns <= mostColumns;
    if (!counts || static_cast<std::uint64_t>(rows * columns) > std::vector<XXloperPtr>().max_size()) {
        throw std::length_error("vector too long");
    }
    return {static_cast<RW>(rows), static_cast<std::int16_t>(columns)};
}

void Require(bool condition, const char* complaint) {
    if (!condition) throw std::invalid_argument(complaint);
}

// An array with the block that `makeBlock` gives.
template <typename MakeBlock>
XXloperPtr ArrayOf(const Shape& shape, MakeBlock makeBlock) {
    auto value = kestrolumen::detail::NewValue();
    value->val.array.lparray = makeBlock();
    value->val.array.rows = shape.rows;
    value->val.array.columns = shape.columns;
    value->xltype = xltypeMulti;
    return value;
}

// `forEachCell` shows the cells one after the other to what it is given.
template <typename ForEachCell>
XXloperPtr ArrayOfCopies(const Shape& shape, ForEachCell forEachCell) {
    return ArrayOf(shape, [&] {
        kestrolumen::detail::RecordBlock block(shape.Cells());
        forEachCell([&block](const XLOPER12& cell) { block.AppendCopy(cell); });
        return block.Release();
    });
}

template <typename Pointer>
XXloperPtr ArrayOfPointers(const Shape& shape, const std::vector<Pointer>& cells) {
    Require(cells.size() >= shape.Cells(), "XXloperFromCells: fewer cells than rows * columns");
    return ArrayOfCopies(shape, [&](auto visit) {
        for (std::size_t i = 0; i < shape.Cells(); ++i) {
            Require(cells[i] != nullptr, "XXloperFromCells: a cell without a value");
            visit(*cells[i]);
        }
    });
}

XLOPER12 NotAvailable() noexcept {
    XLOPER12 record{};
    SetErrorValue(record, xlerrNA);
    return record;
}

// As many numbers as there is room for, from `next` on. Gives the end.
XLOPER12* FillNumbers(XLOPER12* next, std::size_t room, std::span<const double> values) noexcept {
    const auto numbers = values.first(std::min(values.size(), room));
    kestrolumen::detail::SetFromDoubles(next, numbers);
    return next + numbers.size();
}

// `fill` fills records from a pointer on, raises nothing and gives the end; what it leaves is #N/A.
template <typename Fill>
XXloperPtr ArrayOfNumbers(const Shape& shape, Fill fill) {
    return ArrayOf(shape, [&] {
        auto* const block = kestrolumen::detail::MallocArray<XLOPER12>(shape.Cells());
        std::fill(fill(block), block + shape.Cells(), NotAvailable());
        return block;
    });
}

XXloperPtr ArrayOfValues(const Shape& shape, std::span<const double> values) {
    const auto fill = [&](XLOPER12* next) noexcept { return FillNumbers(next, shape.Cells(), values); };
    return ArrayOfNumbers(shape, fill);
}

// `length` gives how many values of a row count.
template <typename Length>
XXloperPtr ArrayOfRows(const Shape& shape, const Matrix& matrix, Length length) {
    return ArrayOfNumbers(shape, [&](XLOPER12* next) noexcept {
        const std::size_t rows = std::min(matrix.size(), shape.Rows());
        for (const std::vector<double>& row : std::span(matrix).first(rows)) {
            XLOPER12* const end = next + shape.Columns();
            next = FillNumbers(next, shape.Columns(), std::span(row).first(length(row)));
            next = std::fill_n(next, end - next, NotAvailable());
        }
        return next;
    });
}

std::size_t WidthOf(const CellBlock& block) noexcept {
    std::size_t width = 0;
    for (const auto& row : block) width = std::max(width, row.size());
    return width;
}

// The cells of the blocks as they stand side by side, row by row.
class SideBySide {
  public:
    SideBySide(const std::vector<CellBlock>& blocks, const XXloperPtr& filler)
        : blocks_(blocks), filler_(filler) {
        widths_.reserve(blocks.size());
        for (const CellBlock& block : blocks) {
            widths_.push_back(WidthOf(block));
            columns_ += widths_.back();
            rows_ = std::max(rows_, block.size());
        }
    }

    [[nodiscard]] std::size_t Rows() const noexcept { return rows_; }
    [[nodiscard]] std::size_t Columns() const noexcept { return columns_; }

    template <typename Visit>
    void ForEachCell(Visit visit) const {
        for (std::size_t r = 0; r < rows_; ++r) {
            for (std::size_t b = 0; b < blocks_.size(); ++b) VisitRow(blocks_[b], r, widths_[b], visit);
        }
    }

  private:
    template <typename Visit>
    void VisitRow(const CellBlock& block, std::size_t r, std::size_t width, Visit& visit) const {
        const std::size_t length = r < block.size() ? block[r].size() : 0;
        for (std::size_t c = 0; c < width; ++c) {
            const XXloperPtr& cell = c < length ? block[r][c] : filler_;
            Require(cell != nullptr, "XXloperFromBlocks: a cell without a value");
            visit(*cell);
        }
    }

    const std::vector<CellBlock>& blocks_;
    const XXloperPtr& filler_;
    std::vector<std::size_t, kestrolumen::detail::MallocAllocator<std::size_t>> widths_;
    std::size_t columns_ = 0;
    std::size_t rows_ = 0;
};

}  // namespace

XXloperPtr XXloperFromCells(RW rows, std::int16_t columns, const std::vector<const XXloper*>& cells) {
    return ArrayOfPointers(ShapeOf(rows, columns), cells);
}

XXloperPtr XXloperFromCells(RW rows, std::int16_t columns, const std::vector<XXloperPtr>& cells) {
    return ArrayOfPointers(ShapeOf(rows, columns), cells);
}

XXloperPtr XXloperFromCells(RW rows, std::int16_t columns, const XLOPER12* first) {
    const Shape shape = ShapeOf(rows, columns);
    Require(first != nullptr || shape.Cells() == 0, "XXloperFromCells: no cells");
    return ArrayOfCopies(shape, [&](auto visit) { std::for_each_n(first, shape.Cells(), visit); });
}

XXloperPtr XXloperFromDoubles(RW rows, std::int16_t columns, const std::vector<double>& values) {
    return ArrayOfValues(ShapeOf(rows, columns), values);
}

XXloperPtr XXloperFromDoubles(RW rows, std::int16_t columns, std::initializer_list<double> values) {
    return ArrayOfValues(ShapeOf(rows, columns), std::span(values.begin(), values.size()));
}

XXloperPtr XXloperFromDoubles(RW rows, std::int16_t columns,
                              std::shared_ptr<const std::vector<double>> values) {
    const auto held = std::move(values);
    const Shape shape = ShapeOf(rows, columns);
    const auto numbers = held != nullptr ? std::span(*held) : std::span<const double>();
    Require(numbers.size() >= shape.Cells(), "XXloperFromDoubles: fewer values than rows * columns");
    return ArrayOfValues(shape, numbers);
}

XXloperPtr XXloperFromRows(RW rows, std::int16_t columns, const Matrix& matrix) {
    return ArrayOfRows(ShapeOf(rows, columns), matrix,
                       [](const std::vector<double>& row) noexcept { return row.size(); });
}

XXloperPtr XXloperFromRectangularMatrix(RW rows, std::int16_t columns, const Matrix& matrix) {
    const Shape shape = ShapeOf(rows, columns);
    const std::size_t width = matrix.empty() ? 0 : std::min(matrix.front().size(), shape.Columns());
    const auto wanted = std::span(matrix).first(std::min(matrix.size(), shape.Rows()));
    const auto isWide = [width](const std::vector<double>& row) { return row.size() >= width; };
    Require(std::ranges::all_of(wanted, isWide),
            "XXloperFromRectangularMatrix: a row shorter than the first");
    return ArrayOfRows(shape, matrix, [width](const std::vector<double>&) noexcept { return width; });
}

XXloperPtr XXloperFromBlocks(const std::vector<CellBlock>& blocks, XXloperPtr filler) {
    const XXloperPtr held = std::move(filler);
    const SideBySide cells(blocks, held);
    const Shape shape =
        ShapeOf(static_cast<std::int64_t>(cells.Rows()), static_cast<std::int64_t>(cells.Columns()));
    return ArrayOfCopies(shape, [&](auto visit) { cells.ForEachCell(visit); });
}
