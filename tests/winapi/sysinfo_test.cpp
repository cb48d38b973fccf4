#include <windows.h>

#include <bit>
#include <thread>

#include <gtest/gtest.h>

namespace {

TEST(SystemInfo, SaysWhatTheProcessRunsOn) {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    const WORD expected = sizeof(void*) == 8 ? PROCESSOR_ARCHITECTURE_AMD64 : PROCESSOR_ARCHITECTURE_INTEL;
    EXPECT_EQ(info.wProcessorArchitecture, expected);
    EXPECT_EQ(info.dwPageSize, 4096U);
    EXPECT_EQ(info.dwAllocationGranularity, 65536U);
    EXPECT_EQ(info.dwNumberOfProcessors, std::thread::hardware_concurrency());
    EXPECT_EQ(static_cast<DWORD>(std::popcount(info.dwActiveProcessorMask)), info.dwNumberOfProcessors);
    EXPECT_LT(info.lpMinimumApplicationAddress, static_cast<void*>(&info));
    EXPECT_GT(info.lpMaximumApplicationAddress, static_cast<void*>(&info));
}

TEST(SystemInfo, ThreadsAndTheProcessHaveNumbers) {
    const DWORD own = GetCurrentThreadId();
    DWORD other = own;
    DWORD process = 0;
    std::thread([&] {
        other = GetCurrentThreadId();
        process = GetCurrentProcessId();
    }).join();
    EXPECT_NE(own, other);
    EXPECT_EQ(process, GetCurrentProcessId());
}

}  // namespace
