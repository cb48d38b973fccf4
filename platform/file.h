#pragma once

#include "text/text.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// A file by the runtime library's buffered stream, closed by the destructor. Positions, offsets and sizes are
// in bytes. An object belongs to one thread at a time.
//
// What fails raises one of the VexDiskError family, with the file's name as it was given in its one argument,
// and leaves the object open and usable; the position is then where the stream left it. On a closed file
// every operation fails like that, but for close and flush, which do nothing, and tell, which gives -1. What
// the memory layer raises passes on.
//
// A write is done when the stream has taken it. What stays in its buffer and can't be written by flush, by
// close or by the destructor is lost without report, as those don't tell of failures. Whoever has to know
// writes through WinFile, which has no buffer.
class File {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // Opens the file by _wfopen_s, whose modes these are; it may refuse a file that is open already. Without a
    // "b" the mode is that for text, and then Windows reads CR LF as LF and Ctrl+Z as the file's end, and
    // writes LF as CR LF; Linux has one mode, and gives the bytes as they are. "b" is the same in both.
    // Raises VexErrorOpeningFile, VexCode::FileOpen, with the path.
    File(const WCHAR* path, const WCHAR* mode);
    File(const StdWString& path, const WCHAR* mode);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // As it was given.
    [[nodiscard]] const CStringW& name() const noexcept { return name_; }
    // The stream, which stays this object's; null once closed.
    [[nodiscard]] std::FILE* stream() const noexcept { return stream_; }

    // May be called any number of times.
    void close() noexcept;
    void flush() noexcept;

    // -1 if the stream doesn't tell.
    [[nodiscard]] std::int64_t tell() const noexcept;

    // The size, by way of the file's end and back. Raises VexErrorSeekingFile.
    [[nodiscard]] std::int64_t size();

    // `origin` is 0 for the start, 1 for the current position, 2 for the end.
    // Raises VexErrorSeekingFile, with both numbers in its sentence.
    void seek(std::int64_t offset, std::int32_t origin = 0);

    // Fills `bytes`, as many as it has; for fewer, raises VexErrorReadingFile.
    void read(Bytes& bytes);

    // As many bytes as the file has, from the current position: so all of the file at its start, and
    // VexErrorReadingFile anywhere else. The same for 4 GiB and more, before anything is read. A size that
    // the address space can't hold raises std::length_error or std::bad_alloc.
    [[nodiscard]] Bytes read();

    // Raises VexErrorWritingFile.
    void write(const Bytes& bytes);
    void write(const void* data, std::uint32_t count);

    // The rest of the file in lines, as bytes without regard to any encoding. LF ends a line and isn't part
    // of it; a CR ahead of it is. The last line needs no LF, and none comes behind a final LF. Lines have no
    // limit.
    //
    // The stream is read in chunks, which end behind an LF, after 1024 bytes or with the file. A zero byte
    // hides the rest of its chunk: an LF there, too, and then the line goes on with the next chunk.
    //
    // Raises VexErrorReadingFile.
    [[nodiscard]] std::vector<std::string> get_lines();

    // Appends all of `source`, or `count` bytes from `offset`, at this file's end, through at most 64 KiB of
    // memory; `source` is then behind the last byte read. A `count` below 1 moves both positions and no
    // byte. Raises VexErrorSeekingFile, VexErrorReadingFile for a shorter `source`, or this file itself as
    // one, and VexErrorWritingFile; what has been copied by then stays.
    void append(File& source);
    void append_range(File& source, std::int64_t offset, std::int64_t count);

    // The CRC-64 of the whole file, as Crc64 has it, through 256 KiB of memory. The position stays, unless
    // reading fails. Raises VexErrorSeekingFile and VexErrorReadingFile.
    [[nodiscard]] std::uint64_t crc64();

  private:
    void Read(void* target, std::size_t count);
    void Write(const void* data, std::size_t count);

    CStringW name_;
    std::FILE* stream_ = nullptr;
};
