// The lines of a file of any bytes, beside those that fgets gives chunk by chunk.
#include "fuzz.h"

#include "platform/file.h"

#include <filesystem>
#include <string>
#include <vector>

using fuzz::Check;

namespace {

// Through a buffer of 1025 bytes, where a chunk is cut at its first zero.
std::vector<std::string> LinesOfFgets(std::FILE* stream) {
    std::vector<std::string> lines;
    std::string line;
    char chunk[1025];
    for (bool atEnd = false; !atEnd;) {
        chunk[0] = '\0';
        atEnd = std::fgets(chunk, sizeof chunk, stream) == nullptr;
        if (!atEnd) line += chunk;
        const bool isEnded = !atEnd && chunk[0] != '\0' && line.back() == '\n';
        if (!atEnd && !isEnded) continue;
        if (isEnded) line.pop_back();
        if (!atEnd || !line.empty()) lines.push_back(line);
        line.clear();
    }
    return lines;
}

const std::filesystem::path& Place() {
    static const std::filesystem::path place = std::filesystem::temp_directory_path() /
                                               ("kestrolumen-lines-" + std::to_string(GetCurrentProcessId()));
    return place;
}

// Takes an input's file away: one that is emptied and written again ext4 writes through to the disk at its closing, which
// takes longer than all else.
struct Scratch {
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove(Place(), ignored);
    }
};

}  // namespace

// The first byte says how often the others are repeated, so that lines outgrow chunks and blocks.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Scratch scratch;
    static const StdWString name = WStringFromUtf8(Place().string());
    std::vector<std::uint8_t> bytes;
    for (int times = size == 0 ? 0 : data[0] % 32 == 31 ? 300 : data[0] % 32; times > 0; --times) {
        bytes.insert(bytes.end(), data + 1, data + size);
    }
    File file(name, TEXT("w+b"));
    file.write(bytes);
    file.seek(0);
    const std::vector<std::string> expected = LinesOfFgets(file.stream());
    file.seek(0);
    Check(file.get_lines() == expected, "the lines are those of fgets");
    Check(file.tell() == file.size(), "the file is read to its end");
    return 0;
}
