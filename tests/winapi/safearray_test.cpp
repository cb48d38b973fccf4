// SAFEARRAYs: shapes, orders, locks, what elements own, and the error code of each refusal.
#include "olevalues.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

namespace {

constexpr int createdAsVector = 0x2000;  // FADF_CREATEVECTOR, which not every oaidl.h has

// A descriptor with borrowed data.
SAFEARRAY* Borrowing(void* data, ULONG elementBytes, ULONG count, int features) {
    SAFEARRAY* array = nullptr;
    EXPECT_EQ(SafeArrayAllocDescriptor(1, &array), S_OK);
    array->cbElements = elementBytes;
    array->fFeatures = static_cast<USHORT>(features);
    array->rgsabound[0] = {count, 0};
    array->pvData = data;
    return array;
}

SAFEARRAY* CopyOf(SAFEARRAY* array) {
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    return copy;
}

TEST(SafeArray, CreationGivesEachTypeItsSizeAndFeatures) {
    const struct {
        VARTYPE type;
        std::size_t bytes;
        int features;
    } rows[] = {
        {VT_UI1, 1, FADF_HAVEVARTYPE},
        {VT_BOOL, 2, FADF_HAVEVARTYPE},
        {VT_I4, 4, FADF_HAVEVARTYPE},
        {VT_R8, 8, FADF_HAVEVARTYPE},
        {VT_DECIMAL, 16, FADF_HAVEVARTYPE},
        {VT_BSTR, sizeof(BSTR), FADF_HAVEVARTYPE | FADF_BSTR},
        {VT_VARIANT, sizeof(VARIANT), FADF_HAVEVARTYPE | FADF_VARIANT},
        {VT_UNKNOWN, sizeof(void*), FADF_HAVEIID | FADF_UNKNOWN},
        {VT_DISPATCH, sizeof(void*), FADF_HAVEIID | FADF_DISPATCH},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        const Array array(row.type, {{3, -1}}), vector(SafeArrayCreateVector(row.type, -1, 3));
        EXPECT_EQ(vector->fFeatures & createdAsVector, createdAsVector);
        for (const Array* const made : {&array, &vector}) {
            EXPECT_EQ(SafeArrayGetElemsize(*made), row.bytes);
            EXPECT_EQ((*made)->fFeatures & ~createdAsVector, row.features);
            EXPECT_EQ((*made)->rgsabound[0].lLbound, -1);
            VARTYPE type = VT_EMPTY;
            EXPECT_EQ(SafeArrayGetVartype(*made, &type), S_OK);
            EXPECT_EQ(type, row.type);
            const std::vector<char> zeros(3 * row.bytes);
            EXPECT_EQ(std::memcmp((*made)->pvData, zeros.data(), zeros.size()), 0);
        }
    }
    for (const int type : {int{VT_EMPTY}, int{VT_NULL}, 15, VT_ARRAY | VT_I4, VT_BYREF | VT_I4}) {
        EXPECT_EQ(SafeArrayCreateVector(static_cast<VARTYPE>(type), 0, 3), nullptr) << type;
    }
}

TEST(SafeArray, TheLeftmostIndexRunsFastestAndBoundsAreKeptRightmostFirst) {
    const Array array(VT_I4, {{2, 1}, {3, -1}, {2, 5}});
    EXPECT_EQ(array->rgsabound[0].lLbound, 5);
    const LONG lowers[] = {1, -1, 5}, uppers[] = {2, 1, 6};
    for (UINT dimension = 1; dimension <= 3; ++dimension) {
        LONG lower = 77, upper = 77;
        EXPECT_EQ(SafeArrayGetLBound(array, dimension, &lower), S_OK);
        EXPECT_EQ(SafeArrayGetUBound(array, dimension, &upper), S_OK);
        EXPECT_EQ(lower, lowers[dimension - 1]);
        EXPECT_EQ(upper, uppers[dimension - 1]);
    }
    LONG place = 0;
    std::array<LONG, 3> at{};
    for (at[2] = 5; at[2] <= 6; ++at[2]) {
        for (at[1] = -1; at[1] <= 1; ++at[1]) {
            for (at[0] = 1; at[0] <= 2; ++at[0], ++place) {
                LONG value = 100 + place, read = 0;
                EXPECT_EQ(SafeArrayPutElement(array, at.data(), &value), S_OK);
                EXPECT_EQ(array.Data<LONG>()[place], value);
                EXPECT_EQ(SafeArrayGetElement(array, at.data(), &read), S_OK);
                EXPECT_EQ(read, value);
            }
        }
    }
    for (auto outside : {std::array<LONG, 3>{0, 0, 5}, {3, 0, 5}, {1, -2, 5}, {1, 2, 5}, {1, 0, 7}}) {
        LONG value = 1;
        EXPECT_EQ(SafeArrayGetElement(array, outside.data(), &value), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayPutElement(array, outside.data(), &value), DISP_E_BADINDEX);
    }
    const Array empty(VT_R8, {{3, 0}, {0, 5}});
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetUBound(empty, 2, &bound), S_OK);
    EXPECT_EQ(bound, 4) << "ends below its start";
}

TEST(SafeArray, NullsAndBadDimensionsAreRefusedByTheirOwnCodes) {
    const Array array(VT_I4, {{2, 0}});
    LONG value = 0;
    SAFEARRAYBOUND bound{1, 0};
    SAFEARRAY* other = array;
    EXPECT_EQ(SafeArrayAllocDescriptor(0, &other), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayRedim(nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
    for (const auto getBound : {&SafeArrayGetLBound, &SafeArrayGetUBound}) {
        EXPECT_EQ(getBound(nullptr, 1, &value), E_INVALIDARG);
        EXPECT_EQ(getBound(array, 0, &value), DISP_E_BADINDEX);
        EXPECT_EQ(getBound(array, 2, &value), DISP_E_BADINDEX);
    }
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayCopy(nullptr, &other), S_OK);
    EXPECT_EQ(other, nullptr);
}

TEST(SafeArray, LocksAreCountedAndHoldTheDataInPlace) {
    const Array array(VT_I4, {{2, 0}});
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(array->cLocks, 2u);
    SAFEARRAYBOUND bound{5, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(Array(CopyOf(array))->cLocks, 0u);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    array->cLocks = 0xFFFF;
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    array->cLocks = 0;
}

TEST(SafeArray, RedimKeepsWhatStaysFreesWhatGoesAndZeroesWhatIsNew) {
    const Array array(VT_I4, {{2, 1}, {3, 1}});
    for (LONG i = 0; i < 6; ++i) array.Data<LONG>()[i] = i + 1;
    const struct {
        SAFEARRAYBOUND bound;
        std::vector<LONG> data;
    } steps[] = {
        {{5, -2}, {1, 2, 3, 4, 5, 6, 0, 0, 0, 0}},
        {{2, 0}, {1, 2, 3, 4}},
        {{3, 7}, {1, 2, 3, 4, 0, 0}},
        {{0, 0}, {}},
        {{1, 0}, {0, 0}},
    };
    for (const auto& step : steps) {
        SAFEARRAYBOUND bound = step.bound;
        ASSERT_EQ(SafeArrayRedim(array, &bound), S_OK);
        EXPECT_EQ(array->rgsabound[0].lLbound, bound.lLbound);
        EXPECT_EQ(std::vector<LONG>(array.Data<LONG>(), array.Data<LONG>() + step.data.size()), step.data);
    }
    const Array texts(VT_BSTR, {{2, 0}});
    for (LONG i = 0; i < 2; ++i) texts.Data<BSTR>()[i] = SysAllocString(TEXT("text"));
    for (ULONG count = 1; count <= 2; ++count) {
        SAFEARRAYBOUND bound{count, 0};
        EXPECT_EQ(SafeArrayRedim(texts, &bound), S_OK);
    }
    EXPECT_EQ(Units(texts.Data<BSTR>()[0]), TEXT("text"));
    EXPECT_EQ(texts.Data<BSTR>()[1], nullptr);
}

TEST(SafeArray, TextsAreCopiedInAndOut) {
    const Array array(VT_BSTR, {{2, 0}}), variants(VT_VARIANT, {{1, 0}});
    LONG index = 0;
    Variant text(VT_BSTR, &VARIANT::bstrVal, SysAllocStringLen(TEXT("a\0b"), 3));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(SafeArrayPutElement(array, &index, text.bstrVal), S_OK);
        EXPECT_EQ(SafeArrayPutElement(variants, &index, &text), S_OK);
    }
    EXPECT_NE(array.Data<BSTR>()[0], text.bstrVal);
    const Array copy(CopyOf(array)), copiedVariants(CopyOf(variants));
    Variant read(VT_BSTR), readVariant;
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &read.bstrVal), S_OK);
    EXPECT_EQ(SafeArrayGetElement(copiedVariants, &index, &readVariant), S_OK);
    EXPECT_EQ(Units(read.bstrVal), Wide(TEXT("a\0b"), 3));
    EXPECT_EQ(Units(readVariant.bstrVal), Wide(TEXT("a\0b"), 3));
    EXPECT_EQ(copy.Data<BSTR>()[1], nullptr);

    EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    ASSERT_NE(array.Data<BSTR>()[0], nullptr) << "a null BSTR becomes an empty one";
    EXPECT_EQ(SysStringLen(array.Data<BSTR>()[0]), 0u);
    Variant none(77);
    EXPECT_EQ(SafeArrayPutElement(variants, &index, &none), DISP_E_BADVARTYPE);
    EXPECT_EQ(variants.Data<VARIANT>()->vt, VT_BSTR);
}

TEST(SafeArray, ObjectElementsAreCounted) {
    Counted object;
    {
        const Array array(VT_UNKNOWN, {{2, 0}});
        LONG index = 1;
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IUnknown*>(&object)), S_OK);
        }
        const Array copy(CopyOf(array));
        Variant read(VT_UNKNOWN);
        EXPECT_EQ(SafeArrayGetElement(copy, &index, &read.punkVal), S_OK);
        EXPECT_EQ(object.references, 4u);
    }
    EXPECT_EQ(object.references, 1u);
}

TEST(SafeArray, StaticDataIsClearedWhereItIs) {
    BSTR texts[2] = {SysAllocString(TEXT("text")), nullptr};
    const Array array(Borrowing(texts, sizeof(BSTR), 2, FADF_STATIC | FADF_BSTR));
    const Array copy(CopyOf(array));
    EXPECT_EQ(copy->fFeatures, FADF_BSTR);
    EXPECT_EQ(Units(copy.Data<BSTR>()[0]), TEXT("text"));
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(array->pvData, texts);
    EXPECT_EQ(texts[0], nullptr);
}

TEST(SafeArray, ACopyOfAVectorHasItsOwnBlock) {
    const Array vector(SafeArrayCreateVector(VT_I4, 1, 3));
    vector.Data<LONG>()[2] = 9;
    const Array copy(CopyOf(vector));
    EXPECT_EQ(copy->fFeatures, FADF_HAVEVARTYPE);
    SAFEARRAYBOUND bound{5, 1};
    EXPECT_EQ(SafeArrayRedim(copy, &bound), S_OK);
    EXPECT_EQ(copy.Data<LONG>()[2], 9);
}

}  // namespace
