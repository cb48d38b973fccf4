// The real add-in, kestrolumen.xll beside this program, in a process whose executable exports no callback: it finds
// Excel by the module XLCall32, or not at all.
#pragma once

#include "addin/addin.h"
#include "excelhost/host.h"
#include "support/home.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

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
    static int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
        return excelhost::Host::Current()->CallBack(function, count, operands, result);
    }

    HostedAddIn() : xlCall(LoadLibraryW(TEXT("XLCall32.dll"))) {
        host.AddModule(TEXT("kestrolumen.xll"),
                       [this](const char* name) { return GetProcAddress(addIn.get(), name); });
    }
    void Load(EXCEL12PROC entryPoint) {
        Export<void PASCAL(EXCEL12PROC)>(xlCall, "SetExcel12EntryPt")(entryPoint);
        addIn.reset(LoadLibraryW(TEXT("kestrolumen.xll")));
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
    void TakeLeave() const {
        Export<decltype(UninitializeXlaInformation)>(addIn, "UninitializeXlaInformation")(0);
    }

    support::RuntimeFolder folder;
    excelhost::Host host;
    Library xlCall, addIn;
};
