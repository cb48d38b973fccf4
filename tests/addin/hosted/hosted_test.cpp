// The real add-in, kestrolumen.xll beside this program, in a process whose executable exports no callback:
// it finds Excel by the module XLCall32, or not at all.
#include "support/home.h"

#include "addin/addin.h"
#include "excelhost/host.h"

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>

namespace {

using excelhost::Array;
using excelhost::ErrorValue;
using excelhost::Text;
using excelhost::Value;

int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    return excelhost::Host::Current()->CallBack(function, count, operands, result);
}

struct Unload {
    void operator()(HMODULE module) const { EXPECT_NE(FreeLibrary(module), FALSE); }
};
using Library = std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload>;

// An export by the type of its declaration.
template <typename Function>
Function* Export(const Library& library, const char* name) {
    const FARPROC procedure = GetProcAddress(library.get(), name);
    if (procedure == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(procedure));
}

class HostedAddIn : public testing::Test {
  protected:
    void Load(EXCEL12PROC entryPoint) {
        xlCall.reset(LoadLibraryW(TEXT("XLCall32.dll")));
        Export<void PASCAL(EXCEL12PROC)>(xlCall, "SetExcel12EntryPt")(entryPoint);
        addIn.reset(LoadLibraryW(TEXT("kestrolumen.xll")));
        host.AddModule(TEXT("kestrolumen.xll"),
                       [this](const char* name) { return GetProcAddress(addIn.get(), name); });
        Open();
    }
    ~HostedAddIn() override {
        if (addIn) Close();
        EXPECT_TRUE(host.GetAccount().Balanced()) << Describe(host.GetAccount());
    }

    void Open() const { EXPECT_EQ(Export<decltype(xlAutoOpen)>(addIn, "xlAutoOpen")(), 1); }
    void Close() const { EXPECT_EQ(Export<decltype(xlAutoClose)>(addIn, "xlAutoClose")(), 1); }
    void ShakeHands() const {
        using Handshake = decltype(InitializeXlaInformationW);
        Export<Handshake>(addIn, "InitializeXlaInformationW")(1, 2, 3, nullptr, 4, nullptr, 5);
    }
    static bool MarkerExists() {
        const HANDLE marker =
            OpenMutexW(SYNCHRONIZE, FALSE, TEXT("Local\\Kestrolumen is loaded mutex name 129342734_v8"));
        return marker != nullptr && CloseHandle(marker) != FALSE;
    }

    support::RuntimeFolder folder;
    excelhost::Host host;
    Library xlCall, addIn;
};

TEST_F(HostedAddIn, GivesValueErrorsWithoutExcelAndLeavesQuietly) {
    Load(nullptr);
    ShakeHands();
    XLOPER12 missing{};
    missing.xltype = xltypeMissing;
    for (int call = 0; call < 3; ++call) {
        const XLOPER12* const result = Export<decltype(NetOutputPrediction)>(addIn, "NetOutputPrediction")(
            &missing, &missing, &missing, &missing, &missing);
        EXPECT_EQ(excelhost::ValueFrom(*result), Value(ErrorValue{xlerrValue}));
        EXPECT_EQ(result->val.returnCode, call < 2 ? xlretFailed : 0);
        if (call == 1) Close();
    }
    EXPECT_TRUE(host.Trace().empty());
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
        Export<decltype(UninitializeXlaInformation)>(addIn, "UninitializeXlaInformation")(0);
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
