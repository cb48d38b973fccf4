// Owners of what OLE Automation hands out: a VARIANT, a BSTR.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <utility>

// A VARIANT and all that it holds, cleared once. It takes over what it is made from:
//
//     OwnedVariant formula = range->GetFormula2();
class OwnedVariant {
  public:
    OwnedVariant() noexcept { VariantInit(&value); }
    OwnedVariant(const VARIANT& taken) noexcept : value(taken) {}
    OwnedVariant(OwnedVariant&& other) noexcept : value(other.release()) {}
    OwnedVariant& operator=(OwnedVariant other) noexcept {
        std::swap(value, other.value);
        return *this;
    }
    ~OwnedVariant() { VariantClear(&value); }

    [[nodiscard]] const VARIANT& get() const noexcept { return value; }
    const VARIANT* operator->() const noexcept { return &value; }

    // Gives the VARIANT to the caller and is empty from then on.
    [[nodiscard]] VARIANT release() noexcept {
        const VARIANT result = value;
        VariantInit(&value);
        return result;
    }

    // The slot for a call that returns a VARIANT; what it held is cleared first.
    [[nodiscard]] VARIANT* receive() noexcept {
        VariantClear(&value);
        return &value;
    }

  private:
    VARIANT value;
};

// A BSTR, freed once; null is empty text.
class OwnedBstr {
  public:
    explicit OwnedBstr(BSTR taken) noexcept : text(taken) {}
    OwnedBstr(OwnedBstr&& other) noexcept : text(std::exchange(other.text, nullptr)) {}
    OwnedBstr& operator=(OwnedBstr other) noexcept {
        std::swap(text, other.text);
        return *this;
    }
    ~OwnedBstr() { SysFreeString(text); }

    [[nodiscard]] BSTR get() const noexcept { return text; }

  private:
    BSTR text;
};
