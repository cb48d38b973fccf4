#include "winapi/changetype.h"

#include "datetext.h"
#include "decimal.h"
#include "numbertext.h"
#include "winapi/errorcodes.h"

#include <cmath>
#include <concepts>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace {

using winapi::Ascii;
using winapi::Decimal;
using winapi::FloatingFromText;
using winapi::FloatingText;
using winapi::NumberText;
using winapi::Refusal;
using winapi::Refuse;

void Check(HRESULT hresult) {
    if (FAILED(hresult)) Refuse(hresult);
}

// A number in the form that loses nothing of it.
using Number = std::variant<Decimal, double>;

double Floating(const Number& number) noexcept {
    if (const double* const floating = std::get_if<double>(&number)) return *floating;
    return std::get<Decimal>(number).ToDouble();
}

Number Whole(std::integral auto value) noexcept {
    const bool negative = std::cmp_less(value, 0);
    const auto bits = static_cast<std::uint64_t>(value);  // NOLINT(bugprone-signed-char-misuse): sign and all
    return Decimal(negative, negative ? 0 - bits : bits);
}

bool IsFloating(VARTYPE type) noexcept {
    return type == VT_R4 || type == VT_R8 || type == VT_DATE;
}

Number NumberFromText(BSTR bstr, VARTYPE type) {
    const std::string text = NumberText(bstr);
    if (!IsFloating(type)) {
        if (const std::optional<Decimal> exact = Decimal::FromText(text)) return *exact;
    }
    return FloatingFromText(text);
}

// The source as a number; `type` is what it is wanted for.
Number NumberOf(const VARIANT& source, VARTYPE type) {
    switch (source.vt) {
        case VT_EMPTY:
            return Decimal();
        case VT_I1:
            return Whole(static_cast<signed char>(source.cVal));
        case VT_UI1:
            return Whole(source.bVal);
        case VT_I2:
            return Whole(source.iVal);
        case VT_UI2:
            return Whole(source.uiVal);
        case VT_BOOL:
            return Whole(source.boolVal);
        case VT_I4:
            return Whole(source.lVal);
        case VT_UI4:
            return Whole(source.ulVal);
        case VT_INT:
            return Whole(source.intVal);
        case VT_UINT:
            return Whole(source.uintVal);
        case VT_I8:
            return Whole(source.llVal);
        case VT_UI8:
            return Whole(source.ullVal);
        case VT_R4:
            return double{source.fltVal};
        case VT_R8:
            return source.dblVal;
        case VT_DATE:
            return source.date;
        case VT_CY: {
            const bool negative = source.cyVal.int64 < 0;
            const auto bits = static_cast<std::uint64_t>(source.cyVal.int64);
            return Decimal(negative, negative ? 0 - bits : bits, 4);
        }
        case VT_DECIMAL:
            return Decimal(source.decVal);
        case VT_BSTR:
            return NumberFromText(source.bstrVal, type);
        default:
            Refuse(DISP_E_TYPEMISMATCH);
    }
}

// `number` times ten to the `decimals`, rounded half to even, in a whole number's type.
template <std::integral Integer>
Integer Rounded(const Number& number, int decimals = 0) {
    using Limits = std::numeric_limits<Integer>;
    if (const double* const floating = std::get_if<double>(&number)) {
        const double rounded = std::nearbyint(*floating * std::pow(10, decimals));
        const double limit = std::ldexp(1.0, Limits::digits);  // the first number beyond
        if (!(rounded < limit && rounded >= (Limits::is_signed ? -limit : 0.0))) Refuse(DISP_E_OVERFLOW);
        return static_cast<Integer>(rounded);
    }
    const Decimal& exact = std::get<Decimal>(number);
    const std::optional<std::uint64_t> magnitude = exact.Scaled(decimals);
    if (!magnitude) Refuse(DISP_E_OVERFLOW);
    const bool negative = exact.IsNegative() && *magnitude != 0;
    const auto most = static_cast<std::uint64_t>(Limits::max()) + (negative && Limits::is_signed ? 1 : 0);
    if (*magnitude > most || (negative && !Limits::is_signed)) Refuse(DISP_E_OVERFLOW);
    return static_cast<Integer>(negative ? 0 - *magnitude : *magnitude);
}

// Whole numbers of the same width take over each other's bits; all others are converted by value.
template <std::integral Integer>
Integer Integral(const VARIANT& source, VARTYPE type) {
    const auto width = [](VARTYPE vt) -> std::size_t {
        switch (vt) {
            case VT_I1:
            case VT_UI1:
                return 1;
            case VT_I2:
            case VT_UI2:
                return 2;
            case VT_I4:
            case VT_UI4:
            case VT_INT:
            case VT_UINT:
                return 4;
            case VT_I8:
            case VT_UI8:
                return 8;
            default:
                return 0;
        }
    };
    if (source.vt == VT_BOOL) return static_cast<Integer>(source.boolVal);
    if (width(source.vt) == sizeof(Integer)) return static_cast<Integer>(source.llVal);
    return Rounded<Integer>(NumberOf(source, type));
}

FLOAT Single(const Number& number) {
    const double value = Floating(number);
    if (std::fabs(value) > std::numeric_limits<FLOAT>::max()) Refuse(DISP_E_OVERFLOW);
    return static_cast<FLOAT>(value);
}

DATE Date(const VARIANT& source) {
    if (source.vt == VT_BSTR) {
        const std::optional<double> days = winapi::DateFromText(Ascii(source.bstrVal));
        return days ? *days : (Refuse(DISP_E_TYPEMISMATCH), 0);
    }
    const double days = Floating(NumberOf(source, VT_DATE));
    if (!winapi::IsDate(days)) Refuse(DISP_E_OVERFLOW);
    return days;
}

VARIANT_BOOL Boolean(const VARIANT& source) {
    if (source.vt == VT_BSTR) {
        std::string text = Ascii(source.bstrVal);
        for (char& unit : text)
            unit = static_cast<char>(unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit);
        if (text == "true" || text == "#true#") return VARIANT_TRUE;
        if (text == "false" || text == "#false#") return VARIANT_FALSE;
    }
    const Number number = NumberOf(source, VT_R8);
    const Decimal* const exact = std::get_if<Decimal>(&number);
    const bool isZero = exact ? exact->IsZero() : std::get<double>(number) == 0;
    return isZero ? VARIANT_FALSE : VARIANT_TRUE;
}

DECIMAL ExactDecimal(const VARIANT& source) {
    const Number number = NumberOf(source, VT_DECIMAL);
    if (const Decimal* const exact = std::get_if<Decimal>(&number)) return exact->ToDecimal();
    const double value = std::get<double>(number);
    if (!std::isfinite(value)) Refuse(DISP_E_OVERFLOW);
    const std::optional<Decimal> rounded =
        Decimal::FromText(FloatingText(value, source.vt == VT_R4 ? 7 : 15));
    return rounded ? rounded->ToDecimal() : (Refuse(DISP_E_OVERFLOW), DECIMAL{});
}

std::string TextOf(const VARIANT& source, USHORT flags) {
    switch (source.vt) {
        case VT_EMPTY:
            return {};
        case VT_R4:
            return FloatingText(double{source.fltVal}, 7);
        case VT_R8:
            return FloatingText(source.dblVal, 15);
        case VT_BOOL:
            if (flags & VARIANT_ALPHABOOL) return source.boolVal ? "True" : "False";
            return std::to_string(source.boolVal);
        case VT_DATE: {
            std::optional<std::string> text = winapi::TextFromDate(source.date);
            return text ? *std::move(text) : (Refuse(DISP_E_OVERFLOW), std::string());
        }
        default:
            return std::get<Decimal>(NumberOf(source, VT_BSTR)).ToText();
    }
}

BSTR NewBstr(const std::string& text) {
    const BSTR bstr = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
    if (bstr == nullptr) Refuse(E_OUTOFMEMORY);
    for (std::size_t i = 0; i < text.size(); ++i) bstr[i] = static_cast<OLECHAR>(text[i]);
    return bstr;
}

void Interface(const VARIANT& source, REFIID iid, IUnknown** object) {
    if (source.vt != VT_DISPATCH && source.vt != VT_UNKNOWN) Refuse(DISP_E_TYPEMISMATCH);
    IUnknown* const unknown = source.vt == VT_UNKNOWN ? source.punkVal : source.pdispVal;
    if (unknown == nullptr) return;
    void* result = nullptr;
    Check(unknown->QueryInterface(iid, &result));
    *object = static_cast<IUnknown*>(result);
}

// What a VT_BYREF points to, borrowed.
VARIANT Dereferenced(const VARIANT& source) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if (source.byref == nullptr) Refuse(E_INVALIDARG);
    switch (value.vt) {
        case VT_I1:
        case VT_UI1:
            value.bVal = *source.pbVal;
            break;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            value.iVal = *source.piVal;
            break;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            value.lVal = *source.plVal;
            break;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            value.llVal = *source.pllVal;
            break;
        case VT_BSTR:
            value.bstrVal = *source.pbstrVal;
            break;
        case VT_DISPATCH:
            value.pdispVal = *source.ppdispVal;
            break;
        case VT_UNKNOWN:
            value.punkVal = *source.ppunkVal;
            break;
        case VT_DECIMAL:
            value.decVal = *source.pdecVal;
            value.vt = VT_DECIMAL;
            break;
        case VT_VARIANT:
            if (source.pvarVal->vt & VT_BYREF) {
                // One step of indirection, not a chain of them.
                if (source.pvarVal->vt == (VT_BYREF | VT_VARIANT)) Refuse(DISP_E_TYPEMISMATCH);
                return Dereferenced(*source.pvarVal);
            }
            return *source.pvarVal;
        default:
            if (!(value.vt & VT_ARRAY)) Refuse(DISP_E_BADVARTYPE);
            value.parray = *source.pparray;
    }
    return value;
}

// One VARIANT that is cleared again unless it is taken.
class Owned {
  public:
    Owned() noexcept { VariantInit(&value); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { VariantClear(&value); }

    [[nodiscard]] VARIANT* Receive() noexcept { return &value; }
    [[nodiscard]] const VARIANT& Get() const noexcept { return value; }
    [[nodiscard]] VARIANT Take() noexcept { return std::exchange(value, VARIANT{}); }

  private:
    VARIANT value;
};

VARIANT Converted(const VARIANT& source, USHORT flags, VARTYPE type);

// What the object's default property gives, in the type wanted.
VARIANT DefaultProperty(IDispatch* object, USHORT flags, VARTYPE type) {
    if (object == nullptr) Refuse(DISP_E_BADVARTYPE);
    if (flags & VARIANT_NOVALUEPROP) Refuse(DISP_E_TYPEMISMATCH);
    Owned value;
    DISPPARAMS none{};
    if (FAILED(object->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, value.Receive(),
                              nullptr, nullptr))) {
        Refuse(DISP_E_TYPEMISMATCH);
    }
    return Converted(value.Get(), flags | VARIANT_NOVALUEPROP, type);
}

bool IsScalar(VARTYPE type) noexcept {
    return type <= VT_DECIMAL || (type >= VT_I1 && type <= VT_UINT);
}

// The source, no VT_BYREF, as a new VARIANT of another type.
VARIANT Converted(const VARIANT& source, USHORT flags, VARTYPE type) {
    if (source.vt == type) {
        Owned copy;
        Check(VariantCopy(copy.Receive(), &source));
        return copy.Take();
    }
    if (!IsScalar(type)) Refuse(type & (VT_ARRAY | VT_BYREF) ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE);
    if (source.vt == VT_ERROR || source.vt == VT_NULL || (source.vt & VT_ARRAY)) Refuse(DISP_E_TYPEMISMATCH);
    if (source.vt == VT_DISPATCH && type != VT_UNKNOWN) return DefaultProperty(source.pdispVal, flags, type);

    VARIANT fresh{};
    switch (type) {
        case VT_EMPTY:
        case VT_NULL:
            break;
        case VT_I1:
            fresh.cVal = static_cast<CHAR>(Integral<signed char>(source, type));
            break;
        case VT_UI1:
            fresh.bVal = Integral<BYTE>(source, type);
            break;
        case VT_I2:
            fresh.iVal = Integral<SHORT>(source, type);
            break;
        case VT_UI2:
            fresh.uiVal = Integral<USHORT>(source, type);
            break;
        case VT_I4:
            fresh.lVal = Integral<LONG>(source, type);
            break;
        case VT_UI4:
            fresh.ulVal = Integral<ULONG>(source, type);
            break;
        case VT_INT:
            fresh.intVal = Integral<INT>(source, type);
            break;
        case VT_UINT:
            fresh.uintVal = Integral<UINT>(source, type);
            break;
        case VT_I8:
            fresh.llVal = Integral<LONGLONG>(source, type);
            break;
        case VT_UI8:
            fresh.ullVal = Integral<ULONGLONG>(source, type);
            break;
        case VT_R4:
            fresh.fltVal = Single(NumberOf(source, type));
            break;
        case VT_R8:
            fresh.dblVal = Floating(NumberOf(source, type));
            break;
        case VT_CY:
            fresh.cyVal.int64 = Rounded<LONGLONG>(NumberOf(source, type), 4);
            break;
        case VT_DATE:
            fresh.date = Date(source);
            break;
        case VT_BOOL:
            fresh.boolVal = Boolean(source);
            break;
        case VT_DECIMAL:
            fresh.decVal = ExactDecimal(source);
            break;
        case VT_BSTR:
            fresh.bstrVal = NewBstr(TextOf(source, flags));
            break;
        case VT_DISPATCH:
            Interface(source, IID_IDispatch, &fresh.punkVal);
            break;
        case VT_UNKNOWN:
            Interface(source, IID_IUnknown, &fresh.punkVal);
            break;
        default:
            Refuse(DISP_E_TYPEMISMATCH);
    }
    fresh.vt = type;
    return fresh;
}

}  // namespace

HRESULT WINAPI VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags, VARTYPE type) {
    if (target == nullptr || source == nullptr) return E_INVALIDARG;
    try {
        if (target == source && source->vt == type) return S_OK;
        VARIANT converted = Converted(source->vt & VT_BYREF ? Dereferenced(*source) : *source, flags, type);
        if (const HRESULT cleared = VariantClear(target); FAILED(cleared)) {
            VariantClear(&converted);
            return cleared;
        }
        *target = converted;
        return S_OK;
    } catch (const Refusal& refusal) {
        return refusal.hresult;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT WINAPI VariantChangeTypeEx(VARIANTARG* target, const VARIANTARG* source, LCID, USHORT flags,
                                   VARTYPE type) {
    return VariantChangeType(target, source, flags, type);
}
