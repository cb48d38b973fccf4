#include <cerrno>
#include <atomic>
#include <optional>

#include "mbstring.h"
#include "winapi/codepages.h"

namespace {

// The page where it is a double-byte one, else 0, which has no lead bytes; nothing if the runtime can't go by
// the page.
std::optional<UINT> MultibytePage(int codePage) noexcept {
    const UINT number = codePage == _MB_CP_ANSI ? GetACP() : static_cast<UINT>(codePage);
    CPINFO info;
    if (codePage == CP_ACP || GetCPInfo(number, &info) == FALSE || info.MaxCharSize > 2) return std::nullopt;
    return info.MaxCharSize == 2 ? number : 0;
}

std::atomic<UINT>& CurrentPage() noexcept {
    static std::atomic<UINT> current = MultibytePage(_MB_CP_ANSI).value_or(0);
    return current;
}

bool IsLead(unsigned char byte) noexcept {
    const UINT page = CurrentPage().load(std::memory_order_relaxed);
    return page != 0 && IsDBCSLeadByteEx(page, byte) != FALSE;
}

}  // namespace

int _setmbcp(int codePage) noexcept {
    const std::optional<UINT> page = MultibytePage(codePage);
    if (!page) {
        errno = EINVAL;
        return -1;
    }
    CurrentPage() = *page;
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
