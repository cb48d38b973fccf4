// The one mapping between Windows' paths and the system's. The system's root shows up as drive Z, so that
// "/tmp/a" is "Z:\tmp\a" to the product; no other drive exists. Both spellings are taken. Letter case is the
// file system's own.
//
// A file name's bytes come back as they were: a byte that is no part of well-formed UTF-8 becomes the unit
// U+DC00 + byte (the rule of Python's PEP 383).
#pragma once

#include "winapi/types.h"

#include <string>
#include <string_view>

namespace winapi {

[[nodiscard]] std::u16string Utf16FromUtf8(std::string_view text);
[[nodiscard]] std::string Utf8FromUtf16(std::u16string_view text);

// "/tmp/a" gives "Z:\tmp\a"; a relative path keeps its form, with backslashes.
[[nodiscard]] std::u16string WindowsPath(std::string_view path);

// "Z:\tmp\a", "\\?\Z:\tmp\a", "/tmp/a" and "\tmp\a" give "/tmp/a"; "a\b" and "Z:a\b" give "a/b".
// Throws Failure: ERROR_PATH_NOT_FOUND for another drive, ERROR_BAD_NETPATH for "\\server\...", and
// ERROR_INVALID_NAME for an empty path.
[[nodiscard]] std::string SystemPath(std::u16string_view path);

// The absolute form of a system path, without "." and ".." and doubled separators; links aren't followed.
[[nodiscard]] std::string FullPath(const std::string& path);

// The Windows error for an errno that came of a file: of what doesn't exist, Windows tells the file
// (ERROR_FILE_NOT_FOUND) from a folder on the way (ERROR_PATH_NOT_FOUND).
[[nodiscard]] DWORD ErrorForFile(int error, const std::string& path);

// Whether two names are the same but for the case of A to Z.
[[nodiscard]] bool SameName(std::u16string_view one, std::u16string_view other) noexcept;

}  // namespace winapi
