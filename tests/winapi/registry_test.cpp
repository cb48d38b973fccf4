#include "support/registry.h"

#include <windows.h>

#include <winreg.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

HKEY Create(HKEY parent, const WCHAR* path, REGSAM access = KEY_ALL_ACCESS) {
    HKEY created = nullptr;
    EXPECT_EQ(RegCreateKeyExW(parent, path, 0, nullptr, 0, access, nullptr, &created, nullptr), 0);
    return created;
}

LSTATUS Open(HKEY parent, const WCHAR* path) {
    HKEY opened = nullptr;
    const LSTATUS result = RegOpenKeyExW(parent, path, 0, KEY_READ, &opened);
    return result != 0 ? result : RegCloseKey(opened);
}

TEST(Registry, CallsTellWhatTheyCanNotDo) {
    const support::FreshRegistry registry;
    const WCHAR* const path = TEXT("Software\\Some\\Key");
    const HKEY key = Create(HKEY_CURRENT_USER, path), reader = Create(HKEY_CURRENT_USER, path, KEY_READ),
               writer = Create(HKEY_CURRENT_USER, path, KEY_WRITE),
               accented = Create(key, TEXT("\u00E9t\u00E9\\a"));
    BYTE data[4] = {9, 9, 9, 9};
    DWORD kind = 0, two = 2, four = 4;
    WCHAR name[2];
    const auto query = [&](HKEY handle, const WCHAR* value, BYTE* buffer = nullptr, DWORD* size = nullptr) {
        return RegQueryValueExW(handle, value, nullptr, &kind, buffer, size);
    };
    const auto set = [&](HKEY handle, const WCHAR* value) {
        return RegSetValueExW(handle, value, 0, 77, reinterpret_cast<const BYTE*>("\1\2\3"), 3);
    };
    const std::pair<LSTATUS, LSTATUS> calls[] = {
        {Open(key, TEXT("\u00C9T\u00C9\\A\\")), 0},
        {Open(key, nullptr), 0},
        {Open(key, TEXT("none\\a")), ERROR_FILE_NOT_FOUND},
        {Open(HKEY_LOCAL_MACHINE, path), ERROR_FILE_NOT_FOUND},
        {Open(reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x7FFFFFF0)), path), ERROR_INVALID_HANDLE},
        {RegOpenKeyExW(key, path, 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER},
        {set(key, TEXT("Value")), 0},
        {set(reader, TEXT("Value")), ERROR_ACCESS_DENIED},
        {RegDeleteValueW(reader, TEXT("Value")), ERROR_ACCESS_DENIED},
        {query(writer, TEXT("Value")), ERROR_ACCESS_DENIED},
        {query(key, nullptr), ERROR_FILE_NOT_FOUND},
        {set(key, nullptr), 0},
        {query(key, TEXT("")), 0},  // null and empty are one name
        {query(key, TEXT("vALUE"), data, &two), ERROR_MORE_DATA},
        {query(key, TEXT("Value"), data, nullptr), ERROR_INVALID_PARAMETER},
        {query(key, TEXT("Value"), data, &four), 0},
        {RegDeleteValueW(key, TEXT("VALUE")), 0},
        {RegDeleteValueW(key, TEXT("VALUE")), ERROR_FILE_NOT_FOUND},
        {RegEnumKeyExW(key, 0, name, &two, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA},
        {RegEnumKeyExW(key, 1, name, &two, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS},
        {RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("Software\\None")), ERROR_FILE_NOT_FOUND},
        {RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("Software\\Some")), 0},
        {Open(HKEY_CURRENT_USER, TEXT("Software\\Some")), ERROR_FILE_NOT_FOUND},
        {query(reader, TEXT("a")), ERROR_KEY_DELETED},
        {set(key, TEXT("a")), ERROR_KEY_DELETED},
        {Open(key, TEXT("a")), ERROR_KEY_DELETED},
        {RegCloseKey(key) + RegCloseKey(reader) + RegCloseKey(writer) + RegCloseKey(accented), 0},
        {RegCloseKey(key), ERROR_INVALID_HANDLE},
        {RegCloseKey(HKEY_CURRENT_USER), 0},
    };
    for (const auto& call : calls) EXPECT_EQ(call.first, call.second) << "row " << &call - calls;
    EXPECT_EQ(kind, 77U);
    EXPECT_EQ(four, 3U);
    EXPECT_EQ(std::string(data, data + 4), "\1\2\3\x09");
}

}  // namespace
