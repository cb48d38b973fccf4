// Where the product has code of its own for what the standard library, or a loop that fits three lines, does too.
// It stays where it is 1.5 times as fast in the product's home.
#include "automation/automation.h"
#include "platform/platform.h"
#include "text/detail/digits.h"
#include "text/detail/unitset.h"
#include "text/text.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Values = std::vector<std::int32_t>;

// What both make has to be the same.
template <typename Ours, typename Standard>
void Compare(const std::string& name, const char* rival, Ours ours, Standard standard) {
    if (!(ours() == standard())) std::abort();
    benchmark::RegisterBenchmark((name + "/ours").c_str(), [=](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(ours());
    });
    benchmark::RegisterBenchmark((name + '/' + rival).c_str(), [=](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(standard());
    });
}

Bytes RandomBytes(std::size_t count) {
    std::mt19937 random(1);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

// ---- Bytes as text ---------------------------------------------------------------------------------------

constexpr char hexDigits[] = "0123456789ABCDEF";
constexpr char sixBitAlphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_$";

constexpr std::array<std::uint8_t, 256> ValuesOf(const char* alphabet) {
    std::array<std::uint8_t, 256> values{};
    for (std::uint8_t i = 0; alphabet[i] != 0; ++i) values[static_cast<unsigned char>(alphabet[i])] = i;
    return values;
}
constexpr auto hexValues = ValuesOf(hexDigits);
constexpr auto sixBitValues = ValuesOf(sixBitAlphabet);

CStringA HexByLoop(const Bytes& bytes) {
    CStringA text;
    char* digits = text.GetBufferSetLength(static_cast<int>(2 * bytes.size()));
    for (const std::uint8_t byte : bytes) {
        *digits++ = hexDigits[byte >> 4];
        *digits++ = hexDigits[byte & 15];
    }
    return text;
}

unsigned ValueAt(const std::array<std::uint8_t, 256>& values, const char* at) {
    return values[static_cast<unsigned char>(*at)];
}

Bytes BytesByLoop(const CStringA& hex) {
    Bytes bytes(static_cast<std::size_t>(hex.GetLength()) / 2);
    const char* at = hex.GetString();
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(ValueAt(hexValues, at) << 4 | ValueAt(hexValues, at + 1));
        at += 2;
    }
    return bytes;
}

// The bytes come in threes.
CStringA SixBitByLoop(const Bytes& bytes) {
    CStringA text;
    char* at = text.GetBufferSetLength(static_cast<int>(bytes.size() / 3 * 4));
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const unsigned bits = unsigned{bytes[i]} << 16 | unsigned{bytes[i + 1]} << 8 | bytes[i + 2];
        for (const int shift : {18, 12, 6, 0}) *at++ = sixBitAlphabet[bits >> shift & 63];
    }
    return text;
}

Bytes BytesOfSixBitByLoop(const CStringA& text) {
    Bytes bytes(static_cast<std::size_t>(text.GetLength()) / 4 * 3);
    const char* at = text.GetString();
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned bits = 0;
        for (int k = 0; k < 4; ++k) bits = bits << 6 | ValueAt(sixBitValues, at++);
        for (std::size_t k = 0; k < 3; ++k) bytes[i + k] = static_cast<std::uint8_t>(bits >> (16 - 8 * k));
    }
    return bytes;
}

void AddCodings(std::size_t size) {
    const Bytes bytes = RandomBytes(size);
    const CStringA hex = HexFromBytes(bytes);
    const CStringA text6 = Text6FromBytes(bytes);
    const auto named = [size](const char* name) { return name + (", " + std::to_string(size)) + " bytes"; };
    Compare(
        named("HexFromBytes"), "loop", [=] { return HexFromBytes(bytes); }, [=] { return HexByLoop(bytes); });
    Compare(
        named("BytesFromHex"), "loop", [=] { return BytesFromHex(hex); }, [=] { return BytesByLoop(hex); });
    Compare(
        named("Text6FromBytes"), "loop", [=] { return Text6FromBytes(bytes); },
        [=] { return SixBitByLoop(bytes); });
    Compare(
        named("BytesFromText6"), "loop", [=] { return BytesFromText6(text6); },
        [=] { return BytesOfSixBitByLoop(text6); });
}

// ---- Bits ------------------------------------------------------------------------------------------------

std::int32_t CountByWords(const Bytes& bytes) {
    std::int32_t count = 0;
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, &bytes[at], sizeof word);
        count += std::popcount(word);
    }
    return count;
}

Bytes PackByLoop(const Values& values) {
    const auto largest = static_cast<std::uint32_t>(*std::ranges::max_element(values));
    Bytes packed(4 + largest / 8 + 1);
    const std::uint32_t header = largest | 0x80000000;
    std::memcpy(packed.data(), &header, sizeof header);
    for (const std::int32_t value : values) SetBit(&packed[4], value);
    return packed;
}

Values UnpackByZeros(const Bytes& packed) {
    Values values;
    for (std::size_t at = 4; at < packed.size(); ++at) {
        for (std::uint8_t bits = packed[at]; bits != 0;) {
            const int place = std::countl_zero(bits);
            values.push_back(static_cast<std::int32_t>(8 * (at - 4)) + place);
            bits = static_cast<std::uint8_t>(bits ^ 0x80 >> place);
        }
    }
    return values;
}

Values UnpackByLoop(const Bytes& packed) {
    std::uint32_t header = 0;
    std::memcpy(&header, packed.data(), sizeof header);
    Values values;
    for (std::int32_t value = 0; value <= static_cast<std::int32_t>(header & 0x7FFFFFFF); ++value) {
        if (TestBit(&packed[4], value)) values.push_back(value);
    }
    return values;
}

std::int32_t SievedPrime(std::int32_t limit) {
    Bytes composite(static_cast<std::size_t>(limit) / 8 + 1);
    for (std::int32_t p = 2; p < limit / 2; ++p) {
        if (TestBit(composite.data(), p)) continue;
        for (std::int32_t multiple = 2 * p; multiple < limit; multiple += p)
            SetBit(composite.data(), multiple);
    }
    std::int32_t prime = limit - 1;
    while (TestBit(composite.data(), prime)) --prime;
    return prime;
}

void AddBits() {
    Compare(
        "LargestPrimeBelow, 10^6", "sieve", [] { return LargestPrimeBelow(1'000'000); },
        [] { return SievedPrime(1'000'000); });
    for (const std::size_t size : {64u, 1u << 20}) {
        const Bytes bytes = RandomBytes(size);
        Compare(
            "BitCountOfArray, " + std::to_string(size) + " bytes", "std::popcount",
            [=] { return BitCountOfArray(bytes.data(), static_cast<std::int32_t>(8 * bytes.size())); },
            [=] { return CountByWords(bytes); });
    }
    for (const std::int32_t spacing : {1, 2, 4, 31}) {
        Values values(100'000);
        std::mt19937 random(1);
        std::int32_t next = 0;
        for (std::int32_t& value : values) {
            value = next + static_cast<std::int32_t>(random() % static_cast<unsigned>(spacing));
            next += spacing;
        }
        const Bytes packed = PackIndexSet(values);
        const std::string form = ", one in " + std::to_string(spacing);
        Compare(
            "PackIndexSet" + form, "SetBit", [=] { return PackIndexSet(values); },
            [=] { return PackByLoop(values); });
        Compare(
            "UnpackIndexSet" + form, "std::countl_zero", [=] { return UnpackIndexSet(packed); },
            [=] { return UnpackByZeros(packed); });
        Compare(
            "UnpackIndexSet" + form, "TestBit", [=] { return UnpackIndexSet(packed); },
            [=] { return UnpackByLoop(packed); });
    }
}

// ---- Checksums -------------------------------------------------------------------------------------------

constexpr auto table32 = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        table[i] = i;
        for (int bit = 0; bit < 8; ++bit) table[i] = table[i] >> 1 ^ (table[i] & 1 ? 0xEDB88320u : 0);
    }
    return table;
}();
constexpr auto table64 = [] {
    std::array<std::uint64_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        std::uint64_t entry = std::uint64_t{i} << 56;
        for (int bit = 0; bit < 8; ++bit) entry = entry << 1 ^ (entry >> 63 ? 0x42F0E1EBA9EA3693u : 0);
        table[i] = entry;
    }
    return table;
}();

std::uint32_t Crc32ByTable(const Bytes& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) crc = crc >> 8 ^ table32[(crc ^ byte) & 0xFF];
    return crc;
}
std::uint64_t Crc64ByTable(const Bytes& bytes) {
    std::uint64_t crc = ~std::uint64_t{0};
    for (const std::uint8_t byte : bytes)
        crc = crc << 8 ^ table64[static_cast<std::size_t>(crc >> 56) ^ byte];
    return ~crc;
}

void AddChecksums() {
    for (const std::size_t size : {16u, 100u, 1u << 20}) {
        const Bytes bytes = RandomBytes(size);
        const std::string form = ", " + std::to_string(size) + " bytes";
        Compare(
            "Crc32" + form, "table", [=] { return Crc32(bytes.data(), bytes.size()); },
            [=] { return Crc32ByTable(bytes); });
        Compare(
            "Crc64" + form, "table", [=] { return Crc64(bytes.data(), bytes.size()); },
            [=] { return Crc64ByTable(bytes); });
    }
}

// ---- Tokens and search -----------------------------------------------------------------------------------

template <typename Unit, typename Upper>
const Unit* FindByStandard(std::basic_string_view<Unit> text, std::basic_string_view<Unit> sought,
                           Upper upper) {
    const auto found = std::search(text.begin(), text.end(), sought.begin(), sought.end(),
                                   [upper](Unit left, Unit right) { return upper(left) == upper(right); });
    return found == text.end() ? nullptr : &*found;
}

template <typename Unit>
void AddUnitSets(const char* width) {
    using View = std::basic_string_view<Unit>;
    static constexpr Unit delimiters[] = {',', ';', '\t', 0};
    for (const std::size_t count : {1u, 3u}) {
        for (const std::size_t length : {8u, 16u, 40u, 200u}) {
            std::basic_string<Unit> text;
            while (text.size() < 20'000) text.append(length, 'x').append(1, ',');
            const View set(delimiters, count);
            Compare(
                "one of " + std::to_string(count) + " delimiters in " + std::to_string(length) + ' ' + width +
                    " units",
                "find_first_of",
                [=] {
                    const kestrolumen::detail::UnitSet<Unit> ours(set);
                    std::size_t found = 0;
                    const Unit* const end = text.data() + text.size();
                    for (const Unit* at = text.data(); at != end; ++found) at = ours.FindIn(at, end) + 1;
                    return found;
                },
                [=] {
                    std::size_t found = 0;
                    const View all(text);
                    for (std::size_t at = 0; at != all.size(); ++found) at = all.find_first_of(set, at) + 1;
                    return found;
                });
        }
    }
}

void AddTexts() {
    AddUnitSets<WCHAR>("wide");
    AddUnitSets<char>("narrow");
    static const StdWString wide = [] {
        std::mt19937 random(55);
        StdWString made;
        while (made.size() < 100'000) {
            for (auto length = 2 + random() % 8; length > 0; --length) {
                made += static_cast<WCHAR>(TEXT('a') + random() % 26);
            }
            made += TEXT(' ');
        }
        return made + TEXT("Needle in it");
    }();
    static const std::string narrow(wide.begin(), wide.end());
    Compare(
        "FindNoCaseA", "std::search", [] { return FindNoCaseA(narrow.c_str(), "NEEDLE"); },
        [] {
            return FindByStandard<char>(
                narrow, "NEEDLE", [](char unit) { return std::toupper(static_cast<unsigned char>(unit)); });
        });
    Compare(
        "FindNoCaseW", "std::search", [] { return FindNoCaseW(wide.c_str(), TEXT("NEEDLE")); },
        [] {
            return FindByStandard<WCHAR>(wide, TEXT("NEEDLE"), [](WCHAR unit) {
                return std::towupper(static_cast<std::wint_t>(unit));
            });
        });
    for (const std::size_t length : {39u, 1000u}) {
        const std::string ascii = narrow.substr(0, length);
        Compare(
            "CStringWFromAnsi, " + std::to_string(length) + " units", "MultiByteToWideChar",
            [=] { return CStringWFromAnsi(ascii.c_str()); },
            [=] {
                const auto size = static_cast<int>(std::strlen(ascii.c_str()));
                CStringW text;
                MultiByteToWideChar(CP_ACP, 0, ascii.c_str(), size, text.GetBufferSetLength(size), size);
                return text;
            });
        const StdWString wideAscii = wide.substr(0, length);
        Compare(
            "CStringAFromWide, " + std::to_string(length) + " units", "WideCharToMultiByte",
            [=] { return CStringAFromWide(wideAscii.c_str()); },
            [=] {
                const auto size = static_cast<int>(std::char_traits<WCHAR>::length(wideAscii.c_str()));
                CStringA text;
                WideCharToMultiByte(CP_ACP, 0, wideAscii.c_str(), size, text.GetBufferSetLength(size), size,
                                    nullptr, nullptr);
                return text;
            });
    }
}

// ---- Numbers ---------------------------------------------------------------------------------------------

const std::vector<double>& Doubles() {
    static const std::vector<double> doubles = [] {
        std::mt19937_64 random(54);
        std::uniform_real_distribution<double> mantissa(1, 10);
        std::vector<double> made(1000);
        for (auto& value : made) value = mantissa(random) * std::pow(10, static_cast<int>(random() % 12) - 4);
        return made;
    }();
    return doubles;
}

// The sums of the digits and of the points.
template <typename Write>
int EachDouble(int count, Write write) {
    int sum = 0;
    char digits[32];
    for (const double value : Doubles()) {
        sum += 1000 * write(value, digits);
        for (int i = 0; i < count; ++i) sum += digits[i];
    }
    return sum;
}

int DigitsByStandard(double value, int count, char* digits) {
    char text[64];
    const char* const end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, count - 1).ptr;
    const char* const exponent = std::find(static_cast<const char*>(text), end, 'e');
    digits[0] = text[0];
    std::copy_n(text + 2, count - 1, digits + 1);
    int power = 0;
    std::from_chars(exponent + (exponent[1] == '+' ? 2 : 1), end, power);
    return power + 1;
}

void AddNumbers() {
    for (const int count : {6, 15}) {
        Compare(
            std::to_string(count) + " digits of a thousand doubles", "std::to_chars",
            [=] {
                return EachDouble(count, [count](double value, char* digits) {
                    return kestrolumen::detail::SignificantDigits(value, count,
                                                                  kestrolumen::detail::Ties::toEven, digits);
                });
            },
            [=] {
                return EachDouble(count, [count](double value, char* digits) {
                    return DigitsByStandard(value, count, digits);
                });
            });
    }
}

// ---- Matrices --------------------------------------------------------------------------------------------

struct Destroy {
    void operator()(SAFEARRAY* array) const { DestroyVbArray(&array); }
};
using Array = std::unique_ptr<SAFEARRAY, Destroy>;

bool operator==(const Array& left, const Array& right) {
    return MatrixFromVbArray(left.get()) == MatrixFromVbArray(right.get());
}

Array ArrayByRows(const Matrix& matrix) {
    const std::size_t rows = matrix.size(), columns = matrix.front().size();
    SAFEARRAY* array = nullptr;
    const std::uint32_t sizes[] = {static_cast<std::uint32_t>(columns), static_cast<std::uint32_t>(rows)};
    ReDimVbArray(array, sizes, sizeof(double), 0, 1);
    const VbArrayLock lock(array);
    auto* const block = static_cast<double*>(lock.data);
    for (std::size_t r = 0; r < rows; ++r) {
        for (std::size_t c = 0; c < columns; ++c) block[c * rows + r] = matrix[r][c];
    }
    return Array(array);
}

Matrix MatrixByRows(SAFEARRAY* array) {
    const std::vector<std::uint32_t> counts = VbArrayDimensions(array);
    Matrix matrix(counts[0], std::vector<double>(counts[1]));
    const VbArrayLock lock(array);
    const auto* const block = static_cast<const double*>(lock.data);
    for (std::size_t r = 0; r < counts[0]; ++r) {
        for (std::size_t c = 0; c < counts[1]; ++c) matrix[r][c] = block[c * counts[0] + r];
    }
    return matrix;
}

void AddMatrices() {
    for (const std::size_t side : {10u, 1024u}) {
        const Matrix matrix(side, std::vector<double>(side, 1.5));
        const std::string form = ", " + std::to_string(side) + " rows and columns";
        const std::shared_ptr<SAFEARRAY> array(VbArrayFromMatrix(matrix, 1), Destroy());
        Compare(
            "VbArrayFromMatrix" + form, "row by row", [=] { return Array(VbArrayFromMatrix(matrix, 1)); },
            [=] { return ArrayByRows(matrix); });
        Compare(
            "MatrixFromVbArray" + form, "row by row", [=] { return MatrixFromVbArray(array.get()); },
            [=] { return MatrixByRows(array.get()); });
    }
}

const bool registered = (AddCodings(24), AddCodings(300), AddCodings(3000), AddCodings(3 << 18), AddBits(),
                         AddChecksums(), AddTexts(), AddNumbers(), AddMatrices(), true);

}  // namespace
