// An add-in opened in this very program, with the simulated Excel around it: the program exports Excel's
// callback, as Excel's executable does.
#pragma once

#include "addin/addin.h"
#include "addin/locateexcel.h"
#include "addin/detail/module.h"
#include "addin/resultstore.h"
#include "excelhost/host.h"
#include "excelvalues/xxloper.h"
#include "leaving.h"
#include "support/home.h"

#include <gmock/gmock.h>

#include <string_view>
#include <utility>
#include <vector>

// The add-in's exports by name, as a loader gives them.
inline FARPROC ExportOfThisProgram(const char* name) {
    const auto is = [name](std::string_view other) { return name == other; };
    const auto generic = [](auto* function) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
    };
    if (is("NetOutputPrediction")) return generic(&NetOutputPrediction);
    if (is("NetOutputProbabilityOfPrediction")) return generic(&NetOutputProbabilityOfPrediction);
    if (is("NetOutputProbabilityOfCategory")) return generic(&NetOutputProbabilityOfCategory);
    return nullptr;
}

// A host that allocates nothing, so that every block that is alive, and every allocation that fails, is the
// add-in's.
struct FrugalHost {
    static inline int lent = 0;
    static inline bool alerts = true;
    static inline int udfCode = xlretSuccess;
    static inline std::vector<double> registered;

    static int PASCAL CallBack(int function, int, LPXLOPER12* operands, LPXLOPER12 result) {
        if (function == xlfError) alerts = operands[0]->val.w != 0;
        if (function == xlfUnregister) std::erase(registered, operands[0]->val.num);
        if (function == xlFree) --lent;
        if (result == nullptr) return xlretSuccess;
        ++lent;
        result->xltype = xltypeBool;
        if (function != xlfRegister) return function == xlUDF ? udfCode : xlretSuccess;
        result->xltype = xltypeNum;
        result->val.num = ++lastId;
        registered.push_back(lastId);
        return xlretSuccess;
    }

    explicit FrugalHost(int code) : previous_(std::exchange(Excel12EntryPoint, &CallBack)) {
        udfCode = code;
        registered.reserve(10);
    }
    ~FrugalHost() { Excel12EntryPoint = previous_; }
    FrugalHost(const FrugalHost&) = delete;
    FrugalHost& operator=(const FrugalHost&) = delete;

  private:
    static inline double lastId = 0;
    EXCEL12PROC previous_;
};

class AddInTest : public testing::Test {
  protected:
    AddInTest() {
        EXPECT_EQ(DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr), TRUE);
        host.AddModule(AddInModule.fileName.GetString(), ExportOfThisProgram);
        EXPECT_EQ(xlAutoOpen(), 1);
    }
    ~AddInTest() override {
        EXPECT_EQ(xlAutoClose(), 1);
        UninitializeXlaInformation(0);
        EXPECT_TRUE(host.GetAccount().Balanced()) << Describe(host.GetAccount());
    }

    // The workbook's part of the handshake, with strings as Visual Basic passes them.
    static void ShakeHands() {
        BSTR text = SysAllocString(TEXT("text"));
        BSTR none = nullptr;
        InitializeXlaInformationVB(1, 2, 3, &text, 4, &none, 5, &text);
        SysFreeString(text);
    }

    support::RuntimeFolder folder;  // ahead of whatever holds a named mutex
    excelhost::Host host;
};
