// The simulated Excel as an add-in sees it: function numbers, registration, memory and its account, refusals.
#include "excelhost/host.h"

#include <gmock/gmock.h>

#include <array>
#include <stdexcept>
#include <thread>

extern "C" int PASCAL MdCallBack12(int function, int count, LPXLOPER12* operands, LPXLOPER12 result);

namespace excelhost {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Calls the host as an add-in does, by the export, with operands built for the call.
struct AddIn {
    int Call(int function, std::vector<Value> operands, XLOPER12* result = nullptr) {
        blocks.clear();
        records.clear();
        for (const Value& operand : operands) records.push_back(RecordFrom(operand, blocks));
        std::vector<LPXLOPER12> pointers;
        for (XLOPER12& record : records) pointers.push_back(&record);
        return MdCallBack12(function, static_cast<int>(pointers.size()),
                            pointers.empty() ? nullptr : pointers.data(), result);
    }
    static int Free(XLOPER12& record) {
        LPXLOPER12 operand = &record;
        return MdCallBack12(xlFree, 1, &operand, nullptr);
    }
    Blocks blocks;
    std::vector<XLOPER12> records;
};

// Worksheet functions of a module that lives in this program.
XLOPER12 function_result;
extern "C" LPXLOPER12 PASCAL ReturnsNothing() {
    return nullptr;
}
extern "C" LPXLOPER12 PASCAL ReturnsItsArgument(LPXLOPER12 argument) {
    return argument;
}
extern "C" LPXLOPER12 PASCAL AltersItsArgument(LPXLOPER12 argument) {
    if (TypeOf(*argument) == xltypeStr) argument->val.str[1] = 'X';
    return argument;
}
extern "C" LPXLOPER12 PASCAL Throws(LPXLOPER12) {
    throw std::runtime_error("no");
}
extern "C" LPXLOPER12 PASCAL TypesOfThree(LPXLOPER12 a, LPXLOPER12 b, LPXLOPER12 c) {
    function_result.xltype = xltypeNum;
    function_result.val.num = a->xltype * 1e8 + b->xltype * 1e4 + c->xltype;
    return &function_result;
}
extern "C" LPXLOPER12 PASCAL Returns30th(LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12,
                                         LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12,
                                         LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12,
                                         LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12,
                                         LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12,
                                         LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12, LPXLOPER12 last) {
    return last;
}
extern "C" LPXLOPER12 PASCAL ReturnsHostMemory() {
    LPXLOPER12 target = nullptr;
    Blocks blocks;
    XLOPER12 text = RecordFrom(Text(TEXT("=Book!Text")), blocks);
    target = &text;
    MdCallBack12(xlUDF, 1, &target, &function_result);
    function_result.xltype |= xlbitXLFree;
    return &function_result;
}

FARPROC Exports(const char* procedure) {
    const std::string_view name = procedure;
    const auto as = [](auto function) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
    };
    if (name == "ReturnsNothing") return as(&ReturnsNothing);
    if (name == "ReturnsItsArgument") return as(&ReturnsItsArgument);
    if (name == "AltersItsArgument") return as(&AltersItsArgument);
    if (name == "Throws") return as(&Throws);
    if (name == "TypesOfThree") return as(&TypesOfThree);
    if (name == "Returns30th") return as(&Returns30th);
    if (name == "ReturnsHostMemory") return as(&ReturnsHostMemory);
    return nullptr;
}

class HostTest : public ::testing::Test {
  protected:
    HostTest() { host.AddModule(TEXT("module.xll"), Exports); }

    Value Register(TextView procedure, TextView typeText, TextView functionText = TEXT("F")) {
        XLOPER12 result{};
        const int code = addIn.Call(
            xlfRegister, {Text(TEXT("MODULE.XLL")), Text(procedure), Text(typeText), Text(functionText)},
            &result);
        EXPECT_EQ(code, xlretSuccess);
        Value value = ValueFrom(result);
        EXPECT_EQ(AddIn::Free(result), xlretSuccess);
        return value;
    }
    Value Call(std::vector<Value> arguments, TextView function = TEXT("F")) {
        return host.Call(function, arguments);
    }

    Host host;
    AddIn addIn;
};

TEST_F(HostTest, ServesTheInnermostHostAndNoneWhenAllAreGone) {
    EXPECT_EQ(Host::Current(), &host);
    {
        Host inner;
        EXPECT_EQ(addIn.Call(xlEnableXLMsgs, {}), xlretSuccess);
        EXPECT_EQ(inner.Trace().size(), 1U);
        EXPECT_TRUE(host.Trace().empty());
    }
    EXPECT_EQ(Host::Current(), &host);
    EXPECT_EQ(reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&MdCallBack12)),
              GetProcAddress(GetModuleHandleW(nullptr), "MdCallBack12"));
}

TEST_F(HostTest, AnswersBadCallsWithACodeAndLeavesTheResultAlone) {
    XLOPER12 number{};
    number.xltype = xltypeNum;
    LPXLOPER12 withNull[] = {&number, nullptr};
    std::vector<LPXLOPER12> many(256, &number);
    const struct {
        const char* what;
        int function;
        int count;
        LPXLOPER12* operands;
        int code;
    } cases[] = {
        {"an unknown function", 4242, 0, nullptr, xlretInvXlfn},
        {"SUM, which Excel has and this host doesn't", 4, 1, withNull, xlretInvXlfn},
        {"a negative count", xlfError, -1, withNull, xlretInvCount},
        {"256 operands", xlFree, 256, many.data(), xlretInvCount},
        {"no array of operands", xlfError, 1, nullptr, xlretInvXloper},
        {"a null operand", xlUDF, 2, withNull, xlretInvXloper},
        {"ERROR without operand", xlfError, 0, nullptr, xlretInvCount},
        {"REGISTER with two", xlfRegister, 2, many.data(), xlretInvCount},
        {"UNREGISTER with two", xlfUnregister, 2, many.data(), xlretInvCount},
        {"xlUDF without a target", xlUDF, 0, nullptr, xlretInvCount},
        {"xlUDF of a number", xlUDF, 1, many.data(), xlretFailed},
        {"the name of a number", xlSheetNm, 1, withNull, xlretInvXloper},
        {"the name of two", xlSheetNm, 2, many.data(), xlretInvCount},
        {"the name of the current sheet, of which there is none", xlSheetNm, 0, nullptr, xlretFailed},
        {"a switch with an operand", xlEnableXLMsgs, 1, withNull, xlretInvCount},
    };
    for (const auto& c : cases) {
        XLOPER12 result{};
        result.xltype = 0x0ABC;
        EXPECT_EQ(MdCallBack12(c.function, c.count, c.operands, &result), c.code) << c.what;
        EXPECT_EQ(result.xltype, 0x0ABCU) << c.what;
        EXPECT_EQ(MdCallBack12(c.function, c.count, c.operands, nullptr), c.code) << c.what;
        EXPECT_EQ(host.Trace().back().returnCode, c.code) << c.what;
    }
    EXPECT_EQ(host.GetAccount().failures, std::size(cases));
}

TEST_F(HostTest, SwitchesAlertsByNumberAndMessagesByTheirTwoFunctions) {
    EXPECT_TRUE(host.MacroAlerts());
    const std::pair<Value, bool> switches[] = {
        {0, false}, {1, true}, {0.0, false}, {2.5, true}, {false, false}};
    for (const auto& [operand, on] : switches) {
        EXPECT_EQ(addIn.Call(xlfError, {operand}), xlretSuccess);
        EXPECT_EQ(host.MacroAlerts(), on) << Describe(operand);
    }
    XLOPER12 result{};
    EXPECT_EQ(addIn.Call(xlfError, {Text(TEXT("no"))}, &result), xlretSuccess);
    EXPECT_EQ(ValueFrom(result), Value(ErrorValue{xlerrValue}));
    EXPECT_FALSE(host.MacroAlerts());

    EXPECT_FALSE(host.Messages());
    addIn.Call(xlEnableXLMsgs, {});
    EXPECT_TRUE(host.Messages());
    addIn.Call(xlDisableXLMsgs, {});
    EXPECT_FALSE(host.Messages());
    EXPECT_FALSE(host.Trace()[host.Trace().size() - 2].messages)
        << "the entry sees what was in force before it";
    EXPECT_TRUE(host.Trace().back().messages);
}

TEST_F(HostTest, CallsAWorkbooksFunctionByItsTarget) {
    std::vector<const XLOPER12*> seen;
    host.SetFunction(TEXT("Book of mine.XLA"), TEXT("Sum"),
                     [&](std::span<const XLOPER12* const> arguments) -> Value {
                         seen.assign(arguments.begin(), arguments.end());
                         return arguments[0]->val.num + arguments[1]->val.num;
                     });
    for (const WCHAR* target :
         {TEXT("=Book of mine.XLA!Sum"), TEXT("='BOOK OF MINE.xla'!sum"), TEXT("Book of mine.XLA!SUM")}) {
        XLOPER12 result{};
        ASSERT_EQ(addIn.Call(xlUDF, {Text(target), 2.0, 3.0}, &result), xlretSuccess);
        EXPECT_EQ(ValueFrom(result), Value(5.0));
        EXPECT_THAT(seen, ElementsAre(&addIn.records[1], &addIn.records[2]))
            << "the very records are passed on";
    }
    const std::pair<const WCHAR*, const char*> unknown[] = {
        {TEXT("=Book.XLA!Sum"), "no workbook 'Book.XLA'"},
        {TEXT("=Book of mine.XLA!Other"), "has no function 'Other'"},
        {TEXT("=Sum"), "names no workbook"},
        {TEXT(""), "names no workbook"},
    };
    for (const auto& [target, note] : unknown) {
        EXPECT_EQ(addIn.Call(xlUDF, {Text(target)}), xlretFailed);
        EXPECT_THAT(host.Trace().back().note, HasSubstr(note));
    }
    EXPECT_EQ(host.AlertsShown(), std::size(unknown));
    addIn.Call(xlfError, {0});
    EXPECT_EQ(addIn.Call(xlUDF, {Text(TEXT("=Sum"))}), xlretFailed);
    EXPECT_EQ(host.AlertsShown(), std::size(unknown)) << "no alert once they are off";
    host.CloseWorkbook(TEXT("book of mine.xla"));
    EXPECT_EQ(addIn.Call(xlUDF, {Text(TEXT("=Book of mine.XLA!Sum")), 2.0, 3.0}), xlretFailed);
}

TEST_F(HostTest, AFailingWorkbookFunctionGivesAnErrorValueAndMayCallTheHost) {
    host.SetFunction(TEXT("Book"), TEXT("Fail"), [](auto) -> Value { throw std::runtime_error("division"); });
    host.SetFunction(TEXT("Book"), TEXT("Odd"), [](auto) -> Value { throw 1; });
    host.SetFunction(TEXT("Book"), TEXT("Nested"), [&](auto) -> Value {
        AddIn inner;
        return inner.Call(xlfError, {0});
    });
    XLOPER12 result{};
    for (const WCHAR* target : {TEXT("=Book!Fail"), TEXT("=Book!Odd")}) {
        EXPECT_EQ(addIn.Call(xlUDF, {Text(target)}, &result), xlretSuccess);
        EXPECT_EQ(ValueFrom(result), Value(ErrorValue{xlerrValue}));
        EXPECT_THAT(host.Trace().back().note, HasSubstr("failed"));
    }
    EXPECT_THAT(host.Trace()[0].note, HasSubstr("division"));
    EXPECT_EQ(addIn.Call(xlUDF, {Text(TEXT("=Book!Nested"))}, &result), xlretSuccess);
    EXPECT_EQ(ValueFrom(result), Value(0));
    EXPECT_THAT(host.TracedFunctions(), ElementsAre(xlUDF, xlUDF, xlUDF, xlfError)) << "in order of entry";
}

TEST_F(HostTest, AnErrorResultWritesItsNumberAloneAsExcelDoes) {
    host.SetFunction(TEXT("Book"), TEXT("NA"), [](auto) { return ErrorValue{xlerrNA}; });
    XLOPER12 result{};
    result.val.returnCode = 77;
    addIn.Call(xlUDF, {Text(TEXT("=Book!NA"))}, &result);
    EXPECT_EQ(result.xltype, xltypeErr);
    EXPECT_EQ(result.val.err, xlerrNA);
    EXPECT_EQ(result.val.returnCode, 77) << "what the caller left there";
}

TEST_F(HostTest, CountsEveryValueFromItsBirthToItsEnd) {
    host.SetFunction(TEXT("Book"), TEXT("Text"), [](auto) { return Text(TEXT("text")); });
    host.SetFunction(TEXT("Book"), TEXT("Table"), [](auto) {
        return Array{1, 2, {Text(TEXT("a")), Array{1, 1, {Text(TEXT("deep"))}}}};
    });
    const auto give = [&](const WCHAR* target) {
        XLOPER12 result{};
        EXPECT_EQ(addIn.Call(xlUDF, {Text(target)}, &result), xlretSuccess);
        return result;
    };
    XLOPER12 text = give(TEXT("=Book!Text"));
    XLOPER12 table = give(TEXT("=Book!Table"));
    XLOPER12 truth{};
    addIn.Call(xlfError, {1}, &truth);
    Account expected{.results = 3, .allocated = 2};
    EXPECT_EQ(host.GetAccount(), Account(expected)) << "xltypeErr and its kin have no memory";

    EXPECT_EQ(text.val.str, PayloadOf(text));
    const XLOPER12 copyOfText = text;
    EXPECT_EQ(AddIn::Free(text), xlretSuccess);
    EXPECT_EQ(text.val.str, nullptr) << "xlFree resets the pointer";
    EXPECT_EQ(copyOfText.val.str[1], XCHAR{0xDDDD}) << "a late reader sees nonsense";

    XLOPER12 inner = table.val.array.lparray[0];
    EXPECT_EQ(AddIn::Free(inner), xlretInvXloper) << "an element is no value of its own";
    XLOPER12 moved = table;
    EXPECT_EQ(AddIn::Free(moved), xlretSuccess) << "Excel knows its memory, not the record";
    EXPECT_EQ(AddIn::Free(truth), xlretSuccess);
    expected.returned = 3;
    expected.freed = 2;
    expected.foreign = 1;
    EXPECT_EQ(host.GetAccount(), expected);
    EXPECT_EQ(host.GetAccount().Outstanding(), 0U);

    XLOPER12 again = copyOfText;
    EXPECT_EQ(AddIn::Free(again), xlretInvXloper);
    EXPECT_EQ(AddIn::Free(text), xlretInvXloper);
    EXPECT_EQ(AddIn::Free(truth), xlretInvXloper);
    EXPECT_EQ(AddIn::Free(table), xlretInvXloper) << "its memory went with the copy";
    expected.freedTwice = 4;
    Blocks blocks;
    XLOPER12 own = RecordFrom(Text(TEXT("own")), blocks);
    EXPECT_EQ(AddIn::Free(own), xlretInvXloper);
    expected.foreign = 2;
    EXPECT_EQ(host.GetAccount(), expected);
    EXPECT_FALSE(host.GetAccount().Balanced());
    EXPECT_THAT(Describe(host.GetAccount()), HasSubstr("leaked 0, freed twice 4, foreign 2"));
}

TEST_F(HostTest, TellsALeakAndFreesWhatNobodyCanTake) {
    host.SetFunction(TEXT("Book"), TEXT("Text"), [](auto) { return Text(TEXT("text")); });
    addIn.Call(xlUDF, {Text(TEXT("=Book!Text"))}, nullptr);
    EXPECT_EQ(host.GetAccount(), Account{}) << "without a result record nothing is given";
    XLOPER12 result{};
    addIn.Call(xlUDF, {Text(TEXT("=Book!Text"))}, &result);
    XLOPER12 saved = result;
    addIn.Call(xlUDF, {Text(TEXT("=Book!Text"))}, &result);
    EXPECT_EQ(AddIn::Free(result), xlretSuccess);
    EXPECT_EQ(host.GetAccount().Leaked(), 1U);
    EXPECT_EQ(host.GetAccount().Outstanding(), 1U);
    EXPECT_FALSE(host.GetAccount().Balanced());
    EXPECT_EQ(AddIn::Free(saved), xlretSuccess);
    EXPECT_TRUE(host.GetAccount().Balanced());
    EXPECT_EQ(host.GetAccount().Outstanding(), 0U);
}

TEST_F(HostTest, KnowsASecondFreeAlsoBehindManyOthers) {
    host.SetFunction(TEXT("Book"), TEXT("Long"), [](auto) { return Text(kTextLimit, WCHAR{'x'}); });
    XLOPER12 first{};
    addIn.Call(xlUDF, {Text(TEXT("=Book!Long"))}, &first);
    XLOPER12 copy = first;
    EXPECT_EQ(AddIn::Free(first), xlretSuccess);
    for (int i = 0; i < 300; ++i) {  // more than is kept of freed memory
        XLOPER12 result{};
        addIn.Call(xlUDF, {Text(TEXT("=Book!Long"))}, &result);
        if (i == 200) {
            EXPECT_EQ(AddIn::Free(copy), xlretInvXloper);
        }
        EXPECT_EQ(AddIn::Free(result), xlretSuccess);
    }
    EXPECT_EQ(host.GetAccount().freedTwice, 1U);
    EXPECT_EQ(host.GetAccount().freed, 301U);
}

TEST_F(HostTest, RegistersByTypeTextAndRefusesWhatItCannotCall) {
    const TextView thirty = TEXT("QUUUUUUUUUUUUUUUUUUUUUUUUUUUUUU");
    const struct {
        const WCHAR* procedure;
        Text typeText;
        const char* note;  // null: accepted
    } cases[] = {
        {TEXT("ReturnsItsArgument"), TEXT("QQ"), nullptr},
        {TEXT("ReturnsItsArgument"), TEXT("QU"), nullptr},
        {TEXT("ReturnsItsArgument"), TEXT("UU!"), nullptr},
        {TEXT("ReturnsItsArgument"), TEXT("QU$#&"), nullptr},
        {TEXT("ReturnsNothing"), TEXT("Q"), nullptr},
        {TEXT("Returns30th"), Text(thirty), nullptr},
        {TEXT("Returns30th"), Text(thirty) + TEXT("U"), "more than 30 arguments"},
        {TEXT("ReturnsNothing"), Text(256, WCHAR{'Q'}), "too many letters"},
        {TEXT("ReturnsNothing"), TEXT(""), "no or too many letters"},
        {TEXT("ReturnsNothing"), TEXT("BQ"), "begins with a letter other"},
        {TEXT("ReturnsNothing"), TEXT("!"), "begins with a letter other"},
        {TEXT("ReturnsNothing"), TEXT("QPQ"), "a letter other than Q and U"},
        {TEXT("ReturnsNothing"), TEXT("Qq"), "a letter other than Q and U"},
        {TEXT("ReturnsNothing"), TEXT("QQ!Q"), "a letter other than Q and U"},
        {TEXT("NoSuch"), TEXT("QQ"), "exports no 'NoSuch'"},
    };
    std::vector<double> ids;
    for (const auto& c : cases) {
        const Value value = Register(c.procedure, c.typeText);
        const Entry entry = host.Trace()[host.Trace().size() - 2];
        if (c.note == nullptr) {
            ASSERT_TRUE(value.Is<double>()) << entry.note;
            ids.push_back(*value.If<double>());
            EXPECT_EQ(host.Registrations().back().id, ids.back());
        } else {
            EXPECT_EQ(value, Value(ErrorValue{xlerrValue})) << Utf8(c.typeText);
            EXPECT_THAT(entry.note, HasSubstr(c.note)) << Utf8(c.typeText);
        }
    }
    EXPECT_EQ(host.Registrations().size(), ids.size());
    EXPECT_TRUE(host.Registrations()[2].recalculatesAlways);
    EXPECT_FALSE(host.Registrations()[2].threadSafe);
    EXPECT_TRUE(host.Registrations()[3].threadSafe);

    XLOPER12 result{};
    addIn.Call(xlfRegister, {Text(TEXT("other.xll")), Text(TEXT("F")), Text(TEXT("QQ"))}, &result);
    EXPECT_THAT(host.Trace().back().note, HasSubstr("no module 'other.xll'"));
    addIn.Call(xlfRegister, {1.0, Text(TEXT("F")), Text(TEXT("QQ"))}, &result);
    EXPECT_EQ(ValueFrom(result), Value(ErrorValue{xlerrValue}));

    EXPECT_EQ(host.Find(TEXT("f"))->id, ids.back()) << "the newest one, whatever the case";
    for (const double id : ids) {
        addIn.Call(xlfUnregister, {id}, &result);
        EXPECT_EQ(ValueFrom(result), Value(true));
    }
    addIn.Call(xlfUnregister, {ids.front()}, &result);
    EXPECT_EQ(ValueFrom(result), Value(false));
    EXPECT_FALSE(host.Find(TEXT("F")));
    EXPECT_EQ(Call({}), Value(ErrorValue{xlerrName}));
}

TEST_F(HostTest, LendsArgumentsAsTheTypeTextWantsThem) {
    host.AddSheet(7, TEXT("[Book]Seven"), [](const Area& area) -> Value {
        if (area.Rows() * area.Columns() == 1) return 0.25;
        return Array{area.Rows(), area.Columns(),
                     std::vector<Value>(area.Rows() * area.Columns(), Value(Empty{}))};
    });
    Register(TEXT("TypesOfThree"), TEXT("QQUU"));
    const auto types = [](DWORD a, DWORD b, DWORD c) { return Value(a * 1e8 + b * 1e4 + c); };
    const Area cell{{0, 0, 0, 0}};
    const Area block{{0, 1, 0, 2}};
    const Reference elsewhere{7, {block}};
    EXPECT_EQ(Call({cell, cell, elsewhere}), types(xltypeNum, xltypeSRef, xltypeRef));
    EXPECT_EQ(Call({block, block, 1}), types(xltypeMulti, xltypeSRef, xltypeInt));
    EXPECT_EQ(Call({elsewhere, Empty{}, true}), types(xltypeMulti, xltypeNil, xltypeBool));
    EXPECT_EQ(Call({Reference{8, {block}}, Text(), ErrorValue{xlerrNA}}),
              types(xltypeErr, xltypeStr, xltypeErr));
    EXPECT_EQ(Call({Reference{7, {cell, block}}}), types(xltypeErr, xltypeMissing, xltypeMissing));
    EXPECT_EQ(Call({}), types(xltypeMissing, xltypeMissing, xltypeMissing))
        << "omitted arguments are missing ones";
    EXPECT_EQ(Call({1, 2, 3, 4}), Value(ErrorValue{xlerrValue}));
    EXPECT_EQ(host.GetAccount().lent, 18U);
    EXPECT_EQ(host.GetAccount().lentAltered, 0U);
}

TEST_F(HostTest, ReadsWhatTheFunctionGivesWhateverThatIs) {
    Register(TEXT("ReturnsNothing"), TEXT("Q"), TEXT("Nothing"));
    EXPECT_EQ(Call({}, TEXT("Nothing")), Value(ErrorValue{xlerrNum}));
    Register(TEXT("ReturnsItsArgument"), TEXT("QU"), TEXT("Echo"));
    const Array array{2, 1, {Text(TEXT("a")), Array{1, 1, {ErrorValue{xlerrDiv0}}}}};
    EXPECT_EQ(Call({array}, TEXT("echo")), Value(array));
    Register(TEXT("Throws"), TEXT("QQ"), TEXT("Throws"));
    EXPECT_EQ(Call({1.0}, TEXT("Throws")), Value(ErrorValue{xlerrValue}));
    Register(TEXT("Returns30th"), TEXT("QQQQQQQQQQQQQQQQQQQQQQQQQQQQQQQ"), TEXT("Last"));
    std::vector<Value> thirty(30, Value(1.0));
    thirty.back() = Text(TEXT("last"));
    EXPECT_EQ(Call(thirty, TEXT("Last")), Value(Text(TEXT("last"))));

    Register(TEXT("AltersItsArgument"), TEXT("QQ"), TEXT("Alters"));
    EXPECT_EQ(Call({Text(TEXT("abc"))}, TEXT("Alters")), Value(Text(TEXT("Xbc"))));
    EXPECT_EQ(host.GetAccount().lentAltered, 1U);
    EXPECT_FALSE(host.GetAccount().Balanced());

    host.SetFunction(TEXT("Book"), TEXT("Text"), [](auto) { return Text(TEXT("from Excel")); });
    Register(TEXT("ReturnsHostMemory"), TEXT("Q"), TEXT("Flagged"));
    EXPECT_EQ(Call({}, TEXT("Flagged")), Value(Text(TEXT("from Excel"))));
    EXPECT_EQ(host.GetAccount().Leaked(), 0U) << "xlbitXLFree: Excel frees it";

    const Registration echo = *host.Find(TEXT("Echo"));
    XLOPER12 record{};
    LPXLOPER12 argument = &record;
    EXPECT_EQ(Host::CallRecords(echo, {&argument, 1}), &record);
    EXPECT_THROW((void)Host::CallRecords(echo, {}), std::invalid_argument);
}

TEST_F(HostTest, NamesSheetsAndReadsReferencesToThem) {
    host.AddSheet(5, TEXT("[Book]Five"), [](const Area& area) { return Text(Wide(AreaName(area))); });
    host.AddSheet(6, TEXT("[Book]Six"), nullptr);
    const Area area{{1, 2, 3, 4}};
    const std::pair<Value, const WCHAR*> cases[] = {
        {Reference{6, {}}, TEXT("[Book]Six")},
        {Reference{0, {area}}, TEXT("[Book]Five")},
        {area, TEXT("[Book]Five")},
        {Missing{}, TEXT("[Book]Five")},
    };
    for (const auto& [operand, name] : cases) {
        XLOPER12 result{};
        ASSERT_EQ(addIn.Call(xlSheetNm, {operand}, &result), xlretSuccess) << Describe(operand);
        EXPECT_EQ(ValueFrom(result), Value(Text(name))) << Describe(operand);
        AddIn::Free(result);
    }
    EXPECT_EQ(addIn.Call(xlSheetNm, {Reference{9, {}}}), xlretFailed);
    EXPECT_EQ(host.Dereference(area), Value(Text(TEXT("D2:E3"))));
    EXPECT_EQ(host.Dereference(Reference{6, {area}}), Value(ErrorValue{xlerrRef})) << "a sheet without cells";
    EXPECT_EQ(host.Dereference(Reference{6, {}}), Value(ErrorValue{xlerrValue}));
    host.SetCurrentSheet(6);
    EXPECT_EQ(host.Dereference(area), Value(ErrorValue{xlerrRef}));
    EXPECT_EQ(host.Dereference(1.5), Value(1.5));
    EXPECT_TRUE(host.GetAccount().Balanced());
}

TEST_F(HostTest, RefusesByScript) {
    host.SetFunction(TEXT("Book"), TEXT("One"), [](auto) { return 1.0; });
    host.SetFunction(TEXT("Book"), TEXT("Two"), [](auto) { return 2.0; });
    const auto call = [&](const WCHAR* target) { return addIn.Call(xlUDF, {Text(target)}); };
    host.RefuseTarget(TEXT("=Book!One"), xlretAbort);
    host.RefuseNth(xlUDF, 2, xlretStackOvfl);
    host.RefuseNth(xlUDF, 3, xlretUncalced);
    EXPECT_EQ(call(TEXT("=Book!One")), xlretAbort);
    EXPECT_EQ(call(TEXT("=Book!Two")), xlretStackOvfl);
    EXPECT_EQ(call(TEXT("=Book!Two")), xlretUncalced)
        << "the call that another refusal struck was counted, too";
    EXPECT_EQ(call(TEXT("=Book!Two")), xlretSuccess);
    EXPECT_EQ(call(TEXT("=Book!One")), xlretAbort) << "a target is refused again and again";
    EXPECT_TRUE(host.Trace().back().refused);
    EXPECT_EQ(host.AlertsShown(), 0U);

    host.Refuse(xlFree, 0x40);
    XLOPER12 result{};
    addIn.Call(xlUDF, {Text(TEXT("=Book!Two"))}, &result);
    EXPECT_EQ(AddIn::Free(result), 0x40);
    EXPECT_EQ(host.GetAccount().Outstanding(), 1U) << "a refused xlFree frees nothing";
    host.StopRefusing();
    EXPECT_EQ(AddIn::Free(result), xlretSuccess);
    EXPECT_EQ(call(TEXT("=Book!One")), xlretSuccess);
}

TEST_F(HostTest, TracesEveryEntryInWords) {
    host.SetFunction(TEXT("Book"), TEXT("Half"), [](auto) { return 0.5; });
    std::vector<std::string> heard;
    host.OnEntry([&](const Entry& entry) { heard.push_back(Describe(entry)); });
    XLOPER12 result{};
    const Array array{2, 3, std::vector<Value>(6, Value(1.0))};
    addIn.Call(xlUDF,
               {Text(TEXT("=Book!Half")), Text(70, WCHAR{'x'}), Missing{}, Empty{}, 3, true,
                ErrorValue{xlerrNA}, Area{{0, 1, 0, 27}}, Reference{4, {Area{{0, 0, 0, 0}}}}, array},
               &result);
    AddIn::Free(result);
    addIn.Call(xlUDF, {Text(TEXT("=Gone!Half"))}, &result);
    MdCallBack12(1234, 0, nullptr, nullptr);
    LPXLOPER12 null = nullptr;
    MdCallBack12(xlFree, 1, &null, nullptr);
    EXPECT_THAT(
        heard, ElementsAre(
                   "1 xlUDF(\"=Book!Half\", \"" + std::string(60, 'x') +
                       "…\", (missing), (empty), int 3, TRUE, #N/A, A1:AB2, sheet 4 A1, 2x3 array) -> 0.5",
                   "2 xlFree(0.5)", "3 xlUDF(\"=Gone!Half\") failed with code 32: no workbook 'Gone' is open",
                   "4 1234() failed with code 2: a function number that this host doesn't serve",
                   "5 xlFree((null)) failed with code 8: a null operand"));
    ASSERT_EQ(host.Trace().size(), 5U);
    EXPECT_EQ(host.Trace()[0].operands[9].type, xltypeMulti);
    EXPECT_EQ(host.Trace()[0].result.record, &result);
    host.ClearTrace();
    host.KeepTrace(false);
    addIn.Call(xlEnableXLMsgs, {});
    EXPECT_TRUE(host.Trace().empty());
    EXPECT_EQ(heard.size(), 6U);
}

TEST_F(HostTest, ServesManyThreadsAtOnce) {
    host.SetFunction(TEXT("Book"), TEXT("Text"), [](auto) { return Text(TEXT("text")); });
    constexpr int threads = 8;
    constexpr int calls = 50;
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) {
        running.emplace_back([] {
            AddIn own;
            for (int i = 0; i < calls; ++i) {
                XLOPER12 result{};
                own.Call(xlUDF, {Text(TEXT("=Book!Text"))}, &result);
                AddIn::Free(result);
            }
        });
    }
    for (std::thread& thread : running) thread.join();
    EXPECT_TRUE(host.GetAccount().Balanced());
    EXPECT_EQ(host.GetAccount().freed, static_cast<std::size_t>(threads * calls));
    const std::vector<Entry> trace = host.Trace();
    ASSERT_EQ(trace.size(), static_cast<std::size_t>(2 * threads * calls));
    for (std::size_t i = 0; i < trace.size(); ++i) {
        EXPECT_EQ(trace[i].number, i + 1);
        EXPECT_EQ(trace[i].returnCode, xlretSuccess);
    }
}

}  // namespace
}  // namespace excelhost
