// The simulated Excel as an add-in sees it: values, function numbers, registration, and the account of memory
// on which every test of an add-in rests.
#include "excelhost/host.h"

#include <gmock/gmock.h>

#include <stdexcept>

extern "C" int PASCAL MdCallBack12(int function, int count, LPXLOPER12* operands, LPXLOPER12 result);

namespace excelhost {
namespace {

using ::testing::HasSubstr;

TEST(ValueTest, SurvivesTheWayThroughARecord) {
    const Value values[] = {Empty{},
                            Missing{},
                            -0.5,
                            42,
                            true,
                            Text(TEXT("nul\0inside"), 10),
                            ErrorValue{xlerrNA},
                            Area{{1, 2, 3, 4}},
                            Reference{9, {Area{{0, 0, 0, 0}}, Area{{1, 1048575, 2, 16383}}}},
                            Array{2, 2, {1.0, Text(TEXT("a")), Empty{}, Array{1, 1, {Text(TEXT("deep"))}}}}};
    for (const Value& value : values) {
        Blocks blocks;
        XLOPER12 flagged = RecordFrom(value, blocks);
        flagged.xltype |= xlbitXLFree | xlbitDLLFree;
        EXPECT_EQ(ValueFrom(flagged), value) << Describe(value);
    }
    EXPECT_NE(Value(1), Value(1.0)) << "another type";
    XLOPER12 array{};
    array.xltype = xltypeMulti;
    array.val.array = {&array, 1, 1};  // holds itself
    EXPECT_TRUE(ValueFrom(array).Is<Array>());
    array.val.array.rows = -1;
    EXPECT_EQ(ValueFrom(array), Value(ErrorValue{xlerrValue}));
    array.xltype = xltypeStr;
    array.val.str = nullptr;
    EXPECT_EQ(ValueFrom(array), Value(ErrorValue{xlerrValue}));
}

TEST(ValueTest, NamesCellsAndWritesNumbersInFifteenDigits) {
    EXPECT_EQ(AreaName({{0, 8, 25, 26}}), "Z1:AA9");
    EXPECT_EQ(AreaName({{0, 1048575, 702, 16383}}), "AAA1:XFD1048576");
    for (const int error : {0, 7, 15, 23, 29, 36, 42, 43}) EXPECT_EQ(ErrorNumber(ErrorName(error)), error);
    const std::pair<double, const char*> numbers[] = {{-0.0, "0"},
                                                      {0.1 + 0.2, "0.3"},
                                                      {1.0 / 3, "0.333333333333333"},
                                                      {123456789012345, "123456789012345"},
                                                      {1e15, "1E+15"},
                                                      {-2.5e-7, "-2.5E-07"},
                                                      {999999999999999.9, "1E+15"}};
    for (const auto& [number, text] : numbers) EXPECT_EQ(NumberText(number), text);
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8C\xB7";  // one to four bytes
    EXPECT_EQ(Wide(text).size(), 5U) << "the last one is a pair";
    EXPECT_EQ(Utf8(Wide(text)), text);
    EXPECT_EQ(Utf8(Wide("a\xFFz")), "a\xEF\xBF\xBDz");
}

// Worksheet functions of a module that lives in this program.
extern "C" LPXLOPER12 PASCAL ReturnsNothing() {
    return nullptr;
}
extern "C" LPXLOPER12 PASCAL AltersItsArgument(LPXLOPER12 argument) {
    if (TypeOf(*argument) == xltypeStr) argument->val.str[1] = 'X';
    return argument;
}
extern "C" LPXLOPER12 PASCAL Throws(LPXLOPER12) {
    throw std::runtime_error("no");
}
extern "C" LPXLOPER12 PASCAL TypesOfThree(LPXLOPER12 a, LPXLOPER12 b, LPXLOPER12 c) {
    static XLOPER12 result;
    result.xltype = xltypeNum;
    result.val.num = a->xltype * 1e8 + b->xltype * 1e4 + c->xltype;
    return &result;
}

FARPROC Exports(const char* procedure) {
    const std::string_view name = procedure;
    const auto as = [](auto function) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
    };
    if (name == "ReturnsNothing") return as(&ReturnsNothing);
    if (name == "AltersItsArgument") return as(&AltersItsArgument);
    if (name == "Throws") return as(&Throws);
    return name == "TypesOfThree" ? as(&TypesOfThree) : nullptr;
}

class HostTest : public ::testing::Test {
  protected:
    HostTest() {
        host.AddModule(TEXT("module.xll"), Exports);
        host.SetFunction(TEXT("Book"), TEXT("Text"), [](auto) { return Text(TEXT("text")); });
        host.SetFunction(TEXT("Book"), TEXT("Table"), [](auto) {
            return Array{1, 2, {Text(TEXT("a")), Array{1, 1, {Text(TEXT("deep"))}}}};
        });
        host.SetFunction(TEXT("Book"), TEXT("Fail"),
                         [](auto) -> Value { throw std::runtime_error("division"); });
    }

    // Calls the host as an add-in does, by the export, with operands built for the call.
    int CallBack(int function, const std::vector<Value>& operands, XLOPER12* result = nullptr) {
        blocks.clear();
        std::vector<XLOPER12> records;
        std::vector<LPXLOPER12> pointers;
        for (const Value& operand : operands) records.push_back(RecordFrom(operand, blocks));
        for (XLOPER12& record : records) pointers.push_back(&record);
        return MdCallBack12(function, static_cast<int>(pointers.size()), pointers.data(), result);
    }
    XLOPER12 Give(const WCHAR* target) {
        XLOPER12 result{};
        EXPECT_EQ(CallBack(xlUDF, {Text(target)}, &result), xlretSuccess);
        return result;
    }
    static int Free(XLOPER12& record) {
        LPXLOPER12 operand = &record;
        return MdCallBack12(xlFree, 1, &operand, nullptr);
    }
    void Register(const WCHAR* procedure, const Text& typeText) {
        CallBack(xlfRegister, {Text(TEXT("MODULE.XLL")), Text(procedure), typeText, Text(TEXT("F"))});
    }
    Value Call(const std::vector<Value>& arguments) { return host.Call(TEXT("F"), arguments); }

    Host host;
    Blocks blocks;
};

TEST_F(HostTest, AnswersBadCallsWithACodeAndLeavesTheResultAlone) {
    XLOPER12 number{};
    number.xltype = xltypeNum;
    LPXLOPER12 withNull[] = {&number, nullptr};
    std::vector<LPXLOPER12> many(256, &number);
    const struct {
        int function;
        int count;
        LPXLOPER12* operands;
        int code;
    } cases[] = {
        {4242, 0, nullptr, xlretInvXlfn},          {xlfError, -1, withNull, xlretInvCount},
        {xlFree, 256, many.data(), xlretInvCount}, {xlfError, 1, nullptr, xlretInvXloper},
        {xlUDF, 2, withNull, xlretInvXloper},      {xlfError, 0, nullptr, xlretInvCount},
        {xlUDF, 1, many.data(), xlretFailed},      {xlEnableXLMsgs, 1, withNull, xlretInvCount},
    };
    for (const auto& each : cases) {
        XLOPER12 result{};
        result.xltype = 0x0ABC;
        EXPECT_EQ(MdCallBack12(each.function, each.count, each.operands, &result), each.code);
        EXPECT_EQ(result.xltype, 0x0ABCU);
        EXPECT_EQ(host.Trace().back().returnCode, each.code);
    }
    EXPECT_EQ(host.GetAccount().failures, std::size(cases));
}

TEST_F(HostTest, CallsAWorkbooksFunctionByItsTarget) {
    for (const WCHAR* target : {TEXT("=Book!Text"), TEXT("='BOOK'!text")}) {
        XLOPER12 text = Give(target);
        EXPECT_EQ(ValueFrom(text), Value(Text(TEXT("text"))));
        EXPECT_EQ(Free(text), xlretSuccess);
    }
    EXPECT_EQ(ValueFrom(Give(TEXT("=Book!Fail"))), Value(ErrorValue{xlerrValue}));
    EXPECT_THAT(host.Trace().back().note, HasSubstr("division"));
    const std::pair<const WCHAR*, const char*> unknown[] = {{TEXT("=Gone!Text"), "no workbook 'Gone'"},
                                                            {TEXT("=Book!Other"), "has no function 'Other'"},
                                                            {TEXT("=Text"), "names no workbook"}};
    for (const auto& [target, note] : unknown) {
        EXPECT_EQ(CallBack(xlUDF, {Text(target)}), xlretFailed);
        EXPECT_THAT(host.Trace().back().note, HasSubstr(note));
    }
    EXPECT_EQ(host.AlertsShown(), 3U);
    CallBack(xlfError, {0});
    EXPECT_FALSE(host.MacroAlerts());
    EXPECT_EQ(CallBack(xlUDF, {Text(TEXT("=Text"))}), xlretFailed);
    EXPECT_EQ(host.AlertsShown(), 3U) << "no alert once they are off";
}

TEST_F(HostTest, CountsEveryValueFromItsBirthToItsEnd) {
    CallBack(xlUDF, {Text(TEXT("=Book!Text"))});
    EXPECT_EQ(host.GetAccount(), Account{}) << "without a result record nothing is given";
    XLOPER12 text = Give(TEXT("=Book!Text"));
    XLOPER12 table = Give(TEXT("=Book!Table"));
    XLOPER12 truth{};
    CallBack(xlfError, {1}, &truth);
    Account expected{.results = 3, .allocated = 2};
    EXPECT_EQ(host.GetAccount(), expected);
    EXPECT_EQ(host.GetAccount().Leaked(), 2U);
    EXPECT_FALSE(host.GetAccount().Balanced());

    XLOPER12 copy = text;
    EXPECT_EQ(Free(text), xlretSuccess);
    EXPECT_EQ(text.val.str, nullptr) << "xlFree resets the pointer";
    EXPECT_EQ(copy.val.str[1], XCHAR{0xDDDD}) << "a late reader sees nonsense";
    XLOPER12 inner = table.val.array.lparray[0];
    EXPECT_EQ(Free(inner), xlretInvXloper) << "an element is no value of its own";
    XLOPER12 moved = table;
    EXPECT_EQ(Free(moved), xlretSuccess) << "Excel knows its memory, not the record";
    EXPECT_EQ(Free(truth), xlretSuccess);
    expected.returned = 3;
    expected.freed = 2;
    expected.foreign = 1;
    EXPECT_EQ(host.GetAccount(), expected);

    // Known behind many others, too.
    for (int i = 0; i < 200; ++i) {
        XLOPER12 next = Give(TEXT("=Book!Text"));
        EXPECT_EQ(Free(next), xlretSuccess);
    }
    for (XLOPER12* again : {&copy, &text, &truth, &table}) EXPECT_EQ(Free(*again), xlretInvXloper);
    EXPECT_EQ(host.GetAccount().freedTwice, 4U);
    XLOPER12 own = RecordFrom(Text(TEXT("own")), blocks);
    EXPECT_EQ(Free(own), xlretInvXloper);
    EXPECT_THAT(Describe(host.GetAccount()), HasSubstr("leaked 0, freed twice 4, foreign 2"));
}

TEST_F(HostTest, RegistersByTypeTextAndRefusesWhatItCannotCall) {
    const std::pair<Text, const char*> cases[] = {
        {TEXT("QU$#&"), ""},
        {TEXT("QQ!"), ""},
        {Text(32, WCHAR{'Q'}), "more than 30 arguments"},
        {TEXT(""), "no or too many letters"},
        {TEXT("BQ"), "begins with a letter other"},
        {TEXT("QPQ"), "a letter other than Q and U"},
    };
    for (const auto& [typeText, note] : cases) {
        Register(TEXT("AltersItsArgument"), typeText);
        EXPECT_THAT(host.Trace().back().note, HasSubstr(note));
    }
    Register(TEXT("NoSuch"), TEXT("QQ"));
    EXPECT_THAT(host.Trace().back().note, HasSubstr("exports no 'NoSuch'"));
    const auto registrations = host.Registrations();
    ASSERT_EQ(registrations.size(), 2U);
    EXPECT_TRUE(registrations[0].threadSafe && registrations[1].recalculatesAlways);
    EXPECT_EQ(host.Find(TEXT("f"))->id, registrations[1].id) << "the newest one, whatever the case";
    for (const auto& registration : registrations) CallBack(xlfUnregister, {registration.id});
    EXPECT_EQ(Call({}), Value(ErrorValue{xlerrName}));
}

TEST_F(HostTest, LendsArgumentsAsTheTypeTextWantsThem) {
    host.AddSheet(7, TEXT("[Book]Seven"), [](const Area& area) -> Value {
        if (area.Rows() * area.Columns() == 1) return 0.25;
        return Array{area.Rows(), area.Columns(), std::vector<Value>(area.Rows() * area.Columns())};
    });
    Register(TEXT("TypesOfThree"), TEXT("QQUU"));
    const auto types = [](DWORD a, DWORD b, DWORD c) { return Value(a * 1e8 + b * 1e4 + c); };
    const Area cell{{0, 0, 0, 0}};
    const Area block{{0, 1, 0, 2}};
    EXPECT_EQ(Call({cell, cell, Reference{7, {block}}}), types(xltypeNum, xltypeSRef, xltypeRef));
    EXPECT_EQ(Call({block, block, 1}), types(xltypeMulti, xltypeSRef, xltypeInt));
    EXPECT_EQ(Call({Reference{8, {block}}}), types(xltypeErr, xltypeMissing, xltypeMissing));
    EXPECT_EQ(Call({1, 2, 3, 4}), Value(ErrorValue{xlerrValue}));
    EXPECT_EQ(host.GetAccount().lentAltered, 0U);
    Register(TEXT("ReturnsNothing"), TEXT("Q"));
    EXPECT_EQ(Call({}), Value(ErrorValue{xlerrNum}));
    Register(TEXT("Throws"), TEXT("QQ"));
    EXPECT_EQ(Call({1.0}), Value(ErrorValue{xlerrValue}));
    Register(TEXT("AltersItsArgument"), TEXT("QQ"));
    EXPECT_EQ(Call({Text(TEXT("abc"))}), Value(Text(TEXT("Xbc"))));
    EXPECT_EQ(host.GetAccount().lentAltered, 1U);
    EXPECT_FALSE(host.GetAccount().Balanced());
}

TEST_F(HostTest, RefusesAsAScriptSays) {
    const auto call = [&](const WCHAR* target) { return CallBack(xlUDF, {Text(target)}); };
    host.RefuseTarget(TEXT("=Book!Fail"), xlretAbort);
    host.RefuseNth(xlUDF, 2, xlretUncalced);
    EXPECT_EQ(call(TEXT("=Book!Text")), xlretSuccess);
    EXPECT_EQ(call(TEXT("=Book!Text")), xlretUncalced);
    EXPECT_EQ(call(TEXT("=Book!Text")), xlretSuccess);
    EXPECT_EQ(call(TEXT("=Book!Fail")), xlretAbort) << "a target is refused again and again";
    EXPECT_TRUE(host.Trace().back().refused);
    EXPECT_EQ(host.AlertsShown(), 0U);
    host.Refuse(xlFree, 0x40);
    XLOPER12 text = Give(TEXT("=Book!Text"));
    EXPECT_EQ(Free(text), 0x40);
    EXPECT_EQ(host.GetAccount().Outstanding(), 1U) << "a refused xlFree frees nothing";
    host.StopRefusing();
    EXPECT_EQ(Free(text), xlretSuccess);
}

}  // namespace
}  // namespace excelhost
