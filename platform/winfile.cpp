#include "platform/winfile.h"

#include "errors/vex.h"
#include "platform/detail/filerange.h"

#include <algorithm>

namespace {

LARGE_INTEGER Large(std::int64_t number) noexcept {
    LARGE_INTEGER large;
    large.QuadPart = number;
    return large;
}

// Runs `call(data, size)`, which tells how many bytes it has moved, until `count` bytes are through. One call
// of the system takes less than 4 GiB, so that more of them are needed for more.
template <class Unit, class Call>
bool MoveAll(Unit* data, std::size_t count, Call call) {
    constexpr std::size_t most = 0x40000000;
    do {
        const auto size = static_cast<DWORD>(std::min(count, most));
        DWORD moved = 0;
        if (!call(data, size, &moved) || moved != size) return false;
        data += size;
        count -= size;
    } while (count > 0);
    return true;
}

}  // namespace

WinFile::WinFile(const WCHAR* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                 std::uint32_t flags)
    : name_(path),
      handle_(CreateFileW(name_.GetString(), access, share, nullptr, disposition, flags, nullptr)) {
    if (handle_ == INVALID_HANDLE_VALUE) {
        throw VexErrorOpeningFile("WinFile::WinFile", VexCode::FileOpen, name_);
    }
}

WinFile::~WinFile() {
    close();
}

void WinFile::close() noexcept {
    if (handle_ == INVALID_HANDLE_VALUE) return;
    CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
}

void WinFile::flush() noexcept {
    FlushFileBuffers(handle_);
}

std::int64_t WinFile::tell() const {
    LARGE_INTEGER position;
    if (!SetFilePointerEx(handle_, Large(0), &position, FILE_CURRENT)) {
        throw VexErrorSeekingFile(
            "WinFile::tell", VexCode::Sentence,
            CStringWFormat(TEXT("Error getting current file position in file \"%s\"."), name_));
    }
    return position.QuadPart;
}

std::int64_t WinFile::size() const {
    LARGE_INTEGER result;
    if (!GetFileSizeEx(handle_, &result)) {
        throw VexErrorSeekingFile(
            "WinFile::size", VexCode::Sentence,
            CStringWFormat(TEXT("Error getting current file size in file \"%s\"."), name_));
    }
    return result.QuadPart;
}

void WinFile::seek(std::int64_t offset, std::uint32_t origin) {
    if (!SetFilePointerEx(handle_, Large(offset), nullptr, origin)) {
        throw VexErrorSeekingFile("WinFile::seek", VexCode::Sentence,
                                  kestrolumen::detail::SeekingFailed(name_, offset, origin));
    }
}

void WinFile::read(Bytes& bytes) {
    const bool done = MoveAll(bytes.data(), bytes.size(), [&](void* data, DWORD size, DWORD* moved) {
        return ReadFile(handle_, data, size, moved, nullptr);
    });
    if (!done) {
        throw VexErrorReadingFile("WinFile::read", VexCode::Sentence,
                                  kestrolumen::detail::ReadingFailed(name_));
    }
}

void WinFile::write(const Bytes& bytes) {
    const bool done = MoveAll(bytes.data(), bytes.size(), [&](const void* data, DWORD size, DWORD* moved) {
        return WriteFile(handle_, data, size, moved, nullptr);
    });
    if (!done) {
        throw VexErrorWritingFile("WinFile::write", VexCode::Sentence,
                                  kestrolumen::detail::WritingFailed(name_));
    }
}

void WinFile::append(WinFile& source) {
    append_range(source, 0, source.size());
}

void WinFile::append_range(WinFile& source, std::int64_t offset, std::int64_t count) {
    kestrolumen::detail::AppendRange(*this, source, offset, count);
}

std::int64_t GetHandleFileSize(HANDLE handle) noexcept {
    LARGE_INTEGER size;
    return GetFileSizeEx(handle, &size) ? size.QuadPart : -1;
}

std::int64_t SetHandlePosition(HANDLE handle, std::int64_t position) noexcept {
    LARGE_INTEGER moved;
    return SetFilePointerEx(handle, Large(position), &moved, FILE_BEGIN) ? moved.QuadPart : 0xFFFFFFFF;
}
