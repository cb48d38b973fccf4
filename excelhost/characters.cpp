#include "excelhost/characters.h"

#include <algorithm>
#include <array>

namespace excelhost {
namespace {

WCHAR Upper(WCHAR unit) noexcept {
    if (unit < 0x80) return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - ('a' - 'A')) : unit;
    CharUpperBuffW(&unit, 1);
    return unit;
}

constexpr bool IsHighSurrogate(WCHAR unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

// Controls of ASCII and Latin-1, line and paragraph separators, and the marks that turn a line's direction.
constexpr bool IsShownEscaped(WCHAR unit) noexcept {
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069) || unit == 0x200E || unit == 0x200F;
}

std::string Escaped(WCHAR unit) {
    if (unit == '\t') return "\\t";
    if (unit == '\n') return "\\n";
    if (unit == '\r') return "\\r";
    std::string text = "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) text += "0123456789ABCDEF"[(unit >> shift) & 0xF];
    return text;
}

// The bytes of the UTF-8 character that a text begins with, by the table of the Unicode Standard's "Well-Formed
// UTF-8 Byte Sequences"; 0 when it begins with none.
std::size_t CharacterLength(std::string_view text) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xC2 && lead <= 0xDF ? 2 : lead >= 0xE0 && lead <= 0xEF ? 3 : 4;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < low || byte(1) > high) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    return length;
}

}  // namespace

Text Wide(std::string_view utf8) {
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return static_cast<signed char>(c) >= 0; })) {
        return {utf8.begin(), utf8.end()};
    }
    const int bytes = static_cast<int>(utf8.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    Text text(static_cast<std::size_t>(units), WCHAR{});
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text.data(), units);
    return text;
}

std::string Utf8(TextView text) {
    std::string utf8;
    if (std::all_of(text.begin(), text.end(), [](WCHAR unit) { return unit < 0x80; })) {
        utf8.reserve(text.size());
        for (const WCHAR unit : text) utf8 += static_cast<char>(unit);
        return utf8;
    }
    const int units = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(bytes));
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), bytes, nullptr, nullptr);
    return utf8;
}

std::size_t Utf8Prefix(std::string_view text) noexcept {
    std::size_t next = 0;
    while (next < text.size()) {
        const std::size_t length = CharacterLength(text.substr(next));
        if (length == 0) break;
        next += length;
    }
    return next;
}

std::string Excerpt(TextView text, std::size_t most) {
    const bool cut = text.size() > most;
    if (cut) text = text.substr(0, most > 0 && IsHighSurrogate(text[most - 1]) ? most - 1 : most);
    std::string shown;
    while (!text.empty()) {
        const auto end = std::find_if(text.begin(), text.end(), IsShownEscaped);
        const auto plain = static_cast<std::size_t>(end - text.begin());
        shown += Utf8(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) break;
        shown += Escaped(text.front());
        text.remove_prefix(1);
    }
    return cut ? shown + "…" : shown;
}

std::string Excerpt(std::string_view utf8, std::size_t most) {
    return Excerpt(Wide(utf8), most);
}

bool SameName(TextView a, TextView b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](WCHAR x, WCHAR y) { return LowerAscii(x) == LowerAscii(y); });
}

Text UpperCase(Text text) {
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

Text LowerCase(Text text) {
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

std::strong_ordering CompareTexts(TextView a, TextView b) noexcept {
    return std::lexicographical_compare_three_way(
        a.begin(), a.end(), b.begin(), b.end(),
        [](WCHAR x, WCHAR y) { return x == y ? std::strong_ordering::equal : Upper(x) <=> Upper(y); });
}

std::string Utf8From(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

void AppendJson(std::string& json, std::string_view text) {
    static constexpr std::string_view digits = "0123456789abcdef";
    json += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || c == '<' || byte == 0x7F) {
            ((json += "\\u00") += digits[byte >> 4]) += digits[byte & 0xF];
        } else {
            if (c == '"' || c == '\\') json += '\\';
            json += c;
        }
    }
    json += '"';
}

}  // namespace excelhost
