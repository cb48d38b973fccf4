// _bstr_t, the string class of the compiler's COM support. Its narrow side is left out: MinGW's header
// declares that one, but no library of MinGW has the conversions.
#pragma once

#include "winapi/bstr.h"
#include "winapi/comerror.h"

#include <utility>

// Owns a BSTR, which may be null. Every operation that needs a new BSTR and gets none throws a _com_error
// with E_OUTOFMEMORY. Microsoft's copies share one text; these have each their own, which no caller can tell.
class _bstr_t {
  public:
    _bstr_t() noexcept = default;
    _bstr_t(const _bstr_t& other) : _bstr_t(other.bstr, true) {}
    _bstr_t(_bstr_t&& other) noexcept : bstr(other.Detach()) {}
    // A null text gives a null BSTR.
    _bstr_t(const WCHAR* text) : bstr(Allocated(SysAllocString(text), text != nullptr)) {}
    // Takes over `text`, or copies it with all its units.
    _bstr_t(BSTR text, bool copies)
        : bstr(copies && text != nullptr ? Allocated(SysAllocStringLen(text, SysStringLen(text)), true)
                                         : text) {}
    ~_bstr_t() { SysFreeString(bstr); }

    _bstr_t& operator=(const _bstr_t& other) { return *this = _bstr_t(other); }
    _bstr_t& operator=(_bstr_t&& other) noexcept {
        std::swap(bstr, other.bstr);
        return *this;
    }

    operator const WCHAR*() const noexcept { return bstr; }
    [[nodiscard]] BSTR GetBSTR() const noexcept { return bstr; }

    // In units.
    [[nodiscard]] unsigned int length() const noexcept { return SysStringLen(bstr); }

    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(bstr, nullptr); }

  private:
    static BSTR Allocated(BSTR text, bool expected) {
        if (text == nullptr && expected) _com_issue_error(E_OUTOFMEMORY);
        return text;
    }

    BSTR bstr = nullptr;
};
