// Runs a fuzz target over the files of folders, and over every beginning of them, each in memory of its own
// size. Gives 1 if a folder has no files.
#include "fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

void RunBeginnings(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> content((std::istreambuf_iterator<char>(file)), {});
    for (std::size_t size = 0; size <= content.size(); ++size) {
        const std::vector<std::uint8_t> bytes(content.begin(),
                                              content.begin() + static_cast<std::ptrdiff_t>(size));
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
}

}  // namespace

int main(int count, char** arguments) {
    for (const char* folder : std::span(arguments, static_cast<std::size_t>(count)).subspan(1)) {
        int files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            RunBeginnings(entry.path());
            ++files;
        }
        std::printf("%d files\n", files);
        if (files == 0) return 1;
    }
    return 0;
}
