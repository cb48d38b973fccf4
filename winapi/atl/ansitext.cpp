#include "ansitext.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t longestSource = std::numeric_limits<int>::max();

bool IsLead(char byte) noexcept {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x80 && IsDBCSLeadByteEx(CP_ACP, value) != 0;
}

std::size_t Utf8CharacterLength(const char* text) noexcept {
    const auto lead = static_cast<unsigned char>(*text);
    const std::size_t most = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    std::size_t length = 1;
    while (length < most && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) ++length;
    return length;
}

int AsSize(std::size_t capacity) noexcept {
    return static_cast<int>(std::min(capacity, longestSource));
}

}  // namespace

namespace ansitext {

std::size_t CharacterLength(const char* text) noexcept {
    if (static_cast<unsigned char>(*text) < 0x80) return 1;
    if (GetACP() == CP_UTF8) return Utf8CharacterLength(text);
    return IsLead(text[0]) && text[1] != 0 ? 2 : 1;
}

std::size_t CharacterLength(const WCHAR* text) noexcept {
    return (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00 ? 2 : 1;
}

bool CharacterStarts<char>::At(std::size_t index) noexcept {
    // A byte that is no lead byte ends a character, whatever stands before it. So an odd run of lead bytes
    // directly before the place means that its last one takes the byte there.
    std::size_t run = index;
    while (run > known_ && IsLead(text_[run - 1])) --run;
    const bool startsAtRun = run > known_ || startsThere_;
    startsThere_ = ((index - run) % 2 == 0) == startsAtRun;
    known_ = index;
    return startsThere_;
}

std::size_t ConvertedLength(const char* text, std::size_t length) noexcept {
    if (length > longestSource || IsAscii(text, length)) return length;
    const auto bytes = static_cast<int>(length);
    return static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text, bytes, nullptr, 0));
}

std::size_t ConvertedLength(const WCHAR* text, std::size_t length) noexcept {
    if (length > longestSource || IsAscii(text, length)) return length;
    const auto units = static_cast<int>(length);
    return static_cast<std::size_t>(
        WideCharToMultiByte(CP_ACP, 0, text, units, nullptr, 0, nullptr, nullptr));
}

std::size_t Convert(const char* text, std::size_t length, WCHAR* target, std::size_t capacity) noexcept {
    if (length > longestSource) return 0;
    if (length <= capacity && IsAscii(text, length)) {
        std::transform(text, text + length, target, [](char byte) { return static_cast<WCHAR>(byte); });
        return length;
    }
    const auto bytes = static_cast<int>(length);
    return static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text, bytes, target, AsSize(capacity)));
}

std::size_t Convert(const WCHAR* text, std::size_t length, char* target, std::size_t capacity) noexcept {
    if (length > longestSource) return 0;
    if (length <= capacity && IsAscii(text, length)) {
        std::transform(text, text + length, target, [](WCHAR unit) { return static_cast<char>(unit); });
        return length;
    }
    const auto units = static_cast<int>(length);
    return static_cast<std::size_t>(
        WideCharToMultiByte(CP_ACP, 0, text, units, target, AsSize(capacity), nullptr, nullptr));
}

}  // namespace ansitext
