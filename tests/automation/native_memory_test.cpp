// Every allocation of every operation fails once: the failure is raised, the slots hold what they should, and
// nothing is lost.
#include "automation/arraytest.h"
#include "support/allocations.h"

#include <new>
#include <utility>

namespace {

TEST(OutOfMemory, IsRaisedAndLeavesNothing) {
    BSTR slot = nullptr;
    TestArray array;
    VARIANT variant;
    VariantInit(&variant);
    const std::vector<CStringW> texts = {TEXT("one"), TEXT("two")};
    const Matrix matrix = {{1, 2}, {3, 4}};
    const auto freeSlot = [&] { SysFreeString(std::exchange(slot, nullptr)); };
    const auto freeArray = [&] { DestroyVbArray(&array.array); };
    const struct {
        const char* raiser;  // the operation whose own allocation fails first
        std::function<void()> act;
        std::function<void()> cleanUp;
    } cases[] = {
        {"AssignBstrA", [&] { AssignBstrA(slot, false, "text"); }, freeSlot},
        {"AssignBstrA", [&] { AssignBstrA(slot, true, "text"); }, freeSlot},
        {"AssignBstrW", [&] { AssignBstrW(slot, false, TEXT("text")); }, freeSlot},
        {"AssignBstrW", [&] { AssignBstrW(slot, true, TEXT("text")); }, freeSlot},
        {"MakeBstr", [&] { slot = MakeBstr("text"); }, freeSlot},
        {"MakeBstr", [&] { slot = MakeBstr(TEXT("text")); }, freeSlot},
        {"MakeBstr", [&] { variant = VariantFromCStringW(texts[0]); }, [&] { VariantClear(&variant); }},
        {"AssignBstrW", [&] { array.array = VbArrayFromVectorCStringW(texts, false, 1); }, freeArray},
        {"AssignBstrW", [&] { AssignVbArrayFromVectorCStringW(texts, true, 1, array.array); }, freeArray},
        {"ReDimVbArray", [&] { array.array = VbArrayFromMatrix(matrix, 1); }, freeArray},
        {"ReDimVbArray", [&] { array.array = VbArrayFromVectorDouble(matrix[0], 1); }, freeArray},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.raiser);
        const auto before = support::LiveBlocks();
        bool named = false;
        std::size_t raised = 0;
        const std::size_t faults = support::FailEachAllocation(
            [&] {
                bool failed = true;
                try {
                    each.act();
                    failed = false;
                } catch (const VexOutOfMemory& record) {
                    named = named || record.function == each.raiser;
                } catch (const std::bad_alloc&) {
                }
                if (failed) {
                    ++raised;
                    EXPECT_EQ(slot, nullptr);
                }
                each.cleanUp();
            },
            [&] { EXPECT_EQ(support::LiveBlocks(), before); });
        EXPECT_EQ(raised, faults);
        EXPECT_TRUE(named);
    }
}

TEST(OutOfMemory, AnOldBstrIsGoneBeforeTheNewOneIsAskedFor) {
    BSTR slot = SysAllocString(TEXT("old"));
    const support::AllocationFault fault(1);
    EXPECT_THROW(AssignBstrW(slot, false, TEXT("new")), VexOutOfMemory);
    EXPECT_EQ(slot, nullptr);
}

TEST(OutOfMemory, ReadingCopiesWideTextOnce) {
    std::size_t before = support::Allocations();
    ::operator delete(::operator new(1));
    if (support::Allocations() == before) GTEST_SKIP() << "a sanitizer's operator new is not seen";

    const BSTR text = SysAllocString(TEXT("a text of some length"));
    before = support::Allocations();
    EXPECT_EQ(CStringWFromBstr(text, false).GetLength(), 21);
    EXPECT_EQ(support::Allocations() - before, 1u);
    SysFreeString(text);
}

}  // namespace
