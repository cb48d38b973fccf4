#include <windows.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

Wide PathOf(HMODULE module) {
    WCHAR path[2048] = {};
    const DWORD length = GetModuleFileNameW(module, path, 2048);
    EXPECT_EQ(Wide(path).size(), length);
    return path;
}

Wide FolderOf(const Wide& path) {
    return path.substr(0, path.rfind(TEXT('\\')) + 1);
}

Wide InOtherCase(Wide text) {
    for (WCHAR& unit : text) {
        const bool upper = unit >= TEXT('A') && unit <= TEXT('Z'),
                   lower = unit >= TEXT('a') && unit <= TEXT('z');
        if (upper || lower) unit = static_cast<WCHAR>(unit ^ 0x20);
    }
    return text;
}

// Loads the module for the length of a test.
class Probe : public testing::Test {
  protected:
    Probe() : handle(LoadLibraryW(path.c_str())) {}
    ~Probe() override { FreeLibrary(handle); }

    template <class Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(handle, name)));
    }

    const Wide path = FolderOf(PathOf(nullptr)) + TEXT("ProbeModule.dll");
    const HMODULE handle;
};

TEST(Modules, TheExecutableIsTheModuleWithoutAName) {
    const HMODULE executable = GetModuleHandleW(nullptr);
    ASSERT_NE(executable, nullptr);
    EXPECT_EQ(PathOf(executable), PathOf(nullptr));
    const Wide path = PathOf(nullptr);
    EXPECT_TRUE(path.starts_with(TEXT("Z:\\"))) << testing::PrintToString(path);
    EXPECT_EQ(path.find(TEXT('/')), Wide::npos);
    EXPECT_NE(path.find(TEXT("winapi_tests")), Wide::npos);

    Wide fileName = path.substr(path.rfind(TEXT('\\')) + 1);
    if (fileName.find(TEXT('.')) == Wide::npos) fileName += TEXT('.');
    EXPECT_EQ(GetModuleHandleW(fileName.c_str()), executable);
}

TEST(Modules, APathThatDoesNotFitIsCut) {
    const Wide whole = PathOf(nullptr);
    const auto length = static_cast<DWORD>(whole.size());
    for (const DWORD size : {DWORD{1}, DWORD{5}, length}) {
        Wide buffer(length + 2, TEXT('q'));
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), size), size);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(buffer.substr(0, size - 1), whole.substr(0, size - 1));
        EXPECT_EQ(buffer[size], TEXT('q'));
    }
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(GetModuleFileNameW(nullptr, nullptr, 0), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    Wide buffer(length + 1, TEXT('q'));
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), length + 1), length);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
}

TEST(Modules, WhatIsNoModuleIsRefused) {
    int onTheStack = 0;
    const auto none = reinterpret_cast<HMODULE>(&onTheStack);
    WCHAR path[300];
    EXPECT_EQ(GetModuleFileNameW(none, path, 300), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(GetProcAddress(none, "ProbeAnswer"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(FreeLibrary(none));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    for (const WCHAR* name : {TEXT("NoSuchModule"), TEXT("Z:\\no\\such.dll"), TEXT("")}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(GetModuleHandleW(name), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(LoadLibraryW(name), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    }
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(LoadLibraryW(TEXT("Z:\\etc\\passwd.")), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
}

TEST_F(Probe, IsFoundByNameAndByPath) {
    ASSERT_NE(handle, nullptr) << GetLastError();
    EXPECT_EQ(InOtherCase(PathOf(handle)), InOtherCase(path));
    const Wide folder = FolderOf(path);
    Wide slashes = path;
    std::replace(slashes.begin(), slashes.end(), TEXT('\\'), TEXT('/'));
    for (const Wide& name : {Wide(TEXT("ProbeModule.dll")), Wide(TEXT("ProbeModule")),
                             Wide(TEXT("pRObemODULE.DLL")), path, folder + TEXT("probemodule"), slashes}) {
        EXPECT_EQ(GetModuleHandleW(name.c_str()), handle) << testing::PrintToString(name);
    }
    EXPECT_EQ(GetModuleHandleW(TEXT("ProbeModule.")), nullptr) << "a trailing point means no extension";
    EXPECT_EQ(GetModuleHandleW(TEXT("Z:\\ProbeModule.dll")), nullptr) << "another folder";
}

TEST_F(Probe, GivesItsOwnExportsOnly) {
    ASSERT_NE(handle, nullptr);
    auto* answer = Find<int()>("ProbeAnswer");
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    // malloc is there in a library that the module uses; names are case-sensitive.
    for (const char* name : {"malloc", "probeanswer", "NoSuchExport", ""}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(GetProcAddress(handle, name), nullptr) << name;
        EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
    }
    EXPECT_EQ(GetProcAddress(GetModuleHandleW(nullptr), "ProbeAnswer"), nullptr);
    EXPECT_EQ(GetProcAddress(nullptr, "ProbeAnswer"), nullptr);
}

TEST_F(Probe, WasToldOfItsLoadWithItsStaticsBuilt) {
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(Find<HMODULE()>("ProbeHandle")(), handle);
    EXPECT_EQ(Find<int()>("ProbeStaticsWereBuilt")(), 1);
}

TEST_F(Probe, IsUnloadedAtTheLastFree) {
    ASSERT_NE(handle, nullptr);
    int unloads = 0;
    Find<void(int*)>("ProbeCountUnloads")(&unloads);
    EXPECT_EQ(LoadLibraryW(path.c_str()), handle);
    EXPECT_EQ(LoadLibraryW(TEXT("probemodule")), handle) << "a loaded module by its name alone";
    EXPECT_TRUE(FreeLibrary(handle));
    EXPECT_TRUE(FreeLibrary(handle));
    EXPECT_EQ(unloads, 0);
    EXPECT_EQ(GetModuleHandleW(TEXT("ProbeModule")), handle);
    EXPECT_TRUE(FreeLibrary(handle));
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(GetModuleHandleW(TEXT("ProbeModule")), nullptr);
    EXPECT_FALSE(FreeLibrary(handle));
    ASSERT_NE(LoadLibraryW(TEXT("ProbeModule")), nullptr)
        << "found in the program's folder; the fixture frees it";
}

TEST(Modules, ThreadsMayLoadAndLookUpAtOnce) {
    const Wide path = FolderOf(PathOf(nullptr)) + TEXT("ProbeModule.dll");
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                const HMODULE module = LoadLibraryW(path.c_str());
                ASSERT_NE(module, nullptr);
                EXPECT_EQ(GetModuleHandleW(TEXT("ProbeModule")), module);
                EXPECT_NE(GetProcAddress(module, "ProbeAnswer"), nullptr);
                EXPECT_TRUE(FreeLibrary(module));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
