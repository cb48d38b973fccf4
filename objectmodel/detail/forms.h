// The forms of a call. Nearly every operation of the object model is one of them, given the object's
// interface, the DISPID and the arguments.
//
//     get.  property get           B  bool      V  a VARIANT, the caller's
//     put.  property put           L  LONG      VB bool out of a VARIANT    VS text out of or in a VARIANT
//     do.   method                 D  double    O  an object                I  an interface
//                                  S  text      N  nothing
//
// Each raises E_POINTER for a null interface, without a call to Excel.
#pragma once

#include "objectmodel/detail/arguments.h"
#include "objectmodel/detail/wrap.h"
#include "objectmodel/dispatch.h"

namespace kestrolumen::detail {

// Sends the arguments, which outlive the call.
template <class... Arguments>
void Send(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result,
          const Arguments&... arguments) {
    if constexpr (sizeof...(arguments) == 0) {
        DispatchInvoke(dispatch, dispid, flags, resultType, result);
    } else {
        if (!dispatch) IssueError(E_POINTER);
        static constexpr auto types = ParameterTypes<Arguments...>();
        std::array<DispatchArgument, types.size() - 1> row;
        std::array<VARIANT, types.size() - 1> room;
        auto* place = row.data();
        const auto add = [&](const auto& argument) {
            const DispatchArgument value = argument.Get();
            for (std::size_t count = argument.count; count > 0; --count) *place++ = value;
        };
        (add(arguments), ...);
        DispatchInvokeV(dispatch, dispid, flags, resultType, result, types.data(), row, room);
    }
}

template <class... Arguments>
void Tell(WORD flags, IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    Send(dispatch, dispid, flags, 0, nullptr, AsArgument(arguments)...);
}

template <class Result, class... Arguments>
[[nodiscard]] Result Ask(WORD flags, VARTYPE resultType, IDispatch* dispatch, DISPID dispid,
                         const Arguments&... arguments) {
    Result result{};
    Send(dispatch, dispid, flags, resultType, &result, AsArgument(arguments)...);
    return result;
}

// The text of a BSTR, zero units included; empty for null.
[[nodiscard]] inline CStringW TextOf(BSTR bstr) {
    return CStringW(bstr, static_cast<int>(SysStringLen(bstr)));
}

// A VARIANT's value in another type, by VariantChangeType, whose failure is raised.
[[nodiscard]] OwnedVariant Changed(const VARIANT& value, VARTYPE type);

// True of a VT_BOOL is any word but 0; of anything else that became a VT_BOOL, exactly VARIANT_TRUE.
[[nodiscard]] bool BoolOf(const OwnedVariant& value);
[[nodiscard]] LONG LongOf(const OwnedVariant& value);
[[nodiscard]] CStringW TextOf(const OwnedVariant& value);

template <class... Arguments>
[[nodiscard]] bool getB(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Ask<VARIANT_BOOL>(DISPATCH_PROPERTYGET, VT_BOOL, dispatch, dispid, arguments...) != VARIANT_FALSE;
}
template <class... Arguments>
[[nodiscard]] LONG getL(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Ask<LONG>(DISPATCH_PROPERTYGET, VT_I4, dispatch, dispid, arguments...);
}
template <class... Arguments>
[[nodiscard]] double getD(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Ask<double>(DISPATCH_PROPERTYGET, VT_R8, dispatch, dispid, arguments...);
}
template <class... Arguments>
[[nodiscard]] CStringW getS(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return TextOf(OwnedBstr(Ask<BSTR>(DISPATCH_PROPERTYGET, VT_BSTR, dispatch, dispid, arguments...)).get());
}
template <class... Arguments>
[[nodiscard]] VARIANT getV(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Ask<VARIANT>(DISPATCH_PROPERTYGET, VT_VARIANT, dispatch, dispid, arguments...);
}
template <class... Arguments>
[[nodiscard]] bool getVB(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return BoolOf(getV(dispatch, dispid, arguments...));
}
template <class... Arguments>
[[nodiscard]] CStringW getVS(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return TextOf(OwnedVariant(getV(dispatch, dispid, arguments...)));
}
template <class... Arguments>
[[nodiscard]] ComPtr<IDispatch> getI(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return ComPtr<IDispatch>::Adopt(
        Ask<IDispatch*>(DISPATCH_PROPERTYGET, VT_DISPATCH, dispatch, dispid, arguments...));
}
template <class Object, class... Arguments>
[[nodiscard]] std::shared_ptr<Object> getO(IDispatch* dispatch, DISPID dispid,
                                           const Arguments&... arguments) {
    return Wrap<Object>([&] { return getI(dispatch, dispid, arguments...); });
}

inline void putB(IDispatch* dispatch, DISPID dispid, bool value) {
    Tell(DISPATCH_PROPERTYPUT, dispatch, dispid, value);
}
inline void putL(IDispatch* dispatch, DISPID dispid, LONG value) {
    Tell(DISPATCH_PROPERTYPUT, dispatch, dispid, value);
}
inline void putD(IDispatch* dispatch, DISPID dispid, double value) {
    Tell(DISPATCH_PROPERTYPUT, dispatch, dispid, value);
}
inline void putS(IDispatch* dispatch, DISPID dispid, const CStringW& text) {
    Tell(DISPATCH_PROPERTYPUT, dispatch, dispid, text);
}
inline void putVS(IDispatch* dispatch, DISPID dispid, const CStringW& text) {
    Tell(DISPATCH_PROPERTYPUT, dispatch, dispid, Variant(text));
}
template <class... Arguments>
void putV(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    Tell(DISPATCH_PROPERTYPUT, dispatch, dispid, arguments...);
}

template <class... Arguments>
void doN(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    Tell(DISPATCH_METHOD, dispatch, dispid, arguments...);
}
template <class... Arguments>
[[nodiscard]] VARIANT doVR(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Ask<VARIANT>(DISPATCH_METHOD, VT_VARIANT, dispatch, dispid, arguments...);
}
template <class... Arguments>
void doV(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    const OwnedVariant cleared = doVR(dispatch, dispid, arguments...);
}
template <class... Arguments>
[[nodiscard]] LONG doVL(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return LongOf(doVR(dispatch, dispid, arguments...));
}
template <class... Arguments>
[[nodiscard]] bool doB(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Ask<VARIANT_BOOL>(DISPATCH_METHOD, VT_BOOL, dispatch, dispid, arguments...) != VARIANT_FALSE;
}
template <class... Arguments>
[[nodiscard]] CStringW doS(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return TextOf(OwnedBstr(Ask<BSTR>(DISPATCH_METHOD, VT_BSTR, dispatch, dispid, arguments...)).get());
}
template <class... Arguments>
[[nodiscard]] ComPtr<IDispatch> doI(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return ComPtr<IDispatch>::Adopt(
        Ask<IDispatch*>(DISPATCH_METHOD, VT_DISPATCH, dispatch, dispid, arguments...));
}
template <class Object, class... Arguments>
[[nodiscard]] std::shared_ptr<Object> doO(IDispatch* dispatch, DISPID dispid, const Arguments&... arguments) {
    return Wrap<Object>([&] { return doI(dispatch, dispid, arguments...); });
}

}  // namespace kestrolumen::detail
