#include "platform/checksums.h"

#include "platform/detail/crcfolding.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <memory>
#include <numeric>

namespace {

template <typename State>
using Table = std::array<State, 256>;

// The state that each byte leaves of 0.
template <typename State>
constexpr Table<State> ReflectedTable(State polynomial) {
    Table<State> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        auto entry = static_cast<State>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            entry = static_cast<State>(entry >> 1 ^ (entry & 1 ? polynomial : 0));
        }
        table[byte] = entry;
    }
    return table;
}

constexpr Table<std::uint64_t> HighestBitFirstTable(std::uint64_t polynomial) {
    Table<std::uint64_t> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        std::uint64_t entry = std::uint64_t{byte} << 56;
        for (int bit = 0; bit < 8; ++bit) entry = entry << 1 ^ (entry >> 63 ? polynomial : 0);
        table[byte] = entry;
    }
    return table;
}

constexpr auto crc16Table = ReflectedTable<std::uint16_t>(0xA001);
constexpr auto crc32Table = ReflectedTable(kestrolumen::detail::Crc32Polynomial);
constexpr auto crc64Table = HighestBitFirstTable(kestrolumen::detail::Crc64Polynomial);

template <typename State>
constexpr State ReflectedStep(const Table<State>& table, State state, unsigned char byte) noexcept {
    return static_cast<State>(state >> 8 ^ table[(state ^ byte) & 0xFF]);
}

struct Crc32Check {
    static std::uint32_t Step(std::uint32_t state, unsigned char byte) noexcept {
        return ReflectedStep(crc32Table, state, byte);
    }
    static constexpr auto Fold = kestrolumen::detail::FoldCrc32;
};

struct Crc64Check {
    static std::uint64_t Step(std::uint64_t state, unsigned char byte) noexcept {
        return state << 8 ^ crc64Table[static_cast<std::size_t>(state >> 56) ^ byte];
    }
    static constexpr auto Fold = kestrolumen::detail::FoldCrc64;
};

template <typename Check, typename State>
State Update(State state, const void* data, std::size_t length) noexcept {
    const auto* next = static_cast<const unsigned char*>(data);
    // Out of the straight line, which is for the few bytes of a field.
    if (length >= kestrolumen::detail::LeastToFold && kestrolumen::detail::canFold) [[unlikely]]
        return Check::Fold(state, next, length);
    for (const unsigned char* const end = next + length; next != end; ++next) {
        state = Check::Step(state, *next);
    }
    return state;
}

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};

std::unique_ptr<std::FILE, CloseFile> OpenForReading(const CStringW& path) {
    std::FILE* file = nullptr;
    _wfopen_s(&file, path.GetString(), TEXT("rbS"));
    return std::unique_ptr<std::FILE, CloseFile>(file);
}

}  // namespace

std::uint16_t Crc16(const void* data, std::uint32_t length) noexcept {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    return std::accumulate(
        bytes, bytes + length, std::uint16_t{0},
        [](std::uint16_t state, unsigned char next) { return ReflectedStep(crc16Table, state, next); });
}

std::uint32_t Crc32Update(std::uint32_t state, const void* data, std::size_t length) noexcept {
    return Update<Crc32Check>(state, data, length);
}

std::uint32_t Crc32(const void* data, std::size_t length) noexcept {
    return Crc32Update(0xFFFFFFFF, data, length);
}

std::uint32_t FileCrc32(const CStringW& path) {
    std::uint32_t state = 0xFFFFFFFF;
    const auto file = OpenForReading(path);
    if (!file) return state;
    std::vector<unsigned char> block(0x10000);
    while (const std::size_t length = std::fread(block.data(), 1, block.size(), file.get())) {
        state = Crc32Update(state, block.data(), length);
    }
    return state;
}

std::uint64_t Crc64Update(const std::uint64_t* state, const void* data, std::size_t length) noexcept {
    return Update<Crc64Check>(*state, data, length);
}

std::uint64_t Crc64(const void* data, std::size_t length) noexcept {
    const std::uint64_t start = ~std::uint64_t{0};
    return ~Crc64Update(&start, data, length);
}

std::int32_t ByteSum(const void* data, std::uint32_t length) noexcept {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    const std::uint32_t sum = std::accumulate(bytes, bytes + length, std::uint32_t{0});
    return static_cast<std::int32_t>(sum) % 256;
}
