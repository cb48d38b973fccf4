#include "platform/systemerrortext.h"

#include <windows.h>

#include <winbase.h>

#include <iterator>

CStringW SystemErrorText(std::uint32_t code, std::uint16_t language) {
    constexpr DWORD defaultSublanguage = 0x400;
    WCHAR buffer[0x2001];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, language | defaultSublanguage, buffer,
                       static_cast<DWORD>(std::size(buffer)), nullptr);
    CStringW text(length != 0 ? buffer : TEXT(""));
    text.TrimRight();
    return text.IsEmpty() ? CStringWFormat(TEXT("err=%d"), code) : text;
}
