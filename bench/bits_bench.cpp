// Bit counts, packed index sets and primes beside the loops that one would write first.
#include "platform/bits.h"
#include "platform/indexsets.h"
#include "platform/primes.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <random>
#include <string>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Values = std::vector<std::int32_t>;

// ---- The plain loops, out of the optimiser's sight as ours are --------------------------------------------

#if defined(__x86_64__) || defined(__i386__)
#define WITH_POPCNT gnu::noipa, gnu::target("popcnt")
#else
#define WITH_POPCNT gnu::noipa
#endif

[[WITH_POPCNT]] int CountOfWords(const std::vector<std::uint64_t>& words) {
    int count = 0;
    for (const std::uint64_t word : words) count += std::popcount(word);
    return count;
}

void PutHeader(Bytes& packed, std::uint32_t header) {
    std::memcpy(packed.data(), &header, sizeof header);
}

[[gnu::noipa]] Bytes PackPlainly(const Values& values) {
    std::int32_t largest = -1;
    for (const std::int32_t value : values) largest = std::max(largest, value);
    const std::size_t listBytes = 4 * values.size();
    const std::size_t bitBytes = (static_cast<std::size_t>(largest) + 8) / 8;
    Bytes packed(std::min(listBytes, bitBytes) + 4);
    if (bitBytes >= listBytes) {
        PutHeader(packed, static_cast<std::uint32_t>(values.size()));
        for (std::size_t i = 0; i < values.size(); ++i) std::memcpy(&packed[4 + 4 * i], &values[i], 4);
    } else {
        PutHeader(packed, static_cast<std::uint32_t>(largest) | 0x80000000);
        for (const std::int32_t value : values) SetBit(&packed[4], value);
    }
    return packed;
}

[[gnu::noipa]] Values UnpackPlainly(const Bytes& packed) {
    std::int32_t header = 0;
    std::memcpy(&header, packed.data(), sizeof header);
    Values values;
    if (header >= 0) {
        values.resize(static_cast<std::size_t>(header));
        for (std::size_t i = 0; i < values.size(); ++i) std::memcpy(&values[i], &packed[4 + 4 * i], 4);
    } else {
        const std::int32_t largest = header & 0x7FFFFFFF;
        for (std::int32_t value = 0; value <= largest; ++value) {
            if (TestBit(&packed[4], value)) values.push_back(value);
        }
    }
    return values;
}

[[gnu::noipa]] std::int32_t SievePlainly(std::int32_t limit) {
    Bytes composite((static_cast<std::size_t>(limit) + 7) / 8);
    for (std::int32_t p = 2; p < limit / 2; ++p) {
        if (TestBit(composite.data(), p)) continue;
        for (std::int64_t multiple = 2 * std::int64_t{p}; multiple < limit; multiple += p) {
            SetBit(composite.data(), static_cast<std::int32_t>(multiple));
        }
    }
    std::int32_t prime = limit - 1;
    while (TestBit(composite.data(), prime)) --prime;
    return prime;
}

// ---- The runs
// ----------------------------------------------------------------------------------------------

// A million values, one in `spacing` of the numbers, ascending or not.
Values Million(std::int32_t spacing, bool shuffled) {
    Values values(1'000'000);
    std::mt19937 random(1);
    std::int32_t next = 0;
    for (std::int32_t& value : values) {
        value = next + static_cast<std::int32_t>(random() % static_cast<unsigned>(spacing));
        next += spacing;
    }
    if (shuffled) std::shuffle(values.begin(), values.end(), random);
    return values;
}

void Register() {
    const auto add = [](const std::string& name, auto run) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
    };
    constexpr std::int32_t bits = 100'000'000;
    add("BitCountOfArray of 10^8 bits/ours", [](benchmark::State& state) {
        const Bytes bytes(bits / 8, 0x5A);
        for (auto _ : state) benchmark::DoNotOptimize(BitCountOfArray(bytes.data(), bits));
    });
    add("BitCountOfArray of 10^8 bits/popcount of words", [](benchmark::State& state) {
        const std::vector<std::uint64_t> words(bits / 64, 0x5A5A5A5A5A5A5A5A);
        for (auto _ : state) benchmark::DoNotOptimize(CountOfWords(words));
    });
    const struct {
        const char* name;
        std::int32_t spacing;
        bool shuffled;
    } sets[] = {
        {"bits, one in 1", 1, false}, {"bits, one in 1, shuffled", 1, true}, {"bits, one in 2", 2, false},
        {"bits, one in 4", 4, false}, {"bits, one in 31", 31, false},        {"list", 1000, false},
    };
    for (const auto& set : sets) {
        const Values values = Million(set.spacing, set.shuffled);
        const auto pack = std::string("PackIndexSet of 10^6, ") + set.name;
        const auto unpack = std::string("UnpackIndexSet of 10^6, ") + set.name;
        const Bytes packed = PackIndexSet(values);
        if (packed != PackPlainly(values) || UnpackIndexSet(packed) != UnpackPlainly(packed)) std::abort();
        add(pack + "/ours", [values](benchmark::State& state) {
            for (auto _ : state) benchmark::DoNotOptimize(PackIndexSet(values));
        });
        add(pack + "/plain loop", [values](benchmark::State& state) {
            for (auto _ : state) benchmark::DoNotOptimize(PackPlainly(values));
        });
        if (set.shuffled) continue;
        add(unpack + "/ours", [packed](benchmark::State& state) {
            for (auto _ : state) benchmark::DoNotOptimize(UnpackIndexSet(packed));
        });
        add(unpack + "/plain loop", [packed](benchmark::State& state) {
            for (auto _ : state) benchmark::DoNotOptimize(UnpackPlainly(packed));
        });
    }
    add("LargestPrimeBelow of 2^31 - 1/ours", [](benchmark::State& state) {
        std::int32_t limit = 0x7FFFFFFF;
        for (auto _ : state) {
            benchmark::DoNotOptimize(limit);
            benchmark::DoNotOptimize(LargestPrimeBelow(limit));
        }
    });
    benchmark::RegisterBenchmark("LargestPrimeBelow of 2^31 - 1/sieve",
                                 [](benchmark::State& state) {
                                     for (auto _ : state) benchmark::DoNotOptimize(SievePlainly(0x7FFFFFFF));
                                 })
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(1)
        ->Repetitions(1);
}

const bool registered = (Register(), true);

}  // namespace
