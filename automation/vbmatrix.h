// Matrices of doubles to Visual Basic arrays of two dimensions and back: matrix[r][c] is a(r, c), each index
// counted from its lower bound.
#pragma once

#include "automation/vbarray.h"

// A vector of rows.
using Matrix = std::vector<std::vector<double>>;

// A new array, which the caller destroys with DestroyVbArray. Null for a matrix without rows, or whose first
// row is empty. The first row's length counts: what longer rows have beyond it is left out, and a shorter row
// raises VexArraySizeError with VexCode::Sentence. Raises VexOutOfMemory with VexCode::ArrayAllocation in the
// name of ReDimVbArray.
[[nodiscard]] SAFEARRAY* VbArrayFromMatrix(const Matrix& matrix, std::int32_t lowerBound);

// Any lower bounds. Raises VexArraySizeError with VexCode::Sentence for an array that is null, that has other
// than two dimensions, or whose elements haven't the size of a double.
[[nodiscard]] Matrix MatrixFromVbArray(SAFEARRAY* array);

// From a Variant array of one dimension that holds arrays of doubles, one a row, of any lengths. A row whose
// array is null or has other than one dimension is empty. The whole is empty for an array of any other kind,
// and if one of its elements isn't an array of doubles.
[[nodiscard]] Matrix MatrixFromVbArrayOfVariants(SAFEARRAY* array);
