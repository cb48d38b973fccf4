#include "platform/fileversioninfo.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>

namespace {

constexpr std::array<const WCHAR*, 12> stringNames = {
    TEXT("CompanyName"),    TEXT("FileDescription"),  TEXT("FileVersion"),  TEXT("InternalName"),
    TEXT("LegalCopyRight"), TEXT("OriginalFileName"), TEXT("ProductName"),  TEXT("ProductVersion"),
    TEXT("Comments"),       TEXT("LegalTrademarks"),  TEXT("PrivateBuild"), TEXT("SpecialBuild"),
};

using Resource = std::span<const std::byte>;

// A value in a resource with the length that the resource names, which may lead out of it.
struct Found {
    std::size_t offset;
    std::size_t length;
};

std::optional<Found> Query(Resource resource, const WCHAR* path) noexcept {
    LPVOID value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(resource.data(), path, &value, &length) == FALSE) return std::nullopt;
    const auto offset =
        reinterpret_cast<std::uintptr_t>(value) - reinterpret_cast<std::uintptr_t>(resource.data());
    if (offset > resource.size()) return Found{resource.size(), 0};
    return Found{offset, length};
}

// Copies the front of a value; false when the resource has no such value or a shorter one.
template <class Value>
bool ReadValue(Resource resource, const WCHAR* path, Value& target) noexcept {
    const auto found = Query(resource, path);
    if (!found || std::min(found->length, resource.size() - found->offset) < sizeof target) return false;
    std::memcpy(&target, resource.data() + found->offset, sizeof target);
    return true;
}

// Where the entry of a text ends (Microsoft's "String structure"): it begins with its length in bytes, that of
// its text, its type and its name with the terminator, filled up to a multiple of four bytes. What doesn't
// look like that ends with the resource.
std::size_t EndOfEntry(Resource resource, const Found& text, StdWStringView name) noexcept {
    constexpr std::size_t boundary = sizeof(DWORD);
    WORD header[3];
    const std::size_t size = sizeof header + (name.size() + 1) * sizeof(WCHAR);
    const std::size_t front = (size + boundary - 1) / boundary * boundary;
    if (text.offset < front) return resource.size();
    std::memcpy(header, resource.data() + text.offset - front, sizeof header);
    const auto [length, textLength, type] = header;
    if (length < front || text.length > textLength) return resource.size();
    return std::min(text.offset - front + length, resource.size());
}

}  // namespace

FileVersionInfo::FileVersionInfo(const WCHAR* file) : FileVersionInfo(CStringW(file)) {}

FileVersionInfo::FileVersionInfo(const CStringW& file) {
    if (!file.IsEmpty()) Load(file);
}

void FileVersionInfo::Clear() noexcept {
    path.Empty();
    data.reset();
    size_ = 0;
    language = 0;
    codePage = 0;
    fixedInfo = {};
}

int FileVersionInfo::Load(const CStringW& file) {
    // `file` may be this object's own path, which is cleared.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const CStringW source = file;
    Clear();
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(source.GetString(), &unused);
    if (size == 0) return 0;
    auto resource = std::make_unique<std::byte[]>(size);
    if (GetFileVersionInfoW(source.GetString(), 0, size, resource.get()) == FALSE) return 0;

    const Resource content(resource.get(), size);
    VS_FIXEDFILEINFO numbers{};
    std::array<WORD, 2> translation{};
    if (!ReadValue(content, TEXT("\\"), numbers) ||
        !ReadValue(content, TEXT("\\VarFileInfo\\Translation"), translation)) {
        return 0;
    }
    fixedInfo = numbers;
    language = translation[0];
    codePage = translation[1];
    path = source;
    data = std::move(resource);
    size_ = size;
    return 1;
}

std::optional<StdWStringView> FileVersionInfo::FindString(std::uint32_t index) const {
    if (index >= stringNames.size() || data == nullptr) return std::nullopt;
    const CStringW entry =
        CStringWFormat(TEXT("\\StringFileInfo\\%04x%04x\\%s"), language, codePage, stringNames[index]);
    const Resource resource(data.get(), size_);
    const auto found = Query(resource, entry.GetString());
    if (!found) return std::nullopt;
    // A resource that some tool made need not terminate its texts, nor count the terminator; of an entry
    // marked as binary it counts bytes.
    const std::size_t end = EndOfEntry(resource, *found, stringNames[index]);
    const std::size_t room = end < found->offset ? 0 : (end - found->offset) / sizeof(WCHAR);
    const StdWStringView text(reinterpret_cast<const WCHAR*>(resource.data() + found->offset),
                              std::min(found->length, room));
    return text.substr(0, text.find(TEXT('\0')));
}

CStringW FileVersionInfo::GetString(std::uint32_t index) const {
    const StdWStringView text = FindString(index).value_or(StdWStringView());
    return {text.data(), static_cast<int>(text.size())};
}

int FileVersionInfo::HasString(std::uint32_t index) const {
    return FindString(index).has_value() ? 1 : 0;
}

CStringW FileVersionInfo::CodePageName() const {
    CPINFOEXW facts{};
    if (GetCPInfoExW(codePage, 0, &facts) == FALSE) return {};
    return CStringW(facts.CodePageName);
}
