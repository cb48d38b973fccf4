// The real add-in, kestrolumen.xll beside this program, loaded for a scope as Excel does it.
#pragma once

#include "addin/addin.h"

#include <gtest/gtest.h>

class AddInFile {
  public:
    AddInFile() : module_(LoadLibraryW(TEXT("kestrolumen.xll"))) {
        if (module_ == nullptr) throw std::runtime_error("kestrolumen.xll can't be loaded");
    }
    ~AddInFile() { EXPECT_NE(FreeLibrary(module_), FALSE); }
    AddInFile(const AddInFile&) = delete;
    AddInFile& operator=(const AddInFile&) = delete;

    [[nodiscard]] FARPROC Procedure(const char* name) const { return GetProcAddress(module_, name); }

    // An export by the type of its declaration, as in Export<decltype(xlAutoOpen)>("xlAutoOpen").
    template <typename Function>
    [[nodiscard]] Function* Export(const char* name) const {
        const FARPROC procedure = Procedure(name);
        if (procedure == nullptr) throw std::runtime_error(name);
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(procedure));
    }

    void Open() const { EXPECT_EQ(Export<decltype(xlAutoOpen)>("xlAutoOpen")(), 1); }
    void Close() const { EXPECT_EQ(Export<decltype(xlAutoClose)>("xlAutoClose")(), 1); }

    // NetOutputPrediction with five missing arguments.
    [[nodiscard]] const XLOPER12* Predict() const {
        static XLOPER12 missing = [] {
            XLOPER12 record{};
            record.xltype = xltypeMissing;
            return record;
        }();
        return Export<decltype(NetOutputPrediction)>("NetOutputPrediction")(&missing, &missing, &missing,
                                                                            &missing, &missing);
    }

  private:
    HMODULE module_;
};
