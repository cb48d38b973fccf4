// Registry reads beside a look-up in a hash table and a read of a small file; the answers that are kept for
// the life of the process beside an empty call.
#include "platform/cpufeatures.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unordered_map>

namespace {

constexpr int keys = 50, valuesOfEach = 20, reads = 100000;
constexpr const WCHAR* path = TEXT("Software\\Kestrolumen bench\\Key 25");

RegistryKey Open(const WCHAR* subkey = path, REGSAM access = KEY_READ) {
    return RegistryKey(1, HKEY_CURRENT_USER, subkey, access, NullSecurityAttributes().get());
}

// A thousand values in a registry file of the benchmark's own, and a file with one of them.
class Folder {
  public:
    Folder() {
        std::filesystem::create_directory(path_);
        setenv("KESTROLUMEN_REGISTRY", (path_ / "registry").c_str(), 1);
        for (int number = 0; number < keys; ++number) {
            RegistryKey key =
                Open(CStringWFormat(TEXT("Software\\Kestrolumen bench\\Key %d"), number).GetString(),
                     KEY_ALL_ACCESS);
            for (int value = 0; value < valuesOfEach; ++value) {
                key.ValueWrite(CStringWFormat(TEXT("Value %d"), value), value);
            }
            key.ValueWrite("Text", CStringW(TEXT("C:\\Program Files\\Some Program\\Some Folder")));
        }
        std::ofstream(path_ / "value") << "12";
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] std::string ValueFile() const { return (path_ / "value").string(); }

  private:
    std::filesystem::path path_ = std::filesystem::temp_directory_path() / "kestrolumen-registry-bench";
};

template <typename Read>
void HundredThousand(benchmark::State& state, Read read) {
    for (auto _ : state) {
        for (int i = 0; i < reads; ++i) benchmark::DoNotOptimize(read());
    }
}

[[gnu::noipa]] bool EmptyCall() noexcept {
    return true;
}

void Register(const Folder& folder) {
    const auto add = [](const char* name, auto read) {
        benchmark::RegisterBenchmark((std::string("100000 ") + name).c_str(), [read](
                                                                                  benchmark::State& state) {
            HundredThousand(state, read);
        })->Unit(benchmark::kMillisecond);
    };
    static const RegistryKey key = Open();
    static std::unordered_map<std::string, int> table;
    for (int value = 0; value < valuesOfEach; ++value) table["Value " + std::to_string(value)] = value;

    add("reads of numbers/ours", [] { return key.ValueReadInt(TEXT("Value 12")); });
    add("reads of numbers/hash table", [] { return table.find("Value 12")->second; });
    add("reads of numbers/file", [file = folder.ValueFile()] {
        int number = 0;
        std::ifstream(file) >> number;
        return number;
    });
    add("reads of text/ours", [] { return key.ValueReadStringW(TEXT("Text")); });
    add("openings of a key/ours", [] { return Open().disposition(); });
    add("answers of the processor/empty call", EmptyCall);
    add("answers of the processor/CpuHasAvx2", CpuHasAvx2);
    add("answers of the processor/CpuVendor", CpuVendor);
}

}  // namespace

int main(int count, char** arguments) {
    const Folder folder;
    Register(folder);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
