// Runs a fuzz target over the files of folders, over every beginning of them, and over texts made of their
// pieces at random but the same each time; each in memory of its own size. Gives 1 if a folder has no files.
#include "fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace {

using Input = std::vector<std::uint8_t>;

void Run(Input input) {
    input.shrink_to_fit();
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

Input ContentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> content((std::istreambuf_iterator<char>(file)), {});
    return Input(content.begin(), content.end());
}

void RunBeginnings(const Input& seed) {
    for (auto end = seed.begin(); end != seed.end(); ++end) Run(Input(seed.begin(), end));
    Run(seed);
}

// Pieces of the seeds one behind the other, and some bytes put in their place.
Input Mixed(const std::vector<Input>& seeds, std::mt19937& random) {
    Input mixed;
    for (auto pieces = 1 + random() % 4; pieces > 0; --pieces) {
        const Input& seed = seeds[random() % seeds.size()];
        const auto begin = random() % (seed.size() + 1);
        const auto size = random() % (seed.size() - begin + 1);
        const auto first = seed.begin() + static_cast<std::ptrdiff_t>(begin);
        mixed.insert(mixed.end(), first, first + static_cast<std::ptrdiff_t>(size));
    }
    for (auto changes = random() % 3; changes > 0 && !mixed.empty(); --changes) {
        mixed[random() % mixed.size()] = static_cast<std::uint8_t>(random());
    }
    return mixed;
}

}  // namespace

int main(int count, char** arguments) {
    for (const char* folder : std::span(arguments, static_cast<std::size_t>(count)).subspan(1)) {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        std::vector<Input> seeds;
        std::transform(files.begin(), files.end(), std::back_inserter(seeds), ContentOf);
        std::printf("%zu files\n", seeds.size());
        if (seeds.empty()) return 1;
        std::for_each(seeds.begin(), seeds.end(), RunBeginnings);
        std::mt19937 random(5300);
        for (int round = 0; round < 5000; ++round) Run(Mixed(seeds, random));
    }
    return 0;
}
