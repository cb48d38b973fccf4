#include "textconversion.h"

#include "utf8.h"

namespace winapi {
namespace {

// What the first character of a text becomes.
template <class To>
struct Step {
    std::size_t taken;
    bool isExact;
    std::size_t count;
    To units[4];
};

template <class To, class From, class FirstStep>
Converted Convert(std::basic_string_view<From> text, std::span<To> destination,
                  FirstStep firstStep) noexcept {
    Converted done{0, true};
    while (!text.empty()) {
        const Step<To> step = firstStep(text);
        for (std::size_t i = 0; i < step.count; ++i, ++done.units) {
            if (done.units < destination.size()) destination[done.units] = step.units[i];
        }
        done.isExact = done.isExact && step.isExact;
        text.remove_prefix(step.taken);
    }
    return done;
}

template <class To, class From>
Step<To> UnicodeStep(std::basic_string_view<From> text) noexcept {
    const utf8::Decoded first = utf8::DecodeFirst(text);
    Step<To> step{first.length, first.wellFormed, 0, {}};
    step.count = static_cast<std::size_t>(utf8::Encode(first.character, step.units) - step.units);
    return step;
}

// A lead byte takes the next byte with it, whatever that is, but the terminator and the end of the text.
Step<char16_t> PageStep(const CodePage& page, std::string_view text) noexcept {
    const auto byte = static_cast<std::uint8_t>(text[0]);
    const char16_t replacement = page.facts.unicodeDefault;
    if (!page.facts.IsLeadByte(byte)) return {1, !page.undefined[byte], 1, {page.unitOfCode[byte]}};
    if (text.size() < 2 || text[1] == '\0') return {1, false, 1, {replacement}};
    const char16_t unit = page.unitOfCode[byte * 256u + static_cast<std::uint8_t>(text[1])];
    return {2, unit != 0, 1, {unit != 0 ? unit : replacement}};
}

std::uint16_t FirstCode(const CodePage& page, const char* text) noexcept {
    if (text == nullptr) return '?';
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (!page.facts.IsLeadByte(first)) return first;
    return static_cast<std::uint16_t>(first << 8 | static_cast<std::uint8_t>(text[1]));
}

}  // namespace

Converted WideFromUtf8(std::string_view text, std::span<char16_t> destination) noexcept {
    return Convert(text, destination, UnicodeStep<char16_t, char>);
}

Converted Utf8FromWide(std::u16string_view text, std::span<char> destination) noexcept {
    return Convert(text, destination, UnicodeStep<char, char16_t>);
}

Converted WideFromPage(const CodePage& page, std::string_view text,
                       std::span<char16_t> destination) noexcept {
    return Convert(text, destination, [&](std::string_view rest) { return PageStep(page, rest); });
}

Converted PageFromWide(const CodePage& page, std::u16string_view text, std::span<char> destination,
                       const char* defaultChar) noexcept {
    const std::uint16_t defaultCode = FirstCode(page, defaultChar);
    return Convert(text, destination, [&](std::u16string_view rest) {
        const std::uint16_t own = page.codeOfUnit[rest[0]];
        const bool isExact = own != 0 || rest[0] == 0;
        const std::uint16_t code = isExact ? own : defaultCode;
        const auto lead = static_cast<char>(code >> 8);
        const auto last = static_cast<char>(code & 0xFF);
        return code > 0xFF ? Step<char>{1, isExact, 2, {lead, last}} : Step<char>{1, isExact, 1, {last}};
    });
}

}  // namespace winapi
