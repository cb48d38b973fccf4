// Printf-style formatting in the dialect of Microsoft's runtime library (Microsoft's "Format specification
// syntax: printf and wprintf functions" page), the same in every home and under every locale.
//
//   %[flags][width][.precision][size]conversion
//
//   flags       - + 0 # and the blank.
//   width       a number, or * for an int argument; a negative argument means its magnitude and the flag -.
//   precision   a number, nothing for 0, or * for an int argument, where a negative one means none.
//   size        hh h l ll w I I32 I64 j z t L. An l is 32 bits for numbers, as Microsoft's long is.
//   d i u o x X whole numbers of the size's width, 32 bits without one.
//   e E f F g G doubles, with every digit exact and rounded to nearest, ties to even; at least two digits of
//               exponent. inf, nan, nan(ind), nan(snan) for what is no number.
//   a A         doubles in hexadecimal, 13 digits behind the point unless a precision says otherwise.
//   c s         one unit, and zero-terminated text, of the format's own width; C S of the other width. The
//               sizes h, and l or w, make them narrow and wide whatever their letter. The other width is
//               converted by the ANSI code page. The precision of text limits the units written, and no unit
//               is read beyond; converted characters are never cut in two. A null pointer writes (null).
//   p           a pointer in upper-case hexadecimal, padded with zeros to its width.
//   n           takes its argument and writes nothing, through it or to the text.
//   %           a percent sign.
//
// The flag 0 pads texts with zeros as well, but not inf and nan. Formats that the runtime refuses: a
// conversion without meaning writes its own letter and takes no argument; a format that ends inside a
// specification ends there; a width or precision above 2^31 - 1 counts as that. A null format is empty.
//
// Arguments come as a va_list, where they have to agree with the format, or as a row of Argument, which knows
// their types and makes every format safe:
//
//   - a text is read in the width that it has, whatever the letter and the size say;
//   - a whole number is written in the width of its type: I64, ll and j widen it, h and hh cut it;
//   - a whole number serves the conversions of doubles too;
//   - an argument that its conversion can't take is written by d, u, g, s or p, whichever is its own, in the
//     field's width; as width or precision it counts as 0;
//   - a conversion behind the last argument writes nothing.
#pragma once

#include <windows.h>

#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace msformat {

// One argument, by its type: a number, a text, or any other pointer, of which the address is written. It
// points to a text and owns nothing. String classes that convert to one pointer are texts, such as CStringW.
struct Argument {
    enum class Kind : std::uint8_t { Whole, Floating, Narrow, Wide, Pointer };

    template <std::integral Value>
    constexpr Argument(Value value) noexcept
        : kind(Kind::Whole),
          isSigned(std::is_signed_v<Value>),
          isLong(sizeof(Value) > sizeof(std::int32_t)),
          whole(static_cast<std::int64_t>(value)) {}
    template <typename Value>
    requires(std::is_enum_v<Value>&& std::is_convertible_v<Value, long long>) constexpr Argument(
        Value value) noexcept
        : Argument(static_cast<std::underlying_type_t<Value>>(value)) {}
    constexpr Argument(std::floating_point auto value) noexcept
        : kind(Kind::Floating), floating(static_cast<double>(value)) {}
    constexpr Argument(const char* text) noexcept : kind(Kind::Narrow), pointer(text) {}
    constexpr Argument(const signed char* text) noexcept : kind(Kind::Narrow), pointer(text) {}
    constexpr Argument(const unsigned char* text) noexcept : kind(Kind::Narrow), pointer(text) {}
    constexpr Argument(const WCHAR* text) noexcept : kind(Kind::Wide), pointer(text) {}
    constexpr Argument(const void* address) noexcept : kind(Kind::Pointer), pointer(address) {}
    constexpr Argument(std::nullptr_t) noexcept : kind(Kind::Pointer), pointer(nullptr) {}

    Kind kind;
    bool isSigned = false;  // of a whole number
    bool isLong = false;    // of a whole number: 64 bits
    union {
        std::int64_t whole;
        double floating;
        const void* pointer;
    };
};

// Formats into the `capacity` units at `target` and gives the length of the whole text in units, which may be
// above `capacity`; then what stands in `target` is unspecified. Nothing is put behind the text. A `capacity`
// of 0 measures. A va_list is read, and is the caller's to end.
std::size_t Fill(char* target, std::size_t capacity, const char* format, va_list arguments) noexcept;
std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format, va_list arguments) noexcept;

std::size_t Fill(char* target, std::size_t capacity, const char* format,
                 std::span<const Argument> arguments) noexcept;
std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format,
                 std::span<const Argument> arguments) noexcept;

inline std::size_t Measure(const char* format, va_list arguments) noexcept {
    return Fill(nullptr, 0, format, arguments);
}
inline std::size_t Measure(const WCHAR* format, va_list arguments) noexcept {
    return Fill(nullptr, 0, format, arguments);
}

}  // namespace msformat
