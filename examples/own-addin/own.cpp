// An add-in of one's own, to start from: two worksheet functions over the layers of Kestrolumen.
//
//   =OWN.SCALE(A1:B2, 3)           each number of a range, three times as large
//   =OWN.FIND(A1:A9, "pear")       where in a range a text stands, counted from 1

#include "addin/locateexcel.h"
#include "addin/resultstore.h"
#include "excelvalues/xxloper.h"

#include <algorithm>
#include <array>
#include <span>
#include <tuple>
#include <vector>

namespace {

// Of Excel's published numbers, those that the layers have no use for themselves.
constexpr int xlCoerce = xlSpecial | 2;
constexpr int xlGetName = xlSpecial | 9;

// What stops a calculation: the error that the cell is to show.
struct CellError {
    int code;
};

// Runs a worksheet function. Whatever it raises becomes an error in the cell: no exception may reach Excel.
template <typename Function>
LPXLOPER12 Answer(Function function) noexcept {
    try {
        return StoreThreadResult(function());
    } catch (const CellError& error) {
        XLOPER12 record;
        SetErrorValue(record, error.code);
        return StoreThreadResult(XXloperCopy(static_cast<const XXloper&>(record)));
    } catch (...) {
        return StoreThreadResult(nullptr);  // #VALUE!
    }
}

// The values behind an argument, a block of cells also where it is one cell.
struct Cells {
    XXloperPtr block;
    std::span<const XLOPER12> all;
    RW rows = 1;
    std::int16_t columns = 1;

    explicit Cells(const XXloperPtr& argument) : block(CallExcel(xlCoerce, argument)) {
        if (TypeOf(*block) == xltypeErr) throw CellError{block->val.err};
        all = std::span<const XLOPER12>(static_cast<const XLOPER12*>(block.get()), 1);
        if (TypeOf(*block) != xltypeMulti) return;
        rows = block->val.array.rows;
        columns = static_cast<std::int16_t>(block->val.array.columns);
        all = std::span<const XLOPER12>(block->val.array.lparray,
                                        static_cast<std::size_t>(ElementCount(*block)));
    }
};

// What Excel is told about a function: its name and type text, and for the function wizard the names of its
// arguments, what it does, and what each argument is. U is a value or a reference, B a number, C% a text.
using Words = std::array<const char*, 6>;
constexpr Words functions[] = {
    {"OWN.SCALE", "UUB", "values,factor", "Multiplies each number of a range.", "the range", "the factor"},
    {"OWN.FIND", "UUC%", "cells,text", "Tells where a text stands.", "the range", "the text to look for"},
};
constexpr const char* procedures[] = {"OwnScale", "OwnFind"};

std::vector<XXloperPtr> ids;

void Register(const XXloperPtr& module, const char* procedure, const Words& words) {
    const auto [name, types, arguments, help, first, second] = words;
    std::array<XXloperPtr, 30> operands{module,
                                        XXloperFromString(procedure),
                                        XXloperFromString(types),
                                        XXloperFromString(name),
                                        XXloperFromString(arguments),
                                        XXloperFromInt(1),
                                        XXloperFromString("Own"),
                                        XXloperMissing(),
                                        XXloperMissing(),
                                        XXloperFromString(help),
                                        XXloperFromString(first),
                                        XXloperFromString(second)};
    std::fill(operands.begin() + 12, operands.end(), XXloperMissing());
    ids.push_back(std::apply([](const auto&... each) { return CallExcel(xlfRegister, each...); }, operands));
}

}  // namespace

extern "C" {

LPXLOPER12 WINAPI OwnScale(LPXLOPER12 values, double factor) {
    return Answer([&] {
        const Cells cells(XXloperLentByExcel(values));
        std::vector<double> scaled;
        for (const XLOPER12& cell : cells.all) {
            // An error among the numbers stays the error that it is.
            const double number = DoubleFromXXloper(static_cast<const XXloper&>(cell));
            scaled.push_back(IsErrorNaN(number) ? number : number * factor);
        }
        return XXloperFromDoubles(cells.rows, cells.columns, scaled);
    });
}

LPXLOPER12 WINAPI OwnFind(LPXLOPER12 values, const WCHAR* text) {
    return Answer([&] {
        const Cells cells(XXloperLentByExcel(values));
        const auto found = std::ranges::find_if(cells.all, [&](const XLOPER12& cell) {
            return TypeOf(cell) == xltypeStr && static_cast<const XXloper&>(cell).ToCStringW() == text;
        });
        if (found == cells.all.end()) throw CellError{xlerrNA};
        return XXloperFromNumber(static_cast<double>(found - cells.all.begin() + 1));
    });
}

int WINAPI xlAutoOpen() {
    LocateExcel12Entry();
    OpenThreadResultStore();
    try {
        const XXloperPtr module = CallExcel(xlGetName);
        for (std::size_t i = 0; i < std::size(functions); ++i) Register(module, procedures[i], functions[i]);
        return 1;
    } catch (...) {
        return 0;
    }
}

int WINAPI xlAutoClose() {
    for (const XXloperPtr& id : ids) CallExcel(xlfUnregister, id);
    ids.clear();
    CloseThreadResultStore();
    return 1;
}
}
