// Arrays across a real Visual Basic: what the library makes is read by VBScript as a(r, c), what VBScript
// makes is read by the library.
#include "automation/arraytest.h"

#include <windows.h>
#include <activscp.h>

#include <memory>
#include <random>

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

// A VARIANT of the test's own.
struct Value {
    VARIANT variant;

    Value() { VariantInit(&variant); }
    explicit Value(const VARIANT& owned) : variant(owned) {}
    ~Value() { VariantClear(&variant); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
};

VARIANT OfLong(LONG number) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = number;
    return variant;
}

VARIANT OfArray(int elementType, SAFEARRAY* array) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = static_cast<VARTYPE>(VT_ARRAY | elementType);
    variant.parray = array;
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
Function Bounds(a, dimension)
  Bounds = 1000 * LBound(a, dimension) + UBound(a, dimension)
End Function

Function At1(a, i)
  At1 = a(i)
End Function

Function At2(a, r, c)
  At2 = a(r, c)
End Function

Function Texts(count)
  Dim a()
  ReDim a(count - 1)
  Dim i
  For i = 0 To count - 1
    a(i) = "text " & i
  Next
  Texts = a
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

TEST_F(VbScript, ReadsAMatrixAsRowsAndColumns) {
    const Matrix matrix = {{1.5, 2, 3}, {4, -5, 6}, {7, 8, 9e99}, {10, 11, 12}};
    const Value array(OfArray(VT_R8, VbArrayFromMatrix(matrix, 1)));
    for (LONG r = 0; r < 4; ++r) {
        for (LONG c = 0; c < 3; ++c) {
            const Value element(Call(TEXT("At2"), {array.variant, OfLong(r + 1), OfLong(c + 1)}));
            ASSERT_EQ(element.variant.vt, VT_R8);
            EXPECT_EQ(element.variant.dblVal,
                      matrix[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]);
        }
    }
    EXPECT_EQ(Value(Call(TEXT("Bounds"), {array.variant, OfLong(1)})).variant.lVal, 1004);
    EXPECT_EQ(Value(Call(TEXT("Bounds"), {array.variant, OfLong(2)})).variant.lVal, 1003);
}

TEST_F(VbScript, ReadsStringsFromTheirLowerBoundOn) {
    const std::vector<CStringW> strings = {TEXT("one"), TEXT(""), TEXT("caf\xE9 \x4E00")};
    const Value array(VariantFromVectorCStringW(strings));
    for (LONG i = 0; i < 3; ++i) {
        const Value element(Call(TEXT("At1"), {array.variant, OfLong(i + 1)}));
        ASSERT_EQ(element.variant.vt, VT_BSTR);
        EXPECT_EQ(CStringWFromBstr(element.variant.bstrVal, false), strings[static_cast<std::size_t>(i)]);
    }
}

TEST_F(VbScript, MakesTextsThatAreRead) {
    const Value texts(Call(TEXT("Texts"), {OfLong(3)}));
    const std::vector<CStringW> expected = {TEXT("text 0"), TEXT("text 1"), TEXT("text 2")};
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR(&texts.variant), expected);
    ASSERT_EQ(texts.variant.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(VectorCStringWFromBstrArray(texts.variant.parray, false), expected);
    EXPECT_EQ(CStringWFromBstrArray(texts.variant.parray, false, 2), expected[2]);
}

TEST_F(VbScript, MakesTablesWhoseRowsAreTheFirstDimension) {
    const Value table(Call(TEXT("Table"), {OfLong(3), OfLong(2)}));
    SAFEARRAY* const array = table.variant.parray;
    ASSERT_EQ(VbArrayDimensions(array), (std::vector<std::uint32_t>{3, 2}));
    const VbArrayLock lock(array);
    const auto* const elements = static_cast<const VARIANT*>(lock.data);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 2; ++c) {
            EXPECT_EQ(CStringWFromBstr(elements[c * 3 + r].bstrVal, false),
                      CStringWFormat(TEXT("r%dc%d"), r, c));
        }
    }
    const Value row(Call(TEXT("Table"), {OfLong(1), OfLong(3)}));
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR(&row.variant),
              (std::vector<CStringW>{TEXT("r0c0"), TEXT("r0c1"), TEXT("r0c2")}));
}

}  // namespace
