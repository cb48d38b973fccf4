// _com_error, the exception of the compiler's COM support: an HRESULT and, where the failing object told
// more, its error object.
#pragma once

#include "winapi/dispatch.h"
#include "winapi/errorinfo.h"

#include <utility>

class _com_error {
  public:
    // Takes over the caller's reference to `info`, or adds one of its own when `addReference`.
    _com_error(HRESULT hresult, IErrorInfo* info = nullptr, bool addReference = false) noexcept
        : result(hresult), errorInfo(info) {
        if (errorInfo && addReference) errorInfo->AddRef();
    }
    _com_error(const _com_error& other) noexcept : _com_error(other.result, other.errorInfo, true) {}
    _com_error& operator=(const _com_error& other) noexcept {
        _com_error copy(other);
        std::swap(result, copy.result);
        std::swap(errorInfo, copy.errorInfo);
        return *this;
    }
    virtual ~_com_error() {
        if (errorInfo) errorInfo->Release();
    }

    [[nodiscard]] HRESULT Error() const noexcept { return result; }

    // With a reference that the caller releases; null when the failing object told no more.
    [[nodiscard]] IErrorInfo* ErrorInfo() const noexcept {
        if (errorInfo) errorInfo->AddRef();
        return errorInfo;
    }

    // The wCode of an EXCEPINFO as an HRESULT, from 0x80040200 up to 0x8004FFFF.
    [[nodiscard]] static HRESULT WCodeToHRESULT(WORD code) noexcept {
        return code >= 0xFE00 ? lastCode : firstCode + code;
    }

  private:
    static constexpr HRESULT firstCode = static_cast<HRESULT>(0x80040200U);
    static constexpr HRESULT lastCode = static_cast<HRESULT>(0x8004FFFFU);

    HRESULT result;
    IErrorInfo* errorInfo;
};

// Throws a _com_error, whatever the HRESULT.
[[noreturn]] inline void _com_issue_error(HRESULT hresult) {
    throw _com_error(hresult);
}
