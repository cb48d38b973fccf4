#include "winapi/changetype.h"

#include "datetext.h"
#include "numbertext.h"
#include "valuebytes.h"
#include "winapi/errorcodes.h"

#include <cmath>
#include <concepts>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <type_traits>

#include <strings.h>

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

// Hands `visit` the member that holds a number of this type; false for what is no whole or floating number.
template <class Visitor>
bool VisitNumber(VARTYPE type, Visitor visit) {
    const auto is = [&](VARTYPE own, auto member) {
        if (type == own) visit(member);
        return type == own;
    };
    return is(VT_I1, &VARIANT::cVal) || is(VT_UI1, &VARIANT::bVal) || is(VT_I2, &VARIANT::iVal) ||
           is(VT_UI2, &VARIANT::uiVal) || is(VT_BOOL, &VARIANT::boolVal) || is(VT_I4, &VARIANT::lVal) ||
           is(VT_UI4, &VARIANT::ulVal) || is(VT_INT, &VARIANT::intVal) || is(VT_UINT, &VARIANT::uintVal) ||
           is(VT_I8, &VARIANT::llVal) || is(VT_UI8, &VARIANT::ullVal) || is(VT_R4, &VARIANT::fltVal) ||
           is(VT_R8, &VARIANT::dblVal) || is(VT_DATE, &VARIANT::date);
}

// VT_I1 is signed, whatever char is.
template <class Field>
using Value = std::conditional_t<std::is_same_v<Field, CHAR>, signed char, Field>;

Number NumberOf(const VARIANT& source) {
    Number number = 0;
    const auto read = [&]<class Field>(Field VARIANT::*member) {
        number = static_cast<Number>(static_cast<Value<Field>>(source.*member));
    };
    if (source.vt == VT_EMPTY || VisitNumber(source.vt, read)) return number;
    switch (source.vt) {
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
    std::optional<Integer> bits;
    VisitNumber(source.vt, [&]<class Field>(Field VARIANT::*member) {
        const bool isTaken = sizeof(Field) == sizeof(Integer) || source.vt == VT_BOOL;
        if (std::is_integral_v<Field> && isTaken) bits = static_cast<Integer>(source.*member);
    });
    return bits ? *bits : Rounded<Integer>(NumberOf(source));
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
    if (source.vt == VT_BSTR) return winapi::DateFromText(Ascii(source.bstrVal));
    const double days = DoubleOf(source);
    if (!winapi::IsDate(days)) Refuse(DISP_E_OVERFLOW);
    return days;
}

VARIANT_BOOL Boolean(const VARIANT& source) {
    if (source.vt == VT_BSTR) {
        const std::string text = Ascii(source.bstrVal);
        const auto is = [&](const char* word) { return strcasecmp(text.c_str(), word) == 0; };
        if (is("true") || is("#true#")) return VARIANT_TRUE;
        if (is("false") || is("#false#")) return VARIANT_FALSE;
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
        case VT_DATE:
            return winapi::TextFromDate(source.date);
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
    if (source.byref == nullptr) Refuse(E_INVALIDARG);
    const auto type = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if (type == VT_VARIANT) {
        const VARIANT& inner = *source.pvarVal;
        // One step of indirection, not a chain of them.
        if (inner.vt == (VT_BYREF | VT_VARIANT)) Refuse(DISP_E_TYPEMISMATCH);
        return inner.vt & VT_BYREF ? Dereferenced(inner) : inner;
    }
    const std::size_t bytes = type & VT_ARRAY ? sizeof source.byref : winapi::ValueBytes(type);
    if (bytes == 0) Refuse(DISP_E_BADVARTYPE);
    VARIANT value{};
    std::memcpy(type == VT_DECIMAL ? static_cast<void*>(&value.decVal) : &value.llVal, source.byref, bytes);
    value.vt = type;
    return value;
}

VARIANT Converted(const VARIANT& source, USHORT flags, VARTYPE type);

// What the object's default property gives, in the type wanted.
VARIANT DefaultProperty(IDispatch* object, USHORT flags, VARTYPE type) {
    if (object == nullptr) Refuse(DISP_E_BADVARTYPE);
    if (flags & VARIANT_NOVALUEPROP) Refuse(DISP_E_TYPEMISMATCH);
    VARIANT value{};
    const std::unique_ptr<VARIANT, decltype(&VariantClear)> owner(&value, VariantClear);
    DISPPARAMS none{};
    if (FAILED(object->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &value, nullptr,
                              nullptr))) {
        Refuse(DISP_E_TYPEMISMATCH);
    }
    return Converted(value, flags | VARIANT_NOVALUEPROP, type);
}

bool IsScalar(VARTYPE type) noexcept {
    return type <= VT_DECIMAL || (type >= VT_I1 && type <= VT_UINT);
}

// The source in the type of a number's member.
template <class Field>
Field NumberAs(const VARIANT& source) {
    if constexpr (std::is_integral_v<Field>) {
        return static_cast<Field>(Integral<Value<Field>>(source));
    } else if constexpr (std::is_same_v<Field, FLOAT>) {
        return Single(source);
    } else {
        return DoubleOf(source);
    }
}

// The source, no VT_BYREF, as a new VARIANT of another type.
VARIANT Converted(const VARIANT& source, USHORT flags, VARTYPE type) {
    VARIANT fresh{};
    if (source.vt == type) {
        Check(VariantCopy(&fresh, &source));
        return fresh;
    }
    if (!IsScalar(type)) Refuse(type & (VT_ARRAY | VT_BYREF) ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE);
    if (source.vt == VT_ERROR || source.vt == VT_NULL || (source.vt & VT_ARRAY)) Refuse(DISP_E_TYPEMISMATCH);
    if (source.vt == VT_DISPATCH && type != VT_UNKNOWN) return DefaultProperty(source.pdispVal, flags, type);

    const auto convert = [&]<class Field>(Field VARIANT::*member) {
        fresh.*member = NumberAs<Field>(source);
    };
    switch (type) {
        case VT_EMPTY:
        case VT_NULL:
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
            if (!VisitNumber(type, convert)) Refuse(DISP_E_TYPEMISMATCH);
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
