#pragma once

#include "text/text.h"

#include <windows.h>

#include <fileapi.h>

#include <cstdint>
#include <vector>

// A file by the system's handle, without a buffer, closed by the destructor. Positions, offsets and sizes are
// in bytes. An object belongs to one thread at a time.
//
// What fails raises one of the VexDiskError family, with the file's name as it was given in its one argument,
// and leaves the object open and usable; the position is then where the system left it. On a closed file the
// system refuses everything, so that each operation fails like that, but for close and flush, which do
// nothing. What the memory layer raises passes on.
class WinFile {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // Opens or makes the file by CreateFileW, whose arguments these are.
    // Raises VexErrorOpeningFile, VexCode::FileOpen, with the path; the last error tells the cause.
    WinFile(const WCHAR* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
            std::uint32_t flags);
    ~WinFile();
    WinFile(const WinFile&) = delete;
    WinFile& operator=(const WinFile&) = delete;

    // As it was given.
    [[nodiscard]] const CStringW& name() const noexcept { return name_; }
    // The handle, which stays this object's; INVALID_HANDLE_VALUE once closed.
    [[nodiscard]] HANDLE handle() const noexcept { return handle_; }

    // May be called any number of times.
    void close() noexcept;
    // Has the system write the file's data to its disk; a failure isn't told.
    void flush() noexcept;

    // Each raises VexErrorSeekingFile. `origin` is FILE_BEGIN, FILE_CURRENT or FILE_END.
    [[nodiscard]] std::int64_t tell() const;
    [[nodiscard]] std::int64_t size() const;
    void seek(std::int64_t offset, std::uint32_t origin = FILE_BEGIN);

    // Fills `bytes`, as many as it has; for fewer, raises VexErrorReadingFile.
    void read(Bytes& bytes);

    // Raises VexErrorWritingFile.
    void write(const Bytes& bytes);

    // As File's, with the same failures.
    void append(WinFile& source);
    void append_range(WinFile& source, std::int64_t offset, std::int64_t count);

  private:
    CStringW name_;
    HANDLE handle_;
};

// Of a handle that somebody else owns; nothing is raised. -1 if the system doesn't tell the size.
[[nodiscard]] std::int64_t GetHandleFileSize(HANDLE handle) noexcept;

// Moves to a position from the start, and gives it; 0xFFFFFFFF if that fails.
std::int64_t SetHandlePosition(HANDLE handle, std::int64_t position) noexcept;
