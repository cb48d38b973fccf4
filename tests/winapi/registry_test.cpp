#include "support/registry.h"

#include <windows.h>

#include <processenv.h>
#include <winreg.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

class Registry : public testing::Test {
  protected:
    ~Registry() override { RegCloseKey(key); }

    static HKEY Create(HKEY parent, const WCHAR* path, REGSAM access = KEY_ALL_ACCESS) {
        HKEY created = nullptr;
        EXPECT_EQ(RegCreateKeyExW(parent, path, 0, nullptr, 0, access, nullptr, &created, nullptr), 0);
        return created;
    }
    LSTATUS Set(const WCHAR* name, DWORD kind, std::string_view data) const {
        return RegSetValueExW(key, name, 0, kind, reinterpret_cast<const BYTE*>(data.data()),
                              static_cast<DWORD>(data.size()));
    }
    LSTATUS Open(HKEY parent, const WCHAR* path) {
        HKEY opened = nullptr;
        const LSTATUS result = RegOpenKeyExW(parent, path, 0, KEY_READ, &opened);
        if (result == 0) RegCloseKey(opened);
        return result;
    }

    support::FreshRegistry registry;
    const HKEY key = Create(HKEY_CURRENT_USER, TEXT("Software\\Some\\Key"));
};

TEST_F(Registry, KeysAreMadeWithTheirParentsAndFoundInAnyCase) {
    HKEY again = nullptr;
    DWORD disposition = 0;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, TEXT("SOFTWARE\\some"), 0, nullptr, 0, KEY_READ, nullptr,
                              &again, &disposition),
              0);
    EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
    RegCloseKey(Create(again, TEXT("\u00E9t\u00E9\\a")));
    const struct {
        HKEY parent;
        const WCHAR* path;
        LSTATUS result;
    } rows[] = {
        {again, TEXT("\u00C9T\u00C9\\A\\"), 0},
        {again, nullptr, 0},
        {again, TEXT("none"), ERROR_FILE_NOT_FOUND},
        {again, TEXT("none\\a"), ERROR_FILE_NOT_FOUND},
        {again, TEXT("Key\\a"), ERROR_FILE_NOT_FOUND},
        {HKEY_LOCAL_MACHINE, TEXT("Software\\Some"), ERROR_FILE_NOT_FOUND},
        {reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x7FFFFFF0)), TEXT("a"), ERROR_INVALID_HANDLE},
    };
    for (const auto& row : rows) EXPECT_EQ(Open(row.parent, row.path), row.result) << row.result;
    EXPECT_EQ(RegOpenKeyExW(again, TEXT("Key"), 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
    RegCloseKey(again);
    EXPECT_EQ(Open(again, nullptr), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(again), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), 0);
}

TEST_F(Registry, ValuesTellKindAndSizeBeforeTheirData) {
    ASSERT_EQ(Set(TEXT("Value"), 77, "\x01\x02\x03"), 0);
    DWORD kind = 0, size = 2;
    BYTE data[4] = {9, 9, 9, 9};
    const auto query = [&](const WCHAR* name, BYTE* buffer, DWORD* bytes) {
        return RegQueryValueExW(key, name, nullptr, &kind, buffer, bytes);
    };
    EXPECT_EQ(query(TEXT("vALUE"), data, &size), ERROR_MORE_DATA);
    EXPECT_EQ(kind, 77U);
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(query(TEXT("Value"), nullptr, nullptr), 0);
    EXPECT_EQ(query(TEXT("Value"), data, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(data[0], 9);
    size = 4;
    EXPECT_EQ(query(TEXT("Value"), data, &size), 0);
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(std::string(data, data + 4), "\x01\x02\x03\x09");
    EXPECT_EQ(query(nullptr, nullptr, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Set(nullptr, REG_DWORD, ""), 0);
    EXPECT_EQ(query(TEXT(""), nullptr, &size), 0) << "null and empty are one name";
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(RegDeleteValueW(key, TEXT("VALUE")), 0);
    EXPECT_EQ(RegDeleteValueW(key, TEXT("VALUE")), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, EnumerationTellsEachNameOnceInItsOwnCase) {
    for (const WCHAR* name : {TEXT("b"), TEXT("Dee"), TEXT("A")}) {
        Set(name, REG_SZ, "");
        RegCloseKey(Create(key, name));
    }
    Set(TEXT("B"), REG_BINARY, "12345");
    DWORD subkeys = 0, longestSubkey = 0, values = 0, longestName = 0, longestData = 0;
    FILETIME written{};
    EXPECT_EQ(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, &longestSubkey, nullptr, &values,
                               &longestName, &longestData, nullptr, &written),
              0);
    EXPECT_EQ((std::vector{subkeys, longestSubkey, values, longestName, longestData}),
              (std::vector<DWORD>{3, 3, 3, 3, 5}));
    EXPECT_GT(written.dwHighDateTime, 0x01D00000U) << "after 2014";

    std::vector<Wide> valueNames, keyNames;
    const auto collect = [](std::vector<Wide>& names, auto call) {
        for (DWORD index = 0;; ++index) {
            WCHAR name[4];
            DWORD size = 4;
            const LSTATUS result = call(index, name, &size);
            if (result != 0) return result;
            names.emplace_back(name, size);
        }
    };
    const auto value = [&](DWORD index, WCHAR* name, DWORD* size) {
        return RegEnumValueW(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
    };
    const auto subkey = [&](DWORD index, WCHAR* name, DWORD* size) {
        return RegEnumKeyExW(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(collect(valueNames, value), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(collect(keyNames, subkey), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(keyNames, (std::vector<Wide>{TEXT("A"), TEXT("b"), TEXT("Dee")}));
    std::sort(valueNames.begin(), valueNames.end());
    EXPECT_EQ(valueNames, (std::vector<Wide>{TEXT("A"), TEXT("Dee"), TEXT("b")}));
    WCHAR name[4];
    DWORD size = 3;
    EXPECT_EQ(subkey(2, name, &size), ERROR_MORE_DATA);
}

TEST_F(Registry, HandlesKeepToTheirRightsAndEndWithTheirKey) {
    const HKEY reader = Create(HKEY_CURRENT_USER, TEXT("Software\\Some\\Key"), KEY_READ);
    EXPECT_EQ(RegSetValueExW(reader, TEXT("a"), 0, REG_SZ, nullptr, 0), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueW(reader, TEXT("a")), ERROR_ACCESS_DENIED);
    const HKEY writer = Create(HKEY_CURRENT_USER, TEXT("Software\\Some\\Key"), KEY_WRITE);
    EXPECT_EQ(RegQueryValueExW(writer, TEXT("a"), nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
    RegCloseKey(writer);

    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("Software\\None")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("Software\\Some")), 0);
    EXPECT_EQ(Open(HKEY_CURRENT_USER, TEXT("Software\\Some")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegQueryValueExW(reader, TEXT("a"), nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(Set(TEXT("a"), REG_SZ, ""), ERROR_KEY_DELETED);
    RegCloseKey(reader);
}

TEST(Environment, VariablesAreExpandedWhereTheyAreSet) {
    const support::EnvironmentVariable variable("KESTROLUMEN_TEST", "value");
    const struct {
        const WCHAR* source;
        const WCHAR* expanded;
    } rows[] = {
        {TEXT(""), TEXT("")},
        {TEXT("100%"), TEXT("100%")},
        {TEXT("%KESTROLUMEN_TEST%"), TEXT("value")},
        {TEXT("a%KESTROLUMEN_TEST%\\%KESTROLUMEN_NONE%"), TEXT("avalue\\%KESTROLUMEN_NONE%")},
        {TEXT("1% 2%%KESTROLUMEN_TEST%"), TEXT("1% 2%value")},
    };
    for (const auto& row : rows) {
        WCHAR buffer[100] = {};
        const auto size = static_cast<DWORD>(Wide(row.expanded).size() + 1);
        EXPECT_EQ(ExpandEnvironmentStringsW(row.source, buffer, 100), size);
        EXPECT_EQ(Wide(buffer), row.expanded);
        EXPECT_GE(ExpandEnvironmentStringsW(row.source, buffer, size - 1), size) << "tells what it needs";
    }
}

}  // namespace
