#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "winapi/codepages.h"
#include "winapi/control.h"
#include "winapi/errorcodes.h"
#include "codepagetable.h"
#include "textconversion.h"

namespace {

using winapi::CodePage;
using winapi::CodePageFacts;

// A page is usable when it is UTF-8 or has tables.
bool IsUsable(UINT codePage) {
    return codePage == winapi::utf8CodePage || winapi::FindCodePage(codePage) != nullptr;
}

UINT AnsiCodePageAtStart() {
    constexpr UINT latin1 = 1252;
    const char* const wanted = std::getenv("KESTROLUMEN_ANSI_CODE_PAGE");
    if (wanted == nullptr) return latin1;
    const unsigned long number = std::strtoul(wanted, nullptr, 10);
    return number <= UINT_MAX && IsUsable(static_cast<UINT>(number)) ? static_cast<UINT>(number) : latin1;
}

std::atomic<UINT>& AnsiCodePage() {
    static std::atomic<UINT> codePage = AnsiCodePageAtStart();
    return codePage;
}

// The page behind the pseudo number.
UINT Resolve(UINT codePage) noexcept {
    return codePage == CP_ACP ? GetACP() : codePage;
}

int Fail(DWORD error) noexcept {
    SetLastError(error);
    return 0;
}

template <class Unit>
std::basic_string_view<Unit> SourceOf(const Unit* source, int length) noexcept {
    if (length >= 0) return {source, static_cast<std::size_t>(length)};
    return {source, std::char_traits<Unit>::length(source) + 1};
}

bool AreValid(const void* source, int sourceLength, const void* destination, int destinationSize) noexcept {
    return source != nullptr && sourceLength != 0 && destinationSize >= 0 &&
           (destinationSize == 0 || (destination != nullptr && destination != source));
}

// The tables of a page that is not UTF-8; null with the last error set if there are none.
const CodePage* TablesOf(UINT codePage) noexcept {
    try {
        const CodePage* const page = winapi::FindCodePage(codePage);
        if (page == nullptr) SetLastError(ERROR_INVALID_PARAMETER);
        return page;
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

template <class To>
int Finish(const winapi::Converted& converted, bool isStrict, std::span<To> destination) noexcept {
    if (isStrict && !converted.isExact) return Fail(ERROR_NO_UNICODE_TRANSLATION);
    if (converted.units > INT_MAX) return Fail(ERROR_INVALID_PARAMETER);
    if (!destination.empty() && converted.units > destination.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
    return static_cast<int>(converted.units);
}

template <class Info>
void CopyFacts(const CodePageFacts& facts, Info& info) noexcept {
    info = {};
    info.MaxCharSize = facts.MaxCharSize();
    std::copy(facts.leadBytes.begin(), facts.leadBytes.end(), info.LeadByte);
}

// Null with the last error set for a page that isn't known.
const CodePageFacts* FactsOf(UINT codePage) noexcept {
    const CodePageFacts* const facts = winapi::FindFacts(Resolve(codePage));
    if (facts == nullptr) SetLastError(ERROR_INVALID_PARAMETER);
    return facts;
}

}  // namespace

UINT winapi::SetAnsiCodePage(UINT codePage) {
    if (!IsUsable(codePage)) {
        throw std::invalid_argument("code page " + std::to_string(codePage) + " is not known");
    }
    return AnsiCodePage().exchange(codePage);
}

UINT WINAPI GetACP() noexcept {
    return AnsiCodePage().load(std::memory_order_relaxed);
}

BOOL WINAPI GetCPInfo(UINT codePage, LPCPINFO info) noexcept {
    if (info == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    const CodePageFacts* const facts = FactsOf(codePage);
    if (facts == nullptr) return FALSE;
    CopyFacts(*facts, *info);
    return TRUE;
}

BOOL WINAPI GetCPInfoExW(UINT codePage, DWORD flags, LPCPINFOEXW info) noexcept {
    if (info == nullptr || flags != 0) return Fail(ERROR_INVALID_PARAMETER);
    const CodePageFacts* const facts = FactsOf(codePage);
    if (facts == nullptr) return FALSE;
    CopyFacts(*facts, *info);
    info->UnicodeDefaultChar = facts->unicodeDefault;
    info->CodePage = facts->number;
    std::copy(facts->name.begin(), facts->name.end(), info->CodePageName);
    return TRUE;
}

BOOL WINAPI IsDBCSLeadByteEx(UINT codePage, BYTE byte) noexcept {
    const CodePageFacts* const facts = FactsOf(codePage);
    return facts != nullptr && facts->IsLeadByte(byte);
}

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH source, int sourceLength, LPWSTR destination,
                               int destinationSize) noexcept {
    if (!AreValid(source, sourceLength, destination, destinationSize)) return Fail(ERROR_INVALID_PARAMETER);
    const std::string_view text = SourceOf(source, sourceLength);
    const std::span target(destination, static_cast<std::size_t>(destinationSize));
    const UINT number = Resolve(codePage);
    const CodePage* const page = number == CP_UTF8 ? nullptr : TablesOf(number);
    if (page == nullptr && number != CP_UTF8) return 0;
    if ((flags & ~DWORD{MB_ERR_INVALID_CHARS}) != 0) return Fail(ERROR_INVALID_FLAGS);
    const bool isStrict = flags != 0;
    if (page == nullptr) return Finish(winapi::WideFromUtf8(text, target), isStrict, target);
    return Finish(winapi::WideFromPage(*page, text, target), isStrict, target);
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int sourceLength, LPSTR destination,
                               int destinationSize, LPCCH defaultChar, LPBOOL usedDefaultChar) noexcept {
    if (!AreValid(source, sourceLength, destination, destinationSize)) return Fail(ERROR_INVALID_PARAMETER);
    const std::u16string_view text = SourceOf(source, sourceLength);
    const std::span target(destination, static_cast<std::size_t>(destinationSize));
    const UINT number = Resolve(codePage);
    if (number == CP_UTF8) {
        if (defaultChar != nullptr || usedDefaultChar != nullptr) return Fail(ERROR_INVALID_PARAMETER);
        if ((flags & ~DWORD{WC_ERR_INVALID_CHARS}) != 0) return Fail(ERROR_INVALID_FLAGS);
        return Finish(winapi::Utf8FromWide(text, target), flags != 0, target);
    }

    const CodePage* const page = TablesOf(number);
    if (page == nullptr) return 0;
    if ((flags & ~DWORD{WC_NO_BEST_FIT_CHARS}) != 0) return Fail(ERROR_INVALID_FLAGS);
    const winapi::Converted converted = winapi::PageFromWide(*page, text, target, defaultChar);
    if (usedDefaultChar != nullptr) *usedDefaultChar = converted.isExact ? FALSE : TRUE;
    return Finish(converted, false, target);
}
