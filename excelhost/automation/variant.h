// A VARIANT with one owner: the values of the simulated application.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "excelhost/value.h"

#include <concepts>
#include <utility>

namespace excelhost::automation {

// Owns one VARIANT and what it holds.
class Variant {
  public:
    // VT_EMPTY.
    Variant() noexcept { VariantInit(&value_); }
    Variant(bool flag) noexcept;
    Variant(double number) noexcept;
    // VT_I4.
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Variant(Number number)
    noexcept : Variant() {
        value_.vt = VT_I4;
        value_.lVal = static_cast<LONG>(number);
    }
    // VT_BSTR with a copy of the text. Throws std::bad_alloc.
    Variant(TextView text);
    Variant(const Text& text) : Variant(TextView(text)) {}
    Variant(const WCHAR* text) : Variant(TextView(text)) {}

    // A copy of a VARIANT that somebody else owns. Throws the HRESULT of a failure as a Refusal.
    explicit Variant(const VARIANT& value);
    Variant(const Variant& other) : Variant(other.value_) {}
    Variant(Variant&& other) noexcept : value_(other.Detach()) {}
    Variant& operator=(Variant other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Variant() { VariantClear(&value_); }

    // VT_DISPATCH, taking over the caller's reference; null is allowed.
    [[nodiscard]] static Variant Adopt(IDispatch* object) noexcept;
    // An array of VARIANTs, taken over.
    [[nodiscard]] static Variant AdoptArray(SAFEARRAY* array) noexcept;
    [[nodiscard]] static Variant Null() noexcept;
    [[nodiscard]] static Variant Error(SCODE code) noexcept;

    [[nodiscard]] const VARIANT& Get() const noexcept { return value_; }
    [[nodiscard]] VARTYPE Type() const noexcept { return value_.vt; }
    // Gives the VARIANT away, for the caller to clear.
    [[nodiscard]] VARIANT Detach() noexcept;

    // The value in another type, as VariantChangeType makes it. Throws the HRESULT of a failure as a Refusal.
    [[nodiscard]] Variant As(VARTYPE type) const;
    [[nodiscard]] Text AsText() const;
    [[nodiscard]] double AsNumber() const { return As(VT_R8).value_.dblVal; }

  private:
    VARIANT value_;
};

// The text of a VARIANT that holds a VT_BSTR; a null BSTR is the empty text.
[[nodiscard]] TextView BstrText(const VARIANT& value) noexcept;

}  // namespace excelhost::automation
