#include <windows.h>

#include <barrier>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(Tls, EachThreadHasItsOwnValueAndAReusedIndexReadsNull) {
    const DWORD index = TlsAlloc();
    std::barrier step(8);
    std::once_flag once;
    const auto use = [&] {
        int own = 0;
        SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_EQ(TlsGetValue(index), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS}) << "null is no failure";
        EXPECT_TRUE(TlsSetValue(index, &own));
        step.arrive_and_wait();
        EXPECT_EQ(TlsGetValue(index), &own);
        step.arrive_and_wait();
        std::call_once(once, [&] {
            EXPECT_TRUE(TlsFree(index));
            EXPECT_EQ(TlsAlloc(), index) << "the lowest free index is handed out";
        });
        EXPECT_EQ(TlsGetValue(index), nullptr);
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < 8; ++number) threads.emplace_back(use);
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(TlsFree(index));
}

TEST(Tls, IndexesRunOutAndComeBack) {
    std::set<DWORD> indexes;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        EXPECT_TRUE(indexes.insert(index).second);
    }
    EXPECT_GT(indexes.size(), 1000U);
    for (const DWORD index : indexes) EXPECT_TRUE(TlsFree(index));
}

}  // namespace
