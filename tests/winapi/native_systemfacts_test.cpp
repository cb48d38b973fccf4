// The machine's facts beside what Linux tells of them by other ways.
#include <windows.h>

#include <sysinfoapi.h>
#include <winbase.h>

#include <bit>

#include <sys/sysinfo.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

TEST(SystemFacts, AreTheMachines) {
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof memory;
    ASSERT_TRUE(GlobalMemoryStatusEx(&memory));
    struct sysinfo facts {};
    sysinfo(&facts);
    const auto unit = std::uint64_t{facts.mem_unit};
    EXPECT_EQ(memory.ullTotalPhys >> 20, facts.totalram * unit >> 20);

    SYSTEM_LOGICAL_PROCESSOR_INFORMATION cores[64];
    DWORD size = sizeof cores;
    ASSERT_TRUE(GetLogicalProcessorInformation(cores, &size));
    ULONG_PTR seen = 0;
    for (DWORD i = 0; i < size / sizeof cores[0]; ++i) {
        EXPECT_EQ(seen & cores[i].ProcessorMask, 0U) << "no processor belongs to two cores";
        seen |= cores[i].ProcessorMask;
    }
    EXPECT_EQ(std::popcount(seen), sysconf(_SC_NPROCESSORS_ONLN));

    WCHAR buffer[257];
    DWORD tiny = 1, machine = 257, user = 257;
    EXPECT_TRUE(GetComputerNameW(buffer, &machine));
    EXPECT_FALSE(GetComputerNameW(buffer, &tiny));
    EXPECT_EQ(tiny, machine + 1);
    EXPECT_TRUE(GetUserNameW(buffer, &user));
    EXPECT_EQ(std::u16string_view(buffer).size() + 1, user) << "the user's counts the terminator";
}

}  // namespace
