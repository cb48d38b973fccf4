// The real add-in between its attach and its unloading.
#include "hosted.h"

namespace {

using excelhost::Array;
using excelhost::ErrorValue;
using excelhost::Text;
using excelhost::Value;

TEST_F(HostedAddIn, GivesValueErrorsWithoutExcelAndLeavesQuietly) {
    Load(nullptr);
    ShakeHands();
    XLOPER12 missing{};
    missing.xltype = xltypeMissing;
    for (int call = 0; call < 3; ++call) {
        const XLOPER12* const result = Export<decltype(NetOutputPrediction)>(addIn, "NetOutputPrediction")(
            &missing, &missing, &missing, &missing, &missing);
        EXPECT_EQ(excelhost::ValueFrom(*result), Value(ErrorValue{xlerrValue}));
        EXPECT_EQ(result->val.failure.returnCode, call < 2 ? xlretFailed : 0);
        if (call == 1) Close();
    }
    EXPECT_TRUE(host.Trace().empty());
}

bool MarkerExists() {
    const HANDLE marker =
        OpenMutexW(SYNCHRONIZE, FALSE, TEXT("Local\\Kestrolumen is loaded mutex name 129342734_v8"));
    return marker != nullptr && CloseHandle(marker) != FALSE;
}

TEST_F(HostedAddIn, CalculatesBetweenHandshakeAndClose) {
    Load(&CallBack);
    const std::vector<Value> arguments = {
        1.5, true, Text(TEXT("text")),
        Array{2, 2, {1.0, Text(TEXT("b")), ErrorValue{xlerrNA}, excelhost::Empty{}}}};
    // The user cancels the closing of Excel: xlAutoClose has run, xlAutoOpen doesn't run again, and the workbook
    // says hello anew.
    for (const bool cancelled : {false, true, false}) {
        if (!cancelled) Open();
        EXPECT_EQ(host.Call(TEXT("NetOutputPrediction"), {}), Value(ErrorValue{xlerrName}));
        ShakeHands();
        EXPECT_TRUE(MarkerExists());
        for (const StdWString function :
             {TEXT("NetOutputPrediction"), TEXT("NetOutputProbabilityOfPrediction"),
              TEXT("NetOutputProbabilityOfCategory")}) {
            // The counterpart answers with what it got.
            const auto echo = [](auto operands) {
                Array row{1, operands.size(), {}};
                for (const XLOPER12* operand : operands) row.cells.push_back(excelhost::ValueFrom(*operand));
                return Value(row);
            };
            Array expected{1, host.Find(function)->Arity(), arguments};
            expected.cells.resize(expected.columns, excelhost::Missing{});
            for (const WCHAR* workbook : {TEXT("Kestrolumen.XLA"), TEXT("Kestrolumen.XLS")}) {
                host.SetFunction(workbook, function + TEXT("VBA"), echo);
                EXPECT_EQ(host.Call(function, arguments), Value(expected));
                host.CloseWorkbook(workbook);
            }
            EXPECT_EQ(host.Call(function, arguments), Value(ErrorValue{xlerrValue}));
        }
        TakeLeave();
        Close();
        EXPECT_TRUE(host.Registrations().empty());
    }
    ShakeHands();
    EXPECT_EQ(host.AlertsShown(), 0u);
    // Who forgets to take leave loses the marker with the module.
    Close();
    EXPECT_TRUE(MarkerExists());
    addIn.reset();
    EXPECT_EQ(GetModuleHandleW(TEXT("kestrolumen.xll")), nullptr);
    EXPECT_FALSE(MarkerExists());
}

}  // namespace
