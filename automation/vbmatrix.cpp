#include "automation/vbmatrix.h"

#include "automation/vbvectors.h"
#include "errors/vex.h"
#include "text/text.h"

#include <algorithm>

namespace {

void RequireRowsOfLength(const Matrix& matrix, std::size_t columns) {
    const auto shorter =
        std::ranges::find_if(matrix, [columns](const auto& row) { return row.size() < columns; });
    if (shorter == matrix.end()) return;
    throw VexArraySizeError("VbArrayFromMatrix", VexCode::Sentence,
                            CStringWFormat(TEXT("Row %I64d of the matrix is shorter than its first row"),
                                           std::int64_t{shorter - matrix.begin()}));
}

}  // namespace

SAFEARRAY* VbArrayFromMatrix(const Matrix& matrix, std::int32_t lowerBound) {
    if (matrix.empty() || matrix.front().empty()) return nullptr;
    const std::size_t columns = matrix.front().size();
    RequireRowsOfLength(matrix, columns);

    SAFEARRAY* array = nullptr;
    const std::uint32_t sizes[] = {detail::ArraySize(columns), detail::ArraySize(matrix.size())};
    ReDimVbArray(array, sizes, sizeof(double), 0, lowerBound);
    const VbArrayLock lock(array);
    auto* next = static_cast<double*>(lock.data);
    for (std::size_t c = 0; c < columns; ++c) {
        for (const std::vector<double>& row : matrix) *next++ = row[c];
    }
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
    const auto* next = static_cast<const double*>(lock.data);
    if (next == nullptr) return matrix;
    for (std::size_t c = 0; c < columns; ++c) {
        for (std::vector<double>& row : matrix) row[c] = *next++;
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
