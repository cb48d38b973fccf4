// The stand-in's BSTRs, VARIANTs and arrays when memory runs out at each step: a clean refusal, the old value
// in place, nothing leaked. And what is too large to be tried on the real calls.
#include "olevalues.h"

#include "support/allocations.h"

#include <gtest/gtest.h>

namespace {

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
    const auto check = [&] {
        EXPECT_FALSE(succeeded);
        EXPECT_EQ(support::LiveBlocks(), before);
    };
    const std::size_t failures = support::FailEachAllocation([&] { succeeded = attempt(); }, check);
    EXPECT_TRUE(succeeded);
    return failures;
}

TEST(OleMemory, AFailedBstrIsNullAndAFailedCopyEmpty) {
    const Variant text = Text(TEXT("kept"));
    Variant target = Text(TEXT("what was there"));
    EXPECT_EQ(WithoutMemory([] { return SysAllocString(TEXT("x")); }), nullptr);
    EXPECT_EQ(WithoutMemory([] { return SysAllocStringByteLen("x", 1); }), nullptr);
    EXPECT_EQ(WithoutMemory([&] { return VariantCopy(&target, &text); }), E_OUTOFMEMORY);
    EXPECT_EQ(target.vt, VT_EMPTY);
}

TEST(OleMemory, EveryStepOfAnArraysCreationAndCopyMayFail) {
    EXPECT_EQ(FailuresOf([] { return Array(VT_R8, {{2, 0}, {3, 0}}).array != nullptr; }), 2);
    const Array array(VT_VARIANT, {{4, 0}});
    Variant text = Text(TEXT("element"));
    for (LONG i = 0; i < 3; ++i) EXPECT_EQ(SafeArrayPutElement(array, &i, &text), S_OK);
    const auto copyAll = [&] {
        SAFEARRAY* made = array;
        const HRESULT copied = SafeArrayCopy(array, &made);
        const Array copy(made);
        EXPECT_EQ(made == nullptr, copied == E_OUTOFMEMORY);
        return SUCCEEDED(copied);
    };
    EXPECT_EQ(FailuresOf(copyAll), 5);
}

TEST(OleMemory, AFailedElementOrResizeLeavesTheArray) {
    const Array array(VT_BSTR, {{2, 0}});
    LONG index = 0;
    const Variant text = Text(TEXT("element"));
    EXPECT_EQ(SafeArrayPutElement(array, &index, text.bstrVal), S_OK);
    const BSTR stored = *array.Data<BSTR>();
    SAFEARRAYBOUND bound{5, 7};
    EXPECT_EQ(WithoutMemory([&] { return SafeArrayPutElement(array, &index, text.bstrVal); }), E_OUTOFMEMORY);
    EXPECT_EQ(WithoutMemory([&] { return SafeArrayRedim(array, &bound); }), E_OUTOFMEMORY);
    EXPECT_EQ(*array.Data<BSTR>(), stored);
    EXPECT_EQ(array->rgsabound[0].cElements, 2u);
}

TEST(OleMemory, BlocksBeyondThirtyTwoBitsAreRefused) {
    EXPECT_EQ(Array(VT_UI1, {{0x10000, 0}, {0x10000, 0}}).array, nullptr);
    EXPECT_EQ(Array(VT_R8, {{0x20000000, 0}}).array, nullptr);
}

}  // namespace
