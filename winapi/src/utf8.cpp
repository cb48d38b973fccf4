#include "utf8.h"

#include <algorithm>
#include <type_traits>

#include "ascii_run.h"
#include "utf8_avx2.h"
#include "utf8_baseline.h"
#include "utf8_count.h"
#include "utf8_rules.h"

namespace winapi::utf8 {
namespace {

// What is converted unit by unit before the vector steps are tried again.
constexpr std::size_t scalarStretch = 64;

// A conversion on its way.
template <class From, class To>
struct Cursor {
    const From* from;
    const From* end;
    To* to;
    To* toEnd;

    Cursor(std::basic_string_view<From> text, std::span<To> destination) noexcept
        : from(text.data()),
          end(from + text.size()),
          to(destination.data()),
          toEnd(to + destination.size()) {}

    [[nodiscard]] std::basic_string_view<From> Rest() const noexcept { return {from, Left()}; }
    [[nodiscard]] std::size_t Left() const noexcept { return static_cast<std::size_t>(end - from); }
    [[nodiscard]] std::size_t Room() const noexcept { return static_cast<std::size_t>(toEnd - to); }
    [[nodiscard]] std::span<To> Destination() const noexcept { return {to, Room()}; }

    void Advance(std::size_t read, std::size_t written) noexcept {
        from += read;
        to += written;
    }
};

template <class Unit>
constexpr bool IsAscii(Unit unit) noexcept {
    return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
}

std::size_t CopyAsciiRun(const char* from, char16_t* to) noexcept {
    return WidenAsciiRun(from, to);
}
std::size_t CopyAsciiRun(const char16_t* from, char* to) noexcept {
    return NarrowAsciiRun(from, to);
}

std::size_t Units(char32_t character, const char16_t*) noexcept {
    return Utf16Units(character);
}
std::size_t Units(char32_t character, const char*) noexcept {
    return Utf8Units(character);
}

// Converts the characters that begin in the next `length` units; false as soon as one has no room.
template <class From, class To>
bool ConvertStretch(Cursor<From, To>& at, std::size_t length) noexcept {
    const From* const stop = at.from + std::min(at.Left(), length);
    while (at.from < stop) {
        if (IsAscii(*at.from) && at.Left() >= asciiRunSize && at.Room() >= asciiRunSize) {
            const std::size_t run = CopyAsciiRun(at.from, at.to);
            at.Advance(run, run);
            continue;
        }
        const Decoded first = DecodeFirst(at.Rest());
        if (at.Room() < Units(first.character, at.to)) return false;
        at.to = Encode(first.character, at.to);
        at.from += first.length;
    }
    return true;
}

// `vectorStep` takes what it can of the rest each time.
template <class From, class To, class VectorStep>
std::optional<std::size_t> Convert(std::basic_string_view<From> text, std::span<To> destination,
                                   VectorSet vectors, VectorStep vectorStep) noexcept {
    Cursor<From, To> at(text, destination);
    const std::size_t stretch = vectors == VectorSet::avx2 ? scalarStretch : text.size();
    while (at.from != at.end) {
        if (vectors == VectorSet::avx2 && at.Left() >= scalarStretch) {
            const Progress step = vectorStep(at.Rest(), at.Destination());
            at.Advance(step.read, step.written);
        }
        if (!ConvertStretch(at, stretch)) return std::nullopt;
    }
    return destination.size() - at.Room();
}

}  // namespace

std::size_t Utf16Length(std::string_view text, VectorSet vectors) noexcept {
    std::size_t units = 0;
    while (!text.empty()) {
        if (text.size() >= scalarStretch) {
            const Progress counted =
                vectors == VectorSet::avx2 ? avx2::CountUtf16(text) : baseline::CountUtf16(text);
            text.remove_prefix(counted.read);
            units += counted.written;
        }
        const std::size_t stop = text.size() - std::min(text.size(), scalarStretch);
        while (text.size() > stop) {
            if (IsAscii(text[0]) && text.size() >= asciiRunSize) {
                const std::size_t run = AsciiRun(text.data());
                text.remove_prefix(run);
                units += run;
                continue;
            }
            const Decoded first = DecodeFirst(text);
            text.remove_prefix(first.length);
            units += Utf16Units(first.character);
        }
    }
    return units;
}

std::size_t Utf8Length(std::u16string_view text, VectorSet vectors) noexcept {
    Progress counted = vectors == VectorSet::avx2 ? avx2::CountUtf8(text) : CountUtf8Vectors<16>(text);
    for (text.remove_prefix(counted.read); !text.empty(); text.remove_prefix(1)) {
        counted.written += Utf8LengthOfFirst(text);
    }
    return counted.written;
}

std::optional<std::size_t> ToUtf16(std::string_view text, std::span<char16_t> destination,
                                   VectorSet vectors) noexcept {
    return Convert(text, destination, vectors, avx2::ToUtf16);
}

std::optional<std::size_t> ToUtf8(std::u16string_view text, std::span<char> destination,
                                  VectorSet vectors) noexcept {
    return Convert(text, destination, vectors, avx2::ToUtf8);
}

bool IsWellFormed(std::string_view text) noexcept {
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        if (!first.wellFormed) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

bool IsWellFormed(std::u16string_view text) noexcept {
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        if (!first.wellFormed) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

}  // namespace winapi::utf8
