#include <cerrno>
#include <atomic>

#include "mbstring.h"
#include "winapi/codepages.h"

namespace {

constexpr UINT noMultibytePage = 0;

// The page when it is a double-byte one, else noMultibytePage; nothing if the runtime can't go by the page.
bool MultibytePage(int codePage, UINT& page) noexcept {
    UINT number = 0;
    switch (codePage) {
        case _MB_CP_SBCS:
            page = noMultibytePage;
            return true;
        case _MB_CP_OEM:
            number = GetOEMCP();
            break;
        case _MB_CP_ANSI:
        case _MB_CP_LOCALE:
            number = GetACP();
            break;
        default:
            if (codePage <= CP_THREAD_ACP) return false;
            number = static_cast<UINT>(codePage);
    }
    CPINFO info;
    if (GetCPInfo(number, &info) == FALSE || info.MaxCharSize > 2) return false;
    page = info.MaxCharSize == 2 ? number : noMultibytePage;
    return true;
}

std::atomic<UINT>& CurrentPage() noexcept {
    static std::atomic<UINT> current = [] {
        UINT page = noMultibytePage;
        return MultibytePage(_MB_CP_ANSI, page) ? page : noMultibytePage;
    }();
    return current;
}

bool IsLead(unsigned char byte) noexcept {
    const UINT page = CurrentPage().load(std::memory_order_relaxed);
    return page != noMultibytePage && IsDBCSLeadByteEx(page, byte) != FALSE;
}

}  // namespace

int _setmbcp(int codePage) noexcept {
    UINT page = noMultibytePage;
    if (!MultibytePage(codePage, page)) {
        errno = EINVAL;
        return -1;
    }
    CurrentPage() = page;
    return 0;
}

unsigned char* _mbsinc(const unsigned char* current) noexcept {
    const bool isPair = IsLead(current[0]) && current[1] != 0;
    return const_cast<unsigned char*>(current) + (isPair ? 2 : 1);
}

unsigned int _mbsnextc(const unsigned char* text) noexcept {
    const unsigned int first = text[0];
    return IsLead(text[0]) ? first << 8u | text[1] : first;
}
