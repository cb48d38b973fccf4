// Makers of arrays: which cell comes to stand where, what is copied, and what is left when a maker raises.
#include "excelhost/value.h"
#include "excelvalues/xxloper.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <random>

namespace {

using excelhost::Value;
using excelhost::ValueFrom;
using Doubles = std::vector<double>;
using Maker = std::function<XXloperPtr()>;

// What an array is to hold, row by row.
using Grid = std::vector<std::vector<Value>>;

void ExpectArray(const XXloperPtr& array, std::int16_t columns, const Grid& grid) {
    const auto& made = array->val.array;
    ASSERT_EQ(array->xltype, xltypeMulti);
    ASSERT_EQ(made.rows, static_cast<RW>(grid.size()));
    ASSERT_EQ(made.columns, columns);
    ASSERT_NE(made.lparray, nullptr) << "no elements have a block, too";
    const XLOPER12* next = made.lparray;
    for (const auto& row : grid) {
        for (const Value& cell : row) ASSERT_EQ(ValueFrom(*next++), cell);
    }
    ASSERT_EQ(next, made.lparray + ElementCount(*array));
}

struct ArrayMakers : testing::Test {
    std::mt19937 random{2012};

    std::size_t UpTo(std::size_t most) { return random() % (most + 1); }

    // With coded errors among them, and what single values are made of.
    Doubles SomeDoubles(std::size_t count) {
        const double coded[] = {-1.5, ErrorNaN(1), HUGE_VAL, std::nan("1"), 7};
        Doubles values;
        while (values.size() < count) values.push_back(coded[UpTo(4)]);
        return values;
    }

    CellBlock SomeBlock() {
        const XXloperPtr cells[] = {XXloperFromString("text"), XXloperFromDoubles(1, 2, Doubles{3}),
                                    XXloperNil(), XXloperFromRectangle(7, 1, 2, 3, 4)};
        CellBlock block(UpTo(4));
        for (auto& row : block) {
            for (std::size_t left = UpTo(4); left != 0; --left) row.push_back(cells[UpTo(3)]);
        }
        return block;
    }
};

TEST_F(ArrayMakers, PutNumbersInRowOrderAndFillWithNotAvailable) {
    for (int round = 0; round < 300; ++round) {
        Grid flatGrid(UpTo(4), std::vector<Value>(UpTo(4), excelhost::ErrorValue{xlerrNA}));
        Grid raggedGrid = flatGrid, rectangleGrid = flatGrid;
        const auto rows = static_cast<RW>(flatGrid.size());
        const auto columns = static_cast<std::int16_t>(rows != 0 ? flatGrid[0].size() : 0);
        const auto flat = std::make_shared<Doubles>(SomeDoubles(UpTo(20)));
        Matrix ragged(UpTo(5));
        for (Doubles& row : ragged) row = SomeDoubles(UpTo(5));
        Matrix rectangle = ragged;
        for (Doubles& row : rectangle) row.resize(std::max(row.size(), rectangle[0].size()));
        std::size_t next = 0;
        for (std::size_t r = 0; r < flatGrid.size(); ++r) {
            for (std::size_t c = 0; c < flatGrid[r].size(); ++c, ++next) {
                const auto set = [&](Grid& grid, double x) { grid[r][c] = ValueFrom(*XXloperFromDouble(x)); };
                if (next < flat->size()) set(flatGrid, (*flat)[next]);
                if (r < ragged.size() && c < ragged[r].size()) set(raggedGrid, ragged[r][c]);
                if (r < rectangle.size() && c < rectangle[0].size()) set(rectangleGrid, rectangle[r][c]);
            }
        }
        ExpectArray(XXloperFromDoubles(rows, columns, *flat), columns, flatGrid);
        if (flat->size() >= next) ExpectArray(XXloperFromDoubles(rows, columns, flat), columns, flatGrid);
        ExpectArray(XXloperFromRows(rows, columns, ragged), columns, raggedGrid);
        ExpectArray(XXloperFromRectangularMatrix(rows, columns, rectangle), columns, rectangleGrid);
    }
    ExpectArray(XXloperFromDoubles(1, 1, {0}), 1, {{Value(0.0)}});
    Doubles errors;
    for (std::uint32_t i = 0; i < ExcelErrorCodes.size(); ++i) errors.push_back(ErrorNaN(i));
    const XXloperPtr coded = XXloperFromDoubles(7, 2, errors);
    for (std::size_t i = 0; i < errors.size(); ++i) {
        const auto& cell = static_cast<const XXloper&>(coded->val.array.lparray[i]);
        EXPECT_EQ(cell.val.err, ExcelErrorCodes[i]);
        const double back = DoubleFromXXloper(cell);
        EXPECT_EQ(std::memcmp(&back, &errors[i], sizeof back), 0) << i;
    }
    EXPECT_EQ(XXloperFromRows(2147483647, 0, {{1}})->val.array.rows, 2147483647);
}

TEST_F(ArrayMakers, CopyCellsAndSetBlocksSideBySide) {
    for (int round = 0; round < 300; ++round) {
        std::vector<CellBlock> blocks(UpTo(4));
        Grid grid;
        for (CellBlock& block : blocks) grid.resize(std::max(grid.size(), (block = SomeBlock()).size()));
        std::size_t width = 0;
        for (const CellBlock& block : blocks) {
            for (std::size_t r = 0; r < block.size(); ++r) {
                for (const XXloperPtr& cell : block[r]) grid[r].push_back(ValueFrom(*cell));
                if (width < grid[r].size()) width = grid[r].size();
            }
            for (auto& row : grid) row.resize(width, Value(1));
        }
        const auto columns = static_cast<std::int16_t>(width);
        XXloperPtr array = XXloperFromBlocks(blocks, XXloperFromInt(1));
        blocks.clear();
        ExpectArray(array, columns, grid);

        // The same once more from its cells, each form from the copy that the one before has made.
        const auto rows = static_cast<RW>(grid.size());
        std::vector<const XXloper*> pointers;
        for (std::size_t i = 0; i < ElementCount(*array); ++i) {
            pointers.push_back(static_cast<const XXloper*>(&array->val.array.lparray[i]));
        }
        array = XXloperFromCells(rows, columns, pointers);
        array = XXloperFromCells(rows, columns, array->val.array.lparray);
        std::vector<XXloperPtr> handles;
        for (std::size_t i = 0; i < ElementCount(*array); ++i) {
            handles.push_back(XXloperLentByExcel(&array->val.array.lparray[i]));
        }
        array = XXloperFromCells(rows, columns, handles);
        ExpectArray(array, columns, grid);
    }
}

TEST_F(ArrayMakers, AllocateNoMoreThanTheArrayAndLeaveNothingWhenThatFails) {
    const Matrix matrix(20, Doubles(10, 1.5));
    const auto flat = std::make_shared<Doubles>(200, 1.5);
    const std::vector<XXloperPtr> texts(200, XXloperFromString("abc"));
    const std::vector<CellBlock> blocks(2, CellBlock(20, {texts.begin(), texts.begin() + 5}));
    const std::pair<std::size_t, Maker> makers[] = {
        // with the bytes of a cell's text
        {0, [&] { return XXloperFromDoubles(20, 10, *flat); }},
        {0, [&] { return XXloperFromDoubles(20, 10, flat); }},
        {0, [&] { return XXloperFromRows(20, 10, matrix); }},
        {0, [&] { return XXloperFromRectangularMatrix(20, 10, matrix); }},
        {8, [&] { return XXloperFromCells(20, 10, texts); }},
        {8, [&] { return XXloperFromBlocks(blocks, nullptr); }},
    };
    for (const std::pair<std::size_t, Maker>& maker : makers) {
        const std::size_t before = support::AllocatedBytes();
        EXPECT_NE(maker.second(), nullptr);
        EXPECT_LE(support::AllocatedBytes() - before, 200 * (sizeof(XLOPER12) + maker.first) * 11 / 10);
        EXPECT_GE(support::AllocationsThatMayFail([&] { static_cast<void>(maker.second()); }), 0);
    }
}

TEST_F(ArrayMakers, RefuseWhatTheyCannotMakeAndReleaseTheHandlesTheyTake) {
    auto three = std::make_shared<Doubles>(3);
    const Matrix shorter = {{1, 2}, {3}};
    const std::vector<XXloperPtr> half = {XXloperNil(), XXloperPtr()};
    const std::vector<CellBlock> wide(2, CellBlock{std::vector(16384, half[0])});
    for (const Maker& make : std::initializer_list<Maker>{
             [&] { return XXloperFromCells(1, 3, half); }, [&] { return XXloperFromCells(2, 1, half); },
             [&] { return XXloperFromCells(1, 1, std::vector<const XXloper*>{nullptr}); },
             [&] { return XXloperFromCells(1, 1, static_cast<const XLOPER12*>(nullptr)); },
             [&] { return XXloperFromDoubles(2, 2, three); },
             [&] { return XXloperFromDoubles(1, 1, std::shared_ptr<Doubles>()); },
             [&] { return XXloperFromRectangularMatrix(2, 5, shorter); },
             [&] { return XXloperFromBlocks({{half}}, half[0]); },
             [&] {
                 return XXloperFromBlocks({{{half[0]}, {}}}, nullptr);
             }}) {
        EXPECT_THROW(static_cast<void>(make()), std::invalid_argument);
    }
    for (const Maker& make : std::initializer_list<Maker>{
             [&] { return XXloperFromDoubles(-1, -3, three); },
             [&] { return XXloperFromRectangularMatrix(-2147483647 - 1, 1, shorter); },
             [&] { return XXloperFromCells(1, -32768, half); },
             [&] { return XXloperFromBlocks(wide, nullptr); }}) {
        try {
            static_cast<void>(make());
            ADD_FAILURE();
        } catch (const std::length_error& error) {
            EXPECT_STREQ(error.what(), "vector too long");
        }
    }
    const auto most = [&] { static_cast<void>(XXloperFromDoubles(2147483647, 32767, *three)); };
    if (sizeof(void*) == 4) {
        EXPECT_THROW(most(), std::length_error);
    } else {
        const support::AllocationFault fault(
            2);  // a sanitizer's heap would end the program instead of refusing
        EXPECT_THROW(most(), std::bad_alloc);
    }
    const std::weak_ptr<Doubles> watched = three;
    EXPECT_THROW(static_cast<void>(XXloperFromDoubles(2, 2, std::move(three))), std::invalid_argument);
    EXPECT_TRUE(watched.expired());
}

}  // namespace
