// What is known of a file by its path. Nothing here raises: each operation has a result for failures, which
// it gives for a null path, too.
#pragma once

#include "text/text.h"

#include <cstdint>

// Whether the path leads to a file that is no directory and no device.
[[nodiscard]] bool FileExists(const WCHAR* path) noexcept;

// Makes the file, or empties the one that is there, and tells whether the path now leads to a file. So it
// does for one that can't be emptied.
bool CreateEmptyFile(const WCHAR* path) noexcept;

// In bytes; 0 for what isn't there, and FileSize32 gives it for 2 GiB and more, too.
[[nodiscard]] std::int32_t FileSize32(const WCHAR* path) noexcept;
[[nodiscard]] std::int64_t FileSize64(const WCHAR* path) noexcept;

// When the file was last written to, in seconds since 1970; 0 for what isn't there, and for a time that 32
// bits can't tell.
[[nodiscard]] std::int32_t FileModifiedTime32(const WCHAR* path) noexcept;
[[nodiscard]] std::int64_t FileModifiedTime64(const WCHAR* path) noexcept;

// The same in 100-nanosecond steps since the start of the year 1601, as FILETIME counts, of a file that can
// be opened for reading; else 0.
[[nodiscard]] std::int64_t FileLastWriteTime(const WCHAR* path) noexcept;
[[nodiscard]] std::int64_t FileLastWriteTime(const StdWString& path) noexcept;
