#include "text/codings.h"

#include "text/detail/bytecoding.h"
#include "text/detail/cstringlength.h"

#include <algorithm>
#include <cstring>

namespace {

int CheckedLength(std::uint64_t length) {
    return kestrolumen::detail::CStringLength(length,
                                              "bytes as text: the text would be longer than 2^31 - 2 units");
}

const std::uint8_t* AsBytes(const char* text) noexcept {
    return reinterpret_cast<const std::uint8_t*>(text);
}

}  // namespace

CStringA HexFromTextA(const char* text) {
    return HexFromBytes({AsBytes(text), std::strlen(text)});
}

CStringW HexFromTextW(const WCHAR* text) {
    const StdWStringView units(text);
    CStringW hex;
    WCHAR* digits = hex.GetBufferSetLength(CheckedLength(std::uint64_t{units.size()} * 4));
    for (const WCHAR unit : units) {
        const std::uint8_t bytes[] = {static_cast<std::uint8_t>(unit >> 8),
                                      static_cast<std::uint8_t>(unit & 0xFF)};
        char narrow[4];
        kestrolumen::detail::EncodeHex(bytes, sizeof bytes, narrow);
        digits = std::copy_n(narrow, 4, digits);
    }
    return hex;
}

CStringA HexFromBytes(std::span<const std::uint8_t> bytes) {
    CStringA hex;
    char* const digits = hex.GetBufferSetLength(CheckedLength(std::uint64_t{bytes.size()} * 2));
    kestrolumen::detail::EncodeHex(bytes.data(), bytes.size(), digits);
    return hex;
}

CStringA TextAFromHex(const char* text) {
    const std::size_t length = std::strlen(text);
    CStringA decoded;
    if (length % 2 != 0) return decoded;
    char* const target = decoded.GetBufferSetLength(CheckedLength(length / 2));
    const bool allValid =
        kestrolumen::detail::DecodeHex(text, length / 2, reinterpret_cast<std::uint8_t*>(target));
    return allValid ? decoded : CStringA();
}

CStringW TextWFromHex(const WCHAR* text) {
    const StdWStringView digits(text);
    const auto isDigit = [](WCHAR unit) { return kestrolumen::detail::IsHexDigit(unit); };
    CStringW decoded;
    if (digits.size() % 4 != 0 || !std::all_of(digits.begin(), digits.end(), isDigit)) return decoded;
    WCHAR* target = decoded.GetBufferSetLength(CheckedLength(digits.size() / 4));
    for (std::size_t i = 0; i < digits.size(); i += 4) {
        unsigned unit = 0;
        for (const WCHAR digit : digits.substr(i, 4))
            unit = unit << 4 | kestrolumen::detail::HexDigitValue(digit);
        *target++ = static_cast<WCHAR>(unit);
    }
    return decoded;
}

std::vector<std::uint8_t> BytesFromHex(const CStringA& text) {
    const auto pairs = static_cast<std::size_t>(text.GetLength()) / 2;
    std::vector<std::uint8_t> bytes(pairs);
    kestrolumen::detail::DecodeHex(text.GetString(), pairs, bytes.data());
    return bytes;
}

CStringA Text6FromBytes(std::span<const std::uint8_t> bytes) {
    CStringA text;
    char* const target =
        text.GetBufferSetLength(CheckedLength(kestrolumen::detail::SixBitLength(bytes.size())));
    kestrolumen::detail::EncodeSixBit(bytes.data(), bytes.size(), target);
    return text;
}

std::vector<std::uint8_t> BytesFromText6(const CStringA& text) {
    const auto length = static_cast<std::size_t>(text.GetLength());
    // Not length * 6, which 32 bits may not hold.
    std::vector<std::uint8_t> bytes(length / 4 * 3 + (length % 4 * 6 + 7) / 8);
    kestrolumen::detail::DecodeSixBit(text.GetString(), length, bytes.data());
    return bytes;
}
