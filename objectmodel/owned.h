// Owners of what OLE Automation hands out: a VARIANT, a BSTR.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <concepts>
#include <utility>

// A VARIANT and all that it holds, cleared once. It takes over what it is made from, lends itself wherever a
// `const VARIANT&` is wanted, and gives itself away only when it is told to:
//
//     OwnedVariant formula = source->GetFormula2();        // takes over
//     target->PutValue2(formula);                          // lends: the operation takes a reference
//     target->PutFormula2(formula.release());              // gives away: the operation takes a value
//     target->PutFormula2(OwnedVariant::CopyOf(cached).release());  // gives away a copy
//
// Two owners of one VARIANT don't compile: neither an OwnedVariant of a VARIANT that keeps its owner, nor a
// VARIANT by value of an OwnedVariant.
class OwnedVariant {
  public:
    OwnedVariant() noexcept = default;
    // What a call has returned, or a variable that is given away and empty from then on.
    OwnedVariant(VARIANT&& taken) noexcept : value(std::exchange(taken, VARIANT{})) {}
    OwnedVariant(const VARIANT&) = delete;
    OwnedVariant(OwnedVariant&& other) noexcept : value(other.release()) {}
    OwnedVariant& operator=(OwnedVariant other) noexcept {
        std::swap(value, other.value);
        return *this;
    }
    ~OwnedVariant() { Clear(); }

    // A copy with texts, arrays and references of its own (VariantCopy). Raises _com_error.
    [[nodiscard]] static OwnedVariant CopyOf(const VARIANT& original);

    // The VARIANT, which stays the owner's: it is neither to be cleared nor to be passed where it is taken.
    [[nodiscard]] const VARIANT& borrow() const noexcept { return value; }
    operator const VARIANT&() const noexcept { return value; }
    operator VARIANT() const = delete;
    const VARIANT* operator->() const noexcept { return &value; }

    // Gives the VARIANT to the caller and is empty from then on.
    [[nodiscard]] VARIANT release() noexcept { return std::exchange(value, VARIANT{}); }

    // The slot for a call that returns a VARIANT; what it held is cleared first.
    [[nodiscard]] VARIANT* receive() noexcept {
        Clear();
        return &value;
    }

  private:
    // Empty from then on. Numbers, flags and errors own nothing, which saves their call into OLE Automation.
    void Clear() noexcept {
        if (value.vt <= VT_DATE || value.vt == VT_ERROR || value.vt == VT_BOOL) {
            value.vt = VT_EMPTY;
        } else {
            VariantClear(&value);
        }
    }

    VARIANT value{};
};

namespace kestrolumen::detail {

// Whether one of an operation's arguments is a VARIANT that nobody else will clear: what a call has returned,
// or a variable that is moved.
template <class... Arguments>
concept HandsOver = (std::same_as<Arguments, VARIANT> || ...);

// Such a VARIANT with an owner for the length of the call; any other argument as it is.
[[nodiscard]] inline OwnedVariant ForTheCall(VARIANT&& taken) noexcept {
    return static_cast<VARIANT&&>(taken);
}
template <class Argument>
[[nodiscard]] Argument&& ForTheCall(Argument&& argument) noexcept {
    return std::forward<Argument>(argument);
}

}  // namespace kestrolumen::detail

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

    // The string, which stays this object's; null for none.
    [[nodiscard]] BSTR get() const noexcept { return text; }

  private:
    BSTR text;
};
