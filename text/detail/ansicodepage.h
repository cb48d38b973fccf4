// What the process's ANSI code page asks of those who step through narrow text.
#pragma once

#include <array>

namespace kestrolumen::detail {

// The bytes of its longest character: 1, 2, or more as in UTF-8; 0 if the system doesn't tell.
[[nodiscard]] unsigned LongestAnsiCharacter() noexcept;

// Which bytes of a double-byte code page are the first of two; none in another page.
[[nodiscard]] std::array<bool, 256> AnsiLeadBytes() noexcept;

}  // namespace kestrolumen::detail
