#include "platform/file.h"

#include "errors/vex.h"
#include "platform/checksums.h"
#include "platform/detail/filerange.h"

#include <io.h>
#include <stdio.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

namespace {

[[noreturn]] void RaiseReadingFailed(const char* raiser, const CStringW& name) {
    throw VexErrorReadingFile(raiser, VexCode::Sentence, kestrolumen::detail::ReadingFailed(name));
}

// The pieces in which fgets gives the rest of a stream to a buffer of 1025 bytes, read in larger blocks.
class Chunks {
  public:
    explicit Chunks(std::FILE* stream) : stream_(stream), buffer_(0x10000) {}

    // Valid until the next call; empty at the end, where the stream tells whether it failed.
    std::string_view Next() {
        if (end_ - next_ < longest && !atEnd_) Refill();
        const char* const chunk = buffer_.data() + next_;
        const std::size_t available = std::min(longest, end_ - next_);
        const void* const lineEnd = std::memchr(chunk, '\n', available);
        const std::size_t length =
            lineEnd != nullptr ? static_cast<std::size_t>(static_cast<const char*>(lineEnd) - chunk) + 1
                               : available;
        next_ += length;
        taken_ += static_cast<std::int64_t>(length);
        return {chunk, length};
    }

    // The length of all chunks so far.
    [[nodiscard]] std::int64_t Taken() const noexcept { return taken_; }

  private:
    static constexpr std::size_t longest = 1024;

    void Refill() {
        end_ -= next_;
        std::memmove(buffer_.data(), buffer_.data() + next_, end_);
        next_ = 0;
        end_ += std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, stream_);
        atEnd_ = end_ < buffer_.size();
    }

    std::FILE* stream_;
    std::int64_t taken_ = 0;
    std::vector<char> buffer_;
    std::size_t next_ = 0;
    std::size_t end_ = 0;
    bool atEnd_ = false;
};

// Makes room for as many lines as a file of `size` bytes has, if all are like those that `taken` bytes of it
// gave; in steps, so that lines that turn out longer don't leave much of it unused.
void MakeRoom(std::vector<std::string>& lines, std::int64_t taken, std::int64_t size) {
    const auto count = static_cast<double>(lines.size());
    const double expected = count * static_cast<double>(size) / static_cast<double>(taken);
    lines.reserve(static_cast<std::size_t>(std::clamp(1.02 * expected, 1.5 * count, 4 * count)) + 16);
}

}  // namespace

File::File(const WCHAR* path, const WCHAR* mode) : name_(path) {
    static_cast<void>(_wfopen_s(&stream_, name_.GetString(), mode));
    if (stream_ == nullptr) throw VexErrorOpeningFile("File::File", VexCode::FileOpen, name_);
}

File::File(const StdWString& path, const WCHAR* mode) : File(path.c_str(), mode) {}

File::~File() {
    close();
}

void File::close() noexcept {
    if (stream_ == nullptr) return;
    static_cast<void>(std::fclose(stream_));
    stream_ = nullptr;
}

void File::flush() noexcept {
    // For a null stream fflush would flush all streams of the process.
    if (stream_ != nullptr) static_cast<void>(std::fflush(stream_));
}

std::int64_t File::tell() const noexcept {
    return stream_ != nullptr ? _ftelli64(stream_) : -1;
}

std::int64_t File::size() {
    const std::int64_t position = tell();
    seek(0, SEEK_END);
    const std::int64_t result = tell();
    seek(position);
    return result;
}

void File::seek(std::int64_t offset, std::int32_t origin) {
    if (stream_ == nullptr || _fseeki64(stream_, offset, origin) != 0) {
        throw VexErrorSeekingFile(
            "File::seek", VexCode::Sentence,
            kestrolumen::detail::SeekingFailed(name_, offset, static_cast<std::uint32_t>(origin)));
    }
}

void File::Read(void* target, std::size_t count) {
    if (stream_ == nullptr || std::fread(target, 1, count, stream_) != count) {
        RaiseReadingFailed("File::read", name_);
    }
}

void File::read(Bytes& bytes) {
    Read(bytes.data(), bytes.size());
}

File::Bytes File::read() {
    const auto count = static_cast<std::uint64_t>(size());
    if (count > std::numeric_limits<std::uint32_t>::max()) {
        throw VexErrorReadingFile(
            "File::read", VexCode::Sentence,
            CStringWFormat(TEXT("The file \"%s\" contains too much data to be read into a vector<byte>."),
                           name_));
    }
    // By way of a block that stays in the processor's cache: cheaper than to clear all the memory first.
    Bytes bytes, block(static_cast<std::size_t>(std::min<std::uint64_t>(count, 0x10000)));
    bytes.reserve(static_cast<std::size_t>(count));
    while (bytes.size() < count) {
        block.resize(std::min(static_cast<std::size_t>(count) - bytes.size(), block.size()));
        read(block);
        bytes.insert(bytes.end(), block.begin(), block.end());
    }
    return bytes;
}

void File::write(const Bytes& bytes) {
    Write(bytes.data(), bytes.size());
}

void File::write(const void* data, std::uint32_t count) {
    Write(data, count);
}

void File::Write(const void* data, std::size_t count) {
    if (stream_ == nullptr || std::fwrite(data, 1, count, stream_) != count) {
        throw VexErrorWritingFile("File::write", VexCode::Sentence,
                                  kestrolumen::detail::WritingFailed(name_));
    }
}

std::vector<std::string> File::get_lines() {
    if (stream_ == nullptr) RaiseReadingFailed("File::get_lines", name_);
    std::vector<std::string> lines;
    std::string begun;  // what earlier chunks have of a line
    Chunks chunks(stream_);
    const std::int64_t size = _filelengthi64(_fileno(stream_));
    for (std::string_view chunk = chunks.Next(); !chunk.empty(); chunk = chunks.Next()) {
        std::string_view text = chunk.substr(0, chunk.find('\0'));
        const bool endsLine = text.ends_with('\n');
        if (endsLine) text.remove_suffix(1);
        if (lines.size() == lines.capacity()) MakeRoom(lines, chunks.Taken(), size);
        if (endsLine && begun.empty()) {
            lines.emplace_back(text);
            continue;
        }
        begun += text;
        if (endsLine) lines.push_back(std::exchange(begun, {}));
    }
    if (std::ferror(stream_) != 0) RaiseReadingFailed("File::get_lines", name_);
    if (!begun.empty()) lines.push_back(std::move(begun));
    return lines;
}

void File::append(File& source) {
    append_range(source, 0, source.size());
}

void File::append_range(File& source, std::int64_t offset, std::int64_t count) {
    kestrolumen::detail::AppendRange(*this, source, offset, count);
}

std::uint64_t File::crc64() {
    constexpr std::int64_t chunk = 0x40000;
    const std::int64_t position = tell();
    const std::int64_t count = size();
    seek(0);
    std::uint64_t state = ~std::uint64_t{0};
    Bytes buffer(static_cast<std::size_t>(std::min(count, chunk)));
    for (std::int64_t left = count; left > 0; left -= chunk) {
        const auto length = static_cast<std::size_t>(std::min(left, chunk));
        Read(buffer.data(), length);
        state = Crc64Update(&state, buffer.data(), length);
    }
    seek(position);
    return ~state;
}
