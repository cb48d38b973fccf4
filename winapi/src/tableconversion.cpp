#include "tableconversion.h"

namespace winapi {
namespace {

struct Decoded {
    char16_t unit;  // 0 for bytes that mean nothing, and for the zero byte
    std::size_t length;
};

// A lead byte takes the next byte with it, whatever that is, but the terminator and the end of the text.
Decoded DecodeFirst(const CodePage& page, std::string_view text) noexcept {
    const auto byte = static_cast<std::uint8_t>(text[0]);
    if (!page.IsLeadByte(byte)) return {page.UnitOfByte(byte), 1};
    if (text.size() < 2 || text[1] == '\0') return {0, 1};
    return {page.UnitOfPair(byte, static_cast<std::uint8_t>(text[1])), 2};
}

bool MeansNothing(Decoded decoded, char first) noexcept {
    return decoded.unit == 0 && first != '\0';
}

}  // namespace

std::size_t WideLength(const CodePage& page, std::string_view text) noexcept {
    if (!page.IsDoubleByte()) return text.size();
    std::size_t units = 0;
    for (; !text.empty(); ++units) text.remove_prefix(DecodeFirst(page, text).length);
    return units;
}

std::optional<std::size_t> WideFromPage(const CodePage& page, std::string_view text,
                                        std::span<char16_t> destination) noexcept {
    std::size_t written = 0;
    for (; !text.empty(); ++written) {
        if (written == destination.size()) return std::nullopt;
        const Decoded first = DecodeFirst(page, text);
        destination[written] = MeansNothing(first, text[0]) ? page.Facts().unicodeDefault : first.unit;
        text.remove_prefix(first.length);
    }
    return written;
}

bool IsValidText(const CodePage& page, std::string_view text) noexcept {
    while (!text.empty()) {
        const Decoded first = DecodeFirst(page, text);
        if (MeansNothing(first, text[0])) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

std::uint16_t FirstCode(const CodePage& page, const char* text) noexcept {
    if (text == nullptr) return '?';
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (!page.IsLeadByte(first)) return first;
    return static_cast<std::uint16_t>(first << 8 | static_cast<std::uint8_t>(text[1]));
}

std::size_t PageLength(const CodePage& page, std::u16string_view text, std::uint16_t defaultCode,
                       bool& usedDefault) noexcept {
    std::size_t bytes = 0;
    for (const char16_t unit : text) {
        std::uint16_t code = page.CodeOfUnit(unit);
        if (code == 0 && unit != 0) {
            code = defaultCode;
            usedDefault = true;
        }
        bytes += code > 0xFF ? 2 : 1;
    }
    return bytes;
}

std::optional<std::size_t> PageFromWide(const CodePage& page, std::u16string_view text,
                                        std::span<char> destination, std::uint16_t defaultCode,
                                        bool& usedDefault) noexcept {
    std::size_t written = 0;
    for (const char16_t unit : text) {
        std::uint16_t code = page.CodeOfUnit(unit);
        if (code == 0 && unit != 0) {
            code = defaultCode;
            usedDefault = true;
        }
        if (destination.size() - written < (code > 0xFF ? 2u : 1u)) return std::nullopt;
        if (code > 0xFF) destination[written++] = static_cast<char>(code >> 8);
        destination[written++] = static_cast<char>(code & 0xFF);
    }
    return written;
}

}  // namespace winapi
