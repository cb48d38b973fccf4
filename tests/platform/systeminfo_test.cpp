#include "platform/systeminfo.h"

#include "platform/registrykey.h"
#include "platform/securityattributes.h"
#include "support/registry.h"
#include "support/window.h"

#include <windows.h>
#include <fileapi.h>

#include <string_view>
#include <thread>

#include <gtest/gtest.h>

namespace {

TEST(OsVersion, NamesFollowTheirTable) {
    const struct {
        const char* name;
        DWORD major, minor;
        BYTE product;
        bool is64Bit = false, isServerR2 = false;
        WORD suite = 0;
        const WCHAR* servicePack = TEXT("");
    } rows[] = {
        {"Windows 10, 64 bit", 10, 7, 3, true},
        {"Windows 10, 32 bit", 6, 4, 1},
        {"Windows 8.1, 32 bit", 6, 3, 1, false, true},
        {"Windows 8, 32 bit", 6, 2, 1},
        {"Windows 7 (Service Pack 1), 64 bit", 6, 1, 1, true, false, 0, TEXT("Service Pack 1")},
        {"Windows Vista, 32 bit", 6, 5, 1},
        {"Windows Server 2012 R2, 64 bit", 6, 4, 3, true},
        {"Windows Server 2012, 64 bit", 6, 2, 2, true},
        {"Windows Server 2008 R2, 64 bit", 6, 1, 3, true},
        {"Windows Server 2008, 64 bit", 6, 0, 3, true},
        {"Windows Server 2003 R2, 64 bit", 5, 2, 1, true, true, 0x8000},
        {"Windows Home Server, 64 bit", 5, 2, 1, true, false, 0x8000},
        {"Windows XP Profession x64 Edition, 64 bit", 5, 2, 1, true},
        {"Windows Server 2003, 32 bit", 5, 2, 1},
        {"Windows XP, 32 bit", 5, 1, 1},
        {"Windows 2000, 32 bit", 5, 0, 3},
        {"Windows 4.0, 32 bit", 4, 0, 1},
    };
    for (const auto& row : rows) {
        OSVERSIONINFOEXW version{};
        version.dwMajorVersion = row.major;
        version.dwMinorVersion = row.minor;
        version.wProductType = row.product;
        version.wSuiteMask = row.suite;
        StdWString(row.servicePack).copy(version.szCSDVersion, 127);
        EXPECT_EQ(kestrolumen::detail::OsNameOf(version, row.is64Bit, row.isServerR2), row.name);
    }
}

TEST(Cpu, FeaturesFollowTheirBits) {
    constexpr std::uint32_t fma = 1U << 12, both = 3U << 27, sse2 = 1U << 26, avx2 = 1U << 5;
    const struct {
        kestrolumen::detail::CpuRegisters registers;
        kestrolumen::detail::CpuFeatures features;
    } rows[] = {
        {{"GenuineIntel", both | fma, sse2, avx2, 6}, {true, true, true, true}},
        {{"GenuineIntel", both, 0, avx2, 4}, {false, true, true, false}},
        {{"GenuineIntel", both | fma, 0, ~avx2, 2}, {false, true, false, true}},
        {{"GenuineIntel", both | fma, sse2, avx2, 1}, {true, false, false, false}},
        {{"GenuineIntel", 1U << 28, sse2, avx2, 7}, {true, false, false, false}},
        {{"GenuineIntel", 1U << 27, sse2, avx2, 7}, {true, false, false, false}},
        {{"AuthenticAMD", both | fma, sse2, avx2, 7}, {true, false, false, false}},
    };
    for (const auto& row : rows) EXPECT_EQ(kestrolumen::detail::FeaturesOf(row.registers), row.features);
#if defined(__x86_64__) || defined(__i386__)
    EXPECT_EQ(CpuVendor().size(), 12U);
    EXPECT_EQ(CpuHasSse2(), __builtin_cpu_supports("sse2") != 0);
    const bool isIntel = __builtin_cpu_is("intel") != 0;
    EXPECT_EQ(CpuHasAvx(), isIntel && __builtin_cpu_supports("avx") != 0);
    EXPECT_EQ(CpuHasAvx2(), isIntel && __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ(CpuHasFma(), isIntel && __builtin_cpu_supports("fma") != 0);
#endif
}

class Settings : public testing::Test {
  protected:
    template <typename Value>
    static void Set(HKEY root, const WCHAR* subkey, const WCHAR* name, const Value& value) {
        RegistryKey(1, root, subkey, KEY_ALL_ACCESS, NullSecurityAttributes().get()).ValueWrite(name, value);
    }
    support::FreshRegistry registry;
};

TEST_F(Settings, StandInForTheProcessorsThatTheSystemCounts) {
    const ProcessorCount counted = ProcessorCounts(false);
    EXPECT_GE(counted.logicalProcessors, std::thread::hardware_concurrency());
    EXPECT_EQ(counted.logicalProcessors % counted.cores, 0U);
    EXPECT_EQ(ProcessorCounts(true), counted);
    const struct {
        HKEY root;
        const WCHAR* name;
        std::uint32_t value, expected;
    } rows[] = {
        {HKEY_CURRENT_USER, TEXT("NumCores"), 0, 0},  {HKEY_LOCAL_MACHINE, TEXT("NumCpus"), 4, 4},
        {HKEY_LOCAL_MACHINE, TEXT("NumCores"), 5, 5}, {HKEY_CURRENT_USER, TEXT("NumCpus"), 6, 6},
        {HKEY_CURRENT_USER, TEXT("NumCores"), 7, 7},
    };
    for (const auto& row : rows) {
        Set(row.root, TEXT("Software\\Quillmar"), row.name, row.value);
        EXPECT_EQ(ProcessorCounts(true),
                  row.expected == 0 ? counted : (ProcessorCount{row.expected, row.expected}));
    }
    Set(HKEY_CURRENT_USER, TEXT("Software\\Quillmar"), TEXT("NumCores"), CStringW(TEXT("8")));
    EXPECT_EQ(ProcessorCounts(true).cores, 6U) << "text counts as absent";
    EXPECT_EQ(ProcessorCounts(false), counted);
}

TEST_F(Settings, TellTheTabletModeAndTheNameOfTheMachine) {
    const WCHAR* const shell = TEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ImmersiveShell");
    EXPECT_FALSE(IsTabletMode());
    Set(HKEY_CURRENT_USER, shell, TEXT("TabletMode"), 2);
    EXPECT_TRUE(IsTabletMode());
    Set(HKEY_CURRENT_USER, shell, TEXT("TabletMode"), std::int64_t{1});
    EXPECT_FALSE(IsTabletMode());

    const WCHAR* const names = TEXT("SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName");
    EXPECT_EQ(kestrolumen::detail::RegisteredComputerName(), TEXT(""));
    Set(HKEY_LOCAL_MACHINE, names, TEXT("ComputerName"), CStringW(TEXT("ODD")));
    EXPECT_EQ(kestrolumen::detail::RegisteredComputerName(), TEXT("ODD"));
    Set(HKEY_LOCAL_MACHINE, names, TEXT("ComputerName"), 1);
    EXPECT_EQ(kestrolumen::detail::RegisteredComputerName(), TEXT(""));
}

// The types of drives C:, D: and Z:, all others being unknown.
UINT drives[3];
UINT WINAPI TypeOfDrive(LPCSTR root) {
    EXPECT_STREQ(root + 1, ":\\");
    const std::size_t place = std::string_view("CDZ").find(root[0]);
    return place < std::size(drives) ? drives[place] : UINT{DRIVE_NO_ROOT_DIR};
}

TEST(SystemFacts, TheDriveThatCountsIsTheFirstFixedOneOrElseOneOfANetwork) {
    constexpr UINT removable = 2, compactDisc = 5;
    const struct {
        UINT c, d, z;
        char drive;
    } rows[] = {{DRIVE_FIXED, DRIVE_FIXED, DRIVE_FIXED, 'C'},
                {DRIVE_REMOTE, compactDisc, DRIVE_FIXED, 'Z'},
                {compactDisc, DRIVE_REMOTE, DRIVE_REMOTE, 'D'},
                {removable, compactDisc, removable, 0}};
    for (const auto& row : rows) {
        drives[0] = row.c;
        drives[1] = row.d;
        drives[2] = row.z;
        EXPECT_EQ(kestrolumen::detail::SystemDrive(&TypeOfDrive), row.drive);
    }
    const char root[] = {kestrolumen::detail::SystemDrive(&GetDriveTypeA), ':', '\\', 0};
    DWORD serial = 0;
    GetVolumeInformationA(root, nullptr, 0, &serial, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(SystemVolumeSerial(), serial);
}

TEST(SystemFacts, AgreeWithOneAnother) {
    EXPECT_GT(MemoryStatus().ullTotalPhys, MemoryStatus().ullAvailPhys);
    EXPECT_EQ(NativeSystemInfo().wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64, Is64BitWindows());
    EXPECT_LE(SystemInfo().dwNumberOfProcessors, ProcessorCounts(false).logicalProcessors);
    EXPECT_EQ(ComputerName(false, true), ComputerName(true, false) + TEXT("-") + UserName(true));
    EXPECT_FALSE(UserName(false).IsEmpty());
    EXPECT_FALSE(IsExcelRunning());
    const support::TestWindow excel(TEXT("XLMAIN"), nullptr, nullptr);
    EXPECT_EQ(IsExcelRunning(), excel.get() != nullptr) << "without a screen there is no window";
}

}  // namespace
