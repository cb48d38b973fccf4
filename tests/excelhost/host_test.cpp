// The simulated Excel as an add-in sees it: what it lends, what it takes back, and the account of both, on
// which every test of an add-in rests.
#include "excelhost/host.h"

#include <gmock/gmock.h>

#include <stdexcept>

extern "C" int PASCAL MdCallBack12(int function, int count, LPXLOPER12* operands, LPXLOPER12 result);

namespace excelhost {
namespace {

using ::testing::HasSubstr;

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

}  // namespace
}  // namespace excelhost
