// The dispatch road against an automation server that isn't ours: Microsoft's Scripting.Dictionary.
#include "objectmodel/com_ptr.h"
#include "objectmodel/dispatch.h"
#include "objectmodel/owned.h"

#include <comdef.h>

#include <gtest/gtest.h>

namespace {

// The DISPIDs of IDictionary, as the Microsoft Scripting Runtime's type library publishes them.
constexpr DISPID dispidItem = 0, dispidAdd = 1, dispidCount = 2, dispidRemove = 7;

constexpr WCHAR twoVariants[] = {VT_VARIANT, VT_VARIANT, 0};
constexpr WCHAR oneVariant[] = {VT_VARIANT, 0};

class Dictionary : public testing::Test {
  protected:
    void SetUp() override {
        CoInitialize(nullptr);
        CLSID clsid;
        void* created = nullptr;
        if (FAILED(CLSIDFromProgID(L"Scripting.Dictionary", &clsid)) ||
            FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &created))) {
            GTEST_SKIP() << "Scripting.Dictionary isn't there.";
        }
        dictionary = kestrolumen::ComPtr<IDispatch>::Adopt(static_cast<IDispatch*>(created));
    }
    void TearDown() override {
        dictionary = nullptr;
        CoUninitialize();
    }

    static VARIANT Key(LONG number) {
        VARIANT key;
        key.vt = VT_I4;
        key.lVal = number;
        return key;
    }

    kestrolumen::ComPtr<IDispatch> dictionary;
};

TEST_F(Dictionary, KeepsWhatIsPut) {
    const VARIANT key = Key(2);
    const VARIANT number = Key(22);
    DispatchInvoke(dictionary, dispidItem, DISPATCH_PROPERTYPUT, 0, nullptr, twoVariants, &key, &number);
    LONG count = -1;
    DispatchInvoke(dictionary, dispidCount, DISPATCH_PROPERTYGET, VT_I4, &count, nullptr);
    EXPECT_EQ(count, 1);
    double converted = 0;
    DispatchInvoke(dictionary, dispidItem, DISPATCH_PROPERTYGET, VT_R8, &converted, oneVariant, &key);
    EXPECT_EQ(converted, 22.0);
    BSTR text = nullptr;
    DispatchInvoke(dictionary, dispidItem, DISPATCH_PROPERTYGET, VT_BSTR, &text, oneVariant, &key);
    EXPECT_STREQ(OwnedBstr(text).get(), L"22");
}

TEST_F(Dictionary, ItsRefusalsAreRaised) {
    const auto raised = [&](DISPID dispid, const WCHAR* types, const auto&... arguments) -> HRESULT {
        try {
            DispatchInvoke(dictionary, dispid, DISPATCH_METHOD, 0, nullptr, types, arguments...);
            return S_OK;
        } catch (const _com_error& error) {
            return error.Error();
        }
    };
    const VARIANT key = Key(1);
    EXPECT_EQ(raised(dispidAdd, twoVariants, &key, &key), S_OK);
    // Its numbers are those of Visual Basic: 457, the key is there already; 32811, the element isn't found.
    EXPECT_EQ(raised(dispidAdd, twoVariants, &key, &key), static_cast<HRESULT>(0x800A01C9));
    const VARIANT absent = Key(9);
    EXPECT_EQ(raised(dispidRemove, oneVariant, &absent), static_cast<HRESULT>(0x800A802B));
    EXPECT_EQ(raised(dispidAdd, oneVariant, &absent), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(raised(9999, nullptr), DISP_E_MEMBERNOTFOUND);
}

}  // namespace
