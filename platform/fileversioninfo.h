#pragma once

#include "text/text.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

// The version resource of a file. An object is empty or loaded, and a null `data` is the only sign of a
// failed load: nothing here raises but what the memory layer raises. The layout of the resource is
// Microsoft's VS_VERSIONINFO.
class FileVersionInfo {
  public:
    CStringW path;                      // the file; empty when nothing is loaded
    std::unique_ptr<std::byte[]> data;  // the whole resource; null when nothing is loaded
    WORD language = 0;                  // of the first translation
    WORD codePage = 0;                  // of the first translation
    VS_FIXEDFILEINFO fixedInfo{};       // all zero when nothing is loaded

    FileVersionInfo() = default;
    FileVersionInfo(const FileVersionInfo&) = delete;
    FileVersionInfo& operator=(const FileVersionInfo&) = delete;

    // Loads a file; a null or empty path gives an empty object.
    explicit FileVersionInfo(const WCHAR* file);
    explicit FileVersionInfo(const CStringW& file);

    // Back to empty.
    void Clear() noexcept;

    // 1 when the file's resource was loaded, else 0 and the object is empty, whatever it held before. A
    // resource without fixed information or without a translation counts as none.
    int Load(const CStringW& file);

    // An entry of the first translation's table of strings, empty when the resource lacks it. The indexes:
    //   0 CompanyName     3 InternalName      6 ProductName      9 LegalTrademarks
    //   1 FileDescription 4 LegalCopyRight    7 ProductVersion  10 PrivateBuild
    //   2 FileVersion     5 OriginalFileName  8 Comments        11 SpecialBuild
    // Any other index gives an empty text. A text ends before its first zero unit or with its entry, whatever
    // length a damaged resource names.
    [[nodiscard]] CStringW GetString(std::uint32_t index) const;

    // Non-zero when the resource has the entry, even an empty one.
    [[nodiscard]] int HasString(std::uint32_t index) const;

    // The system's name for `codePage`, empty when it knows none.
    [[nodiscard]] CStringW CodePageName() const;

  private:
    // The text of an entry inside `data`; nothing when there is none.
    [[nodiscard]] std::optional<StdWStringView> FindString(std::uint32_t index) const;

    std::size_t size_ = 0;  // of `data`, in bytes
};
