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
// specification ends there; a width or precision above 2^31 - 1 counts as that.
#pragma once

#include <windows.h>

#include <cstdarg>
#include <cstddef>

namespace msformat {

// Formats into the `capacity` units at `target` and gives the length of the whole text in units, which may be
// above `capacity`; then what stands in `target` is unspecified. Nothing is put behind the text. A `capacity`
// of 0 measures. `arguments` is read, and is the caller's to end.
std::size_t Fill(char* target, std::size_t capacity, const char* format, va_list arguments) noexcept;
std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format, va_list arguments) noexcept;

inline std::size_t Measure(const char* format, va_list arguments) noexcept {
    return Fill(nullptr, 0, format, arguments);
}
inline std::size_t Measure(const WCHAR* format, va_list arguments) noexcept {
    return Fill(nullptr, 0, format, arguments);
}

}  // namespace msformat
