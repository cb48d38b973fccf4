#include "registrytree.h"

#include "kernel32/failure.h"
#include "winapi/strings.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace winapi {
namespace {

char16_t Upper(char16_t unit) noexcept {
    constexpr char16_t firstBeyondAscii = 0x80;
    if (unit >= firstBeyondAscii) {
        CharUpperBuffW(&unit, 1);
        return unit;
    }
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - (u'a' - u'A')) : unit;
}

bool Precedes(std::u16string_view one, std::u16string_view other) noexcept {
    return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end(),
                                        [](char16_t a, char16_t b) { return Upper(a) < Upper(b); });
}

// The next name of a path, which loses it; empty at the path's end.
std::u16string_view TakeName(std::u16string_view& path) noexcept {
    path.remove_prefix(std::min(path.find_first_not_of(u'\\'), path.size()));
    const std::u16string_view name = path.substr(0, path.find(u'\\'));
    path.remove_prefix(name.size());
    return name;
}

// Where a subkey is or belongs.
std::ptrdiff_t PlaceOf(const RegistryNode& node, std::u16string_view name) noexcept {
    const auto place = std::lower_bound(
        node.subkeys.begin(), node.subkeys.end(), name,
        [](const RegistryNode& subkey, std::u16string_view wanted) { return Precedes(subkey.name, wanted); });
    return place - node.subkeys.begin();
}

bool StandsAt(const RegistryNode& node, std::ptrdiff_t place, std::u16string_view name) noexcept {
    const auto index = static_cast<std::size_t>(place);
    return index < node.subkeys.size() && SameRegistryName(node.subkeys[index].name, name);
}

}  // namespace

bool SameRegistryName(std::u16string_view one, std::u16string_view other) noexcept {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char16_t a, char16_t b) { return a == b || Upper(a) == Upper(b); });
}

const RegistryNode* RegistryNode::Find(std::u16string_view path) const noexcept {
    const RegistryNode* node = this;
    for (auto step = TakeName(path); !step.empty(); step = TakeName(path)) {
        const std::ptrdiff_t place = PlaceOf(*node, step);
        if (!StandsAt(*node, place, step)) return nullptr;
        node = &node->subkeys[static_cast<std::size_t>(place)];
    }
    return node;
}

RegistryNode* RegistryNode::Find(std::u16string_view path) noexcept {
    return const_cast<RegistryNode*>(std::as_const(*this).Find(path));
}

const RegistryValue* RegistryNode::FindValue(std::u16string_view valueName) const noexcept {
    const auto found = std::find_if(values.begin(), values.end(), [=](const RegistryValue& value) {
        return SameRegistryName(value.name, valueName);
    });
    return found != values.end() ? &*found : nullptr;
}

RegistryNode& RegistryNode::Make(std::u16string_view path, std::uint64_t now) {
    constexpr std::size_t longestName = 255, deepest = 512;
    RegistryNode* node = this;
    std::size_t depth = 0;
    for (auto step = TakeName(path); !step.empty(); step = TakeName(path)) {
        if (step.size() > longestName || ++depth > deepest) throw Failure{ERROR_INVALID_PARAMETER};
        const std::ptrdiff_t place = PlaceOf(*node, step);
        if (!StandsAt(*node, place, step)) {
            node->subkeys.insert(node->subkeys.begin() + place,
                                 RegistryNode{std::u16string(step), now, {}, {}});
            node->lastWrite = std::max(node->lastWrite, now);
        }
        node = &node->subkeys[static_cast<std::size_t>(place)];
    }
    return *node;
}

bool RegistryNode::Delete(std::u16string_view path, std::uint64_t now) noexcept {
    while (path.ends_with(u'\\')) path.remove_suffix(1);
    const std::size_t nameStart = path.rfind(u'\\') + 1;  // npos + 1 is 0
    const std::u16string_view subkey = path.substr(nameStart);
    RegistryNode* const parent = Find(path.substr(0, nameStart));
    if (parent == nullptr) return false;
    const std::ptrdiff_t place = PlaceOf(*parent, subkey);
    if (!StandsAt(*parent, place, subkey)) return false;
    parent->subkeys.erase(parent->subkeys.begin() + place);
    parent->lastWrite = now;
    return true;
}

void RegistryNode::SetValue(RegistryValue value) {
    if (const RegistryValue* const known = FindValue(value.name)) {
        auto& target = values[static_cast<std::size_t>(known - values.data())];
        target.kind = value.kind;
        target.data = std::move(value.data);
    } else {
        values.push_back(std::move(value));
    }
}

}  // namespace winapi
