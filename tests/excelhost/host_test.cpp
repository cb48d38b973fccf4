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
        EXPECT_EQ(host.Trace().size(), 0U);
    }
    EXPECT_EQ(Host::Current(), &host);
    EXPECT_EQ(reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&MdCallBack12)),
              GetProcAddress(GetModuleHandleW(nullptr), "MdCallBack12"));
}

}  // namespace
}  // namespace excelhost
