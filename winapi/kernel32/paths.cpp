#include "paths.h"

#include "failure.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace winapi {
namespace {

constexpr char16_t rootDrive = u'Z';
constexpr char16_t escapeBase = 0xDC00;  // + a byte from 0x80: that byte, taken literally

constexpr bool IsHighSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}
constexpr char16_t Folded(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

// The number of bytes of a sequence that starts with `lead`, and 0 for a byte that starts none.
constexpr std::size_t SequenceLength(unsigned char lead) noexcept {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

struct Decoded {
    char32_t character;
    std::size_t length;  // 0: not well-formed
};

Decoded DecodeFirst(std::string_view text) noexcept {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = SequenceLength(lead);
    if (length == 0 || length > text.size()) return {0, 0};
    if (length == 1) return {lead, 1};
    auto character = static_cast<char32_t>(lead & (0x7F >> length));
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80) return {0, 0};
        character = character << 6 | (byte & 0x3F);
    }
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool wellFormed = character >= least[length] && character <= 0x10FFFF &&
                            !IsHighSurrogate(character) && !IsLowSurrogate(character);
    return wellFormed ? Decoded{character, length} : Decoded{0, 0};
}

void AppendUtf8(std::string& text, char32_t character) {
    const auto append = [&text](char32_t byte) {
        text += static_cast<char>(static_cast<unsigned char>(byte));
    };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | character >> 6);
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

}  // namespace

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto [character, length] = DecodeFirst(text);
        if (length == 0) {
            result += static_cast<char16_t>(escapeBase | static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        if (character < 0x10000) {
            result += static_cast<char16_t>(character);
        } else {
            result += static_cast<char16_t>(0xD7C0 + (character >> 10));
            result += static_cast<char16_t>(0xDC00 | (character & 0x3FF));
        }
        text.remove_prefix(length);
    }
    return result;
}

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            AppendUtf8(result, 0x10000 + ((unit & 0x3FF) << 10 | (text[++i] & 0x3FFU)));
        } else if (unit >= (escapeBase | 0x80) && unit <= (escapeBase | 0xFF)) {
            result += static_cast<char>(static_cast<unsigned char>(unit));
        } else {
            AppendUtf8(result, unit);
        }
    }
    return result;
}

std::u16string WindowsPath(std::string_view path) {
    std::u16string result;
    if (path.starts_with('/')) result = {rootDrive, u':'};
    result += Utf16FromUtf8(path);
    std::replace(result.begin(), result.end(), u'/', u'\\');
    return result;
}

std::string SystemPath(std::u16string_view path) {
    constexpr std::u16string_view withoutLimit = u"\\\\?\\";
    if (path.starts_with(withoutLimit)) path.remove_prefix(withoutLimit.size());
    if (path.empty()) throw Failure{ERROR_INVALID_NAME};
    if (path.size() >= 2 && path[1] == u':') {
        if (Folded(path[0]) != Folded(rootDrive)) throw Failure{ERROR_PATH_NOT_FOUND};
        path.remove_prefix(2);
        if (path.empty()) return ".";
    } else if (path.size() >= 2 && path[0] == u'\\' && path[1] == u'\\') {
        throw Failure{ERROR_BAD_NETPATH};
    }
    std::string result = Utf8FromUtf16(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

std::string FullPath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error) throw Failure{ErrorFromErrno(error.value())};
    return absolute.lexically_normal().string();
}

DWORD ErrorForFile(int error, const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (error == ENOENT && slash != std::string::npos &&
        access(path.substr(0, slash + 1).c_str(), F_OK) != 0) {
        return ERROR_PATH_NOT_FOUND;
    }
    return ErrorFromErrno(error);
}

bool SameName(std::u16string_view one, std::u16string_view other) noexcept {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char16_t a, char16_t b) { return Folded(a) == Folded(b); });
}

}  // namespace winapi
