// The one road to an automation object: a late-bound call by DISPID, and what becomes of its failure.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <comdef.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <type_traits>

#include "objectmodel/types.h"

namespace kestrolumen {

// What the variable of a VT_BYREF parameter may be, besides a VARIANT or a DECIMAL.
template <class Variable>
concept DispatchVariable =
    (std::is_arithmetic_v<Variable> && !std::is_const_v<Variable>) || std::same_as<Variable, CY> ||
    std::same_as<Variable, BSTR> || std::same_as<Variable, IDispatch*> || std::same_as<Variable, IUnknown*> ||
    std::same_as<Variable, SAFEARRAY*>;

// One argument of DispatchInvoke as the caller gives it: a number or a pointer of a kind that a parameter can
// have. Its parameter type decides what goes to Invoke. Nothing is owned. Texts that are no BSTR (literals,
// CStringW) and pointers to anything else don't compile; a writable WCHAR* counts as the BSTR it should be.
class DispatchArgument {
  public:
    DispatchArgument() noexcept = default;
    DispatchArgument(std::integral auto value) noexcept
        : kind(Kind::Whole), whole(static_cast<std::int64_t>(value)) {}
    DispatchArgument(std::floating_point auto value) noexcept
        : kind(Kind::Floating), floating(static_cast<double>(value)) {}
    DispatchArgument(CY value) noexcept : kind(Kind::Whole), whole(value.int64) {}
    DispatchArgument(BSTR value) noexcept : kind(Kind::Text), pointer(value) {}
    DispatchArgument(IDispatch* value) noexcept : kind(Kind::Dispatch), pointer(value) {}
    DispatchArgument(IUnknown* value) noexcept : kind(Kind::Unknown), pointer(value) {}
    DispatchArgument(const VARIANT* value) noexcept : kind(Kind::Variant), pointer(value) {}
    DispatchArgument(const DECIMAL* value) noexcept : kind(Kind::Decimal), pointer(value) {}
    DispatchArgument(const SAFEARRAY* value) noexcept : kind(Kind::Array), pointer(value) {}
    // The variable of a VT_BYREF type.
    template <DispatchVariable Variable>
    DispatchArgument(Variable* value) noexcept : kind(Kind::Variable), pointer(value) {}
    // No pointer, for a parameter of any pointer type.
    DispatchArgument(std::nullptr_t) noexcept : kind(Kind::Null), pointer(nullptr) {}

  private:
    friend class ArgumentEncoder;
    enum class Kind : std::uint8_t {
        Whole,
        Floating,
        Text,
        Dispatch,
        Unknown,
        Variant,
        Decimal,
        Array,
        Variable,
        Null,
    };

    Kind kind = Kind::Whole;
    union {
        std::int64_t whole = 0;
        double floating;
        const void* pointer;
    };
};

}  // namespace kestrolumen

// Calls `dispid` of `dispatch` by IDispatch::Invoke with locale 0. It returns Invoke's success code; every
// failure raises _com_error instead:
//
//   E_POINTER     `dispatch` is null, or a VARIANT was passed by a null pointer
//   E_INVALIDARG  a put without parameters, a parameter type with no rule, an argument that isn't of its
//                 type's kind, more or fewer arguments than parameters, a result type with no rule
//   Invoke's own; where it is DISP_E_EXCEPTION, the one that the EXCEPINFO tells: `scode` where `wCode` is 0
//                 (DISP_E_EXCEPTION itself if that is no failure), 0x80040200 + `wCode` for a `wCode` under
//                 0xFE00, else 0x8004FFFF. The _com_error carries an error object with the EXCEPINFO's
//                 source, description and help, under IID_IDispatch
//   VariantChangeType's where the result can't be turned into `resultType`
//
// `flags`: DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT or DISPATCH_PROPERTYPUTREF. In a put
// the last parameter is the new value.
//
// `resultType` and `result`: 0 asks for no result. Else the result, turned into the type, goes to `*result`,
// unless that is null: VT_VARIANT (as Invoke gave it) a VARIANT, VT_BSTR a BSTR, VT_DISPATCH an IDispatch
// pointer, each then the caller's to free; VT_BOOL a VARIANT_BOOL, VT_I4 a LONG, VT_R4 a float, VT_R8 a
// double. Nothing is stored when the call fails.
//
// `parameterTypes`: a zero-terminated text of one VARTYPE for each argument in the published order; null or
// empty means none. Arguments are borrowed for the call:
//
//   VT_I1 to VT_UI8, VT_INT, VT_UINT, VT_ERROR, VT_CY   a whole number (or a CY)
//   VT_BOOL             a whole number; all but 0 goes out as VARIANT_TRUE
//   VT_R4, VT_R8, VT_DATE   a floating-point number; a VT_R4 goes out as VT_R8
//   VT_BSTR             a BSTR, null included
//   VT_DISPATCH         an IDispatch*; VT_UNKNOWN any interface; null included
//   VT_ARRAY + any      a SAFEARRAY*, null included
//   VT_DECIMAL          a pointer to a DECIMAL
//   VT_VARIANT          a pointer to a VARIANT, whose bits go out with their own type
//   0x0800 + VT_VARIANT an optional VARIANT: dropped when it is a missing argument (VT_ERROR with
//                       DISP_E_PARAMNOTFOUND) and nothing but dropped ones follows it
//   VT_BYREF + any      a pointer to the variable
template <class... Arguments>
requires(std::constructible_from<kestrolumen::DispatchArgument, const Arguments&>&&...) HRESULT
    DispatchInvoke(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result,
                   const WCHAR* parameterTypes, const Arguments&... arguments);

// The same without arguments.
HRESULT DispatchInvoke(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result);

// The same with the arguments in a row. `room` is the call's scratch space: as many VARIANTs as arguments.
HRESULT DispatchInvokeV(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result,
                        const WCHAR* parameterTypes, std::span<const kestrolumen::DispatchArgument> arguments,
                        std::span<VARIANT> room);

// The bit that makes a parameter's VT_VARIANT an optional one.
inline constexpr VARTYPE OptionalParameter = 0x0800;

// Raises _com_error with no error object.
[[noreturn]] void IssueError(HRESULT hresult);

// Raises _com_error with the thread's error object, if `object` says that it makes error objects for `iid`
// (ISupportErrorInfo). For calls by virtual table; null is allowed.
[[noreturn]] void IssueErrorEx(HRESULT hresult, IUnknown* object, REFIID iid);

template <class... Arguments>
requires(std::constructible_from<kestrolumen::DispatchArgument, const Arguments&>&&...) HRESULT
    DispatchInvoke(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result,
                   const WCHAR* parameterTypes, const Arguments&... arguments) {
    const std::array<kestrolumen::DispatchArgument, sizeof...(arguments)> row{
        kestrolumen::DispatchArgument(arguments)...};
    std::array<VARIANT, sizeof...(arguments)> room;
    return DispatchInvokeV(dispatch, dispid, flags, resultType, result, parameterTypes, row, room);
}
