// BSTRs and VARIANTs: the byte count in front, the terminator behind, and who owns what after a copy.
#include "olevalues.h"

#include <comdef.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

TEST(Bstr, HoldsItsByteCountInFrontAndAZeroBehind) {
    const std::string bytes("abcd\0fgh", 8);
    for (UINT count = 0; count <= bytes.size(); ++count) {
        const BSTR text = SysAllocStringByteLen(bytes.data(), count);
        std::uint32_t inFront = 0;
        std::memcpy(&inFront, reinterpret_cast<const char*>(text) - sizeof inFront, sizeof inFront);
        EXPECT_EQ(inFront, count);
        EXPECT_EQ(SysStringByteLen(text), count);
        EXPECT_EQ(SysStringLen(text), count / 2);
        EXPECT_EQ(std::memcmp(text, bytes.data(), count), 0);
        EXPECT_EQ(text[(count + 1) / 2], 0) << "ends for readers of units, too";
        SysFreeString(text);
    }
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    for (const UINT units : {0x7FFFFFFDU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(SysAllocStringLen(nullptr, units), nullptr) << units;
    }
}

TEST(BstrT, CopiesLiveOnWithoutEachOther) {
    _bstr_t text(TEXT("first"));
    const _bstr_t copy = text;
    text = TEXT("second");
    EXPECT_EQ(Wide(copy), TEXT("first"));
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
        Variant source(type), target(VT_I4);
        ASSERT_EQ(VariantCopy(&target, &source), copies ? S_OK : DISP_E_BADVARTYPE) << type;
        ASSERT_EQ(target.vt, copies ? type : VT_I4) << type;
        ASSERT_EQ(VariantClear(&source), clears ? S_OK : DISP_E_BADVARTYPE) << type;
        ASSERT_EQ(source.vt, clears ? VT_EMPTY : type) << type;
    }
}

TEST(Variant, CopyOfABstrIsDeepAndWhole) {
    Variant source(VT_BSTR, &VARIANT::bstrVal, SysAllocStringByteLen("ab\0cdef", 7));
    Variant target = Text(TEXT("what was there"));
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_NE(target.bstrVal, source.bstrVal);
    ASSERT_EQ(SysStringByteLen(target.bstrVal), 7u);
    EXPECT_EQ(std::memcmp(target.bstrVal, source.bstrVal, 7), 0);
    EXPECT_EQ(VariantCopy(&target, &target), S_OK);
    Variant null(VT_BSTR);
    ASSERT_EQ(VariantCopy(&target, &null), S_OK);
    ASSERT_NE(target.bstrVal, nullptr) << "a null BSTR becomes an empty one";
    EXPECT_EQ(SysStringByteLen(target.bstrVal), 0u);
}

TEST(Variant, CopiesAndClearsCountReferencesToObjects) {
    Counted object;
    IDispatch* held = &object;
    for (const int type : {VT_DISPATCH, VT_UNKNOWN}) {
        object.AddRef();
        Variant source(type, &VARIANT::pdispVal, &object), target;
        EXPECT_EQ(VariantCopy(&target, &source), S_OK);
        EXPECT_EQ(object.references, 3u);
        Variant reference(VT_BYREF | type, &VARIANT::ppdispVal, &held);
        EXPECT_EQ(VariantCopy(&target, &reference), S_OK);
        EXPECT_EQ(object.references, 2u);
        EXPECT_EQ(VariantClear(&target), S_OK);
        EXPECT_EQ(VariantClear(&source), S_OK);
        EXPECT_EQ(object.references, 1u);
    }
}

TEST(Variant, AnArrayIsCopiedWholeAndNotClearedWhileLocked) {
    Variant source(VT_ARRAY | VT_I4, &VARIANT::parray, SafeArrayCreateVector(VT_I4, 1, 2)), target;
    static_cast<LONG*>(source.parray->pvData)[1] = 42;
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    ASSERT_NE(target.parray, source.parray);
    EXPECT_EQ(static_cast<LONG*>(target.parray->pvData)[1], 42);
    SafeArrayLock(target.parray);
    EXPECT_EQ(VariantClear(&target), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(target.parray), S_OK);
    target.vt = VT_ARRAY | VT_I4;  // Wine has made it VT_EMPTY
    EXPECT_EQ(VariantClear(&target), S_OK);
}

}  // namespace
