#include "registrytree.h"

#include "winapi/strings.h"

#include <algorithm>

namespace winapi {
namespace {

char16_t Upper(char16_t unit) noexcept {
    CharUpperBuffW(&unit, 1);
    return unit;
}

// What paths that are one to the registry have in common.
std::u16string Folded(std::u16string_view path) {
    std::u16string folded(path);
    CharUpperBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    return folded;
}

// All nodes below a path, between the two ends.
auto NodesBelow(auto& nodes, std::u16string_view path) {
    static_assert(u'\\' + 1 == u']');
    const std::u16string folded = Folded(path);
    return std::pair(nodes.lower_bound(folded + u'\\'), nodes.lower_bound(folded + u']'));
}

}  // namespace

Registry::Registry() {
    for (const std::u16string_view name : registryRoots) static_cast<void>(Make(name, 0));
}

RegistryNode* Registry::Find(std::u16string_view path) {
    const auto found = nodes.find(Folded(path));
    return found != nodes.end() ? &found->second : nullptr;
}

std::vector<const RegistryNode*> Registry::Subkeys(std::u16string_view path) const {
    std::vector<const RegistryNode*> subkeys;
    for (auto [at, end] = NodesBelow(nodes, path); at != end; ++at) {
        if (at->first.find(u'\\', path.size() + 1) == std::u16string::npos) subkeys.push_back(&at->second);
    }
    return subkeys;
}

RegistryNode* Registry::Make(std::u16string_view path, std::uint64_t now) {
    constexpr std::size_t longestName = 255, deepest = 512;
    RegistryNode* node = nullptr;
    for (std::size_t begin = 0, depth = 1; begin < path.size(); ++depth) {
        const std::size_t end = std::min(path.find(u'\\', begin), path.size());
        const std::u16string_view name = path.substr(begin, end - begin);
        if (name.size() > longestName || depth > deepest) return nullptr;
        const auto [place, isNew] = nodes.try_emplace(Folded(path.substr(0, end)));
        if (isNew) {
            place->second = {JoinedPath(node != nullptr ? node->path : u"", name), now, {}};
            if (node != nullptr) node->lastWrite = std::max(node->lastWrite, now);
        }
        node = &place->second;
        begin = end + 1;
    }
    return node;
}

bool Registry::Delete(std::u16string_view path, std::uint64_t now) {
    if (nodes.erase(Folded(path)) == 0) return false;
    DeleteBelow(path);
    Find(path.substr(0, path.rfind(u'\\')))->lastWrite = now;
    return true;
}

void Registry::DeleteBelow(std::u16string_view path) {
    const auto [begin, end] = NodesBelow(nodes, path);
    nodes.erase(begin, end);
}

std::vector<RegistryValue>::iterator RegistryNode::FindValue(std::u16string_view name) {
    const auto sameUnit = [](char16_t one, char16_t other) {
        return one == other || Upper(one) == Upper(other);
    };
    return std::find_if(values.begin(), values.end(), [&](const RegistryValue& value) {
        return std::equal(value.name.begin(), value.name.end(), name.begin(), name.end(), sameUnit);
    });
}

void RegistryNode::SetValue(RegistryValue value) {
    const auto known = FindValue(value.name);
    if (known == values.end()) {
        values.push_back(std::move(value));
    } else {
        known->kind = value.kind;
        known->data = std::move(value.data);
    }
}

std::u16string JoinedPath(std::u16string path, std::u16string_view below) {
    for (std::size_t begin = 0; begin < below.size();) {
        const std::size_t end = std::min(below.find(u'\\', begin), below.size());
        if (end > begin && !path.empty()) path += u'\\';
        path += below.substr(begin, end - begin);
        begin = end + 1;
    }
    return path;
}

}  // namespace winapi
