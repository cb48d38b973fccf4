#include "winapi/version.h"

#include "kernel32/failure.h"
#include "kernel32/paths.h"
#include "versionresource.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

using winapi::AtBorder;
using winapi::Failure;

namespace {

std::vector<BYTE> ResourceOf(LPCWSTR path) {
    if (path == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
    if (*path == u'\0') throw Failure{ERROR_BAD_PATHNAME};
    std::vector<BYTE> block = winapi::ReadVersionResource(winapi::SystemPath(path));
    // Its readers know of its length what its first words say.
    constexpr std::size_t header = 3 * sizeof(WORD);
    if (block.size() < header) throw Failure{ERROR_RESOURCE_DATA_NOT_FOUND};
    return block;
}

// One node of the block (Microsoft's "VS_VERSIONINFO", "StringFileInfo" and so on have one form): three
// words, a terminated key, a value and more nodes, both of these on multiples of 4 bytes from the start of
// the whole block. Nothing is read beyond the node's own bytes, and these lie within the parent's.
class Node {
  public:
    // The first node among `siblings`; none when these bytes don't hold one.
    static std::optional<Node> First(std::span<const BYTE> siblings) noexcept {
        Node node;
        if (siblings.size() < headerSize) return std::nullopt;
        const std::size_t length = WordAt(siblings, 0);
        if (length < headerSize || length > siblings.size()) return std::nullopt;
        node.bytes_ = siblings.first(length);
        const std::size_t keyUnits = node.TextUnits(headerSize);
        const std::size_t keyEnd = headerSize + (keyUnits + 1) * sizeof(WCHAR);
        if (keyEnd > length) return std::nullopt;
        node.keyUnits_ = keyUnits;
        node.valueStart_ = node.Aligned(keyEnd);
        node.isText_ = WordAt(siblings, 4) == 1;
        const std::size_t valueSize = WordAt(siblings, 2) * (node.isText_ ? sizeof(WCHAR) : 1U);
        node.valueSize_ = std::min(valueSize, length - node.valueStart_);
        return node;
    }

    [[nodiscard]] bool IsNamed(std::u16string_view name) const noexcept {
        const BYTE* const key = bytes_.data() + headerSize;
        return winapi::SameName({reinterpret_cast<const WCHAR*>(key), keyUnits_}, name);
    }

    // The bytes of the value; a text's have an even count.
    [[nodiscard]] std::span<const BYTE> Value() const noexcept {
        const std::size_t size = isText_ ? valueSize_ / sizeof(WCHAR) * sizeof(WCHAR) : valueSize_;
        return bytes_.subspan(valueStart_, size);
    }
    [[nodiscard]] bool IsText() const noexcept { return isText_; }

    [[nodiscard]] std::optional<Node> Child(std::u16string_view name) const noexcept {
        std::size_t at = Aligned(valueStart_ + valueSize_);
        while (const auto child = First(bytes_.subspan(at))) {
            if (child->IsNamed(name)) return child;
            at = Aligned(at + child->bytes_.size());
        }
        return std::nullopt;
    }

  private:
    static constexpr std::size_t headerSize = 3 * sizeof(WORD);

    static std::size_t WordAt(std::span<const BYTE> bytes, std::size_t at) noexcept {
        WORD word;
        std::memcpy(&word, bytes.data() + at, sizeof word);
        return word;
    }

    // The next multiple of 4 in the block, within the node, which begins at one.
    [[nodiscard]] std::size_t Aligned(std::size_t at) const noexcept {
        return std::min((at + 3) / 4 * 4, bytes_.size());
    }

    // The units before the first zero one or the end.
    [[nodiscard]] std::size_t TextUnits(std::size_t at) const noexcept {
        std::size_t units = 0;
        while (at + (units + 1) * sizeof(WCHAR) <= bytes_.size() &&
               WordAt(bytes_, at + units * sizeof(WCHAR)) != 0) {
            ++units;
        }
        return units;
    }

    std::span<const BYTE> bytes_;
    std::size_t keyUnits_ = 0;
    std::size_t valueStart_ = 0;
    std::size_t valueSize_ = 0;
    bool isText_ = false;
};

// The node under a path of names; empty names, as between two backslashes, mean nothing.
std::optional<Node> Find(std::span<const BYTE> block, std::u16string_view path) noexcept {
    std::optional<Node> node = Node::First(block);
    while (node && !path.empty()) {
        const std::size_t length = std::min(path.find(u'\\'), path.size());
        if (length != 0) node = node->Child(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return node;
}

}  // namespace

DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR path, LPDWORD handle) noexcept {
    if (handle != nullptr) *handle = 0;
    return AtBorder(DWORD{0}, [&] {
        const auto size = static_cast<DWORD>(ResourceOf(path).size());
        SetLastError(ERROR_SUCCESS);
        return size;
    });
}

BOOL WINAPI GetFileVersionInfoW(LPCWSTR path, DWORD, DWORD size, LPVOID block) noexcept {
    return AtBorder(FALSE, [&] {
        if (block == nullptr) throw Failure{ERROR_INVALID_DATA};
        const std::vector<BYTE> resource = ResourceOf(path);
        const std::size_t count = std::min<std::size_t>(size, resource.size());
        std::memcpy(block, resource.data(), count);
        // The block's first word is all that VerQueryValueW knows of its length: it must not exceed the copy.
        WORD length = 0;
        if (count >= sizeof length) {
            std::memcpy(&length, block, sizeof length);
            length = static_cast<WORD>(std::min<std::size_t>(length, count));
            std::memcpy(block, &length, sizeof length);
        }
        SetLastError(ERROR_SUCCESS);
        return TRUE;
    });
}

BOOL WINAPI VerQueryValueW(LPCVOID block, LPCWSTR path, LPVOID* value, PUINT length) noexcept {
    if (block == nullptr) {
        SetLastError(ERROR_INVALID_DATA);
        return FALSE;
    }
    WORD size;
    std::memcpy(&size, block, sizeof size);
    const auto node = Find({static_cast<const BYTE*>(block), size}, path != nullptr ? path : u"");
    if (length != nullptr) *length = 0;
    if (!node) {
        SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
        return FALSE;
    }
    const std::span<const BYTE> found = node->Value();
    *value = const_cast<BYTE*>(found.data());
    if (length != nullptr) *length = static_cast<UINT>(node->IsText() ? found.size() / 2 : found.size());
    return TRUE;
}
