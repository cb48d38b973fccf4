// VARIANTs: their layout, which types they can have, and who owns what after a copy.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>

namespace {

struct Counted final : IDispatch {
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
};

VARIANT OfType(int type) {
    VARIANT variant;
    std::memset(&variant, 0, sizeof variant);
    variant.vt = static_cast<VARTYPE>(type);
    return variant;
}

TEST(Variant, HasThePublishedLayout) {
    EXPECT_EQ(sizeof(VARIANT), 8 + 2 * sizeof(void*));
    EXPECT_EQ(sizeof(DECIMAL), 16u);
    EXPECT_EQ(sizeof(CY), 8u);
    EXPECT_EQ(offsetof(VARIANT, vt), 0u);
    EXPECT_EQ(offsetof(VARIANT, dblVal), 8u);
    EXPECT_EQ(offsetof(VARIANT, bstrVal), 8u);
    EXPECT_EQ(offsetof(VARIANT, decVal), 0u);
    EXPECT_EQ(offsetof(DECIMAL, Lo64), 8u);
    EXPECT_EQ(VARIANT_TRUE, -1);

    VARIANT variant = OfType(VT_CY);
    variant.cyVal.int64 = 0x1122334455667788;
    EXPECT_EQ(variant.cyVal.Lo, 0x55667788u);
    EXPECT_EQ(variant.cyVal.Hi, 0x11223344);
    EXPECT_EQ(variant.bVal, 0x88);
    EXPECT_EQ(variant.iVal, 0x7788);
}

TEST(Variant, InitMakesItEmptyWhateverWasThere) {
    VARIANT variant;
    std::memset(&variant, 0xAA, sizeof variant);
    VariantInit(&variant);
    EXPECT_EQ(variant.vt, VT_EMPTY);
    EXPECT_EQ(VariantClear(&variant), S_OK);
}

// Every type word there is. A base type is any up to VT_UINT but 15, and VT_RECORD; VT_ARRAY and VT_BYREF
// need one that holds something.
TEST(Variant, ClearAndCopyKnowWhichTypesThereAre) {
    for (int type = 0; type <= 0xFFFF; ++type) {
        const int modifiers = type & (VT_ARRAY | VT_BYREF);
        const int base = type - modifiers;
        const bool holds = (base >= VT_I2 && base <= VT_UINT && base != 15) || base == VT_RECORD;
        const bool copies = holds || (modifiers == 0 && base <= VT_NULL);
        const bool clears = copies || base == VT_CLSID;

        VARIANT source = OfType(type);
        VARIANT target = OfType(VT_I4);
        ASSERT_EQ(VariantCopy(&target, &source), copies ? S_OK : DISP_E_BADVARTYPE) << type;
        ASSERT_EQ(target.vt, copies ? type : VT_I4) << type;
        VariantClear(&target);

        ASSERT_EQ(VariantClear(&source), clears ? S_OK : DISP_E_BADVARTYPE) << type;
        ASSERT_EQ(source.vt, clears ? VT_EMPTY : type) << type;
    }
}

TEST(Variant, CopyOntoATypeThatThereIsNotChangesNothing) {
    VARIANT target = OfType(77);
    VARIANT source = OfType(VT_I4);
    EXPECT_EQ(VariantCopy(&target, &source), DISP_E_BADVARTYPE);
    EXPECT_EQ(target.vt, 77);
}

TEST(Variant, CopyOfABstrIsDeepAndWhole) {
    VARIANT source = OfType(VT_BSTR);
    source.bstrVal = SysAllocStringByteLen("ab\0cdef", 7);
    VARIANT target = OfType(VT_BSTR);
    target.bstrVal = SysAllocString(TEXT("what was there"));
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_BSTR);
    EXPECT_NE(target.bstrVal, source.bstrVal);
    ASSERT_EQ(SysStringByteLen(target.bstrVal), 7u);
    EXPECT_EQ(std::memcmp(target.bstrVal, source.bstrVal, 7), 0);
    const BSTR before = target.bstrVal;
    EXPECT_EQ(VariantCopy(&target, &target), S_OK);
    EXPECT_EQ(target.bstrVal, before);

    VariantClear(&source);
    source = OfType(VT_BSTR);
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    ASSERT_NE(target.bstrVal, nullptr) << "a null BSTR becomes an empty one";
    EXPECT_EQ(SysStringByteLen(target.bstrVal), 0u);
    VariantClear(&target);
}

TEST(Variant, CopiesAndClearsCountReferencesToObjects) {
    for (const int type : {VT_DISPATCH, VT_UNKNOWN}) {
        Counted object;
        VARIANT source = OfType(type);
        source.pdispVal = &object;
        VARIANT target = OfType(VT_EMPTY);
        EXPECT_EQ(VariantCopy(&target, &source), S_OK);
        EXPECT_EQ(target.pdispVal, &object);
        EXPECT_EQ(object.references, 2u);
        EXPECT_EQ(VariantClear(&target), S_OK);
        EXPECT_EQ(object.references, 1u);

        IDispatch* held = &object;
        VARIANT reference = OfType(VT_BYREF | type);
        reference.ppdispVal = &held;
        EXPECT_EQ(VariantCopy(&target, &reference), S_OK);
        EXPECT_EQ(target.ppdispVal, &held);
        EXPECT_EQ(VariantClear(&target), S_OK);
        EXPECT_EQ(object.references, 1u);

        source.pdispVal = nullptr;
        EXPECT_EQ(VariantCopy(&target, &source), S_OK);
        EXPECT_EQ(target.pdispVal, nullptr);
        EXPECT_EQ(VariantClear(&target), S_OK);
    }
}

TEST(Variant, AnArrayIsCopiedWholeAndNotClearedWhileLocked) {
    VARIANT source = OfType(VT_ARRAY | VT_I4);
    source.parray = SafeArrayCreateVector(VT_I4, 1, 2);
    static_cast<LONG*>(source.parray->pvData)[1] = 42;
    VARIANT target = OfType(VT_EMPTY);
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    ASSERT_NE(target.parray, source.parray);
    EXPECT_EQ(static_cast<LONG*>(target.parray->pvData)[1], 42);

    SafeArrayLock(target.parray);
    EXPECT_EQ(VariantClear(&target), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(target.parray), S_OK);
    target.vt = VT_ARRAY | VT_I4;  // Wine has made it VT_EMPTY
    EXPECT_EQ(VariantClear(&target), S_OK);
    EXPECT_EQ(VariantClear(&source), S_OK);

    source = OfType(VT_ARRAY | VT_I4);
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target.parray, nullptr);
    EXPECT_EQ(VariantClear(&target), S_OK);
}

}  // namespace
