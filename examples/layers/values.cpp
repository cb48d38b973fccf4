// Excel values: who owns what, errors among numbers, arrays. Excel's part is played by the function below,
// which tells each call that reaches it.

#include "excelvalues/xxloper.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int xlfUpper = 113;
XCHAR answer[] = {3, 'A', 'B', 'C'};

int PASCAL PlayedExcel(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    switch (function) {
        case xlEnableXLMsgs:
        case xlDisableXLMsgs:
            return xlretSuccess;
        case xlFree:
            std::printf("  Excel: xlFree\n");
            operands[0]->val.str = nullptr;
            return xlretSuccess;
        case xlfUpper:
            std::printf("  Excel: UPPER, %d operand\n", count);
            result->xltype = xltypeStr;
            result->val.str = answer;
            return xlretSuccess;
        default:
            std::printf("  Excel: refused\n");
            return xlretInvXlfn;
    }
}

void CallsIntoExcel() {
    std::printf("Calls into Excel\n");
    {
        const XXloperPtr text = XXloperFromString("abc");
        const XXloperPtr upper = CallExcel(xlfUpper, text);
        std::printf("  the answer: %s\n", Utf8FromCStringW(upper->ToCStringW()).c_str());
    }
    const XXloperPtr refused = CallExcel(4711);
    if (TypeOf(*refused) == xltypeErr && refused->val.failure.returnCode != xlretSuccess) {
        std::printf("  refused with code %d, shown as error %d\n", refused->val.failure.returnCode,
                    refused->val.err);
    }
}

void LentValues() {
    std::printf("Lent values\n");
    XLOPER12 lent{};
    lent.xltype = xltypeNum;
    lent.val.num = 42;
    XXloperPtr kept;
    {
        const XXloperPtr argument = XXloperLentByExcel(&lent);
        kept = XXloperCopy(argument);
    }
    lent.val.num = 0;
    std::printf("  the copy outlives the call: %g\n", DoubleFromXXloper(kept));
}

void ErrorsAmongNumbers() {
    std::printf("Errors among numbers\n");
    const std::vector<double> values = {1.5, DoubleFromXXloper(XXloperFromError(xlerrDiv0)), INFINITY, NAN};
    for (const double value : values) {
        const XXloperPtr cell = XXloperFromDouble(value);
        if (TypeOf(*cell) == xltypeErr) {
            std::printf("  error %d%s\n", cell->val.err, IsErrorNaN(value) ? ", carried by the number" : "");
        } else {
            std::printf("  number %g\n", cell->val.num);
        }
    }
}

void Arrays() {
    std::printf("Arrays\n");
    const XXloperPtr block = XXloperFromDoubles(2, 2, std::vector<double>{1, 2, 3});
    const auto& array = block->val.array;
    const XLOPER12* cell = array.lparray;
    for (RW row = 0; row < array.rows; ++row) {
        for (COL column = 0; column < array.columns; ++column) {
            const double number = DoubleFromXXloper(static_cast<const XXloper&>(*cell++));
            std::printf(IsErrorNaN(number) ? "  #N/A" : "  %g", number);
        }
        std::printf("\n");
    }
}

}  // namespace

int main() {
    Excel12EntryPoint = &PlayedExcel;
    CallsIntoExcel();
    LentValues();
    ErrorsAmongNumbers();
    Arrays();
}
