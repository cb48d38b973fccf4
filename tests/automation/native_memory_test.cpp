// Every allocation of every operation fails once: the failure is raised, the slots hold what they should, and
// nothing is lost.
#include "automation/automation.h"
#include "errors/vex.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>

namespace {

// Runs `body` with each of its allocations failing in turn; `body` cleans up what it makes. A failure must be
// raised as std::bad_alloc or with `code`, at least one of them with `code`. `whenRaised` checks and clears
// what the failure left.
void FailEach(std::int32_t code, const std::function<void()>& body, const std::function<void()>& whenRaised) {
    const auto before = support::LiveBlocks();
    enum { none, badAlloc, outOfMemory, other } raised = none;
    int withCode = 0;
    support::FailEachAllocation(
        [&] {
            raised = none;
            try {
                body();
            } catch (const VexOutOfMemory& record) {
                raised = record.code == code ? outOfMemory : other;
            } catch (const std::bad_alloc&) {
                raised = badAlloc;
            }
        },
        [&] {
            EXPECT_TRUE(raised == badAlloc || raised == outOfMemory) << raised;
            withCode += raised == outOfMemory ? 1 : 0;
            whenRaised();
            EXPECT_EQ(support::LiveBlocks(), before);
        });
    EXPECT_EQ(raised, none);
    EXPECT_GT(withCode, 0);
}

TEST(OutOfMemory, LeavesASlotOfABstrNull) {
    BSTR slot = nullptr;
    const auto slotIsNull = [&] { EXPECT_EQ(slot, nullptr); };
    const auto freeSlot = [&] { SysFreeString(std::exchange(slot, nullptr)); };
    for (const bool ansiBytes : {false, true}) {
        const auto assignA = [&] {
            AssignBstrA(slot, ansiBytes, "text");
            freeSlot();
        };
        const auto assignW = [&] {
            AssignBstrW(slot, ansiBytes, TEXT("text"));
            freeSlot();
        };
        FailEach(VexCode::BstrAllocation, assignA, slotIsNull);
        FailEach(VexCode::BstrAllocation, assignW, slotIsNull);
    }

    slot = SysAllocString(TEXT("old"));
    {
        const support::AllocationFault fault(1);
        EXPECT_THROW(AssignBstrW(slot, false, TEXT("new")), VexOutOfMemory);
    }
    EXPECT_EQ(slot, nullptr) << "the old one is gone before the new one is asked for";
}

TEST(OutOfMemory, LeavesNothingOfANewBstr) {
    const auto nothing = [] {};
    FailEach(
        VexCode::BstrAllocation, [] { SysFreeString(MakeBstr("text")); }, nothing);
    FailEach(
        VexCode::BstrAllocation, [] { SysFreeString(MakeBstr(TEXT("text"))); }, nothing);
    FailEach(
        VexCode::BstrAllocation,
        [] {
            VARIANT variant = VariantFromCStringW(TEXT("text"));
            VariantClear(&variant);
        },
        nothing);
}

TEST(OutOfMemory, NamesTheOperationThatRaised) {
    const auto raiserOf = [](const std::function<void()>& attempt) {
        // The record's own texts are allocated, so that only the first allocation may fail.
        const support::AllocationFault fault(1);
        try {
            attempt();
        } catch (const VexOutOfMemory& record) {
            return record.function;
        }
        return CStringW();
    };
    BSTR slot = nullptr;
    const CStringW text = TEXT("text");
    EXPECT_EQ(raiserOf([&] { AssignBstrA(slot, true, "x"); }), TEXT("AssignBstrA"));
    EXPECT_EQ(raiserOf([&] { AssignBstrW(slot, false, TEXT("x")); }), TEXT("AssignBstrW"));
    EXPECT_EQ(raiserOf([&] { slot = MakeBstr(TEXT("x")); }), TEXT("MakeBstr"));
    EXPECT_EQ(raiserOf([&] { slot = VariantFromCStringW(text).bstrVal; }), TEXT("MakeBstr"));
}

TEST(OutOfMemory, ReadingCopiesWideTextOnce) {
    std::size_t before = support::Allocations();
    ::operator delete(::operator new(1));
    if (support::Allocations() == before) GTEST_SKIP() << "a sanitizer's operator new is not seen";

    const BSTR text = SysAllocString(TEXT("a text of some length"));
    before = support::Allocations();
    const CStringW read = CStringWFromBstr(text, false);
    EXPECT_EQ(support::Allocations() - before, 1u);
    SysFreeString(text);
}

}  // namespace
