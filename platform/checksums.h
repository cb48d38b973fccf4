// Checksums of plain bytes. Nothing keeps state between calls: the running forms take the state and give the
// new one, so that data can be folded in pieces. A length of 0 is allowed everywhere, and then so is a null
// pointer.
//
// The check values are those of the nine digits "123456789" in Greg Cook's "Catalogue of parametrised CRC
// algorithms".
#pragma once

#include "text/text.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

// CRC-16/ARC, check value 0xBB3D. The CRC of nothing is 0.
[[nodiscard]] std::uint16_t Crc16(const void* data, std::uint32_t length) noexcept;

// The CRC-32 of IEEE 802.3 without its final complement: the state, which starts as 0xFFFFFFFF, is the result
// as it stands. So the check is 0x340BC6D9, the complement of the published 0xCBF43926, and the CRC of
// nothing is 0xFFFFFFFF.
[[nodiscard]] std::uint32_t Crc32Update(std::uint32_t state, const void* data, std::size_t length) noexcept;
[[nodiscard]] std::uint32_t Crc32(const void* data, std::size_t length) noexcept;

// Crc32 of a file's bytes, read in blocks of 64 KiB. A file that can't be opened or read gives 0xFFFFFFFF, as
// an empty one does, and an error in mid-file counts as its end. Raises std::bad_alloc.
[[nodiscard]] std::uint32_t FileCrc32(const CStringW& path);

// CRC-64/WE, check value 0x62EC59E3F1A4F00A. The CRC of nothing is 0.
//
// The running form reads the state at `state` and gives the new one without storing it. Who folds pieces
// starts with all ones and takes the complement at the end.
[[nodiscard]] std::uint64_t Crc64Update(const std::uint64_t* state, const void* data,
                                        std::size_t length) noexcept;
[[nodiscard]] std::uint64_t Crc64(const void* data, std::size_t length) noexcept;

// Crc64 of all arrays' bytes, one behind the other as they lie in memory.
template <typename Element>
[[nodiscard]] std::uint64_t Crc64OfArrays(const std::vector<std::vector<Element>>& arrays) noexcept {
    static_assert(sizeof(Element) == 8 && std::is_trivially_copyable_v<Element>);
    std::uint64_t state = ~std::uint64_t{0};
    for (const auto& array : arrays) {
        state = Crc64Update(&state, array.data(), array.size() * sizeof(Element));
    }
    return ~state;
}

// The remainder by 256 of the sum of the bytes, which runs in 32 bits and is read with a sign at the end: 0
// to 255 for a sum below 2^31, -255 to 0 for one whose 32 bits read as a negative number.
[[nodiscard]] std::int32_t ByteSum(const void* data, std::uint32_t length) noexcept;
