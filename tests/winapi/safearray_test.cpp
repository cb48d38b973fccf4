// SAFEARRAYs: shapes, orders, locks, what elements own, and the error code of each refusal.
#include "olevalues.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

namespace {

SAFEARRAY* CopyOf(SAFEARRAY* array) {
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    return copy;
}

TEST(SafeArray, LocksHoldTheDataInPlace) {
    const Array array(VT_I4, {{2, 0}});
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(Array(CopyOf(array))->cLocks, 0u);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
}

TEST(SafeArray, ElementsAreCopiedInAndOutAndObjectsCounted) {
    Counted object;
    {
        const Array array(VT_BSTR, {{2, 0}}), variants(VT_VARIANT, {{1, 0}}), objects(VT_UNKNOWN, {{1, 0}});
        LONG index = 0;
        Variant text(VT_BSTR, &VARIANT::bstrVal, SysAllocStringLen(TEXT("a\0b"), 3));
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(SafeArrayPutElement(array, &index, text.bstrVal), S_OK);
            EXPECT_EQ(SafeArrayPutElement(variants, &index, &text), S_OK);
            EXPECT_EQ(SafeArrayPutElement(objects, &index, static_cast<IUnknown*>(&object)), S_OK);
        }
        const Array copy(CopyOf(array)), copiedVariants(CopyOf(variants)), copiedObjects(CopyOf(objects));
        Variant read(VT_BSTR), readVariant, readObject(VT_UNKNOWN);
        EXPECT_EQ(SafeArrayGetElement(copy, &index, &read.bstrVal), S_OK);
        EXPECT_EQ(SafeArrayGetElement(copiedVariants, &index, &readVariant), S_OK);
        EXPECT_EQ(SafeArrayGetElement(copiedObjects, &index, &readObject.punkVal), S_OK);
        EXPECT_EQ(Units(read.bstrVal), Wide(TEXT("a\0b"), 3));
        EXPECT_EQ(Units(readVariant.bstrVal), Wide(TEXT("a\0b"), 3));
        EXPECT_EQ(copy.Data<BSTR>()[1], nullptr);
        EXPECT_EQ(object.references, 4u);

        EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
        EXPECT_NE(array.Data<BSTR>()[0], nullptr) << "a null BSTR becomes an empty one";
        Variant none(77);
        EXPECT_EQ(SafeArrayPutElement(variants, &index, &none), DISP_E_BADVARTYPE);
        EXPECT_EQ(variants.Data<VARIANT>()->vt, VT_BSTR);
    }
    EXPECT_EQ(object.references, 1u);
}

}  // namespace
