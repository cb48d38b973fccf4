#include "platform/folders.h"

#include "errors/vex.h"
#include "platform/moduleusage.h"
#include "platform/modulepaths.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"
#include "support/registry.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

namespace {

void SetMachine(const WCHAR* subkey, const WCHAR* name, const CStringW& value, DWORD kind = REG_SZ) {
    const RegistryKey key(1, HKEY_LOCAL_MACHINE, subkey, KEY_ALL_ACCESS, NullSecurityAttributes().get());
    EXPECT_EQ(RegSetValueExW(key.key(), name, 0, kind, reinterpret_cast<const BYTE*>(value.GetString()),
                             static_cast<DWORD>(value.GetLength() + 1) * 2),
              0);
}

TEST(Folders, OfProductsComeFromTheRegistryWithTheirFallbacks) {
    const support::FreshRegistry registry;
    const support::EnvironmentVariable variable("KESTROLUMEN_TEST", "D:\\Tally");
    EXPECT_EQ(OmbrageProgramDirectory(7), TEXT("C:\\"));
    EXPECT_THROW(static_cast<void>(QuillmarSystemDirectory()), VexRegKeyOpenFailed);
    SetMachine(TEXT("Software\\Quillmar\\Ombrage for Excel\\7.0"), TEXT("Program Directory"), TEXT("E:\\O"));
    SetMachine(TEXT("Software\\Quillmar\\Tallyhost"), TEXT("Program Directory"), TEXT("%KESTROLUMEN_TEST%\\"),
               REG_EXPAND_SZ);
    EXPECT_EQ(OmbrageProgramDirectory(7), TEXT("E:\\O\\"));
    EXPECT_EQ(OmbrageProgramDirectory(-7), TEXT("C:\\"));
    EXPECT_EQ(TallyhostProgramDirectory(), TEXT("D:\\Tally\\"));
    EXPECT_THROW(static_cast<void>(QuillmarSystemDirectory()), VexRegValueReadFailed);
    SetMachine(TEXT("Software\\Quillmar"), TEXT("System Directory"), TEXT(""));
    EXPECT_EQ(QuillmarSystemDirectory(), TEXT("C:\\"));
    SetMachine(TEXT("Software\\Quillmar\\Tallyhost"), TEXT("Program Directory"), TEXT("x"), REG_BINARY);
    EXPECT_EQ(TallyhostProgramDirectory(), TEXT("C:\\"));
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
    EXPECT_EQ(SystemDirectory(), AddTrailingBackslash(SystemDirectory().GetString()));
    EXPECT_GT(SystemDirectory().GetLength(), 8);
    if (windows == nullptr) {
        const support::EnvironmentVariable missing("XDG_CONFIG_HOME", "/no/such/folder");
        EXPECT_EQ(AppDataDirectorySlash(), TEXT("\\"));
    }
}

TEST(ModuleUsage, CountsLoadsByFileNameAlone) {
    const CStringW name = TEXT("ProbeModule.dll");
    EXPECT_EQ(ModuleUsageCount(name), -1);
    const HMODULE module = LoadLibraryW(name.GetString());
    const std::int32_t once = ModuleUsageCount(name);
    EXPECT_GE(once, 1);
    EXPECT_EQ(LoadLibraryW(name.GetString()), module);
    EXPECT_EQ(ModuleUsageCount(TEXT("pROBEmODULE.DLL")), once + 1);
    EXPECT_EQ(ModuleUsageCount(GetModulePath(module)), -1) << "a path is no name";
    CStringW ownName;
    GetModulePathParts(nullptr, nullptr, nullptr, &ownName);
    EXPECT_GT(ModuleUsageCount(ownName), 0);
    FreeLibrary(module);
    FreeLibrary(module);
    EXPECT_EQ(ModuleUsageCount(name), -1);
}

}  // namespace
