#include "processenv.h"

#include "failure.h"
#include "paths.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// Null when it isn't set.
const char* Variable(std::u16string_view name) {
    return std::getenv(winapi::Utf8FromUtf16(name).c_str());
}

std::u16string Expand(std::u16string_view source) {
    constexpr auto none = std::u16string_view::npos;
    std::u16string result;
    while (!source.empty()) {
        const std::size_t close = source.front() == u'%' ? source.find(u'%', 1) : none;
        if (close == none) {
            const std::size_t plain = std::min(source.find(u'%', 1), source.size());
            result += source.substr(0, plain);
            source.remove_prefix(plain);
        } else {
            const char* const value = Variable(source.substr(1, close - 1));
            result +=
                value != nullptr ? winapi::Utf16FromUtf8(value) : std::u16string(source.substr(0, close + 1));
            source.remove_prefix(close + 1);
        }
    }
    return result;
}

}  // namespace

DWORD WINAPI ExpandEnvironmentStringsW(LPCWSTR source, LPWSTR buffer, DWORD size) noexcept {
    return winapi::AtBorder(DWORD{0}, [&] {
        const std::u16string text = Expand(source);
        const std::size_t told = text.size() < size ? text.size() : 0;
        if (size != 0) buffer[text.copy(buffer, told)] = u'\0';
        return static_cast<DWORD>(text.size() + 1);
    });
}
