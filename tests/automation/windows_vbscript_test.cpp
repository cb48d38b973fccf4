// Arrays across a Visual Basic: what the library makes is read by VBScript as a(r, c), what VBScript makes is
// read by the library. The engine knows arrays of Variants alone, so it gets the library's arrays of numbers
// and texts as such: with the same bounds in the descriptor, and the same elements in the same places of the
// data block.
#include "automation/arraytest.h"

#include <windows.h>
#include <activscp.h>

#include <memory>

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

struct Release {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using Owned = std::unique_ptr<Interface, Release>;

// The array, of doubles or of strings, as one of Variants.
VARIANT AsVariants(const SAFEARRAY* typed, VARTYPE type) {
    VARIANT whole{};
    whole.vt = VT_ARRAY | VT_VARIANT;
    SafeArrayAllocDescriptorEx(VT_VARIANT, typed->cDims, &whole.parray);
    std::copy_n(typed->rgsabound, typed->cDims, whole.parray->rgsabound);
    SafeArrayAllocData(whole.parray);
    auto* const elements = static_cast<VARIANT*>(whole.parray->pvData);
    for (std::size_t i = 0; i < VbArrayElementCount(typed); ++i) {
        elements[i].vt = type;
        if (type == VT_R8) elements[i].dblVal = static_cast<const double*>(typed->pvData)[i];
        if (type == VT_BSTR) elements[i].bstrVal = SysAllocString(static_cast<const BSTR*>(typed->pvData)[i]);
    }
    return whole;
}

class VbScript : public testing::Test {
  protected:
    void SetUp() override {
        CoInitialize(nullptr);
        CLSID engine{};
        void* script = nullptr;
        if (FAILED(CLSIDFromProgID(TEXT("VBScript"), &engine)) ||
            FAILED(CoCreateInstance(engine, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript, &script))) {
            GTEST_SKIP() << "VBScript isn't installed here";
        }
        script_.reset(static_cast<IActiveScript*>(script));
        void* parse = nullptr;
        ASSERT_EQ(script_->QueryInterface(__uuidof(IActiveScriptParse), &parse), S_OK);
        const Owned<IActiveScriptParse> parser(static_cast<IActiveScriptParse*>(parse));
        ASSERT_EQ(parser->InitNew(), S_OK);
        ASSERT_EQ(script_->SetScriptSite(&site_), S_OK);
        ASSERT_EQ(script_->SetScriptState(SCRIPTSTATE_STARTED), S_OK);
        ASSERT_EQ(parser->ParseScriptText(code, nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr), S_OK);
        IDispatch* functions = nullptr;
        ASSERT_EQ(script_->GetScriptDispatch(nullptr, &functions), S_OK);
        functions_.reset(functions);
    }

    void TearDown() override {
        functions_.reset();
        if (script_) script_->Close();
        script_.reset();
        CoUninitialize();
    }

    // Calls a function of the script with an argument, which goes, or without.
    VARIANT Call(StdWString name, VARIANT argument = {}) {
        LPOLESTR names = name.data();
        DISPID dispid = 0;
        EXPECT_EQ(functions_->GetIDsOfNames(IID_NULL, &names, 1, 0x0409, &dispid), S_OK);
        DISPPARAMS parameters{&argument, nullptr, argument.vt != VT_EMPTY ? 1u : 0u, 0};
        VARIANT result{};
        EXPECT_EQ(functions_->Invoke(dispid, IID_NULL, 0x0409, DISPATCH_METHOD, &parameters, &result, nullptr,
                                     nullptr),
                  S_OK);
        EXPECT_EQ(VariantClear(&argument), S_OK);
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

Function Row()
  Dim a(0, 2)
  a(0, 0) = "first"
  a(0, 2) = "last"
  Row = a
End Function
)";

    Site site_;
    Owned<IActiveScript> script_;
    Owned<IDispatch> functions_;
};

TEST_F(VbScript, ReadsAMatrixAndPairsAsRowsAndColumns) {
    TestArray pairs(VT_BSTR, {2, 2}, 1);
    VbArrayFromPairs(false, pairs.array, {{TEXT("k1"), TEXT("v1")}, {TEXT("k2"), TEXT("")}}, 1);
    const TestArray matrix(VbArrayFromMatrix({{1.5, 2, 3}, {4, -5, 6}}, -1));
    for (const auto& [argument, expected] :
         {std::pair{AsVariants(matrix, VT_R8), TEXT("-1,-1=1.5 -1,0=2 -1,1=3 0,-1=4 0,0=-5 0,1=6 ")},
          {AsVariants(pairs, VT_BSTR), TEXT("1,1=k1 1,2=v1 2,1=k2 2,2= ")}}) {
        VARIANT shown = Call(TEXT("Shown"), argument);
        ASSERT_EQ(shown.vt, VT_BSTR);
        EXPECT_EQ(CStringWFromBstr(shown.bstrVal, false), expected);
        VariantClear(&shown);
    }
}

TEST_F(VbScript, MakesTablesThatAreRead) {
    VARIANT table = Call(TEXT("Table"));
    ASSERT_EQ(table.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(VbArrayDimensions(table.parray), (std::vector<std::uint32_t>{3, 2}));
    const auto* const elements = static_cast<const VARIANT*>(table.parray->pvData);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(CStringWFromBstr(elements[i].bstrVal, false), CStringWFormat(TEXT("r%dc%d"), i % 3, i / 3));
    }
    VariantClear(&table);
    VARIANT row = Call(TEXT("Row"));
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR(&row),
              (std::vector<CStringW>{TEXT("first"), TEXT(""), TEXT("last")}));
    VariantClear(&row);
}

}  // namespace
