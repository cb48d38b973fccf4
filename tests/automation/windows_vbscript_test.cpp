// Arrays across a Visual Basic: what the library makes is read by VBScript as a(r, c), what VBScript makes is
// read by the library. The engine knows arrays of Variants alone, so it gets the library's array of numbers
// as such: with the same bounds in the descriptor, and the same elements in the same places of the data
// block.
#include "automation/arraytest.h"

#include <windows.h>
#include <activscp.h>

#include <algorithm>

namespace {

// The least that a script engine wants of its host.
struct Site final : IActiveScriptSite {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IActiveScriptSite);
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetLCID(LCID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR, DWORD, IUnknown**, ITypeInfo**) override {
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnEnterScript() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnLeaveScript() override { return S_OK; }
};

// The script's functions, in an engine of their own.
class VbScript : public testing::Test {
  protected:
    void SetUp() override {
        CoInitialize(nullptr);
        CLSID engine{};
        void* made = nullptr;
        if (FAILED(CLSIDFromProgID(TEXT("VBScript"), &engine)) ||
            FAILED(CoCreateInstance(engine, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript, &made))) {
            GTEST_SKIP() << "VBScript isn't installed here";
        }
        script_ = static_cast<IActiveScript*>(made);
        ASSERT_EQ(script_->QueryInterface(__uuidof(IActiveScriptParse), &made), S_OK);
        auto* const parser = static_cast<IActiveScriptParse*>(made);
        ASSERT_EQ(parser->InitNew(), S_OK);
        ASSERT_EQ(script_->SetScriptSite(&site_), S_OK);
        ASSERT_EQ(script_->SetScriptState(SCRIPTSTATE_STARTED), S_OK);
        ASSERT_EQ(parser->ParseScriptText(code, nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr), S_OK);
        ASSERT_EQ(script_->GetScriptDispatch(nullptr, &functions_), S_OK);
        parser->Release();
    }

    void TearDown() override {
        if (functions_ != nullptr) functions_->Release();
        if (script_ != nullptr) script_->Close();
        if (script_ != nullptr) script_->Release();
        CoUninitialize();
    }

    // Calls a function of the script with an argument, or without.
    VARIANT Call(StdWString name, VARIANT argument = {}) {
        LPOLESTR names = name.data();
        DISPID dispid = 0;
        EXPECT_EQ(functions_->GetIDsOfNames(IID_NULL, &names, 1, 0x0409, &dispid), S_OK);
        DISPPARAMS parameters{&argument, nullptr, argument.vt != VT_EMPTY ? 1u : 0u, 0};
        VARIANT result{};
        EXPECT_EQ(functions_->Invoke(dispid, IID_NULL, 0x0409, DISPATCH_METHOD, &parameters, &result, nullptr,
                                     nullptr),
                  S_OK);
        return result;
    }

  private:
    static constexpr const WCHAR* code =
        LR"(
Function Shown(a)
  Dim r, c
  For r = LBound(a, 1) To UBound(a, 1)
    For c = LBound(a, 2) To UBound(a, 2)
      Shown = Shown & r & "," & c & "=" & a(r, c) & " "
    Next
  Next
End Function

Function Table()
  Dim a(2, 1), r, c
  For r = 0 To 2
    For c = 0 To 1
      a(r, c) = "r" & r & "c" & c
    Next
  Next
  Table = a
End Function
)";

    Site site_;
    IActiveScript* script_ = nullptr;
    IDispatch* functions_ = nullptr;
};

TEST_F(VbScript, HasRowsAndColumnsWhereTheLibraryHasThem) {
    const TestArray matrix(VbArrayFromMatrix({{1.5, 2, 3}, {4, -5, 6}}, -1));
    const TestArray variants(VT_VARIANT, {2, 3});
    ASSERT_EQ(VbArrayDimensions(matrix), VbArrayDimensions(variants));
    std::copy_n(matrix->rgsabound, 2, variants->rgsabound);
    for (std::size_t i = 0; i < 6; ++i) {
        VARIANT& element = static_cast<VARIANT*>(variants->pvData)[i];
        element.vt = VT_R8;
        element.dblVal = matrix.Data<double>()[i];
    }
    VARIANT argument{};
    argument.vt = VT_ARRAY | VT_VARIANT;
    argument.parray = variants;
    VARIANT shown = Call(TEXT("Shown"), argument);
    ASSERT_EQ(shown.vt, VT_BSTR);
    EXPECT_EQ(CStringWFromBstr(shown.bstrVal, false), TEXT("-1,-1=1.5 -1,0=2 -1,1=3 0,-1=4 0,0=-5 0,1=6 "));
    VariantClear(&shown);

    VARIANT table = Call(TEXT("Table"));
    ASSERT_EQ(table.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(VbArrayDimensions(table.parray), (std::vector<std::uint32_t>{3, 2}));
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(CStringWFromBstr(static_cast<const VARIANT*>(table.parray->pvData)[i].bstrVal, false),
                  CStringWFormat(TEXT("r%dc%d"), i % 3, i / 3));
    }
    VariantClear(&table);
}

}  // namespace
