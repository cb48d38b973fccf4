#include "winapi/changetype.h"

#include "datetext.h"
#include "numbertext.h"
#include "winapi/errorcodes.h"

#include <cmath>
#include <concepts>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace {

using winapi::Ascii;
using winapi::FloatingText;
using winapi::NumberFromText;
using winapi::Refusal;
using winapi::Refuse;

void Check(HRESULT hresult) {
    if (FAILED(hresult)) Refuse(hresult);
}

// Every number: its mantissa holds all whole ones of 64 bits, and currency to far behind its last decimal.
using Number = long double;
constexpr int currencyUnits = 10000;  // in one whole
static_assert(std::numeric_limits<Number>::digits >= 64);

Number NumberOf(const DECIMAL& value) noexcept {
    const Number magnitude =
        std::ldexp(static_cast<Number>(value.Hi32), 64) + static_cast<Number>(value.Lo64);
    return (value.sign == 0 ? magnitude : -magnitude) / std::pow(Number{10}, int{value.scale});
}

Number NumberOf(const VARIANT& source) {
    switch (source.vt) {
        case VT_EMPTY:
            return 0;
        case VT_I1:
            return static_cast<signed char>(source.cVal);
        case VT_UI1:
            return source.bVal;
        case VT_I2:
            return source.iVal;
        case VT_UI2:
            return source.uiVal;
        case VT_BOOL:
            return source.boolVal;
        case VT_I4:
            return source.lVal;
        case VT_UI4:
            return source.ulVal;
        case VT_INT:
            return source.intVal;
        case VT_UINT:
            return source.uintVal;
        case VT_I8:
            return source.llVal;
        case VT_UI8:
            return source.ullVal;
        case VT_R4:
            return source.fltVal;
        case VT_R8:
            return source.dblVal;
        case VT_DATE:
            return source.date;
        case VT_CY:
            return static_cast<Number>(source.cyVal.int64) / currencyUnits;
        case VT_DECIMAL:
            return NumberOf(source.decVal);
        case VT_BSTR:
            return NumberFromText<Number>(source.bstrVal);
        default:
            Refuse(DISP_E_TYPEMISMATCH);
    }
}

// Rounded half to even, in a whole number's type.
template <std::integral Integer>
Integer Rounded(Number number) {
    using Limits = std::numeric_limits<Integer>;
    const Number rounded = std::nearbyint(number);
    const Number limit = std::ldexp(Number{1}, Limits::digits);  // the first number beyond
    if (!(rounded < limit && rounded >= (Limits::is_signed ? -limit : 0))) Refuse(DISP_E_OVERFLOW);
    return static_cast<Integer>(rounded);
}

// Whole numbers of the same width take over each other's bits; all others are converted by value.
template <std::integral Integer>
Integer Integral(const VARIANT& source) {
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
    return Rounded<Integer>(NumberOf(source));
}

double DoubleOf(const VARIANT& source) {
    // Rounded once.
    if (source.vt == VT_BSTR) return NumberFromText<double>(source.bstrVal);
    return static_cast<double>(NumberOf(source));
}

FLOAT Single(const VARIANT& source) {
    const double value = DoubleOf(source);
    if (std::fabs(value) > std::numeric_limits<FLOAT>::max()) Refuse(DISP_E_OVERFLOW);
    return static_cast<FLOAT>(value);
}

DATE Date(const VARIANT& source) {
    if (source.vt == VT_BSTR) {
        const std::optional<double> days = winapi::DateFromText(Ascii(source.bstrVal));
        return days ? *days : (Refuse(DISP_E_TYPEMISMATCH), 0);
    }
    const double days = DoubleOf(source);
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
    return DoubleOf(source) == 0 ? VARIANT_FALSE : VARIANT_TRUE;
}

// Without zeros at the end of the decimals.
std::string CurrencyText(LONGLONG value) {
    const auto magnitude = value < 0 ? 0 - static_cast<ULONGLONG>(value) : static_cast<ULONGLONG>(value);
    std::string text = std::to_string(magnitude / currencyUnits);
    if (const auto decimals = magnitude % currencyUnits; decimals != 0) {
        text += '.' + std::to_string(currencyUnits + decimals).substr(1);
        text.erase(text.find_last_not_of('0') + 1);
    }
    return value < 0 ? '-' + text : text;
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
        case VT_CY:
            return CurrencyText(source.cyVal.int64);
        case VT_UI8:
            return std::to_string(source.ullVal);
        case VT_DECIMAL:
            return FloatingText(DoubleOf(source), 15);
        default:
            return std::to_string(Rounded<LONGLONG>(NumberOf(source)));
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
            fresh.cVal = static_cast<CHAR>(Integral<signed char>(source));
            break;
        case VT_UI1:
            fresh.bVal = Integral<BYTE>(source);
            break;
        case VT_I2:
            fresh.iVal = Integral<SHORT>(source);
            break;
        case VT_UI2:
            fresh.uiVal = Integral<USHORT>(source);
            break;
        case VT_I4:
            fresh.lVal = Integral<LONG>(source);
            break;
        case VT_UI4:
            fresh.ulVal = Integral<ULONG>(source);
            break;
        case VT_INT:
            fresh.intVal = Integral<INT>(source);
            break;
        case VT_UINT:
            fresh.uintVal = Integral<UINT>(source);
            break;
        case VT_I8:
            fresh.llVal = Integral<LONGLONG>(source);
            break;
        case VT_UI8:
            fresh.ullVal = Integral<ULONGLONG>(source);
            break;
        case VT_R4:
            fresh.fltVal = Single(source);
            break;
        case VT_R8:
            fresh.dblVal = DoubleOf(source);
            break;
        case VT_CY:
            fresh.cyVal.int64 = Rounded<LONGLONG>(NumberOf(source) * currencyUnits);
            break;
        case VT_DATE:
            fresh.date = Date(source);
            break;
        case VT_BOOL:
            fresh.boolVal = Boolean(source);
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
