// Makers of arrays, xltypeMulti, the values by which a worksheet function gives a block of cells.
//
// The cell at row r and column c, both from 0, is element r * columns + c of the array's one block. Each
// element is a copy with buffers of its own and shares nothing with the source, which may go at once. Doubles
// become cells as XXloperFromDouble (numbers.h) makes them, so that a coded error or empty cell becomes a
// real one. Rows are 32-bit and columns signed 16-bit, as a record counts them; either may be 0, and the
// array then has an empty block and no element.
//
// All raise std::length_error, "vector too long", for a negative count and for more cells than a vector of
// handles could hold, std::bad_alloc, and std::invalid_argument, which names the maker, for a source that
// lacks what the maker requires. Whatever is raised, nothing stays behind. Each cell is written once, in the
// block that the value keeps.
#pragma once

#include "automation/vbmatrix.h"
#include "excelvalues/value.h"

#include <initializer_list>
#include <vector>

// Copies of rows * columns cells, which stand in row order; more are left out. Fewer, or an empty pointer
// among them, raise std::invalid_argument. The last form takes that many records one behind the other and has
// no way to tell how many there are.
[[nodiscard]] XXloperPtr XXloperFromCells(RW rows, std::int16_t columns,
                                          const std::vector<const XXloper*>& cells);
[[nodiscard]] XXloperPtr XXloperFromCells(RW rows, std::int16_t columns,
                                          const std::vector<XXloperPtr>& cells);
[[nodiscard]] XXloperPtr XXloperFromCells(RW rows, std::int16_t columns, const XLOPER12* first);

// Values in row order. Those beyond rows * columns are left out, cells without one are #N/A.
[[nodiscard]] XXloperPtr XXloperFromDoubles(RW rows, std::int16_t columns, const std::vector<double>& values);
[[nodiscard]] XXloperPtr XXloperFromDoubles(RW rows, std::int16_t columns,
                                            std::initializer_list<double> values);

// The same from a shared vector, whose handle is released when done; but fewer values than cells raise
// std::invalid_argument.
[[nodiscard]] XXloperPtr XXloperFromDoubles(RW rows, std::int16_t columns,
                                            std::shared_ptr<const std::vector<double>> values);

// A matrix whose rows may have different lengths. Rows and values beyond the array are left out, cells
// without a value are #N/A.
[[nodiscard]] XXloperPtr XXloperFromRows(RW rows, std::int16_t columns, const Matrix& matrix);

// The same, but all rows count as being as long as the first. A shorter row of which a value is wanted raises
// std::invalid_argument.
[[nodiscard]] XXloperPtr XXloperFromRectangularMatrix(RW rows, std::int16_t columns, const Matrix& matrix);

// A vector of rows of cells, of any lengths.
using CellBlock = std::vector<std::vector<XXloperPtr>>;

// Blocks side by side from left to right, aligned at the top. A block is as wide as its longest row, and the
// array as high as the highest block; places without a cell get a copy of `filler`, whose handle is released
// when done. An empty handle in a block, or a filler that is wanted and empty, raises std::invalid_argument;
// more columns than 32767 raise std::length_error as above.
[[nodiscard]] XXloperPtr XXloperFromBlocks(const std::vector<CellBlock>& blocks, XXloperPtr filler);
