#include "addin/addin.h"
#include "excelvalues/xxloper.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <barrier>
#include <set>
#include <thread>

namespace {

class ResultStore : public testing::Test {
  protected:
    ResultStore() { OpenThreadResultStore(); }
    ~ResultStore() override { CloseThreadResultStore(); }

    static std::size_t SlotCount() { return OpenedThreadResultStore()->slots.size(); }
};

void ExpectValueError(const XLOPER12* record) {
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->xltype, xltypeErr);
    EXPECT_EQ(record->val.err, xlerrValue);
    EXPECT_EQ(record->val.returnCode, 0);
}

TEST_F(ResultStore, EachValueReplacesTheOneBefore) {
    XXloperPtr first = XXloperFromInt(1);
    XXloperPtr second = XXloperFromInt(2);
    const std::weak_ptr<const XXloper> watched = first;
    EXPECT_EQ(StoreThreadResult(first), first.get());
    first.reset();
    ASSERT_FALSE(watched.expired());
    EXPECT_EQ(watched.lock()->val.w, 1);

    EXPECT_EQ(StoreThreadResult(second), second.get());
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(StoreThreadResult(second), second.get()) << "the value that is there already stays";
    EXPECT_EQ(second.use_count(), 2);
    EXPECT_EQ(SlotCount(), 1u);
}

// The new value stands in the slot when the old one goes: a policy that looks sees it.
TEST_F(ResultStore, TheSlotIsNeverWithoutAValue) {
    const XLOPER12* seen = nullptr;
    XLOPER12 record{};
    const XXloperPtr next = XXloperFromInt(2);
    {
        const XXloperPtr first(static_cast<const XXloper*>(&record), [&seen](const XXloper*) {
            const auto* slot =
                static_cast<ThreadResultSlot*>(TlsGetValue(OpenedThreadResultStore()->tlsIndex));
            seen = slot->result.get();
        });
        EXPECT_EQ(StoreThreadResult(first), &record);
    }
    EXPECT_EQ(StoreThreadResult(next), next.get());
    EXPECT_EQ(seen, next.get());
}

TEST_F(ResultStore, CallsAfterTheFirstAllocateNothing) {
    const XXloperPtr values[] = {XXloperFromInt(1), XXloperFromInt(2)};
    static_cast<void>(StoreThreadResult(values[0]));
    const std::size_t before = support::Allocations();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(StoreThreadResult(values[i % 2]), values[i % 2].get());
    }
    EXPECT_EQ(support::Allocations(), before);
}

void StoreFromManyThreadsAtOnce(bool singleProcessor) {
    // Only a test decides how the store waits: machines have the processors that they have.
    const_cast<ThreadResultStore*>(OpenedThreadResultStore())->singleProcessor = singleProcessor;
    constexpr int count = 16;
    std::barrier start(count);
    std::barrier stored(count);
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            const XLOPER12* record = nullptr;
            for (int round = 0; round < 200; ++round)
                record = StoreThreadResult(XXloperFromInt(i * 1000 + round));
            stored.arrive_and_wait();
            if (record->val.w == i * 1000 + 199) ++right;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, count);
    std::set<int> left;
    for (const auto& slot : OpenedThreadResultStore()->slots) left.insert(slot->result->val.w);
    EXPECT_EQ(OpenedThreadResultStore()->slots.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(left.size(), static_cast<std::size_t>(count)) << "each thread has a slot of its own";
    EXPECT_EQ(OpenedThreadResultStore()->spinFlag, 0u);
}

TEST_F(ResultStore, ThreadsStoreAtOnce) {
    StoreFromManyThreadsAtOnce(false);
}

TEST_F(ResultStore, ThreadsStoreAtOnceOnOneProcessor) {
    StoreFromManyThreadsAtOnce(true);
}

TEST_F(ResultStore, ValuesOutliveTheirThreadsAndGoInOrderAtClosing) {
    std::vector<int> released;
    std::vector<std::thread::id> releasers;
    XLOPER12 records[3] = {};
    for (int i = 0; i < 3; ++i) {
        records[i].val.w = i;
        std::thread([&, i] {
            static_cast<void>(
                StoreThreadResult({static_cast<const XXloper*>(&records[i]), [&](const XXloper* value) {
                                       released.push_back(value->val.w);
                                       releasers.push_back(std::this_thread::get_id());
                                   }}));
        }).join();
    }
    EXPECT_TRUE(released.empty());
    EXPECT_EQ(SlotCount(), 3u);
    CloseThreadResultStore();
    EXPECT_EQ(released, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(releasers, std::vector<std::thread::id>(3, std::this_thread::get_id()));
}

TEST_F(ResultStore, AReopenedStoreStartsAfresh) {
    for (int round = 0; round < 5; ++round) {
        const XXloperPtr value = XXloperFromInt(round);
        EXPECT_EQ(StoreThreadResult(value), value.get());
        EXPECT_EQ(SlotCount(), 1u);
        const DWORD index = OpenedThreadResultStore()->tlsIndex;
        CloseThreadResultStore();
        EXPECT_EQ(value.use_count(), 1);
        EXPECT_EQ(OpenedThreadResultStore(), nullptr);
        OpenThreadResultStore();
        EXPECT_EQ(SlotCount(), 0u);
        EXPECT_EQ(OpenedThreadResultStore()->tlsIndex, index) << "the index was given back";
        EXPECT_EQ(TlsGetValue(OpenedThreadResultStore()->tlsIndex), nullptr);
    }
}

TEST_F(ResultStore, WithoutAStoreTheValueIsNotKept) {
    CloseThreadResultStore();
    const XXloperPtr value = XXloperFromInt(1);
    ExpectValueError(StoreThreadResult(value));
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(ResultStore, WithoutMemoryTheValueIsNotKeptAndTheFlagIsFree) {
    const XXloperPtr value = XXloperFromInt(1);
    const std::int64_t before = support::LiveBlocks();
    std::size_t faults = 0;
    for (std::size_t nth = 1; nth <= 2; ++nth) {  // the slot, the list's storage
        const support::AllocationFault fault(nth);
        ExpectValueError(StoreThreadResult(value));
        if (fault.Struck()) ++faults;
        EXPECT_EQ(SlotCount(), 0u);
        EXPECT_EQ(value.use_count(), 1);
        EXPECT_EQ(OpenedThreadResultStore()->spinFlag, 0u);
        EXPECT_EQ(support::LiveBlocks(), before);
    }
    EXPECT_EQ(faults, 2u);
    EXPECT_EQ(StoreThreadResult(value), value.get());
    EXPECT_EQ(SlotCount(), 1u);
}

TEST_F(ResultStore, WithoutAThreadLocalValueTheSlotIsTakenBack) {
    TlsFree(OpenedThreadResultStore()->tlsIndex);  // so that TlsSetValue refuses
    const auto store = const_cast<ThreadResultStore*>(OpenedThreadResultStore());
    const DWORD index = std::exchange(store->tlsIndex, TLS_OUT_OF_INDEXES);
    const XXloperPtr value = XXloperFromInt(1);
    ExpectValueError(StoreThreadResult(value));
    EXPECT_EQ(SlotCount(), 0u);
    EXPECT_EQ(value.use_count(), 1);
    EXPECT_EQ(store->spinFlag, 0u);
    store->tlsIndex = TlsAlloc();
    EXPECT_EQ(store->tlsIndex, index);
}

TEST_F(ResultStore, AnEmptyHandleIsAValueError) {
    const XXloperPtr value = XXloperFromInt(1);
    static_cast<void>(StoreThreadResult(value));
    ExpectValueError(StoreThreadResult({}));
    EXPECT_EQ(value.use_count(), 1);
}

}  // namespace
