// Text and bytes as hexadecimal digits, and bytes as six-bit text.
//
// Zero-terminated texts may not be null. Texts beyond 2^31 - 2 units raise std::length_error.
#pragma once

#include "text/strings.h"

#include <cstdint>
#include <span>
#include <vector>

// Upper-case digits without separators: two a byte, four a unit.
[[nodiscard]] CStringA HexFromTextA(const char* text);
[[nodiscard]] CStringW HexFromTextW(const WCHAR* text);
[[nodiscard]] CStringA HexFromBytes(std::span<const std::uint8_t> bytes);

// The text whose digits these are, in either case; a zero byte or unit stays inside it. Empty if a character
// isn't a hexadecimal digit of ASCII, or the last byte or unit has too few.
[[nodiscard]] CStringA TextAFromHex(const char* text);
[[nodiscard]] CStringW TextWFromHex(const WCHAR* text);

// A byte from each two characters, whatever they are: a to z count as A to Z, then characters below "A" as
// their unsigned code minus 48, others as that minus 55, and the first times 16 plus the second is cut to 8
// bits. A last odd character isn't read.
[[nodiscard]] std::vector<std::uint8_t> BytesFromHex(const CStringA& text);

// Six bits a character, the first byte's highest first (the bit order of base 64 in RFC 4648), in the
// alphabet 0-9 a-z A-Z _ $, without filler: two characters for one byte, four for three.
[[nodiscard]] CStringA Text6FromBytes(std::span<const std::uint8_t> bytes);

// The bytes of such a text, and one zero byte more unless its length is a multiple of 4. A character outside
// the alphabet counts as 255, whose upper bits fall onto its neighbours.
[[nodiscard]] std::vector<std::uint8_t> BytesFromText6(const CStringA& text);
