// BSTRs and VARIANTs: the terminator, and who owns what after a copy.
#include "olevalues.h"

#include <gtest/gtest.h>

namespace {

TEST(Bstr, EndsForReadersOfUnitsAndIsNullWhereItIsTooLong) {
    const BSTR odd = SysAllocStringByteLen("abc", 3);
    EXPECT_EQ(SysStringLen(odd), 1u);
    EXPECT_EQ(odd[2], 0);
    SysFreeString(odd);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    for (const UINT units : {0x7FFFFFFDU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(SysAllocStringLen(nullptr, units), nullptr) << units;
    }
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

}  // namespace
