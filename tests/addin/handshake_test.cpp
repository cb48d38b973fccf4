#include "addintest.h"

#include "support/children.h"

#include <cstring>

namespace {

using testing::ElementsAre;

const CStringW markerName = TEXT("Kestrolumen is loaded mutex name 129342734");

// Another process: says whether the marker is there, once a line.
const support::Role observer("observe the marker", [](const support::Arguments&) {
    while (!support::Hear().empty()) support::Say(Mutex::Exists(markerName, true, 0) ? "there" : "not there");
    return 0;
});

bool MarkerExists() {
    return Mutex::Exists(markerName, true, 0);
}

class Handshake : public AddInTest {
  protected:
    // The operands of every entry for `function`, as texts.
    [[nodiscard]] std::vector<std::vector<std::string>> Calls(int function) const {
        std::vector<std::vector<std::string>> calls;
        for (const excelhost::Entry& entry : host.Trace()) {
            if (entry.function != function) continue;
            auto& call = calls.emplace_back();
            for (const excelhost::TracedValue& operand : entry.operands) call.push_back(operand.text);
        }
        return calls;
    }
};

TEST_F(Handshake, RegistersTheThreeFunctionsInOrder) {
    EXPECT_TRUE(RegisteredFunctionIds.empty());
    ShakeHands();
    const std::string file =
        '"' + excelhost::Utf8(excelhost::TextView(AddInModule.fileName.GetString())) + '"';
    EXPECT_THAT(
        Calls(xlfRegister),
        ElementsAre(ElementsAre(file, "\"NetOutputPrediction\"", "\"QUQQUU\"", "\"NetOutputPrediction\""),
                    ElementsAre(file, "\"NetOutputProbabilityOfPrediction\"", "\"QUQQUU\"",
                                "\"NetOutputProbabilityOfPrediction\""),
                    ElementsAre(file, "\"NetOutputProbabilityOfCategory\"", "\"QUQQQUU\"",
                                "\"NetOutputProbabilityOfCategory\"")));
    for (const excelhost::Entry& entry : host.Trace()) {
        if (entry.function != xlfRegister) continue;
        for (const auto& operand : entry.operands) EXPECT_EQ(operand.type, xltypeStr);
    }
    const auto registrations = host.Registrations();
    ASSERT_EQ(registrations.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(RegisteredFunctionIds[i], registrations[i].id);
        EXPECT_FALSE(registrations[i].threadSafe);
        EXPECT_FALSE(registrations[i].recalculatesAlways);
    }
    EXPECT_EQ(registrations[0].takesReference, (std::vector<bool>{true, false, false, true, true}));
    EXPECT_EQ(registrations[1].takesReference, (std::vector<bool>{true, false, false, true, true}));
    EXPECT_EQ(registrations[2].takesReference, (std::vector<bool>{true, false, false, false, true, true}));
    EXPECT_TRUE(MarkerExists());
}

TEST_F(Handshake, TheFileNameIsWhatTheLoaderSays) {
    const CStringW name = std::exchange(AddInModule.fileName, TEXT("Renamed \xE4.xll"));
    ShakeHands();
    EXPECT_EQ(Calls(xlfRegister).at(2).at(0), "\"Renamed \xC3\xA4.xll\"");
    AddInModule.fileName = name;
}

TEST_F(Handshake, IsRepeatedCleanlyByEitherExport) {
    BSTR text = SysAllocString(TEXT(""));
    bool everAbsent = false;
    InitializeXlaInformationW(0, 0, 0, &text, 0, nullptr, 0);
    host.OnEntry([&](const excelhost::Entry&) { everAbsent = everAbsent || !MarkerExists(); });
    for (int round = 0; round < 4; ++round) {
        host.ClearTrace();
        const std::vector<double> before = RegisteredFunctionIds;
        if (round % 2 == 0) {
            InitializeXlaInformationVB(0, 0, 0, nullptr, 0, &text, 0, &text);
        } else {
            InitializeXlaInformationW(-1, 2147483647, 0, &text, 0, &text, 0);
        }
        std::vector<std::vector<std::string>> expected;
        for (const double id : before) expected.push_back({excelhost::NumberText(id)});
        EXPECT_EQ(Calls(xlfUnregister), expected);
        for (const excelhost::Entry& entry : host.Trace()) {
            if (entry.function != xlfUnregister) continue;
            EXPECT_EQ(entry.operands.at(0).type, xltypeNum);
        }
        EXPECT_EQ(RegisteredFunctionIds.size(), 3u);
        EXPECT_NE(RegisteredFunctionIds, before);
        EXPECT_EQ(host.Registrations().size(), 3u);
        EXPECT_NE(LoadedMarker, nullptr);
    }
    EXPECT_FALSE(everAbsent) << "the name is there all along";
    EXPECT_TRUE(MarkerExists());
    host.OnEntry({});
    SysFreeString(text);
}

TEST_F(Handshake, UninitializingTakesTheMarkerOnly) {
    UninitializeXlaInformation(1);
    UninitializeXlaInformation(1);
    EXPECT_TRUE(host.Trace().empty());
    ShakeHands();
    host.ClearTrace();
    UninitializeXlaInformation(0);
    EXPECT_EQ(LoadedMarker, nullptr);
    EXPECT_FALSE(MarkerExists());
    EXPECT_EQ(RegisteredFunctionIds.size(), 3u);
    EXPECT_TRUE(host.Trace().empty());
    UninitializeXlaInformation(0);
}

TEST_F(Handshake, OtherProcessesSeeTheMarker) {
    support::Child process("observe the marker");
    const auto seen = [&] {
        process.WriteLine("look");
        return process.ReadLine();
    };
    EXPECT_EQ(seen(), "not there");
    ShakeHands();
    EXPECT_EQ(seen(), "there");
    ShakeHands();
    EXPECT_EQ(seen(), "there");
    xlAutoClose();
    EXPECT_EQ(seen(), "there");
    UninitializeXlaInformation(0);
    EXPECT_EQ(seen(), "not there");
    EXPECT_EQ(process.Finish(), 0);
}

// A second Excel of the same user: the name goes with the last who holds it.
TEST_F(Handshake, AMarkerOfAnotherHolderIsShared) {
    ShakeHands();
    auto other = std::make_unique<Mutex>(markerName, true, 0, nullptr);
    UninitializeXlaInformation(0);
    EXPECT_TRUE(MarkerExists());
    ShakeHands();
    other.reset();
    EXPECT_TRUE(MarkerExists());
}

TEST_F(Handshake, ClosingUnregistersWithOrWithoutAStoreAndLeavesTheMarker) {
    for (const bool withStore : {true, false}) {
        if (!withStore) xlAutoClose();
        ShakeHands();
        host.ClearTrace();
        EXPECT_EQ(xlAutoClose(), 1);
        EXPECT_EQ(Calls(xlfUnregister).size(), 3u);
        EXPECT_TRUE(RegisteredFunctionIds.empty());
        EXPECT_GE(RegisteredFunctionIds.capacity(), 3u);
        EXPECT_TRUE(host.Registrations().empty());
        EXPECT_TRUE(MarkerExists());
        host.ClearTrace();
        EXPECT_EQ(xlAutoClose(), 1);
        EXPECT_TRUE(host.Trace().empty());
    }
}

// The last results go back behind the unregistration.
TEST_F(Handshake, ClosingReleasesResultsLast) {
    ShakeHands();
    host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputPredictionVBA"),
                     [](auto) { return excelhost::Text(TEXT("last")); });
    EXPECT_EQ(host.Call(TEXT("NetOutputPrediction"), {}), excelhost::Value(excelhost::Text(TEXT("last"))));
    host.ClearTrace();
    xlAutoClose();
    std::vector<int> functions;
    for (const int function : host.TracedFunctions()) {
        if (function == xlfUnregister || function == xlFree) functions.push_back(function);
    }
    EXPECT_THAT(functions,
                ElementsAre(xlfUnregister, xlFree, xlfUnregister, xlFree, xlfUnregister, xlFree, xlFree));
}

TEST_F(Handshake, ARefusedRegistrationLeavesTheBytesOfItsErrorValue) {
    host.RefuseNth(xlfRegister, 2, xlretFailed);
    ShakeHands();
    ASSERT_EQ(RegisteredFunctionIds.size(), 3u);
    const std::int32_t expected[] = {xlerrValue, xlretFailed};
    EXPECT_EQ(std::memcmp(&RegisteredFunctionIds[1], expected, sizeof expected), 0);
    EXPECT_EQ(host.Registrations().size(), 2u);
    host.ClearTrace();
    UnregisterAll();
    std::vector<DWORD> types;
    for (const excelhost::Entry& entry : host.Trace()) {
        if (entry.function == xlfUnregister) types.push_back(entry.operands.at(0).type);
    }
    EXPECT_EQ(types, (std::vector<DWORD>{xltypeNum, xltypeNum, xltypeNum}));
    EXPECT_TRUE(host.Registrations().empty());
}

TEST_F(Handshake, NothingOfTheFunctionsIsVolatileOrLost) {
    ShakeHands();
    host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputProbabilityOfCategoryVBA"),
                     [](auto operands) { return static_cast<double>(operands.size()); });
    const excelhost::Value two[] = {1.0, 2.0};
    EXPECT_EQ(host.Call(TEXT("NetOutputProbabilityOfCategory"), two), excelhost::Value(6.0));
}

}  // namespace
