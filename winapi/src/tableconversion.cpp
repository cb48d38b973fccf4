#include "tableconversion.h"

#include <bit>

#include "ascii_run.h"
#include "singlebyte_avx2.h"

namespace winapi {
namespace {

// The length of a block that is converted by vectors.
constexpr std::size_t blockSize = asciiRunSize;

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

bool IsAscii(char byte) noexcept {
    return static_cast<std::uint8_t>(byte) < 0x80;
}

// `destination` has the room.
void WidenSingleBytes(const CodePage& page, std::string_view text, char16_t* to, VectorSet vectors) noexcept {
    const auto unitAt = [&](std::size_t i) { return page.UnitOfByte(static_cast<std::uint8_t>(text[i])); };
    std::size_t at = 0;
    if (page.HasLatin1()) {
        if (vectors == VectorSet::avx2) at = avx2::WidenLatin1Page(page.Bytes(), text, to);
        for (; text.size() - at >= blockSize; at += blockSize) {
            for (Exceptions left = WidenLatin1(&text[at], to + at); left != 0; left &= left - 1) {
                const std::size_t i = at + static_cast<std::size_t>(std::countr_zero(left));
                to[i] = unitAt(i);
            }
        }
    }
    for (; at < text.size(); ++at) to[at] = unitAt(at);
}

std::optional<std::size_t> WidenDoubleBytes(const CodePage& page, std::string_view text,
                                            std::span<char16_t> destination) noexcept {
    std::size_t written = 0;
    while (!text.empty()) {
        const std::size_t room = destination.size() - written;
        if (IsAscii(text[0]) && text.size() >= blockSize && room >= blockSize) {
            const std::size_t run = WidenAsciiRun(text.data(), &destination[written]);
            text.remove_prefix(run);
            written += run;
            continue;
        }
        if (room == 0) return std::nullopt;
        const Decoded first = DecodeFirst(page, text);
        destination[written++] = MeansNothing(first, text[0]) ? page.Facts().unicodeDefault : first.unit;
        text.remove_prefix(first.length);
    }
    return written;
}

// Codes of units, with the default code for those that the page lacks.
class Encoder {
  public:
    Encoder(const CodePage& page, std::uint16_t defaultCode, bool& usedDefault) noexcept
        : page_(page), defaultCode_(defaultCode), usedDefault_(usedDefault) {}

    std::uint16_t operator()(char16_t unit) const noexcept {
        const std::uint16_t code = page_.CodeOfUnit(unit);
        if (code != 0 || unit == 0) return code;
        usedDefault_ = true;
        return defaultCode_;
    }

  private:
    const CodePage& page_;
    std::uint16_t defaultCode_;
    bool& usedDefault_;
};

template <bool withLatin1>
void NarrowSingleBytes(const Encoder& encode, std::u16string_view text, char* to) noexcept {
    std::size_t at = 0;
    for (; text.size() - at >= blockSize; at += blockSize) {
        for (Exceptions left = Narrow<withLatin1>(&text[at], to + at); left != 0; left &= left - 1) {
            const std::size_t i = at + static_cast<std::size_t>(std::countr_zero(left));
            to[i] = static_cast<char>(encode(text[i]));
        }
    }
    for (; at < text.size(); ++at) to[at] = static_cast<char>(encode(text[at]));
}

std::optional<std::size_t> NarrowDoubleBytes(const Encoder& encode, std::u16string_view text,
                                             std::span<char> destination) noexcept {
    std::size_t written = 0;
    while (!text.empty()) {
        const std::size_t room = destination.size() - written;
        if (text[0] < 0x80 && text.size() >= blockSize && room >= blockSize) {
            const std::size_t run = NarrowAsciiRun(text.data(), &destination[written]);
            text.remove_prefix(run);
            written += run;
            continue;
        }
        const std::uint16_t code = encode(text[0]);
        if (room < (code > 0xFF ? 2u : 1u)) return std::nullopt;
        if (code > 0xFF) destination[written++] = static_cast<char>(code >> 8);
        destination[written++] = static_cast<char>(code & 0xFF);
        text.remove_prefix(1);
    }
    return written;
}

}  // namespace

std::size_t WideLength(const CodePage& page, std::string_view text) noexcept {
    if (!page.IsDoubleByte()) return text.size();
    std::size_t units = 0;
    for (; !text.empty(); ++units) text.remove_prefix(DecodeFirst(page, text).length);
    return units;
}

std::optional<std::size_t> WideFromPage(const CodePage& page, std::string_view text,
                                        std::span<char16_t> destination, VectorSet vectors) noexcept {
    if (page.IsDoubleByte()) return WidenDoubleBytes(page, text, destination);
    if (text.size() > destination.size()) return std::nullopt;
    WidenSingleBytes(page, text, destination.data(), vectors);
    return text.size();
}

bool IsValidText(const CodePage& page, std::string_view text) noexcept {
    while (!text.empty()) {
        const Decoded first = DecodeFirst(page, text);
        if (MeansNothing(first, text[0]) || page.IsUndefined(static_cast<std::uint8_t>(text[0])))
            return false;
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
    const Encoder encode(page, defaultCode, usedDefault);
    std::size_t bytes = 0;
    for (const char16_t unit : text) bytes += encode(unit) > 0xFF ? 2 : 1;
    return bytes;
}

std::optional<std::size_t> PageFromWide(const CodePage& page, std::u16string_view text,
                                        std::span<char> destination, std::uint16_t defaultCode,
                                        bool& usedDefault) noexcept {
    const Encoder encode(page, defaultCode, usedDefault);
    if (page.IsDoubleByte()) return NarrowDoubleBytes(encode, text, destination);
    if (text.size() > destination.size()) return std::nullopt;
    if (page.HasLatin1()) {
        NarrowSingleBytes<true>(encode, text, destination.data());
    } else {
        NarrowSingleBytes<false>(encode, text, destination.data());
    }
    return text.size();
}

}  // namespace winapi
