// An add-in opened in this very program, with the simulated Excel around it: the program exports Excel's
// callback, as Excel's executable does.
#pragma once

#include "addin/addin.h"
#include "addin/detail/locateexcel.h"
#include "addin/detail/module.h"
#include "addin/detail/resultstore.h"
#include "excelhost/host.h"
#include "excelvalues/xxloper.h"
#include "support/home.h"

#include <gmock/gmock.h>

#include <string_view>

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
