#include "winapi/bstr.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

// In front of the text, a pointer's size so that the text is as aligned as on Windows. The count fills the
// last four bytes.
constexpr std::size_t prefixBytes = sizeof(void*);
constexpr std::size_t unitBytes = sizeof(OLECHAR);
// Text and prefix and terminator together stay within what 32 bits count.
constexpr UINT maxTextBytes = std::numeric_limits<UINT>::max() - prefixBytes - 2 * unitBytes;

char* Block(BSTR text) noexcept {
    return reinterpret_cast<char*>(text) - prefixBytes;
}

char* CountOf(BSTR text) noexcept {
    return reinterpret_cast<char*>(text) - sizeof(UINT);
}

// Text of any content, ended by a zero unit that stands at an even offset, so that a text of odd bytes ends
// for whoever reads units too.
BSTR NewBstr(UINT bytes) noexcept {
    if (bytes > maxTextBytes) return nullptr;
    const std::size_t evenBytes = std::size_t{bytes} + bytes % unitBytes;
    auto* const block = static_cast<char*>(std::malloc(prefixBytes + evenBytes + unitBytes));
    if (block == nullptr) return nullptr;
    auto* const text = reinterpret_cast<BSTR>(block + prefixBytes);
    std::memcpy(CountOf(text), &bytes, sizeof bytes);
    std::memset(block + prefixBytes + bytes, 0, evenBytes - bytes + unitBytes);
    return text;
}

BSTR NewBstr(const void* source, UINT bytes) noexcept {
    const BSTR text = NewBstr(bytes);
    if (text != nullptr && source != nullptr) std::memcpy(text, source, bytes);
    return text;
}

constexpr bool UnitsFit(std::size_t units) noexcept {
    return units <= maxTextBytes / unitBytes;
}

}  // namespace

BSTR WINAPI SysAllocString(const OLECHAR* text) noexcept {
    if (text == nullptr) return nullptr;
    const std::size_t units = std::char_traits<OLECHAR>::length(text);
    return UnitsFit(units) ? SysAllocStringLen(text, static_cast<UINT>(units)) : nullptr;
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length) noexcept {
    return UnitsFit(length) ? NewBstr(text, length * UINT{unitBytes}) : nullptr;
}

BSTR WINAPI SysAllocStringByteLen(LPCSTR text, UINT length) noexcept {
    return NewBstr(text, length);
}

void WINAPI SysFreeString(BSTR text) noexcept {
    if (text != nullptr) std::free(Block(text));
}

UINT WINAPI SysStringLen(BSTR text) noexcept {
    return SysStringByteLen(text) / UINT{unitBytes};
}

UINT WINAPI SysStringByteLen(BSTR text) noexcept {
    if (text == nullptr) return 0;
    UINT bytes = 0;
    std::memcpy(&bytes, CountOf(text), sizeof bytes);
    return bytes;
}
