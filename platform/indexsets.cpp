#include "platform/indexsets.h"

#include "platform/detail/ascendingbits.h"
#include "platform/bits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>
#include <stdexcept>

// The stored order of bytes is the machine's own.
static_assert(std::endian::native == std::endian::little);

namespace {

using Bytes = std::vector<std::uint8_t>;
using Values = std::vector<std::int32_t>;

constexpr std::uint32_t bitForm = 0x80000000;
constexpr std::uint32_t largestUnpacked = 0x3FFFFFFE;
constexpr std::size_t headerBytes = sizeof(std::uint32_t);
constexpr std::size_t valueBytes = sizeof(std::int32_t);

constexpr std::size_t BytesOfBits(std::uint32_t largest) noexcept {
    return std::size_t{largest} / 8 + 1;
}

// ---- Packing -------------------------------------------------------------------------------------------

void Append(Bytes& bytes, const void* data, std::size_t length) {
    const auto* first = static_cast<const std::uint8_t*>(data);
    bytes.insert(bytes.end(), first, first + length);
}

Bytes PackedList(const Values& values) {
    if (values.size() >= bitForm) throw std::length_error("PackIndexSet: too many values for a list");
    const auto header = static_cast<std::uint32_t>(values.size());
    Bytes packed;
    packed.reserve(headerBytes + values.size() * valueBytes);
    Append(packed, &header, headerBytes);
    if (!values.empty()) Append(packed, values.data(), values.size() * valueBytes);
    return packed;
}

// What decides on the form.
struct Range {
    bool ascending;  // from 0 on
    bool negative;   // any of the values
    std::int32_t largest;
};

Range RangeOf(const Values& values) noexcept {
    if (values.empty()) return {true, false, -1};
    if (values.front() >= 0 && std::ranges::is_sorted(values)) return {true, false, values.back()};
    std::int32_t largest = -1;
    std::int32_t all = 0;
    for (const std::int32_t value : values) {
        largest = std::max(largest, value);
        all |= value;
    }
    return {false, all < 0, largest};
}

Bytes PackedBits(const Values& values, const Range& range) {
    const auto largest = static_cast<std::uint32_t>(range.largest);
    const std::size_t length = headerBytes + BytesOfBits(largest);
    Bytes packed(length + sizeof(std::uint64_t) - 1);  // the last word may end behind the set
    const std::uint32_t header = largest | bitForm;
    std::memcpy(packed.data(), &header, headerBytes);
    std::uint8_t* const bits = packed.data() + headerBytes;
    if (range.ascending && largest / 10 < values.size()) {
        kestrolumen::detail::SetAscendingBits(bits, values);
    } else {
        for (const std::int32_t value : values) SetBit(bits, value);
    }
    packed.resize(length);
    return packed;
}

// ---- Unpacking -----------------------------------------------------------------------------------------

// What a byte of a bit array stands for: the places of its set bits in ascending order, then anything.
struct Places {
    std::array<std::array<std::int32_t, 8>, 256> of{};
    std::array<std::uint8_t, 256> count{};

    constexpr Places() {
        for (std::uint32_t byteValue = 0; byteValue < 256; ++byteValue) {
            for (std::int32_t bit = 0; bit < 8; ++bit) {
                if ((byteValue & (0x80U >> bit)) != 0) of[byteValue][count[byteValue]++] = bit;
            }
        }
    }
};
constexpr Places places;

// The values that the bits of a whole array stand for.
//
// They go into the vector a bufferful at a time. All eight places of a byte are written, whether they are in
// use or not: that is quicker than to ask, and the vector's own memory need not be zeroed first.
Values ValuesOfBits(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t bytesAtOnce = 128;
    std::array<std::int32_t, 8 * bytesAtOnce + 8> buffer;
    Values values;
    values.reserve(
        static_cast<std::size_t>(BitCountOfArray(bytes.data(), static_cast<std::int32_t>(8 * bytes.size()))));
    for (std::int32_t first = 0; !bytes.empty();) {
        const auto part = bytes.first(std::min(bytes.size(), bytesAtOnce));
        std::int32_t* end = buffer.data();
        for (const std::uint8_t bits : part) {
            for (std::size_t i = 0; i < 8; ++i) end[i] = first + places.of[bits][i];
            end += places.count[bits];
            first += 8;
        }
        values.insert(values.end(), buffer.data(), end);
        bytes = bytes.subspan(part.size());
    }
    return values;
}

// The first bytes of what is left of a set, which the header asks for.
std::span<const std::uint8_t> First(std::span<const std::uint8_t> bytes, std::uint64_t count) {
    if (bytes.size() < count) throw std::length_error("UnpackIndexSet: the packed set is cut off");
    return bytes.first(static_cast<std::size_t>(count));
}

Values UnpackedBits(std::span<const std::uint8_t> body, std::uint32_t largest) {
    if (largest > largestUnpacked) throw std::length_error("UnpackIndexSet: the largest value is too large");
    Values values = ValuesOfBits(First(body, BytesOfBits(largest)));
    while (!values.empty() && values.back() > static_cast<std::int32_t>(largest)) values.pop_back();
    return values;
}

Values UnpackedList(std::span<const std::uint8_t> body, std::uint32_t count) {
    const auto stored = First(body, std::uint64_t{count} * valueBytes);
    Values values(count);
    if (count != 0) std::memcpy(values.data(), stored.data(), stored.size());
    return values;
}

}  // namespace

std::vector<std::uint8_t> PackIndexSet(const std::vector<std::int32_t>& values) {
    const Range range = RangeOf(values);
    if (values.empty() || range.negative ||
        BytesOfBits(static_cast<std::uint32_t>(range.largest)) >= values.size() * valueBytes) {
        return PackedList(values);
    }
    return PackedBits(values, range);
}

std::vector<std::int32_t> UnpackIndexSet(const std::vector<std::uint8_t>& packed) {
    const std::span<const std::uint8_t> bytes(packed);
    std::uint32_t header = 0;
    std::memcpy(&header, First(bytes, headerBytes).data(), headerBytes);
    const auto body = bytes.subspan(headerBytes);
    return (header & bitForm) != 0 ? UnpackedBits(body, header & ~bitForm) : UnpackedList(body, header);
}
