// The workbook's handshake: registration, and the marker that tells other processes that the add-in is there.
#include "addintest.h"

#include "support/allocations.h"
#include "support/children.h"

#include <cstring>

namespace {

using testing::ElementsAre;

const CStringW markerName = TEXT("Kestrolumen is loaded mutex name 129342734");

bool MarkerExists() {
    return Mutex::Exists(markerName, true, 0);
}

// Another process: says whether the marker is there, once a line.
const support::Role observer("observe the marker", [](const support::Arguments&) {
    while (!support::Hear().empty()) support::Say(MarkerExists() ? "there" : "not there");
    return 0;
});

// One that puts the marker and has no chance to take it away.
const support::Role holder("hold the marker", [](const support::Arguments&) {
    const Mutex marker(markerName, true, 0, nullptr);
    support::Say("held");
    static_cast<void>(support::Hear());
    return 0;
});

class Handshake : public AddInTest {
  protected:
    // The operands of every entry for `function`, as texts.
    [[nodiscard]] std::vector<std::string> Calls(int function) const {
        std::vector<std::string> calls;
        for (const excelhost::Entry& entry : host.Trace()) {
            if (entry.function != function) continue;
            calls.emplace_back();
            for (const excelhost::TracedValue& operand : entry.operands) calls.back() += operand.text + " ";
        }
        return calls;
    }
};

TEST_F(Handshake, RegistersTheThreeFunctionsInOrder) {
    const CStringW name = std::exchange(AddInModule.fileName, TEXT("Renamed \xE4.xll"));
    ShakeHands();
    const std::string file = "\"Renamed \xC3\xA4.xll\" ";
    const std::string prediction = "\"NetOutputPrediction\" ";
    const std::string ofPrediction = "\"NetOutputProbabilityOfPrediction\" ";
    const std::string ofCategory = "\"NetOutputProbabilityOfCategory\" ";
    EXPECT_THAT(Calls(xlfRegister), ElementsAre(file + prediction + "\"QUQQUU\" " + prediction,
                                                file + ofPrediction + "\"QUQQUU\" " + ofPrediction,
                                                file + ofCategory + "\"QUQQQUU\" " + ofCategory));
    AddInModule.fileName = name;
    ShakeHands();
    const auto registrations = host.Registrations();
    ASSERT_EQ(registrations.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(RegisteredFunctionIds[i], registrations[i].id);
        EXPECT_FALSE(registrations[i].type.threadSafe || registrations[i].type.recalculatesAlways);
    }
}

TEST_F(Handshake, IsRepeatedCleanlyByEitherExport) {
    BSTR text = SysAllocString(TEXT(""));
    InitializeXlaInformationW(0, 0, 0, &text, 0, nullptr, 0);
    for (int round = 0; round < 4; ++round) {
        host.ClearTrace();
        const std::vector<double> before = RegisteredFunctionIds;
        if (round % 2 == 0) {
            InitializeXlaInformationVB(0, 0, 0, nullptr, 0, &text, 0, &text);
        } else {
            InitializeXlaInformationW(-1, 2147483647, 0, &text, 0, &text, 0);
        }
        std::vector<std::string> expected;
        for (const double id : before) expected.push_back(excelhost::NumberText(id) + " ");
        EXPECT_EQ(Calls(xlfUnregister), expected);
        EXPECT_NE(RegisteredFunctionIds, before);
        EXPECT_EQ(host.Registrations().size(), 3u);
        EXPECT_NE(LoadedMarker, nullptr);
    }
    SysFreeString(text);
}

TEST_F(Handshake, OtherProcessesSeeTheMarkerUntilLeaveIsTaken) {
    support::Child process("observe the marker");
    const auto seen = [&] {
        process.WriteLine("look");
        return process.ReadLine();
    };
    UninitializeXlaInformation(1);
    EXPECT_EQ(seen(), "not there");
    ShakeHands();
    EXPECT_EQ(seen(), "there");
    xlAutoClose();
    EXPECT_EQ(seen(), "there");
    ShakeHands();
    host.ClearTrace();
    UninitializeXlaInformation(0);
    EXPECT_EQ(seen(), "not there");
    EXPECT_EQ(LoadedMarker, nullptr);
    EXPECT_EQ(RegisteredFunctionIds.size(), 3u) << "leave takes the marker only";
    EXPECT_TRUE(host.Trace().empty());
    EXPECT_EQ(process.Finish(), 0);
}

// A second Excel of the same user: the name goes with the last who holds it, also when that one is killed.
TEST_F(Handshake, AMarkerOfAnotherHolderIsShared) {
    support::Child other("hold the marker");
    EXPECT_EQ(other.ReadLine(), "held");
    ShakeHands();
    UninitializeXlaInformation(0);
    EXPECT_TRUE(MarkerExists());
    other.Kill();
    EXPECT_FALSE(MarkerExists());
    ShakeHands();
    EXPECT_TRUE(MarkerExists());
}

// The last result goes back behind the unregistration.
TEST_F(Handshake, ClosingUnregistersAndLeavesTheMarker) {
    host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputPredictionVBA"),
                     [](auto) { return excelhost::Text(TEXT("last")); });
    for (int round = 0; round < 2; ++round) {
        ShakeHands();  // the second time there is no store: the closing was cancelled
        static_cast<void>(host.Call(TEXT("NetOutputPrediction"), {}));
        host.ClearTrace();
        EXPECT_EQ(xlAutoClose(), 1);
        std::string entries;
        for (const int function : host.TracedFunctions()) {
            if (function == xlfUnregister) entries += "- ";
            if (function == xlFree) entries += "F ";
        }
        EXPECT_EQ(entries, "- F - F - F F ");
        EXPECT_TRUE(RegisteredFunctionIds.empty());
        EXPECT_TRUE(host.Registrations().empty());
        EXPECT_TRUE(MarkerExists());
        host.ClearTrace();
        EXPECT_EQ(xlAutoClose(), 1);
        EXPECT_TRUE(host.Trace().empty());
    }
}

// Without memory the functions that were registered stay so, or the new ones stand in their place.
TEST_F(Handshake, WithoutMemoryLeavesThreeFunctionsAndTheMarker) {
    const FrugalHost frugal(xlretSuccess);
    ShakeHands();
    static BSTR text = nullptr;
    std::vector<std::size_t> faults;
    faults.reserve(4);
    const std::int64_t left = support::BlocksLeftBy([&] {
        const auto check = [] {
            EXPECT_EQ(RegisteredFunctionIds.size(), 3u);
            EXPECT_EQ(FrugalHost::registered, RegisteredFunctionIds);
            EXPECT_TRUE(MarkerExists()) << "the new one stands before the old one goes";
        };
        const auto withTwo = [] {
            WhatLeaves([] { InitializeXlaInformationW(0, 0, 0, &text, 0, &text, 0); });
        };
        const auto withThree = [] {
            WhatLeaves([] { InitializeXlaInformationVB(0, 0, 0, &text, 0, &text, 0, &text); });
        };
        for (const WCHAR* const passed : {static_cast<const WCHAR*>(nullptr), TEXT("text")}) {
            text = SysAllocString(passed);
            faults.push_back(support::FailEachAllocation(withTwo, check));
            faults.push_back(support::FailEachAllocation(withThree, check));
            SysFreeString(text);
        }
    });
    EXPECT_EQ(left, 0);
    EXPECT_GE(faults.at(0), 5u);
    EXPECT_EQ(faults.at(2), faults.at(0) + 2) << "both texts are read";
    EXPECT_EQ(faults.at(3), faults.at(1) + 3) << "all three";
    xlAutoClose();
    EXPECT_THAT(FrugalHost::registered, ElementsAre());
    EXPECT_EQ(FrugalHost::lent, 0);
}

TEST_F(Handshake, NotesTheFactsThatAttachHadNoMemoryFor) {
    const ModuleFacts facts = AddInModule;
    const auto attach = [] {
        AddInModule = {};
        DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr);
    };
    const std::size_t faults = support::FailEachAllocation(attach, [&] {
        ShakeHands();
        EXPECT_EQ(AddInModule.fileName, facts.fileName);
        // The drive stands for a folder that a system without memory can't tell, as it does on Linux for a long name.
        EXPECT_THAT(AddInModule.temporaryDirectory,
                    testing::AnyOf(facts.temporaryDirectory, CStringW(TEXT("C:\\"))));
        EXPECT_EQ(host.Registrations().size(), 3u);
    });
    EXPECT_GT(faults, 5u);
}

TEST_F(Handshake, ARefusedRegistrationLeavesTheBytesOfItsErrorValue) {
    constexpr int quietNaN = 0x7FF80000;  // read as a number; its id goes out as one all the same
    for (const int code : {xlretFailed, quietNaN}) {
        host.RefuseNth(xlfRegister, 2, code);
        ShakeHands();
        ASSERT_EQ(RegisteredFunctionIds.size(), 3u);
        const std::int32_t expected[] = {xlerrValue, code};
        EXPECT_EQ(std::memcmp(&RegisteredFunctionIds[1], expected, sizeof expected), 0);
        EXPECT_EQ(host.Registrations().size(), 2u);
        host.ClearTrace();
        UnregisterAll();
        ASSERT_EQ(Calls(xlfUnregister).size(), 3u);
        EXPECT_EQ(Calls(xlfUnregister)[1], code == quietNaN ? "NaN " : "6.79038653182997E-313 ");
        EXPECT_TRUE(host.Registrations().empty());
    }
}

}  // namespace
