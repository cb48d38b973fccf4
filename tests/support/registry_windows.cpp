#include "support/registry.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace support {
namespace {

std::wstring TestKey() {
    return L"Software\\Kestrolumen test " + std::to_wstring(GetCurrentProcessId());
}

void Lead(HKEY root, const std::wstring& target) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, target.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS ||
        RegOverridePredefKey(root, key) != ERROR_SUCCESS) {
        throw std::runtime_error("a registry for tests");
    }
    RegCloseKey(key);
}

}  // namespace

FreshRegistry::FreshRegistry() : variable_("KESTROLUMEN_REGISTRY", std::nullopt) {
    Lead(HKEY_LOCAL_MACHINE, TestKey() + L"\\machine");
    Lead(HKEY_CURRENT_USER, TestKey() + L"\\user");
}

FreshRegistry::~FreshRegistry() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, TestKey().c_str());
}

}  // namespace support
