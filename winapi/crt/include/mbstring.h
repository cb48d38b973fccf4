// A stand-in for the runtime library's header of this name: multibyte text, in the code page of _setmbcp.
#pragma once

#include "mbctype.h"

// The character after the one at `current`. A lead byte before the terminator is a character of its own, so
// that the terminator is never stepped over.
[[nodiscard]] unsigned char* _mbsinc(const unsigned char* current) noexcept;

// The code of the character at `text`: one byte, or lead byte times 256 plus trail byte.
[[nodiscard]] unsigned int _mbsnextc(const unsigned char* text) noexcept;
