// Files beside the system's own calls, stdio, std::getline and std::filesystem. All files are in the system's
// cache: what is measured is the work of the processor.
#include "platform/directories.h"
#include "platform/file.h"
#include "platform/winfile.h"
#include "support/heap.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::size_t textSize = 64 << 20, largeSize = 256 << 20;
constexpr int folders = 200, filesOfEach = 100, records = 100'000;

// The files that are read, made at the start of the program.
class Folder {
  public:
    Folder() {
        std::filesystem::create_directory(path_);
        std::string text;
        while (text.size() < textSize) {
            text.append(20 + text.size() * text.size() / 7 % 100, 'x') += '\n';
        }
        text.resize(textSize);
        std::ofstream(path_ / "text") << text;
        std::ofstream large(path_ / "large");
        for (std::size_t size = 0; size < largeSize; size += textSize) large << text;
        for (int folder = 0; folder < folders; ++folder) {
            const std::filesystem::path path = path_ / "tree" / std::to_string(folder);
            std::filesystem::create_directories(path);
            for (int file = 0; file < filesOfEach; ++file) {
                std::ofstream(path / ("some file " + std::to_string(file)));
            }
        }
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] std::string operator/(const char* name) const { return path_ / name; }

  private:
    std::filesystem::path path_ = std::filesystem::temp_directory_path() / "kestrolumen-files-bench";
};
const Folder folder;

StdWString Wide(const char* name) {
    return WStringFromUtf8(folder / name);
}

// Reads a file from start to end through one block.
std::size_t ReadThrough(const char* name, void* block, std::size_t size) {
    const int file = open((folder / name).c_str(), O_RDONLY);
    std::size_t sum = 0;
    for (ssize_t count; (count = read(file, block, size)) > 0;) sum += static_cast<std::size_t>(count);
    close(file);
    return sum;
}
std::size_t ReadWhole(const char* name, std::size_t size) {
    const std::unique_ptr<char[]> bytes(new char[size]);
    return ReadThrough(name, bytes.get(), size);
}

template <typename Body>
void Run(benchmark::State& state, Body body) {
    for (auto _ : state) benchmark::DoNotOptimize(body());
    const bench::HeapUse use = bench::HeapUseOf([&] { benchmark::DoNotOptimize(body()); });
    state.counters["peak MiB"] = static_cast<double>(use.peak) / (1 << 20);
}

std::size_t Walked() {
    std::size_t count = 0;
    WalkDirectory(Wide("tree").c_str(), [&](const WCHAR* path) {
        count += path[0] != 0;
        return true;
    });
    return count;
}

std::size_t WalkedByStandard() {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "tree")) {
        if (!entry.is_directory()) count += entry.path().native()[0] != 0;
    }
    return count;
}

void Register() {
    const auto add = [](const char* name, auto body) {
        benchmark::RegisterBenchmark(name, [body](benchmark::State& state) {
            Run(state, body);
        })->Unit(benchmark::kMillisecond);
    };
    add("64 MiB read whole/ours", [] { return File(Wide("text"), TEXT("rb")).read().size(); });
    add("64 MiB read whole/read(2)", [] { return ReadWhole("text", textSize); });
    add("Lines of 64 MiB/ours", [] { return File(Wide("text"), TEXT("rb")).get_lines().size(); });
    add("Lines of 64 MiB/getline", [] {
        std::ifstream file(folder / "text");
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) lines.push_back(line);
        return lines.size();
    });
    add("Lines of 64 MiB/read(2)", [] { return ReadWhole("text", textSize); });
    add("CRC-64 of a file of 256 MiB/ours", [] { return File(Wide("large"), TEXT("rb")).crc64(); });
    add("CRC-64 of a file of 256 MiB/read(2)", [] {
        std::vector<char> block(0x40000);
        return ReadThrough("large", block.data(), block.size());
    });
    add("CRC-64 of a file of 256 MiB/read(2) into memory", [] { return ReadWhole("large", largeSize); });
    add("100,000 records appended/ours", [] {
        const char record[] = "a record of some length";
        File file(Wide("records"), TEXT("wb"));
        for (int i = 0; i < records; ++i) file.write(record, sizeof record);
        return file.tell();
    });
    add("100,000 records appended/stdio", [] {
        const char record[] = "a record of some length";
        std::FILE* const file = std::fopen((folder / "records").c_str(), "wb");
        for (int i = 0; i < records; ++i) std::fwrite(record, 1, sizeof record, file);
        const auto position = std::ftell(file);
        std::fclose(file);
        return position;
    });
    add("20,000 files walked/ours", Walked);
    add("20,000 files walked/filesystem", WalkedByStandard);
}

const bool registered = (Register(), true);

}  // namespace
