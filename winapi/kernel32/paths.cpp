#include "paths.h"

#include "failure.h"
#include "utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace winapi {
namespace {

constexpr char16_t rootDrive = u'Z';
constexpr char16_t escapeBase = 0xDC00;  // + a byte from 0x80: that byte, taken literally

constexpr char16_t Folded(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

}  // namespace

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const utf8::Decoded first = utf8::DecodeFirst(text);
        std::array<char16_t, 2> units{
            static_cast<char16_t>(escapeBase | static_cast<unsigned char>(text[0]))};
        char16_t* const end =
            first.wellFormed ? utf8::Encode(first.character, units.data()) : units.data() + 1;
        result.append(units.data(), end);
        text.remove_prefix(first.wellFormed ? first.length : 1);
    }
    return result;
}

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const utf8::Decoded first = utf8::DecodeFirst(text);
        const char16_t unit = text[0];
        if (unit >= (escapeBase | 0x80) && unit <= (escapeBase | 0xFF)) {
            result += static_cast<char>(unit & 0xFF);
        } else {
            std::array<char, 4> bytes;
            result.append(bytes.data(),
                          utf8::Encode(first.wellFormed ? first.character : unit, bytes.data()));
        }
        text.remove_prefix(first.length);
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
