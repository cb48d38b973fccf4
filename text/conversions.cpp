#include "text/conversions.h"

#include "text/detail/uptozero.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

using kestrolumen::detail::UpToZero;

int CheckedLength(std::size_t length) {
    if (length >= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::length_error("UTF-8 conversion: the text is longer than 2^31 - 2 units");
    }
    return static_cast<int>(length);
}

int WideLength(const char* text, int length) noexcept {
    return MultiByteToWideChar(CP_UTF8, 0, text, length, nullptr, 0);
}

CStringW WideFromUtf8(const char* text, std::size_t size) {
    CStringW wide;
    if (size == 0) return wide;
    const int length = CheckedLength(size);
    const int units = WideLength(text, length);
    MultiByteToWideChar(CP_UTF8, 0, text, length, wide.GetBufferSetLength(units), units);
    return wide;
}

}  // namespace

// A zero unit is the only thing that becomes a zero byte, so the text may be cut after it is converted.
std::string Utf8FromWString(StdWStringView text) {
    std::string utf8;
    if (text.empty()) return utf8;
    const int length = CheckedLength(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(size));
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), size, nullptr, nullptr);
    utf8.resize(UpToZero(std::string_view(utf8)).size());
    return utf8;
}

std::string Utf8FromCStringW(const CStringW& text) {
    return Utf8FromWString(StdWStringView(text.GetString(), static_cast<std::size_t>(text.GetLength())));
}

StdWString WStringFromUtf8(std::string_view text) {
    StdWString wide;
    const std::string_view source = UpToZero(text);
    if (source.empty()) return wide;
    const int length = CheckedLength(source.size());
    const int units = WideLength(source.data(), length);
    wide.resize(static_cast<std::size_t>(units));
    MultiByteToWideChar(CP_UTF8, 0, source.data(), length, wide.data(), units);
    return wide;
}

CStringW CStringWFromUtf8(const std::vector<char>& bytes) {
    const auto source = UpToZero(std::string_view(bytes.data(), bytes.size()));
    return WideFromUtf8(source.data(), source.size());
}

CStringW CStringWFromUtf8(const char* text, std::size_t size) {
    return text == nullptr || size == 0 ? CStringW() : WideFromUtf8(text, std::strlen(text));
}
