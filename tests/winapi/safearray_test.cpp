// SAFEARRAYs: shapes, orders, locks, what elements own, and the error code of each refusal.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr int createdAsVector = 0x2000;  // FADF_CREATEVECTOR, which not every oaidl.h has

// Destroys what a test leaves.
struct Array {
    SAFEARRAY* array = nullptr;

    explicit Array(SAFEARRAY* made) : array(made) {}
    ~Array() { SafeArrayDestroy(array); }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    operator SAFEARRAY*() const { return array; }
    SAFEARRAY* operator->() const { return array; }

    template <typename Element>
    Element* Data() const {
        return static_cast<Element*>(array->pvData);
    }
};

// `bounds` leftmost dimension first.
SAFEARRAY* Create(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds) {
    return SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
}

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

std::basic_string<WCHAR> Units(BSTR text) {
    return {text, SysStringLen(text)};
}

TEST(SafeArray, CreationGivesEachTypeItsSizeAndFeatures) {
    struct Row {
        VARTYPE type;
        std::size_t bytes;
        int features;
    };
    const Row rows[] = {
        {VT_I1, 1, FADF_HAVEVARTYPE},
        {VT_UI1, 1, FADF_HAVEVARTYPE},
        {VT_I2, 2, FADF_HAVEVARTYPE},
        {VT_UI2, 2, FADF_HAVEVARTYPE},
        {VT_BOOL, 2, FADF_HAVEVARTYPE},
        {VT_I4, 4, FADF_HAVEVARTYPE},
        {VT_UI4, 4, FADF_HAVEVARTYPE},
        {VT_INT, 4, FADF_HAVEVARTYPE},
        {VT_UINT, 4, FADF_HAVEVARTYPE},
        {VT_R4, 4, FADF_HAVEVARTYPE},
        {VT_ERROR, 4, FADF_HAVEVARTYPE},
        {VT_R8, 8, FADF_HAVEVARTYPE},
        {VT_CY, 8, FADF_HAVEVARTYPE},
        {VT_DATE, 8, FADF_HAVEVARTYPE},
        {VT_I8, 8, FADF_HAVEVARTYPE},
        {VT_UI8, 8, FADF_HAVEVARTYPE},
        {VT_DECIMAL, 16, FADF_HAVEVARTYPE},
        {VT_BSTR, sizeof(BSTR), FADF_HAVEVARTYPE | FADF_BSTR},
        {VT_VARIANT, sizeof(VARIANT), FADF_HAVEVARTYPE | FADF_VARIANT},
        {VT_UNKNOWN, sizeof(void*), FADF_HAVEIID | FADF_UNKNOWN},
        {VT_DISPATCH, sizeof(void*), FADF_HAVEIID | FADF_DISPATCH},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        const Array array(Create(row.type, {{3, -1}}));
        const Array vector(SafeArrayCreateVector(row.type, -1, 3));
        for (SAFEARRAY* const made : {array.array, vector.array}) {
            ASSERT_NE(made, nullptr);
            EXPECT_EQ(SafeArrayGetElemsize(made), row.bytes);
            EXPECT_EQ(made->fFeatures & ~createdAsVector, row.features);
            EXPECT_EQ(made->cLocks, 0u);
            EXPECT_EQ(made->rgsabound[0].cElements, 3u);
            EXPECT_EQ(made->rgsabound[0].lLbound, -1);
            VARTYPE type = VT_EMPTY;
            EXPECT_EQ(SafeArrayGetVartype(made, &type), S_OK);
            EXPECT_EQ(type, row.type);
            const std::vector<char> zeros(3 * row.bytes);
            EXPECT_EQ(std::memcmp(made->pvData, zeros.data(), zeros.size()), 0);
        }
        EXPECT_EQ(vector->fFeatures & createdAsVector, createdAsVector);
    }
    for (const int type : {int{VT_EMPTY}, int{VT_NULL}, 15, int{VT_VOID}, int{VT_HRESULT}, VT_ARRAY | VT_I4,
                           VT_BYREF | VT_I4}) {
        EXPECT_EQ(Create(static_cast<VARTYPE>(type), {{3, 0}}), nullptr) << type;
        EXPECT_EQ(SafeArrayCreateVector(static_cast<VARTYPE>(type), 0, 3), nullptr) << type;
    }
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, nullptr), nullptr);
}

TEST(SafeArray, TheLeftmostIndexRunsFastestAndBoundsAreKeptRightmostFirst) {
    const Array array(Create(VT_I4, {{2, 1}, {3, -1}, {2, 5}}));
    EXPECT_EQ(SafeArrayGetDim(array), 3u);
    const SAFEARRAYBOUND* const bounds = &array->rgsabound[0];
    EXPECT_EQ(bounds[0].cElements, 2u);
    EXPECT_EQ(bounds[0].lLbound, 5);
    EXPECT_EQ(bounds[1].cElements, 3u);
    EXPECT_EQ(bounds[2].lLbound, 1);
    const LONG lowers[] = {1, -1, 5};
    const LONG uppers[] = {2, 1, 6};
    for (UINT dimension = 1; dimension <= 3; ++dimension) {
        LONG bound = 77;
        EXPECT_EQ(SafeArrayGetLBound(array, dimension, &bound), S_OK);
        EXPECT_EQ(bound, lowers[dimension - 1]);
        EXPECT_EQ(SafeArrayGetUBound(array, dimension, &bound), S_OK);
        EXPECT_EQ(bound, uppers[dimension - 1]);
    }

    std::size_t place = 0;
    std::array<LONG, 3> at{};
    for (at[2] = 5; at[2] <= 6; ++at[2]) {
        for (at[1] = -1; at[1] <= 1; ++at[1]) {
            for (at[0] = 1; at[0] <= 2; ++at[0], ++place) {
                void* element = nullptr;
                ASSERT_EQ(SafeArrayPtrOfIndex(array, at.data(), &element), S_OK);
                EXPECT_EQ(element, array.Data<LONG>() + place);
                LONG value = static_cast<LONG>(100 + place);
                EXPECT_EQ(SafeArrayPutElement(array, at.data(), &value), S_OK);
                EXPECT_EQ(array.Data<LONG>()[place], value);
                LONG read = 0;
                EXPECT_EQ(SafeArrayGetElement(array, at.data(), &read), S_OK);
                EXPECT_EQ(read, value);
            }
        }
    }
    for (const auto& outside :
         {std::array<LONG, 3>{0, 0, 5}, {3, 0, 5}, {1, -2, 5}, {1, 2, 5}, {1, 0, 4}, {1, 0, 7}}) {
        auto indices = outside;
        LONG value = 1;
        void* element = nullptr;
        EXPECT_EQ(SafeArrayPtrOfIndex(array, indices.data(), &element), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayGetElement(array, indices.data(), &value), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayPutElement(array, indices.data(), &value), DISP_E_BADINDEX);
    }
}

TEST(SafeArray, NullsAndBadDimensionsAreRefusedByTheirOwnCodes) {
    const Array array(Create(VT_I4, {{2, 0}}));
    LONG index = 0;
    LONG value = 0;
    VARTYPE type = 0;
    void* data = nullptr;
    SAFEARRAYBOUND bound{1, 0};
    SAFEARRAY* other = nullptr;
    EXPECT_EQ(SafeArrayAllocDescriptor(0, &other), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(65536, &other), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(1, nullptr), E_POINTER);
    EXPECT_EQ(SafeArrayAllocData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayDestroyDescriptor(nullptr), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayRedim(nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayRedim(array, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0u);
    for (const auto getBound : {&SafeArrayGetLBound, &SafeArrayGetUBound}) {
        EXPECT_EQ(getBound(nullptr, 1, &value), E_INVALIDARG);
        EXPECT_EQ(getBound(array, 1, nullptr), E_INVALIDARG);
        EXPECT_EQ(getBound(array, 0, &value), DISP_E_BADINDEX);
        EXPECT_EQ(getBound(array, 2, &value), DISP_E_BADINDEX);
    }
    EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetVartype(array, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(array, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPtrOfIndex(nullptr, &index, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPtrOfIndex(array, nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPtrOfIndex(array, &index, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &index, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array, nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array, &index, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(nullptr, &index, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(array, nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(SafeArrayCopy(array, nullptr), E_INVALIDARG);
    other = array;
    EXPECT_EQ(SafeArrayCopy(nullptr, &other), S_OK);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(array->cLocks, 0u);
}

TEST(SafeArray, ADescriptorIsBareAndItsDataZero) {
    SAFEARRAY* made = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptor(2, &made), S_OK);
    const Array array(made);
    EXPECT_EQ(array->cDims, 2u);
    EXPECT_EQ(array->fFeatures, 0u);
    EXPECT_EQ(array->cbElements, 0u);
    EXPECT_EQ(array->cLocks, 0u);
    EXPECT_EQ(array->pvData, nullptr);
    VARTYPE type = 77;
    EXPECT_EQ(SafeArrayGetVartype(array, &type), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);

    array->cbElements = 8;
    (&array->rgsabound[0])[0] = {3, 0};
    (&array->rgsabound[0])[1] = {2, 0};
    ASSERT_EQ(SafeArrayAllocData(array), S_OK);
    const double zeros[6]{};
    EXPECT_EQ(std::memcmp(array->pvData, zeros, sizeof zeros), 0);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(array->pvData, nullptr);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
}

TEST(SafeArray, AnEmptyDimensionEndsBelowItsStart) {
    const Array array(Create(VT_R8, {{3, 0}, {0, 5}}));
    ASSERT_NE(array.array, nullptr);
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &bound), S_OK);
    EXPECT_EQ(bound, 4);
    LONG indices[] = {0, 5};
    double value = 0;
    EXPECT_EQ(SafeArrayGetElement(array, indices, &value), DISP_E_BADINDEX);
}

TEST(SafeArray, LocksAreCountedAndHoldTheDataInPlace) {
    Array array(Create(VT_I4, {{2, 0}}));
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(array->cLocks, 2u);

    SAFEARRAYBOUND bound{5, 0};
    LONG index = 1;
    LONG value = 7;
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), S_OK);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(copy->cLocks, 0u);
    SafeArrayDestroy(copy);

    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    array->cLocks = 0xFFFF;
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    array->cLocks = 0;
}

TEST(SafeArray, RedimKeepsWhatStaysAndZeroesWhatIsNew) {
    const Array array(Create(VT_I4, {{2, 1}, {3, 1}}));
    for (LONG i = 0; i < 6; ++i) array.Data<LONG>()[i] = i + 1;
    struct Step {
        SAFEARRAYBOUND bound;
        std::vector<LONG> data;
    };
    const Step steps[] = {
        {{5, -2}, {1, 2, 3, 4, 5, 6, 0, 0, 0, 0}},
        {{2, 0}, {1, 2, 3, 4}},
        {{3, 7}, {1, 2, 3, 4, 0, 0}},
        {{0, 0}, {}},
        {{1, 0}, {0, 0}},
    };
    for (const Step& step : steps) {
        SAFEARRAYBOUND bound = step.bound;
        ASSERT_EQ(SafeArrayRedim(array, &bound), S_OK);
        EXPECT_EQ(array->rgsabound[0].cElements, bound.cElements);
        EXPECT_EQ(array->rgsabound[0].lLbound, bound.lLbound);
        EXPECT_EQ((&array->rgsabound[0])[1].cElements, 2u);
        EXPECT_EQ(std::vector<LONG>(array.Data<LONG>(), array.Data<LONG>() + step.data.size()), step.data);
    }
    array->fFeatures |= FADF_FIXEDSIZE;
    SAFEARRAYBOUND bound{1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    array->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
}

TEST(SafeArray, RedimOfBstrsFreesTheLastAndKeepsTheFirst) {
    const Array array(Create(VT_BSTR, {{2, 0}}));
    for (LONG i = 0; i < 2; ++i) array.Data<BSTR>()[i] = SysAllocString(TEXT("text"));
    const BSTR first = array.Data<BSTR>()[0];
    SAFEARRAYBOUND bound{1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    bound.cElements = 2;
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(array.Data<BSTR>()[0], first);
    EXPECT_EQ(array.Data<BSTR>()[1], nullptr);
}

TEST(SafeArray, BstrElementsAreCopiedInAndOut) {
    const Array array(Create(VT_BSTR, {{2, 0}}));
    LONG index = 0;
    const BSTR text = SysAllocStringLen(TEXT("a\0b"), 3);
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    EXPECT_NE(array.Data<BSTR>()[0], text);
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    SysFreeString(text);
    BSTR read = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &read), S_OK);
    EXPECT_NE(read, array.Data<BSTR>()[0]);
    EXPECT_EQ(Units(read), std::basic_string<WCHAR>(TEXT("a\0b"), 3));
    SysFreeString(read);

    SAFEARRAY* made = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &made), S_OK);
    const Array copy(made);
    EXPECT_NE(copy.Data<BSTR>()[0], array.Data<BSTR>()[0]);
    EXPECT_EQ(SysStringLen(copy.Data<BSTR>()[0]), 3u);
    EXPECT_EQ(copy.Data<BSTR>()[1], nullptr);

    EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    ASSERT_NE(array.Data<BSTR>()[0], nullptr);
    EXPECT_EQ(SysStringLen(array.Data<BSTR>()[0]), 0u);
    index = 1;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &read), S_OK);
    EXPECT_EQ(read, nullptr);
}

TEST(SafeArray, VariantElementsAreCopiedInAndOut) {
    const Array array(Create(VT_VARIANT, {{1, 0}}));
    LONG index = 0;
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(TEXT("text"));
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), S_OK);
    EXPECT_NE(array.Data<VARIANT>()->bstrVal, value.bstrVal);
    VARIANT read;
    std::memset(&read, 0xAA, sizeof read);
    EXPECT_EQ(SafeArrayGetElement(array, &index, &read), S_OK);
    EXPECT_EQ(read.vt, VT_BSTR);
    EXPECT_NE(read.bstrVal, array.Data<VARIANT>()->bstrVal);
    EXPECT_EQ(Units(read.bstrVal), TEXT("text"));
    VariantClear(&read);
    VariantClear(&value);
    value.vt = 77;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), DISP_E_BADVARTYPE);
    EXPECT_EQ(array.Data<VARIANT>()->vt, VT_BSTR);
}

struct Counted final : IUnknown {
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

TEST(SafeArray, ObjectElementsAreCounted) {
    Counted object;
    {
        const Array array(Create(VT_UNKNOWN, {{2, 0}}));
        LONG index = 1;
        EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IUnknown*>(&object)), S_OK);
        EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IUnknown*>(&object)), S_OK);
        EXPECT_EQ(object.references, 2u);
        SAFEARRAY* made = nullptr;
        EXPECT_EQ(SafeArrayCopy(array, &made), S_OK);
        EXPECT_EQ(object.references, 3u);
        const Array copy(made);
        IUnknown* read = nullptr;
        EXPECT_EQ(SafeArrayGetElement(copy, &index, &read), S_OK);
        EXPECT_EQ(object.references, 4u);
        read->Release();
    }
    EXPECT_EQ(object.references, 1u);
}

TEST(SafeArray, ElementsWithoutAFeatureAreBytes) {
    BSTR texts[2]{};
    const Array array(Borrowing(texts, sizeof(BSTR), 2, FADF_STATIC | FADF_FIXEDSIZE));
    LONG index = 1;
    BSTR text = SysAllocString(TEXT("text"));
    EXPECT_EQ(SafeArrayPutElement(array, &index, &text), S_OK);
    EXPECT_EQ(texts[1], text);
    BSTR read = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &read), S_OK);
    EXPECT_EQ(read, text);
    SysFreeString(text);
}

TEST(SafeArray, StaticDataIsClearedWhereItIs) {
    BSTR texts[2] = {SysAllocString(TEXT("text")), nullptr};
    const Array array(Borrowing(texts, sizeof(BSTR), 2, FADF_STATIC | FADF_BSTR));
    SAFEARRAY* made = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &made), S_OK);
    const Array copy(made);
    EXPECT_EQ(copy->fFeatures, FADF_BSTR);
    EXPECT_EQ(Units(copy.Data<BSTR>()[0]), TEXT("text"));
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(array->pvData, texts);
    EXPECT_EQ(texts[0], nullptr);
}

TEST(SafeArray, ACopyOfAVectorHasItsOwnBlock) {
    const Array vector(SafeArrayCreateVectorEx(VT_I4, 1, 3, nullptr));
    vector.Data<LONG>()[2] = 9;
    SAFEARRAY* made = nullptr;
    ASSERT_EQ(SafeArrayCopy(vector, &made), S_OK);
    const Array copy(made);
    EXPECT_EQ(copy->fFeatures, FADF_HAVEVARTYPE);
    EXPECT_EQ(copy->rgsabound[0].lLbound, 1);
    EXPECT_EQ(copy.Data<LONG>()[2], 9);
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(copy, &type), S_OK);
    EXPECT_EQ(type, VT_I4);
    SAFEARRAYBOUND bound{5, 1};
    EXPECT_EQ(SafeArrayRedim(copy, &bound), S_OK);
    EXPECT_EQ(copy.Data<LONG>()[2], 9);
}

}  // namespace
