#include <windows.h>

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

Wide PathOf(HMODULE module) {
    WCHAR path[2048] = {};
    const DWORD length = GetModuleFileNameW(module, path, 2048);
    EXPECT_EQ(Wide(path).size(), length);
    return path;
}

Wide Folder() {
    const Wide path = PathOf(nullptr);
    return path.substr(0, path.rfind(TEXT('\\')) + 1);
}

// Loads the module for the length of a test.
class Probe : public testing::Test {
  protected:
    ~Probe() override { FreeLibrary(handle); }

    template <class Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(handle, name)));
    }

    const Wide path = Folder() + TEXT("ProbeModule.dll");
    const HMODULE handle = LoadLibraryW(path.c_str());
};

TEST(Modules, WhatIsNoModuleIsRefused) {
    int onTheStack = 0;
    const auto none = reinterpret_cast<HMODULE>(&onTheStack);
    WCHAR path[300];
    EXPECT_EQ(GetModuleFileNameW(none, path, 300), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_FALSE(FreeLibrary(none));
    for (const WCHAR* name : {TEXT("NoSuchModule"), TEXT("Z:\\no\\such.dll"), TEXT("")}) {
        EXPECT_EQ(GetModuleHandleW(name), nullptr);
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(LoadLibraryW(name), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    }
    EXPECT_EQ(LoadLibraryW(TEXT("Z:\\etc\\passwd.")), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
}

TEST_F(Probe, IsFoundByNameAndByPathWithItsOwnExportsOnly) {
    ASSERT_NE(handle, nullptr) << GetLastError();
    Wide slashes = path;
    std::replace(slashes.begin(), slashes.end(), TEXT('\\'), TEXT('/'));
    for (const Wide& name : {Wide(TEXT("ProbeModule.dll")), Wide(TEXT("ProbeModule")),
                             Wide(TEXT("pRObemODULE.DLL")), path, Folder() + TEXT("probemodule"), slashes}) {
        EXPECT_EQ(GetModuleHandleW(name.c_str()), handle) << testing::PrintToString(name);
    }
    EXPECT_EQ(GetModuleHandleW(TEXT("ProbeModule.")), nullptr) << "a trailing point means no extension";
    EXPECT_EQ(GetModuleHandleW(TEXT("Z:\\ProbeModule.dll")), nullptr) << "another folder";
    EXPECT_EQ(Find<int()>("ProbeAnswer")(), 42);
    // malloc is there in a library that the module uses; names are case-sensitive.
    for (const char* name : {"malloc", "probeanswer", ""}) EXPECT_EQ(GetProcAddress(handle, name), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
}

TEST_F(Probe, IsToldOfItsLoadAndUnloadedAtTheLastFree) {
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(Find<HMODULE()>("ProbeHandle")(), handle);
    int unloads = 0;
    Find<void(int*)>("ProbeCountUnloads")(&unloads);
    EXPECT_EQ(LoadLibraryW(TEXT("probemodule")), handle) << "a loaded module by its name alone";
    EXPECT_TRUE(FreeLibrary(handle));
    EXPECT_EQ(unloads, 0);
    EXPECT_TRUE(FreeLibrary(handle));
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(GetModuleHandleW(TEXT("ProbeModule")), nullptr);
    EXPECT_FALSE(FreeLibrary(handle));
    ASSERT_NE(LoadLibraryW(TEXT("ProbeModule")), nullptr) << "found beside the program; the fixture frees it";
}

}  // namespace
