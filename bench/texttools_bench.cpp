// Numbers, lists, tokens and search of text/ beside {fmt} and ICU. Ours are measured as callers have them, result
// string included. standard_bench.cpp has the codings.

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fmt/xchar.h>
#include <unicode/usearch.h>
#include <unicode/ustring.h>

#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "text/text.h"

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

template <class Operation>
void Measure(benchmark::State& state, std::size_t bytes, Operation operation) {
    for (auto _ : state) {
        auto result = operation();
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

bool IsSame(const CStringA& ours, const std::string& rival) {
    return ours == rival.c_str();
}
// Registers "CASE/ours" and "CASE/rival".
template <class Ours, class Rival>
void Compare(const std::string& name, const char* rivalName, std::size_t bytes, Ours ours, Rival rival) {
    const auto add = [&](const std::string& who, auto operation) {
        benchmark::RegisterBenchmark((name + "/" + who).c_str(), [bytes, operation](benchmark::State& state) {
            Measure(state, bytes, operation);
        });
    };
    add("ours", ours);
    add(rivalName, rival);
}

// Those whose results have to be the same.
template <class Ours, class Rival>
void CompareSame(const std::string& name, const char* rivalName, std::size_t bytes, Ours ours, Rival rival) {
    if (!IsSame(ours(), rival())) throw std::logic_error(name + ": the results differ");
    Compare(name, rivalName, bytes, ours, rival);
}

// Numbers.

const std::vector<double>& Doubles() {
    static const std::vector<double> doubles = [] {
        std::mt19937_64 random(54);
        std::uniform_real_distribution<double> mantissa(1, 10);
        std::vector<double> made(1'000'000);
        for (auto& value : made) value = mantissa(random) * std::pow(10, static_cast<int>(random() % 12) - 4);
        return made;
    }();
    return doubles;
}

constexpr std::size_t someNumbers = 1000;

template <class Write>
std::size_t EachDouble(Write write) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < someNumbers; ++i) length += write(Doubles()[i]);
    return length;
}

template <class Write>
std::size_t EachInteger(Write write) {
    std::size_t length = 0;
    std::uint64_t value = 88172645463325252;
    for (std::size_t i = 0; i < someNumbers; ++i) {
        value ^= value << 13;
        value ^= value >> 7;
        value ^= value << 17;
        length += write(static_cast<std::int64_t>(value) >> (value % 60));
    }
    return length;
}

struct Thousands : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

// Tokens.

// Lines of `length` units with a comma behind.
StdWString Lines(std::size_t length) {
    StdWString text;
    text.reserve(32 * mebibyte);
    while (text.size() < 32 * mebibyte) text.append(length, TEXT('x')).append(1, TEXT(','));
    return text;
}

std::size_t TokenizeOurs(const CStringW& text, const CStringW& delimiters) {
    std::size_t count = 0;
    for (int position = 0;; ++count) {
        benchmark::DoNotOptimize(TokenizeQuotedW(text, delimiters, position));
        if (position == -1) return count;
    }
}

// Over the bytes, which no token holds.
std::size_t TokenizeMemchr(const CStringW& text) {
    const auto* at = reinterpret_cast<const char*>(text.GetString());
    const char* const end = at + 2 * text.GetLength();
    std::size_t count = 0;
    for (; at < end; ++count) {
        const auto* found =
            static_cast<const char*>(std::memchr(at, ',', static_cast<std::size_t>(end - at)));
        at = found == nullptr ? end : found + 1;
    }
    return count;
}

// Search.

const StdWString& Haystack() {
    static const StdWString text = [] {
        std::mt19937 random(55);
        StdWString made;
        while (made.size() < mebibyte) {
            for (auto length = 2 + random() % 8; length > 0; --length) {
                made += static_cast<WCHAR>(TEXT('a') + random() % 26);
            }
            made += TEXT(' ');
        }
        return made + TEXT("Needle in it");
    }();
    return text;
}

// The most that can be had of ICU's collation search: opened before the clock runs.
std::int32_t FindIcu(UStringSearch* search) {
    UErrorCode error = U_ZERO_ERROR;
    usearch_reset(search);
    return usearch_first(search, &error);
}

void CompareSearches() {
    static const CStringW wide(Haystack().c_str());
    benchmark::RegisterBenchmark("FindNoCaseW/ours", [](benchmark::State& state) {
        Measure(state, 2 * mebibyte, [] { return FindNoCaseW(wide, TEXT("NEEDLE")); });
    });
    UErrorCode error = U_ZERO_ERROR;
    static UStringSearch* const search =
        usearch_open(u"NEEDLE", -1, wide.GetString(), wide.GetLength(), "en", nullptr, &error);
    usearch_setAttribute(search, USEARCH_ELEMENT_COMPARISON, USEARCH_STANDARD_ELEMENT_COMPARISON, &error);
    ucol_setStrength(usearch_getCollator(search), UCOL_SECONDARY);
    usearch_reset(search);
    benchmark::RegisterBenchmark("FindNoCaseW/icu", [](benchmark::State& state) {
        Measure(state, 2 * mebibyte, [] { return FindIcu(search); });
    });
}

const bool registered = [] {
    for (const int digits : {7, 15, 17}) {
        Compare(
            "CStringWFromDouble/" + std::to_string(digits), "fmt", 8 * someNumbers,
            [digits] {
                return EachDouble([digits](double value) {
                    return static_cast<std::size_t>(
                        CStringWFromDouble(value, static_cast<std::int16_t>(digits), '.').GetLength());
                });
            },
            [digits] {
                return EachDouble([digits](double value) {
                    return fmt::format(FMT_STRING(L"{:.{}g}"), value, digits).size();
                });
            });
    }
    static const std::locale grouping(std::locale::classic(), new Thousands);
    Compare(
        "CStringAFromInt64Grouped", "fmt", 8 * someNumbers,
        [] {
            return EachInteger([](std::int64_t value) {
                return static_cast<std::size_t>(CStringAFromInt64Grouped(value).GetLength());
            });
        },
        [] {
            return EachInteger(
                [](std::int64_t value) { return fmt::format(grouping, FMT_STRING("{:L}"), value).size(); });
        });
    benchmark::RegisterBenchmark("CStringAFromInt64Grouped/fmt_ungrouped", [](benchmark::State& state) {
        Measure(state, 8 * someNumbers, [] {
            return EachInteger(
                [](std::int64_t value) { return fmt::format(FMT_STRING("{}"), value).size(); });
        });
    });
    CompareSame(
        "CStringAFromVectorDouble", "fmt", 8 * Doubles().size(),
        [] { return CStringAFromVectorDouble(Doubles()); },
        [] { return fmt::format(FMT_STRING("{{ {:g} }}"), fmt::join(Doubles(), ", ")); });

    for (const std::size_t length : {16u, 256u, 4096u}) {
        static std::vector<CStringW> texts(3);
        CStringW& text = texts[length == 16 ? 0 : length == 256 ? 1 : 2];
        text = Lines(length).c_str();
        Compare(
            "TokenizeQuotedW/64MiB/" + std::to_string(length), "memchr", 64 * mebibyte,
            [&text, delimiters = CStringW(TEXT(","))] { return TokenizeOurs(text, delimiters); },
            [&text] { return TokenizeMemchr(text); });
    }
    CompareSearches();
    return true;
}();

}  // namespace
