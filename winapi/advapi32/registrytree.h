// The registry in memory: keys by their paths, and values in them.
#pragma once

#include "winapi/types.h"

#include <array>
#include <cstdint>
#include <map>
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
    std::u16string path;          // in the case of its making
    std::uint64_t lastWrite = 0;  // in the steps of a FILETIME
    std::vector<RegistryValue> values;

    // Where the value is, or the end.
    [[nodiscard]] std::vector<RegistryValue>::iterator FindValue(std::u16string_view name);
    void SetValue(RegistryValue value);

    friend bool operator==(const RegistryNode&, const RegistryNode&) = default;
};

struct Registry {
    std::map<std::u16string, RegistryNode> nodes;  // by their paths, upper-cased

    Registry();  // of the roots alone

    // Null when there is none.
    [[nodiscard]] RegistryNode* Find(std::u16string_view path);
    // In the order of their names, upper-cased.
    [[nodiscard]] std::vector<const RegistryNode*> Subkeys(std::u16string_view path) const;
    // The key at a path, which is made where it is missing, at the time `now`. Null for no path, a name of more
    // than 255 units and more than 512 names.
    [[nodiscard]] RegistryNode* Make(std::u16string_view path, std::uint64_t now);
    // Deletes the key at a path below a root, and all below it; false when there is none.
    bool Delete(std::u16string_view path, std::uint64_t now);
    void DeleteBelow(std::u16string_view path);

    friend bool operator==(const Registry&, const Registry&) = default;
};

// `below` behind `path`, without empty names, as between two backslashes: they mean nothing.
[[nodiscard]] std::u16string JoinedPath(std::u16string path, std::u16string_view below);

}  // namespace winapi
