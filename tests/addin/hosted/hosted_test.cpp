// The real add-in in a process that offers it Excel, through a whole life.
#include "addinfile.h"
#include "connection.h"
#include "support/home.h"

#include "excelhost/host.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using excelhost::Array;
using excelhost::ErrorValue;
using excelhost::Missing;
using excelhost::Text;
using excelhost::Value;

class HostedAddIn : public testing::Test {
  protected:
    HostedAddIn() {
        OfferExcel();
        addIn.emplace();
        host.AddModule(TEXT("kestrolumen.xll"), [this](const char* name) { return addIn->Procedure(name); });
        addIn->Open();
    }
    ~HostedAddIn() override {
        if (addIn) addIn->Close();
        EXPECT_TRUE(host.GetAccount().Balanced()) << Describe(host.GetAccount());
        EXPECT_EQ(EntriesByThisWay(), static_cast<int>(host.Trace().size()));
    }

    void ShakeHands() const {
        BSTR text = SysAllocString(TEXT("Kestrolumen"));
        BSTR none = nullptr;
        addIn->Export<decltype(InitializeXlaInformationVB)>("InitializeXlaInformationVB")(1, 2, 3, &text, 4,
                                                                                          &none, 5, &text);
        addIn->Export<decltype(InitializeXlaInformationW)>("InitializeXlaInformationW")(1, 2, 3, &text, 4,
                                                                                        &text, 5);
        SysFreeString(text);
    }

    void TakeLeave() const {
        addIn->Export<decltype(UninitializeXlaInformation)>("UninitializeXlaInformation")(0);
    }

    static bool MarkerExists() {
        const HANDLE marker =
            OpenMutexW(SYNCHRONIZE, FALSE, TEXT("Local\\Kestrolumen is loaded mutex name 129342734_v8"));
        if (marker != nullptr) CloseHandle(marker);
        return marker != nullptr;
    }

    support::RuntimeFolder folder;
    excelhost::Host host;
    std::optional<AddInFile> addIn;
};

TEST_F(HostedAddIn, OffersNothingBeforeTheHandshake) {
    EXPECT_TRUE(host.Trace().empty());
    EXPECT_EQ(host.Call(TEXT("NetOutputPrediction"), {}), Value(ErrorValue{xlerrName}));
    EXPECT_FALSE(MarkerExists());
}

TEST_F(HostedAddIn, CalculatesBetweenHandshakeAndLeave) {
    ShakeHands();
    EXPECT_TRUE(MarkerExists());
    EXPECT_EQ(host.Registrations().size(), 3u);

    struct Case {
        const WCHAR* function;
        const WCHAR* counterpart;
        std::size_t arity;
    };
    const Case cases[] = {
        {TEXT("NetOutputPrediction"), TEXT("NetOutputPredictionVBA"), 5},
        {TEXT("NetOutputProbabilityOfPrediction"), TEXT("NetOutputProbabilityOfPredictionVBA"), 5},
        {TEXT("NetOutputProbabilityOfCategory"), TEXT("NetOutputProbabilityOfCategoryVBA"), 6},
    };
    const std::vector<Value> arguments = {
        1.5, true, Text(TEXT("text")),
        Array{2, 2, {1.0, Text(TEXT("b")), ErrorValue{xlerrNA}, excelhost::Empty{}}}};
    for (const Case& each : cases) {
        // The counterpart answers with what it got.
        const auto echo = [](auto operands) {
            Array row{1, operands.size(), {}};
            for (const XLOPER12* operand : operands) row.cells.push_back(excelhost::ValueFrom(*operand));
            return Value(row);
        };
        Array expected{1, each.arity, arguments};
        expected.cells.resize(each.arity, Missing{});
        for (const WCHAR* workbook : {TEXT("Kestrolumen.XLA"), TEXT("Kestrolumen.XLS")}) {
            host.SetFunction(workbook, each.counterpart, echo);
            EXPECT_EQ(host.Call(each.function, arguments), Value(expected));
            host.CloseWorkbook(workbook);
        }
        EXPECT_EQ(host.Call(each.function, arguments), Value(ErrorValue{xlerrValue}));
    }
    TakeLeave();
    EXPECT_FALSE(MarkerExists());
    EXPECT_EQ(host.Registrations().size(), 3u);
    addIn->Close();
    EXPECT_TRUE(host.Registrations().empty());
    EXPECT_EQ(host.AlertsShown(), 0u);
}

TEST_F(HostedAddIn, ServesManyThreads) {
    ShakeHands();
    host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputPredictionVBA"),
                     [](auto) { return Text(TEXT("answer")); });
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                if (host.Call(TEXT("NetOutputPrediction"), {}) == Value(Text(TEXT("answer")))) ++right;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 400);
}

TEST_F(HostedAddIn, IsOpenedAgainAfterClosing) {
    for (int round = 0; round < 3; ++round) {
        ShakeHands();
        host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputPredictionVBA"),
                         [=](auto) { return round * 1.0; });
        EXPECT_EQ(host.Call(TEXT("NetOutputPrediction"), {}), Value(round * 1.0));
        addIn->Close();
        EXPECT_EQ(host.Call(TEXT("NetOutputPrediction"), {}), Value(ErrorValue{xlerrName}));
        addIn->Open();
    }
}

// Who forgets to take leave loses the marker with the module.
TEST_F(HostedAddIn, TakesTheMarkerAlongWhenItGoes) {
    ShakeHands();
    addIn->Close();
    EXPECT_TRUE(MarkerExists());
    addIn.reset();
    EXPECT_EQ(GetModuleHandleW(TEXT("kestrolumen.xll")), nullptr);
    EXPECT_FALSE(MarkerExists());
}

}  // namespace
