#include "automation/vbmatrix.h"

#include "automation/vbvectors.h"
#include "errors/vex.h"
#include "text/text.h"

#include <algorithm>
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

// Each value's place in a block that holds column by column.
//
// Neighbours on one side lie far apart on the other. Eight columns are gone down at a time: as many values of a row
// fill a line of the processor's cache, 64 bytes, and it keeps as many lines of the block, whatever their distance.
template <typename Row, typename Value, typename Move>
void ForEachPlace(std::span<Row> matrix, std::size_t columns, Value* block, Move move) noexcept {
    constexpr std::size_t stripColumns = 8;
    const std::size_t rows = matrix.size();
    for (std::size_t left = 0; left < columns; left += stripColumns) {
        const std::size_t right = std::min(left + stripColumns, columns);
        for (std::size_t r = 0; r < rows; ++r) {
            for (std::size_t c = left; c < right; ++c) move(matrix[r][c], block[c * rows + r]);
        }
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
    ForEachPlace(std::span(matrix), columns, static_cast<double*>(lock.data),
                 [](const double& value, double& place) { place = value; });
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
        ForEachPlace(std::span(matrix), columns, static_cast<const double*>(lock.data),
                     [](double& value, const double& place) { value = place; });
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
