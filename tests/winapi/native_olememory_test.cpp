// The stand-in's BSTRs, VARIANTs and arrays when memory runs out at each step: a clean refusal, the old value
// in place, nothing leaked. And what is too large, or too foreign, to be tried on the real calls.
#include <windows.h>
#include <oleauto.h>

#include "support/allocations.h"

#include <gtest/gtest.h>

#include <string>

namespace {

VARIANT OfBstr(const WCHAR* text) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocString(text);
    return variant;
}

template <typename Call>
auto WithoutMemory(Call call) {
    const support::AllocationFault fault(1);
    const auto result = call();
    EXPECT_TRUE(fault.Struck());
    return result;
}

// Runs `attempt` with each of its allocations failing in turn; it gives whether it succeeded and cleans up
// after itself. Gives the number of failures.
template <typename Attempt>
std::size_t FailuresOf(Attempt attempt) {
    const auto before = support::LiveBlocks();
    bool succeeded = false;
    const std::size_t failures = support::FailEachAllocation([&] { succeeded = attempt(); },
                                                             [&] {
                                                                 EXPECT_FALSE(succeeded);
                                                                 EXPECT_EQ(support::LiveBlocks(), before);
                                                             });
    EXPECT_TRUE(succeeded);
    return failures;
}

TEST(OleMemory, AFailedBstrIsNull) {
    BSTR text = SysAllocString(TEXT("kept"));
    const BSTR before = text;
    EXPECT_EQ(WithoutMemory([] { return SysAllocString(TEXT("x")); }), nullptr);
    EXPECT_EQ(WithoutMemory([] { return SysAllocStringLen(TEXT("x"), 1); }), nullptr);
    EXPECT_EQ(WithoutMemory([] { return SysAllocStringByteLen("x", 1); }), nullptr);
    EXPECT_FALSE(WithoutMemory([&] { return SysReAllocString(&text, TEXT("longer")); }));
    EXPECT_FALSE(WithoutMemory([&] { return SysReAllocStringLen(&text, TEXT("longer"), 6); }));
    EXPECT_EQ(text, before);
    SysFreeString(text);
}

TEST(OleMemory, AFailedVariantCopyLeavesTheTargetEmpty) {
    VARIANT source = OfBstr(TEXT("text"));
    VARIANT target = OfBstr(TEXT("what was there"));
    EXPECT_EQ(WithoutMemory([&] { return VariantCopy(&target, &source); }), E_OUTOFMEMORY);
    EXPECT_EQ(target.vt, VT_EMPTY);
    VariantClear(&source);
}

TEST(OleMemory, AVariantWithALockedArrayIsNotCopiedOver) {
    VARIANT target;
    VariantInit(&target);
    target.vt = VT_ARRAY | VT_I4;
    target.parray = SafeArrayCreateVector(VT_I4, 0, 1);
    SafeArrayLock(target.parray);
    VARIANT source = OfBstr(TEXT("text"));
    EXPECT_EQ(VariantCopy(&target, &source), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(target.vt, VT_ARRAY | VT_I4);
    SafeArrayUnlock(target.parray);
    VariantClear(&target);
    VariantClear(&source);
}

TEST(OleMemory, EveryStepOfAnArraysCreationMayFail) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 0}};
    EXPECT_EQ(FailuresOf([&] {
                  SAFEARRAY* const array = SafeArrayCreate(VT_R8, 2, bounds);
                  SafeArrayDestroy(array);
                  return array != nullptr;
              }),
              2);
    EXPECT_EQ(FailuresOf([&] {
                  SAFEARRAY* const array = SafeArrayCreateVector(VT_R8, 0, 3);
                  SafeArrayDestroy(array);
                  return array != nullptr;
              }),
              1);
}

TEST(OleMemory, EveryStepOfAnArraysCopyMayFail) {
    SAFEARRAYBOUND bound{4, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_VARIANT, 1, &bound);
    for (LONG i = 0; i < 3; ++i) {
        VARIANT text = OfBstr(TEXT("element"));
        EXPECT_EQ(SafeArrayPutElement(array, &i, &text), S_OK);
        VariantClear(&text);
    }
    EXPECT_EQ(FailuresOf([&] {
                  SAFEARRAY* copy = array;
                  const HRESULT copied = SafeArrayCopy(array, &copy);
                  EXPECT_EQ(copy == nullptr, copied == E_OUTOFMEMORY);
                  SafeArrayDestroy(copy);
                  return SUCCEEDED(copied);
              }),
              5);
    SafeArrayDestroy(array);
}

TEST(OleMemory, AFailedElementOrResizeLeavesTheArray) {
    SAFEARRAYBOUND bound{2, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_BSTR, 1, &bound);
    LONG index = 0;
    BSTR text = SysAllocString(TEXT("element"));
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    const BSTR stored = *static_cast<BSTR*>(array->pvData);
    bound = {5, 7};
    BSTR read = nullptr;
    EXPECT_EQ(WithoutMemory([&] { return SafeArrayPutElement(array, &index, text); }), E_OUTOFMEMORY);
    EXPECT_EQ(WithoutMemory([&] { return SafeArrayPutElement(array, &index, nullptr); }), E_OUTOFMEMORY);
    EXPECT_EQ(WithoutMemory([&] { return SafeArrayGetElement(array, &index, &read); }), E_OUTOFMEMORY);
    EXPECT_EQ(WithoutMemory([&] { return SafeArrayRedim(array, &bound); }), E_OUTOFMEMORY);
    EXPECT_EQ(*static_cast<BSTR*>(array->pvData), stored);
    EXPECT_EQ(array->rgsabound[0].cElements, 2u);
    EXPECT_EQ(array->rgsabound[0].lLbound, 0);
    EXPECT_EQ(array->cLocks, 0u);
    SysFreeString(text);
    SafeArrayDestroy(array);
}

TEST(OleMemory, BlocksBeyondThirtyTwoBitsAreRefused) {
    SAFEARRAYBOUND bounds[] = {{0x10000, 0}, {0x10000, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_R8, 2, bounds), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, bounds), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_R8, 0, 0x20000000), nullptr);
    SAFEARRAYBOUND bound{1, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_R8, 1, &bound);
    bound.cElements = 0x20000000;
    EXPECT_EQ(SafeArrayRedim(array, &bound), E_OUTOFMEMORY);
    EXPECT_EQ(array->rgsabound[0].cElements, 1u);
    SafeArrayDestroy(array);
}

TEST(OleMemory, DataElsewhereIsNeitherFreedNorMoved) {
    for (const int feature : {FADF_AUTO, FADF_STATIC, FADF_EMBEDDED}) {
        LONG data[] = {1, 2};
        SAFEARRAY* array = nullptr;
        ASSERT_EQ(SafeArrayAllocDescriptor(1, &array), S_OK);
        array->cbElements = sizeof(LONG);
        array->fFeatures = static_cast<USHORT>(feature);
        array->rgsabound[0] = {2, 0};
        array->pvData = data;
        SAFEARRAYBOUND bound{3, 0};
        EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
        bound.cElements = 1;
        EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
        EXPECT_EQ(data[0], 1);
        EXPECT_EQ(data[1], 0);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
        EXPECT_EQ(data[0], 0);
    }
}

TEST(OleMemory, AVectorsBlockMovesOutAsItGrows) {
    const auto before = support::LiveBlocks();
    SAFEARRAY* const array = SafeArrayCreateVector(VT_I4, 0, 2);
    static_cast<LONG*>(array->pvData)[1] = 5;
    SAFEARRAYBOUND bound{1000, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(static_cast<LONG*>(array->pvData)[1], 5);
    bound.cElements = 2000;
    EXPECT_EQ(SafeArrayRedim(array, &bound), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(support::LiveBlocks(), before);
}

}  // namespace
