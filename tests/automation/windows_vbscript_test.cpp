// Arrays across a real Visual Basic: what the library makes is read by VBScript as a(r, c), what VBScript
// makes is read by the library.
#include "automation/arraytest.h"

#include <windows.h>
#include <activscp.h>

#include <memory>
#include <algorithm>

namespace {

// The least that a script engine wants of its host.
struct Site final : IActiveScriptSite {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IActiveScriptSite);
        *object = known ? static_cast<IActiveScriptSite*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetLCID(LCID* locale) override {
        *locale = 0x0409;
        return S_OK;
    }
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

VARIANT OfLong(LONG number) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = number;
    return variant;
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
        ASSERT_EQ(script_->QueryInterface(IID_IActiveScriptParse, &parse), S_OK);
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

    // Calls a function of the script; the arguments stay the caller's.
    VARIANT Call(const WCHAR* name, std::vector<VARIANT> arguments) {
        std::reverse(arguments.begin(), arguments.end());
        StdWString text(name);
        LPOLESTR names = text.data();
        DISPID dispid = 0;
        EXPECT_EQ(functions_->GetIDsOfNames(IID_NULL, &names, 1, 0x0409, &dispid), S_OK);
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        VARIANT result;
        VariantInit(&result);
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

Function Table(rows, columns)
  Dim a()
  ReDim a(rows - 1, columns - 1)
  Dim r, c
  For r = 0 To rows - 1
    For c = 0 To columns - 1
      a(r, c) = "r" & r & "c" & c
    Next
  Next
  Table = a
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
    const struct {
        int type;
        SAFEARRAY* array;
        const WCHAR* expected;
    } cases[] = {
        {VT_R8, matrix, TEXT("-1,-1=1.5 -1,0=2 -1,1=3 0,-1=4 0,0=-5 0,1=6 ")},
        {VT_BSTR, pairs, TEXT("1,1=k1 1,2=v1 2,1=k2 2,2= ")},
    };
    for (const auto& each : cases) {
        VARIANT argument = OfLong(0);
        argument.vt = static_cast<VARTYPE>(VT_ARRAY | each.type);
        argument.parray = each.array;
        VARIANT shown = Call(TEXT("Shown"), {argument});
        EXPECT_EQ(CStringWFromBstr(shown.bstrVal, false), each.expected);
        VariantClear(&shown);
    }
}

TEST_F(VbScript, MakesTablesThatAreRead) {
    VARIANT table = Call(TEXT("Table"), {OfLong(3), OfLong(2)});
    ASSERT_EQ(table.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(VbArrayDimensions(table.parray), (std::vector<std::uint32_t>{3, 2}));
    {
        const VbArrayLock lock(table.parray);
        EXPECT_EQ(CStringWFromBstr(static_cast<const VARIANT*>(lock.data)[5].bstrVal, false), TEXT("r2c1"));
        EXPECT_EQ(CStringWFromBstr(static_cast<const VARIANT*>(lock.data)[1].bstrVal, false), TEXT("r1c0"));
    }
    VariantClear(&table);
    VARIANT row = Call(TEXT("Table"), {OfLong(1), OfLong(3)});
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR(&row),
              (std::vector<CStringW>{TEXT("r0c0"), TEXT("r0c1"), TEXT("r0c2")}));
    VariantClear(&row);
}

}  // namespace
