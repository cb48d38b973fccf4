#include "platform/folders.h"

#include "errors/vex.h"
#include "platform/modulepaths.h"
#include "platform/moduleusage.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"
#include "support/registry.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

namespace {

TEST(Folders, OfProductsComeFromTheRegistryWithTheirFallbacks) {
    const support::FreshRegistry registry;
    const auto set = [](const char* subkey, const WCHAR* name, const CStringW& value) {
        RegistryKey(1, HKEY_LOCAL_MACHINE, CStringW("Software\\Quillmar") + CStringW(subkey), KEY_ALL_ACCESS,
                    NullSecurityAttributes().get())
            .ValueWrite(name, value);
    };
    const WCHAR* const program = TEXT("Program Directory");
    EXPECT_EQ(OmbrageProgramDirectory(7), TEXT("C:\\"));
    EXPECT_THROW(static_cast<void>(QuillmarSystemDirectory()), VexRegKeyOpenFailed);
    set("\\Ombrage for Excel\\7.0", program, TEXT("E:\\O"));
    set("\\Tallyhost", program, TEXT("D:\\T\\"));
    EXPECT_EQ(OmbrageProgramDirectory(7), TEXT("E:\\O\\"));
    EXPECT_EQ(OmbrageProgramDirectory(-7), TEXT("C:\\"));
    EXPECT_EQ(TallyhostProgramDirectory(), TEXT("D:\\T\\"));
    EXPECT_THROW(static_cast<void>(QuillmarSystemDirectory()), VexRegValueReadFailed);
    set("", TEXT("System Directory"), TEXT(""));
    EXPECT_EQ(QuillmarSystemDirectory(), TEXT("C:\\"));
}

TEST(Folders, OfTheSystemEndAsTheirNamesSay) {
    const support::EnvironmentVariable config("XDG_CONFIG_HOME", support::ProgramFolder().string());
    const char* const windows = std::getenv("APPDATA");
    std::string expected = windows != nullptr ? windows : "Z:" + support::ProgramFolder().string();
    std::replace(expected.begin(), expected.end(), '/', '\\');
    EXPECT_EQ(AppDataDirectory(), CStringW(expected.c_str()));
    EXPECT_EQ(AppDataDirectorySlash(), AppDataDirectory() + TEXT("\\"));
    EXPECT_EQ(CommonAppDataDirectorySlash(), CommonAppDataDirectory() + TEXT("\\"));
    EXPECT_EQ(CommonAppDataDirectory().Mid(1, 2), TEXT(":\\"));
    EXPECT_EQ(SystemDirectory().Right(1), TEXT("\\"));
    EXPECT_GT(SystemDirectory().GetLength(), 8) << "more than the first buffer holds";
    const support::EnvironmentVariable missing("XDG_CONFIG_HOME", "/no/such/folder");
    EXPECT_TRUE(windows != nullptr || AppDataDirectorySlash() == TEXT("\\"));
}

TEST(ModuleUsage, CountsLoadsByFileNameAlone) {
    const CStringW name = TEXT("ProbeModule.dll");
    EXPECT_EQ(ModuleUsageCount(name), -1);
    const HMODULE module = LoadLibraryW(name.GetString());
    const std::int32_t once = ModuleUsageCount(name);
    const bool counts = once != 0xFFFF;  // Wine gives that for every module
    EXPECT_EQ(once, counts ? 1 : 0xFFFF);
    EXPECT_EQ(LoadLibraryW(name.GetString()), module);
    EXPECT_EQ(ModuleUsageCount(TEXT("pROBEmODULE.DLL")), counts ? 2 : 0xFFFF);
    EXPECT_EQ(ModuleUsageCount(GetModulePath(module)), -1) << "a path is no name";
    FreeLibrary(module);
    FreeLibrary(module);
    EXPECT_EQ(ModuleUsageCount(name), -1);
}

}  // namespace
