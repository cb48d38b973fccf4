#include <windows.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr int threadCount = 8;

// Runs `body` with the numbers 0 to threadCount - 1 on as many threads, all at once.
template <class Body>
void OnThreads(Body body) {
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number) threads.emplace_back(body, number);
    for (std::thread& thread : threads) thread.join();
}

TEST(Tls, AFreshIndexReadsNullAndThatIsNoFailure) {
    const DWORD index = TlsAlloc();
    ASSERT_NE(index, TLS_OUT_OF_INDEXES);
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(TlsGetValue(index), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    int target = 0;
    EXPECT_TRUE(TlsSetValue(index, &target));
    EXPECT_EQ(TlsGetValue(index), &target);
    EXPECT_TRUE(TlsFree(index));
}

TEST(Tls, EachThreadHasItsOwnValue) {
    const DWORD index = TlsAlloc();
    std::vector<int> targets(threadCount);
    std::barrier allHaveStored(threadCount);
    std::atomic<int> right = 0;
    OnThreads([&](int number) {
        int* const own = &targets[static_cast<std::size_t>(number)];
        const bool startedNull = TlsGetValue(index) == nullptr;
        TlsSetValue(index, own);
        allHaveStored.arrive_and_wait();
        if (startedNull && TlsGetValue(index) == own) ++right;
    });
    EXPECT_EQ(right, threadCount);
    EXPECT_EQ(TlsGetValue(index), nullptr);
    TlsFree(index);
}

TEST(Tls, AReusedIndexReadsNullOnEveryThread) {
    const DWORD index = TlsAlloc();
    int target = 0;
    std::barrier step(threadCount + 1);
    std::atomic<int> forgotten = 0;
    std::thread owner([&] {
        step.arrive_and_wait();  // all have stored
        TlsFree(index);
        EXPECT_EQ(TlsAlloc(), index) << "the lowest free index is handed out";
        step.arrive_and_wait();
    });
    OnThreads([&](int) {
        TlsSetValue(index, &target);
        step.arrive_and_wait();
        step.arrive_and_wait();
        if (TlsGetValue(index) == nullptr) ++forgotten;
    });
    owner.join();
    EXPECT_EQ(forgotten, threadCount);
    TlsFree(index);
}

TEST(Tls, WhatIsNoIndexIsRefused) {
    for (const DWORD index : {DWORD{5000}, DWORD{TLS_OUT_OF_INDEXES}}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(TlsGetValue(index), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(TlsSetValue(index, nullptr));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
        EXPECT_FALSE(TlsFree(index));
    }
    const DWORD index = TlsAlloc();
    EXPECT_TRUE(TlsFree(index));
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(TlsFree(index)) << "freed twice";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(Tls, IndexesRunOutAndComeBack) {
    std::vector<DWORD> indexes;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) indexes.push_back(index);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_ITEMS});
    EXPECT_GT(indexes.size(), 1000U);
    EXPECT_EQ(std::set<DWORD>(indexes.begin(), indexes.end()).size(), indexes.size());

    int target = 0;
    EXPECT_TRUE(TlsSetValue(indexes.back(), &target)) << "the highest index stores too";
    EXPECT_EQ(TlsGetValue(indexes.back()), &target);
    for (const DWORD index : indexes) EXPECT_TRUE(TlsFree(index));
    const DWORD again = TlsAlloc();
    EXPECT_EQ(again, indexes.front());
    TlsFree(again);
}

TEST(Tls, ThreadsThatAllocateAtOnceNeverShareAnIndex) {
    std::mutex mutex;
    std::multiset<DWORD> inUse;
    std::atomic<int> shared = 0;
    OnThreads([&](int number) {
        for (int round = 0; round < 200; ++round) {
            const DWORD index = TlsAlloc();
            TlsSetValue(index, &number);
            {
                const std::lock_guard lock(mutex);
                inUse.insert(index);
                if (inUse.count(index) != 1) ++shared;
            }
            if (TlsGetValue(index) != &number) ++shared;
            {
                const std::lock_guard lock(mutex);
                inUse.erase(index);
            }
            TlsFree(index);
        }
    });
    EXPECT_EQ(shared, 0);
}

}  // namespace
