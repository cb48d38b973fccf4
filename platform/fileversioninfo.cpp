#include "platform/fileversioninfo.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr std::array<const WCHAR*, 12> stringNames = {
    TEXT("CompanyName"),    TEXT("FileDescription"),  TEXT("FileVersion"),  TEXT("InternalName"),
    TEXT("LegalCopyRight"), TEXT("OriginalFileName"), TEXT("ProductName"),  TEXT("ProductVersion"),
    TEXT("Comments"),       TEXT("LegalTrademarks"),  TEXT("PrivateBuild"), TEXT("SpecialBuild"),
};

// Copies the front of a value in a resource; false when the resource has no such value or a shorter one.
template <class Value>
bool ReadValue(const std::byte* resource, const WCHAR* path, Value& target) noexcept {
    LPVOID value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(resource, path, &value, &length) == FALSE || length < sizeof target) return false;
    std::memcpy(&target, value, sizeof target);
    return true;
}

}  // namespace

FileVersionInfo::FileVersionInfo(const WCHAR* file) : FileVersionInfo(CStringW(file)) {}

FileVersionInfo::FileVersionInfo(const CStringW& file) {
    if (!file.IsEmpty()) Load(file);
}

void FileVersionInfo::Clear() noexcept {
    path.Empty();
    data.reset();
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

    VS_FIXEDFILEINFO numbers{};
    std::array<WORD, 2> translation{};
    if (!ReadValue(resource.get(), TEXT("\\"), numbers) ||
        !ReadValue(resource.get(), TEXT("\\VarFileInfo\\Translation"), translation)) {
        return 0;
    }
    fixedInfo = numbers;
    language = translation[0];
    codePage = translation[1];
    path = source;
    data = std::move(resource);
    return 1;
}

std::optional<StdWStringView> FileVersionInfo::FindString(std::uint32_t index) const {
    if (index >= stringNames.size() || data == nullptr) return std::nullopt;
    const CStringW entry =
        CStringWFormat(TEXT("\\StringFileInfo\\%04x%04x\\%s"), language, codePage, stringNames[index]);
    LPVOID value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(data.get(), entry.GetString(), &value, &length) == FALSE) return std::nullopt;
    // A resource that some tool made need not terminate its texts, nor count the terminator.
    const StdWStringView text(static_cast<const WCHAR*>(value), length);
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
