#include "automation/vbmatrix.h"

#include "automation/vbvectors.h"
#include "errors/vex.h"
#include "text/detail/compiler.h"
#include "text/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace {

void RequireRowsOfLength(const Matrix& matrix, std::size_t columns) {
    const auto shorter =
        std::ranges::find_if(matrix, [columns](const auto& row) { return row.size() < columns; });
    if (shorter == matrix.end()) return;
    throw VexArraySizeError("VbArrayFromMatrix", VexCode::Sentence,
                            CStringWFormat(TEXT("Row %I64d of the matrix is shorter than its first row"),
                                           std::int64_t{shorter - matrix.begin()}));
}

// The two values at each of two places, crossed over. All are read before the first is written, so that
// compilers can do it in two registers.
void TransposeSquare(const double* from0, const double* from1, double* to0, double* to1) noexcept {
    const double heads[] = {from0[0], from1[0]};
    const double tails[] = {from0[1], from1[1]};
    std::memcpy(to0, heads, sizeof heads);
    std::memcpy(to1, tails, sizeof tails);
}

// The two ways that values go between the rows of a matrix and a block that holds column by column.
struct ToColumns {
    static void Move(const double& value, double& place) noexcept { place = value; }
    static void MoveSquare(const double* row0, const double* row1, double* column0,
                           double* column1) noexcept {
        TransposeSquare(row0, row1, column0, column1);
    }
};
struct ToRows {
    static void Move(double& value, const double& place) noexcept { value = place; }
    static void MoveSquare(double* row0, double* row1, const double* column0,
                           const double* column1) noexcept {
        TransposeSquare(column0, column1, row0, row1);
    }
};

// Some columns of such a block, from the column `left` of the matrix on.
template <typename Place>
struct Strip {
    Place* block;
    std::size_t rows;
    std::size_t left;
    std::size_t columns;

    [[nodiscard]] Place* At(std::size_t row, std::size_t column) const noexcept {
        return block + (left + column) * rows + row;
    }
};

template <typename Way, typename Row, typename Place>
void MoveRow(Row& row, const Strip<Place>& strip, std::size_t r) noexcept {
    for (std::size_t c = 0; c < strip.columns; ++c) Way::Move(row[strip.left + c], *strip.At(r, c));
}

// So many values of a column fill a line of the processor's cache, 64 bytes.
constexpr std::size_t BandRows = 8;

// Moves as many rows, from the row `top` on. What stands beside the row `ahead` is fetched meanwhile.
template <typename Way, typename Row, typename Place>
void MoveBand(std::span<Row, BandRows> band, const Strip<Place>& strip, std::size_t top,
              std::size_t ahead) noexcept {
    std::array<decltype(band[0].data()), BandRows> rows;
    for (std::size_t r = 0; r < BandRows; ++r) rows[r] = band[r].data() + strip.left;
    std::size_t c = 0;
    for (; c + 1 < strip.columns; c += 2) {
        kestrolumen::detail::Prefetch(strip.At(ahead, c));
        kestrolumen::detail::Prefetch(strip.At(ahead, c + 1));
        Place* const column0 = strip.At(top, c);
        Place* const column1 = strip.At(top, c + 1);
        for (std::size_t r = 0; r < BandRows; r += 2) {
            Way::MoveSquare(rows[r] + c, rows[r + 1] + c, column0 + r, column1 + r);
        }
    }
    if (c == strip.columns) return;
    for (std::size_t r = 0; r < BandRows; ++r) Way::Move(rows[r][c], *strip.At(top + r, c));
}

// Moves all values, the rows being at least `columns` long.
//
// Neighbours on one side lie far apart on the other. So the way goes down one strip of columns after the
// other, narrow enough for all its lines to stay in the cache, by bands as high as a line; and lines further
// down are fetched early, since no processor foresees them.
template <typename Way, typename Row, typename Place>
void MoveMatrix(std::span<Row> matrix, std::size_t columns, Place* block) noexcept {
    constexpr std::size_t stripColumns = 64;
    constexpr std::size_t rowsAhead = 4 * BandRows;
    const std::size_t rows = matrix.size();
    for (std::size_t left = 0; left < columns; left += stripColumns) {
        const Strip<Place> strip{block, rows, left, std::min(stripColumns, columns - left)};
        std::size_t r = 0;
        for (; r + BandRows <= rows; r += BandRows) {
            const auto band = matrix.subspan(r).template first<BandRows>();
            MoveBand<Way>(band, strip, r, std::min(r + rowsAhead, rows - 1));
        }
        for (; r < rows; ++r) MoveRow<Way>(matrix[r], strip, r);
    }
}

}  // namespace

SAFEARRAY* VbArrayFromMatrix(const Matrix& matrix, std::int32_t lowerBound) {
    if (matrix.empty() || matrix.front().empty()) return nullptr;
    const std::size_t columns = matrix.front().size();
    RequireRowsOfLength(matrix, columns);

    SAFEARRAY* array = nullptr;
    const std::uint32_t sizes[] = {kestrolumen::detail::ArraySize(columns),
                                   kestrolumen::detail::ArraySize(matrix.size())};
    ReDimVbArray(array, sizes, sizeof(double), 0, lowerBound);
    const VbArrayLock lock(array);
    MoveMatrix<ToColumns>(std::span(matrix), columns, static_cast<double*>(lock.data));
    return array;
}

Matrix MatrixFromVbArray(SAFEARRAY* array) {
    const auto require = [](bool shape, const WCHAR* sentence) {
        if (!shape) throw VexArraySizeError("MatrixFromVbArray", VexCode::Sentence, sentence);
    };
    const std::vector<std::uint32_t> counts = VbArrayDimensions(array);
    require(counts.size() == 2, TEXT("VB array is not 2-dimensional"));
    require(array->cbElements == sizeof(double), TEXT("VB array does not hold doubles"));

    const std::uint32_t columns = counts[1];
    Matrix matrix(counts[0]);
    for (std::vector<double>& row : matrix) row.resize(columns);
    const VbArrayLock lock(array);
    if (lock.data != nullptr) {
        MoveMatrix<ToRows>(std::span(matrix), columns, static_cast<const double*>(lock.data));
    }
    return matrix;
}

Matrix MatrixFromVbArrayOfVariants(SAFEARRAY* array) {
    constexpr int variantArray = FADF_VARIANT | FADF_HAVEVARTYPE;
    if (array == nullptr || array->fFeatures != variantArray || array->cDims != 1) return {};
    const std::vector<VARIANT> rows = VectorVariantFromVbArray(array);
    const auto isRow = [](const VARIANT& row) { return row.vt == (VT_ARRAY | VT_R8); };
    if (!std::ranges::all_of(rows, isRow)) return {};
    Matrix matrix;
    matrix.reserve(rows.size());
    for (const VARIANT& row : rows) matrix.push_back(VectorDoubleFromVbArray(row.parray));
    return matrix;
}
