// Containers as one line of text, for messages and traces: { 1, 2.5, 3 } and { } for an empty one. The name
// of an operation says result and source; forms of one source differ in nothing but the width of the result,
// and wide results are narrow ones converted by the ANSI code page, or the other way round.
//
//   numbers   in decimal, doubles as %g has them (six significant digits), Hex in 16 digits; bool as T or F.
//   strings   in double quotes, up to their first zero unit, otherwise unchanged: the text isn't made to be
//             parsed. VectorStdWString alone is escaped as by EscapedTextW.
//   head, tail  shorten the list to its first `head` and last `tail` elements, with "..., " in place of the
//             others if there are any: { 1, 2, ..., 9, 10 }. No element is shown twice.
//
// The only failures are those of memory: std::bad_alloc, std::length_error beyond 2^31 - 2 units.
#pragma once

#include "text/conversions.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

// Doubles in blocks of one size, a power of two. All blocks but the last are full.
struct ChunkedVectorDouble {
    std::vector<std::vector<double>> blocks;
    std::size_t blockSize = 1;
    unsigned shift = 0;    // the base-2 logarithm of blockSize
    std::size_t mask = 0;  // blockSize - 1

    // Of all blocks together.
    [[nodiscard]] std::size_t size() const noexcept {
        return blocks.empty() ? 0 : (blocks.size() - 1) * blockSize + blocks.back().size();
    }
    [[nodiscard]] double operator[](std::size_t index) const noexcept {
        return blocks[index >> shift][index & mask];
    }
};

namespace kestrolumen::detail {

// The language's integers that are alike in all but type.
template <typename Type, typename... Types>
concept OneOf = (std::same_as<Type, Types> || ...);
template <typename Type, typename Model>
concept Like =
    OneOf<Type, short, unsigned short, int, unsigned, long, unsigned long, long long, unsigned long long> &&
        sizeof(Type) == sizeof(Model) &&
    std::signed_integral<Type> == std::signed_integral<Model>;

// For the integers of Like, and for CStringA and std::string.
template <typename Text, typename Integer>
[[nodiscard]] Text IntegerList(const std::vector<Integer>& values);

}  // namespace kestrolumen::detail

[[nodiscard]] CStringA CStringAFromVectorBool(const std::vector<bool>& values);
[[nodiscard]] inline CStringW CStringWFromVectorBool(const std::vector<bool>& values) {
    return CStringAFromVectorBool(values);
}

[[nodiscard]] CStringA CStringAFromVectorByte(const std::vector<std::uint8_t>& values, std::uint32_t head,
                                              std::uint32_t tail);
[[nodiscard]] inline CStringW CStringWFromVectorByte(const std::vector<std::uint8_t>& values,
                                                     std::uint32_t head, std::uint32_t tail) {
    return CStringAFromVectorByte(values, head, tail);
}

template <kestrolumen::detail::Like<std::int16_t> Integer = std::int16_t>
[[nodiscard]] CStringA CStringAFromVectorInt16(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::int16_t> Integer = std::int16_t>
[[nodiscard]] CStringW CStringWFromVectorInt16(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::int16_t> Integer = std::int16_t>
[[nodiscard]] std::string StdStringFromVectorInt16(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<std::string>(values);
}

template <kestrolumen::detail::Like<std::uint16_t> Integer = std::uint16_t>
[[nodiscard]] CStringA CStringAFromVectorUInt16(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::uint16_t> Integer = std::uint16_t>
[[nodiscard]] CStringW CStringWFromVectorUInt16(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}

template <kestrolumen::detail::Like<std::int32_t> Integer = std::int32_t>
[[nodiscard]] CStringA CStringAFromVectorInt32(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::int32_t> Integer = std::int32_t>
[[nodiscard]] CStringW CStringWFromVectorInt32(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}

template <kestrolumen::detail::Like<std::uint32_t> Integer = std::uint32_t>
[[nodiscard]] CStringA CStringAFromVectorUInt32(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::uint32_t> Integer = std::uint32_t>
[[nodiscard]] CStringW CStringWFromVectorUInt32(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}

template <kestrolumen::detail::Like<std::ptrdiff_t> Integer = std::ptrdiff_t>
[[nodiscard]] CStringA CStringAFromVectorPtrDiff(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::ptrdiff_t> Integer = std::ptrdiff_t>
[[nodiscard]] CStringW CStringWFromVectorPtrDiff(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}

template <kestrolumen::detail::Like<std::int64_t> Integer = std::int64_t>
[[nodiscard]] CStringA CStringAFromVectorInt64(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::int64_t> Integer = std::int64_t>
[[nodiscard]] CStringW CStringWFromVectorInt64(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}

template <kestrolumen::detail::Like<std::uint64_t> Integer = std::uint64_t>
[[nodiscard]] CStringA CStringAFromVectorUInt64(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}
template <kestrolumen::detail::Like<std::uint64_t> Integer = std::uint64_t>
[[nodiscard]] CStringW CStringWFromVectorUInt64(const std::vector<Integer>& values) {
    return kestrolumen::detail::IntegerList<CStringA>(values);
}

[[nodiscard]] CStringA CStringAFromVectorUInt64Hex(const std::vector<std::uint64_t>& values);
[[nodiscard]] inline CStringW CStringWFromVectorUInt64Hex(const std::vector<std::uint64_t>& values) {
    return CStringAFromVectorUInt64Hex(values);
}

[[nodiscard]] CStringA CStringAFromVectorDouble(const std::vector<double>& values);
[[nodiscard]] CStringA CStringAFromVectorDouble(const std::vector<double>& values, std::uint32_t head,
                                                std::uint32_t tail);
[[nodiscard]] inline CStringW CStringWFromVectorDouble(const std::vector<double>& values) {
    return CStringAFromVectorDouble(values);
}
[[nodiscard]] inline CStringW CStringWFromVectorDouble(const std::vector<double>& values, std::uint32_t head,
                                                       std::uint32_t tail) {
    return CStringAFromVectorDouble(values, head, tail);
}
[[nodiscard]] std::string StdStringFromVectorDouble(const std::vector<double>& values);

[[nodiscard]] CStringA CStringAFromChunkedVectorDouble(const ChunkedVectorDouble& values);
[[nodiscard]] inline CStringW CStringWFromChunkedVectorDouble(const ChunkedVectorDouble& values) {
    return CStringAFromChunkedVectorDouble(values);
}

[[nodiscard]] CStringA CStringAFromVectorCStringA(const std::vector<CStringA>& texts);
[[nodiscard]] inline CStringW CStringWFromVectorCStringA(const std::vector<CStringA>& texts) {
    return CStringAFromVectorCStringA(texts);
}

[[nodiscard]] CStringW CStringWFromVectorCStringW(const std::vector<CStringW>& texts);
[[nodiscard]] inline CStringA CStringAFromVectorCStringW(const std::vector<CStringW>& texts) {
    return CStringWFromVectorCStringW(texts);
}

[[nodiscard]] std::string StdStringFromVectorStdString(const std::vector<std::string>& texts);
[[nodiscard]] std::string StdStringFromVectorStdWString(const std::vector<StdWString>& texts);

// { "< "a", "b" >", "< "c", "d" >" }
using PairCStringW = std::pair<CStringW, CStringW>;
[[nodiscard]] CStringW CStringWFromVectorPairCStringW(const std::vector<PairCStringW>& pairs);
[[nodiscard]] inline CStringA CStringAFromVectorPairCStringW(const std::vector<PairCStringW>& pairs) {
    return CStringWFromVectorPairCStringW(pairs);
}

// { { 1, 2 }, { 3 } }
[[nodiscard]] CStringA CStringAFromVectorVectorInt32(const std::vector<std::vector<std::int32_t>>& lists);

// { "a","b" }, without a blank behind the commas, in the set's order. The wide set becomes a narrow one
// first: the order is that of the narrow texts, and what has become alike shows once.
[[nodiscard]] CStringA CStringAFromSetCStringA(const std::set<CStringA>& texts);
[[nodiscard]] CStringA CStringAFromSetCStringW(const std::set<CStringW>& texts);

// N/A for a null pointer.
[[nodiscard]] CStringA CStringAFromSharedVectorDouble(std::shared_ptr<const std::vector<double>> values);
[[nodiscard]] CStringA CStringAFromSharedVectorInt32(std::shared_ptr<const std::vector<std::int32_t>> values);

// Bytes in two upper-case hexadecimal digits each, or in decimal.
[[nodiscard]] CStringA CStringAFromByteList(const std::vector<std::uint8_t>& values, bool hex);
[[nodiscard]] inline CStringW CStringWFromByteList(const std::vector<std::uint8_t>& values, bool hex) {
    return CStringAFromByteList(values, hex);
}
[[nodiscard]] std::string StdStringFromByteList(const std::vector<std::uint8_t>& values, bool hex);
