// What the string classes and the format engine need to know of text in the ANSI code page. All of Windows'
// ANSI code pages hold ASCII at its own values, and so does UTF-8, which may be the ANSI code page as well.
#pragma once

#include <windows.h>

#include <cstddef>
#include <type_traits>

namespace ansitext {

template <typename Unit>
[[nodiscard]] inline bool IsAscii(const Unit* text, std::size_t length) noexcept {
    unsigned all = 0;
    for (std::size_t i = 0; i < length; ++i) all |= static_cast<std::make_unsigned_t<Unit>>(text[i]);
    return all < 0x80;
}

// Units of the character at `text`: at least 1, and never beyond a terminator. A surrogate pair is one.
[[nodiscard]] std::size_t CharacterLength(const char* text) noexcept;
[[nodiscard]] std::size_t CharacterLength(const WCHAR* text) noexcept;

// Answers for one place behind the other whether a character begins there, and not the second byte of one; reads
// the text once for all of them.
template <typename Unit>
class CharacterStarts;

template <>
class CharacterStarts<char> {
  public:
    explicit CharacterStarts(const char* text) noexcept : text_(text) {}
    // `index` is at least that of the call before.
    [[nodiscard]] bool At(std::size_t index) noexcept;

  private:
    const char* text_;
    // The last place that was asked for, and its answer.
    std::size_t known_ = 0;
    bool startsThere_ = true;
};

template <>
class CharacterStarts<WCHAR> {
  public:
    explicit constexpr CharacterStarts(const WCHAR*) noexcept {}
    [[nodiscard]] static constexpr bool At(std::size_t) noexcept { return true; }
};

// The units that text of the other width converts to. A source that is too long for the system's conversions
// is counted with its own length.
[[nodiscard]] std::size_t ConvertedLength(const char* text, std::size_t length) noexcept;
[[nodiscard]] std::size_t ConvertedLength(const WCHAR* text, std::size_t length) noexcept;

// Converts into the `capacity` units at `target` and gives the count written: 0 if they don't fit.
std::size_t Convert(const char* text, std::size_t length, WCHAR* target, std::size_t capacity) noexcept;
std::size_t Convert(const WCHAR* text, std::size_t length, char* target, std::size_t capacity) noexcept;

}  // namespace ansitext
