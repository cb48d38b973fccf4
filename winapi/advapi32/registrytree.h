// The registry in memory: keys below keys, and values in them.
#pragma once

#include "winapi/types.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace winapi {

// The keys at the top, which are always there, in the order of their handles; an empty name has none.
inline constexpr std::array<std::u16string_view, 6> registryRoots = {u"HKEY_CLASSES_ROOT",
                                                                     u"HKEY_CURRENT_USER",
                                                                     u"HKEY_LOCAL_MACHINE",
                                                                     u"HKEY_USERS",
                                                                     u"",  // HKEY_PERFORMANCE_DATA
                                                                     u"HKEY_CURRENT_CONFIG"};

struct RegistryValue {
    std::u16string name;
    DWORD kind;
    std::vector<BYTE> data;

    friend bool operator==(const RegistryValue&, const RegistryValue&) = default;
};

struct RegistryNode {
    std::u16string name;
    std::uint64_t lastWrite = 0;  // in the steps of a FILETIME
    std::vector<RegistryValue> values;
    std::vector<RegistryNode> subkeys;  // in the order of their names, upper-cased

    // Null when there is none. Empty names in a path, as between two backslashes, mean nothing.
    [[nodiscard]] const RegistryNode* Find(std::u16string_view path) const noexcept;
    [[nodiscard]] RegistryNode* Find(std::u16string_view path) noexcept;
    [[nodiscard]] const RegistryValue* FindValue(std::u16string_view valueName) const noexcept;

    // The key at a path, which is made where it is missing, at the time `now`. Throws Failure.
    RegistryNode& Make(std::u16string_view path, std::uint64_t now);
    // Deletes the key at a path and all below it; false when there is none.
    bool Delete(std::u16string_view path, std::uint64_t now) noexcept;
    void SetValue(RegistryValue value);

    friend bool operator==(const RegistryNode&, const RegistryNode&) = default;
};

// Whether two names are one to the registry.
[[nodiscard]] bool SameRegistryName(std::u16string_view one, std::u16string_view other) noexcept;

}  // namespace winapi
