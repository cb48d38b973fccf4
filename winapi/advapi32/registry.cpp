#include "winreg.h"

#include "kernel32/failure.h"
#include "kernel32/filetime.h"
#include "kernel32/kernelobject.h"
#include "registrystore.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

using winapi::Failure;
using winapi::Registry;
using winapi::RegistryNode;
using winapi::RegistryValue;

namespace {

template <class Body>
LSTATUS Status(Body body) noexcept {
    try {
        body();
        return ERROR_SUCCESS;
    } catch (const Failure& failure) {
        return static_cast<LSTATUS>(failure.code);
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

void Require(bool condition, DWORD otherwise = ERROR_INVALID_PARAMETER) {
    if (!condition) throw Failure{otherwise};
}

std::u16string_view View(LPCWSTR text) noexcept {
    return text != nullptr ? std::u16string_view(text) : std::u16string_view();
}

// ---- Open keys -----------------------------------------------------------------------------------------

class Key : public winapi::KernelObject {
  public:
    Key(std::u16string path, REGSAM access) : path_(std::move(path)), access_(access) {}

    [[nodiscard]] const std::u16string& Path() const noexcept { return path_; }

    // Of one right that a call needs.
    void RequireAccess(REGSAM right) const { Require((access_ & right) != 0, ERROR_ACCESS_DENIED); }

    // Of this key, which may have been deleted.
    [[nodiscard]] RegistryNode& Node(Registry& registry) const {
        RegistryNode* const node = registry.Find(path_);
        Require(node != nullptr, ERROR_KEY_DELETED);
        return *node;
    }

  private:
    const std::u16string path_;
    const REGSAM access_;
};

// A root's name, and nothing for any other handle.
std::u16string_view RootName(HKEY key) noexcept {
    // The roots have successive handles.
    const std::uintptr_t number =
        reinterpret_cast<std::uintptr_t>(key) - reinterpret_cast<std::uintptr_t>(HKEY_CLASSES_ROOT);
    return number < winapi::registryRoots.size() ? winapi::registryRoots[number] : std::u16string_view();
}

std::shared_ptr<Key> KeyOf(HKEY handle) {
    if (const auto root = RootName(handle); !root.empty()) {
        return std::make_shared<Key>(std::u16string(root), KEY_ALL_ACCESS);
    }
    return winapi::ObjectOf<Key>(handle);
}

void RequireOneView(REGSAM access) {
    constexpr REGSAM both = KEY_WOW64_32KEY | KEY_WOW64_64KEY;
    Require((access & both) != both);
}

std::u16string PathBelow(const Key& key, LPCWSTR subkey) {
    Require(!View(subkey).starts_with(u'\\'), ERROR_BAD_PATHNAME);
    return winapi::JoinedPath(key.Path(), View(subkey));
}

HKEY NewKey(std::u16string path, REGSAM access) {
    const HANDLE handle = winapi::NewHandle(std::make_shared<Key>(std::move(path), access));
    return static_cast<HKEY>(handle);
}

// ---- Reading and writing -------------------------------------------------------------------------------

// Runs body(node, registry) on an open key, which needs the right.
template <class Body>
void Read(HKEY handle, REGSAM right, Body body) {
    const std::shared_ptr<Key> key = KeyOf(handle);
    key->RequireAccess(right);
    winapi::ReadRegistry([&](Registry& registry) { body(key->Node(registry), registry); });
}

// The same where the body changes the key.
template <class Body>
void Write(HKEY handle, REGSAM right, Body body) {
    const std::shared_ptr<Key> key = KeyOf(handle);
    key->RequireAccess(right);
    winapi::ChangeRegistry([&](Registry& registry) { body(key->Node(registry), registry); });
}

void TellData(const RegistryValue& value, LPDWORD kind, LPBYTE data, LPDWORD size) {
    const auto needed = static_cast<DWORD>(value.data.size());
    if (kind != nullptr) *kind = value.kind;
    if (size == nullptr) return;
    const bool fits = data == nullptr || *size >= needed;
    *size = needed;
    Require(fits, ERROR_MORE_DATA);
    if (data != nullptr) std::copy(value.data.begin(), value.data.end(), data);
}

void TellName(std::u16string_view name, LPWSTR buffer, LPDWORD size) {
    Require(name.size() < *size, ERROR_MORE_DATA);
    buffer[name.copy(buffer, name.size())] = u'\0';
    *size = static_cast<DWORD>(name.size());
}

}  // namespace

LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD, REGSAM access, PHKEY result) noexcept {
    return Status([&] {
        Require(result != nullptr);
        RequireOneView(access);
        const std::shared_ptr<Key> parent = KeyOf(key);
        std::u16string path = PathBelow(*parent, subkey);
        winapi::ReadRegistry([&](Registry& registry) {
            static_cast<void>(parent->Node(registry));
            Require(registry.Find(path) != nullptr, ERROR_FILE_NOT_FOUND);
        });
        *result = NewKey(std::move(path), access);
    });
}

LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR, DWORD, REGSAM access,
                               LPSECURITY_ATTRIBUTES, PHKEY result, LPDWORD disposition) noexcept {
    const LSTATUS opened = reserved != 0 || subkey == nullptr ? LSTATUS{ERROR_INVALID_PARAMETER}
                                                              : RegOpenKeyExW(key, subkey, 0, access, result);
    if (opened == ERROR_SUCCESS && disposition != nullptr) *disposition = REG_OPENED_EXISTING_KEY;
    if (opened != ERROR_FILE_NOT_FOUND) return opened;
    return Status([&] {
        const std::shared_ptr<Key> parent = KeyOf(key);
        std::u16string path = PathBelow(*parent, subkey);
        bool isNew = false;
        winapi::ChangeRegistry([&](Registry& registry) {
            static_cast<void>(parent->Node(registry));
            isNew = registry.Find(path) == nullptr;  // another process may have come first
            Require(registry.Make(path, winapi::FileTimeNow()) != nullptr);
        });
        *result = NewKey(std::move(path), access);
        if (disposition != nullptr) *disposition = isNew ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    });
}

LSTATUS WINAPI RegCloseKey(HKEY key) noexcept {
    return Status([&] {
        static_cast<void>(KeyOf(key));
        if (RootName(key).empty()) CloseHandle(static_cast<HANDLE>(key));
    });
}

LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD kind, LPBYTE data,
                                LPDWORD size) noexcept {
    return Status([&] {
        Require(reserved == nullptr && (data == nullptr || size != nullptr));
        Read(key, KEY_QUERY_VALUE, [&](RegistryNode& node, const Registry&) {
            const auto value = node.FindValue(View(name));
            Require(value != node.values.end(), ERROR_FILE_NOT_FOUND);
            TellData(*value, kind, data, size);
        });
    });
}

LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD kind, const BYTE* data,
                              DWORD size) noexcept {
    return Status([&] {
        constexpr std::size_t longestName = 16383;
        Require(reserved == 0 && (data != nullptr || size == 0) && View(name).size() <= longestName);
        RegistryValue value{std::u16string(View(name)), kind, {data, data + size}};
        Write(key, KEY_SET_VALUE, [&](RegistryNode& node, const Registry&) {
            node.SetValue(std::move(value));
            node.lastWrite = winapi::FileTimeNow();
        });
    });
}

LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) noexcept {
    return Status([&] {
        Write(key, KEY_SET_VALUE, [&](RegistryNode& node, const Registry&) {
            const auto value = node.FindValue(View(name));
            Require(value != node.values.end(), ERROR_FILE_NOT_FOUND);
            node.values.erase(value);
            node.lastWrite = winapi::FileTimeNow();
        });
    });
}

LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameSize, LPDWORD reserved,
                             LPDWORD kind, LPBYTE data, LPDWORD size) noexcept {
    return Status([&] {
        Require(name != nullptr && nameSize != nullptr && reserved == nullptr);
        Require(data == nullptr || size != nullptr);
        Read(key, KEY_QUERY_VALUE, [&](const RegistryNode& node, const Registry&) {
            Require(index < node.values.size(), ERROR_NO_MORE_ITEMS);
            const RegistryValue& value = node.values[index];
            TellName(value.name, name, nameSize);
            TellData(value, kind, data, size);
        });
    });
}

LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameSize, LPDWORD reserved, LPWSTR,
                             LPDWORD classSize, PFILETIME lastWrite) noexcept {
    return Status([&] {
        Require(name != nullptr && nameSize != nullptr && reserved == nullptr);
        Require(classSize == nullptr && lastWrite == nullptr);
        Read(key, KEY_ENUMERATE_SUB_KEYS, [&](const RegistryNode& node, const Registry& registry) {
            const auto subkeys = registry.Subkeys(node.path);
            Require(index < subkeys.size(), ERROR_NO_MORE_ITEMS);
            const std::u16string_view path = subkeys[index]->path;
            TellName(path.substr(path.rfind(u'\\') + 1), name, nameSize);
        });
    });
}

LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, LPWSTR, LPDWORD classSize, LPDWORD reserved, LPDWORD subkeys,
                                LPDWORD longestSubkey, LPDWORD longestClass, LPDWORD values,
                                LPDWORD longestName, LPDWORD longestData, LPDWORD descriptorSize,
                                PFILETIME lastWrite) noexcept {
    return Status([&] {
        for (const LPDWORD untold : {classSize, reserved, subkeys, longestSubkey, longestClass, values,
                                     longestName, longestData, descriptorSize}) {
            Require(untold == nullptr);
        }
        Read(key, KEY_QUERY_VALUE, [&](const RegistryNode& node, const Registry&) {
            if (lastWrite != nullptr) *lastWrite = winapi::FileTimeOf(node.lastWrite);
        });
    });
}

LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR subkey) noexcept {
    return Status([&] {
        Write(key, KEY_ENUMERATE_SUB_KEYS, [&](RegistryNode& node, Registry& registry) {
            const std::u16string path = winapi::JoinedPath(node.path, View(subkey));
            if (path == node.path) {
                registry.DeleteBelow(path);
                node.values.clear();
                node.lastWrite = winapi::FileTimeNow();
            } else {
                Require(registry.Delete(path, winapi::FileTimeNow()), ERROR_FILE_NOT_FOUND);
            }
        });
    });
}
