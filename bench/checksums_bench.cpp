// Checksums beside zlib and liblzma; standard_bench.cpp has the loop that looks up a table for each byte.
//
// liblzma's CRC-64 takes its bits in the other order, so the speed alone is compared.
#include "excelvalues/xxloper.h"
#include "platform/checksums.h"

#include <benchmark/benchmark.h>
#include <lzma.h>
#include <zlib.h>

#include <string>
#include <vector>

namespace {

// The lengths of a call: a megabyte at once, or the same bytes in small pieces.
struct Pieces {
    std::vector<unsigned char> bytes;
    std::size_t length;

    explicit Pieces(std::size_t pieceLength) : bytes(std::size_t{1} << 20), length(pieceLength) {
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * i >> 3);
    }
};

template <typename State, typename Update>
void Run(benchmark::State& state, std::size_t length, Update update) {
    const Pieces pieces(length);
    for (auto _ : state) {
        State crc = static_cast<State>(-1);
        for (std::size_t at = 0; at + length <= pieces.bytes.size(); at += length) {
            crc = update(crc, &pieces.bytes[at], length);
        }
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * (1 << 20));
}

void Register() {
    const auto add = [](const std::string& name, auto run) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
    };
    for (const std::size_t length : {1, 2, 3, 4, 6, 8, 12, 15, 16, 40, 100, 300, 4000, 1 << 20}) {
        const std::string stem = " of 1 MiB in pieces of " + std::to_string(length) + "/";
        add("CRC-32" + stem + "ours",
            [length](benchmark::State& state) { Run<std::uint32_t>(state, length, Crc32Update); });
        add("CRC-32" + stem + "zlib", [length](benchmark::State& state) {
            Run<uLong>(state, length, [](uLong crc, const unsigned char* data, std::size_t count) {
                return crc32(crc, data, static_cast<uInt>(count));
            });
        });
        add("CRC-64" + stem + "ours", [length](benchmark::State& state) {
            Run<std::uint64_t>(state, length,
                               [](std::uint64_t crc, const unsigned char* data, std::size_t count) {
                                   return Crc64Update(&crc, data, count);
                               });
        });
        add("CRC-64" + stem + "liblzma", [length](benchmark::State& state) {
            Run<std::uint64_t>(state, length,
                               [](std::uint64_t crc, const unsigned char* data, std::size_t count) {
                                   return lzma_crc64(data, count, crc);
                               });
        });
    }
    // Of an array's cells one by one, as the fields come, and through the value's own checksum.
    add("CRC-64 of 1000x1000 numbers/ours", [](benchmark::State& state) {
        const XXloperPtr array = XXloperFromDoubles(1000, 1000, std::vector<double>(1000000, 1.5));
        for (auto _ : state) benchmark::DoNotOptimize(array->Crc64(0));
    });
    add("CRC-64 of 1000x1000 numbers/field by field", [](benchmark::State& state) {
        const XXloperPtr array = XXloperFromDoubles(1000, 1000, std::vector<double>(1000000, 1.5));
        for (auto _ : state) {
            std::uint64_t crc = 0;
            for (std::size_t i = 0; i < 1000000; ++i) {
                const XLOPER12& cell = array->val.array.lparray[i];
                crc = Crc64Update(&crc, &cell.xltype, 4);
                crc = Crc64Update(&crc, &cell.val, 8);
            }
            benchmark::DoNotOptimize(crc);
        }
    });
}

const bool registered = (Register(), true);

}  // namespace
