#include "winapi/strings.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>

namespace {

// The C library's own tables. Without its UTF-8 locale only ASCII has case.
locale_t UnicodeLocale() noexcept {
    static const locale_t locale = [] {
        const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return unicode != nullptr ? unicode : newlocale(LC_CTYPE_MASK, "C", nullptr);
    }();
    return locale;
}

using CaseMap = wint_t (*)(wint_t, locale_t);

DWORD Map(LPWSTR text, DWORD length, CaseMap there, CaseMap back) noexcept {
    const locale_t locale = UnicodeLocale();
    std::transform(text, text + length, text, [&](WCHAR unit) {
        const wint_t mapped = there(unit, locale);
        return back(mapped, locale) == unit ? static_cast<WCHAR>(mapped) : unit;
    });
    return length;
}

}  // namespace

DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD length) noexcept {
    return Map(text, length, towupper_l, towlower_l);
}

DWORD WINAPI CharLowerBuffW(LPWSTR text, DWORD length) noexcept {
    return Map(text, length, towlower_l, towupper_l);
}
