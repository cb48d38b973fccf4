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

// A value inside a resource, of at least `size` bytes; null when there is none.
const void* QueryValue(const std::byte* resource, const WCHAR* path, std::size_t size) noexcept {
    LPVOID value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(resource, path, &value, &length) == FALSE || length < size) return nullptr;
    return value;
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
    // `file` may be this object's own path.
    const CStringW source = file;
    Clear();
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(source.GetString(), &unused);
    if (size == 0) return 0;
    auto resource = std::make_unique<std::byte[]>(size);
    if (GetFileVersionInfoW(source.GetString(), 0, size, resource.get()) == FALSE) return 0;

    const void* const numbers = QueryValue(resource.get(), TEXT("\\"), sizeof fixedInfo);
    std::array<WORD, 2> translation;
    const void* const translations =
        QueryValue(resource.get(), TEXT("\\VarFileInfo\\Translation"), sizeof translation);
    if (numbers == nullptr || translations == nullptr) return 0;

    std::memcpy(&fixedInfo, numbers, sizeof fixedInfo);
    std::memcpy(translation.data(), translations, sizeof translation);
    language = translation[0];
    codePage = translation[1];
    path = source;
    data = std::move(resource);
    return 1;
}

const WCHAR* FileVersionInfo::FindString(std::uint32_t index) const {
    if (index >= stringNames.size() || data == nullptr) return nullptr;
    const CStringW entry =
        CStringWFormat(TEXT("\\StringFileInfo\\%04x%04x\\%s"), language, codePage, stringNames[index]);
    return static_cast<const WCHAR*>(QueryValue(data.get(), entry.GetString(), 0));
}

CStringW FileVersionInfo::GetString(std::uint32_t index) const {
    return CStringW(FindString(index));
}

int FileVersionInfo::HasString(std::uint32_t index) const {
    return FindString(index) != nullptr ? 1 : 0;
}

CStringW FileVersionInfo::CodePageName() const {
    CPINFOEXW facts{};
    if (GetCPInfoExW(codePage, 0, &facts) == FALSE) return {};
    return CStringW(facts.CodePageName);
}
