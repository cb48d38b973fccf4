// The arguments of an operation, in the words of Excel's parameter lists. Each says its parameter type, gives
// its value to DispatchInvoke, and owns what has to be made for the call. None throws while it is
// constructed, so that whatever is taken by value is owned before anything can fail.
//
//     number, flag, text, range      a LONG, double, float, bool, CStringW or Range as it is
//     Variant(x)                     a required VARIANT holding x
//     Optional(x)                    an optional one, dropped from the end of the list when x is missing
//     Variant(Take(v)), Optional(Take(v))   the same of a VARIANT that the operation was given by value
//     Missing<n>, MissingSent<n>     n omitted arguments; the second kind goes to Excel as such
#pragma once

#include <concepts>

#include "objectmodel/dispatch.h"
#include "objectmodel/owned.h"
#include "objectmodel/range.h"

namespace kestrolumen::detail {

inline constexpr VARTYPE RequiredVariant = VT_VARIANT;
inline constexpr VARTYPE OptionalVariant = VT_VARIANT | OptionalParameter;

// A scalar or an interface pointer, as it is.
template <VARTYPE Type, class Value>
struct PlainArgument {
    static constexpr VARTYPE type = Type;
    static constexpr std::size_t count = 1;
    Value value;

    [[nodiscard]] DispatchArgument Get() const noexcept { return value; }
};

// Text, as a BSTR of its own.
struct TextArgument {
    static constexpr VARTYPE type = VT_BSTR;
    static constexpr std::size_t count = 1;
    OwnedBstr text;

    [[nodiscard]] DispatchArgument Get() const {
        if (!text.get()) IssueError(E_OUTOFMEMORY);
        return text.get();
    }
};

// A VARIANT that stays the caller's.
template <VARTYPE Type>
struct BorrowedArgument {
    static constexpr VARTYPE type = Type;
    static constexpr std::size_t count = 1;
    const VARIANT* value;

    [[nodiscard]] DispatchArgument Get() const noexcept { return value; }
};

// A VARIANT made for the call or taken from the caller.
template <VARTYPE Type>
struct OwnedArgument {
    static constexpr VARTYPE type = Type;
    static constexpr std::size_t count = 1;
    OwnedVariant value;
    bool complete = true;

    [[nodiscard]] DispatchArgument Get() const {
        if (!complete) IssueError(E_OUTOFMEMORY);
        return &value.borrow();
    }
};

template <VARTYPE Type, std::size_t Count>
struct MissingArguments {
    static constexpr VARTYPE type = Type;
    static constexpr std::size_t count = Count;

    [[nodiscard]] DispatchArgument Get() const noexcept { return &MissingArgument; }
};

template <std::size_t Count = 1>
inline constexpr MissingArguments<OptionalVariant, Count> Missing{};
template <std::size_t Count = 1>
inline constexpr MissingArguments<RequiredVariant, Count> MissingSent{};

// A number that goes as VT_INT, the type of Excel's enumerations; a LONG goes as VT_I4.
struct IntValue {
    INT value;
};

[[nodiscard]] inline BSTR BstrOf(const CStringW& text) noexcept {
    return SysAllocStringLen(text.GetString(), static_cast<UINT>(text.GetLength()));
}

// A VARIANT that holds the value; of a text that can't be allocated a null BSTR.
template <class Value>
[[nodiscard]] VARIANT VariantOf(const Value& value) noexcept {
    VARIANT result{};
    if constexpr (std::same_as<Value, bool>) {
        result.vt = VT_BOOL;
        result.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    } else if constexpr (std::same_as<Value, LONG>) {
        result.vt = VT_I4;
        result.lVal = value;
    } else if constexpr (std::same_as<Value, SHORT>) {
        result.vt = VT_I2;
        result.iVal = value;
    } else if constexpr (std::same_as<Value, IntValue>) {
        result.vt = VT_INT;
        result.intVal = value.value;
    } else if constexpr (std::same_as<Value, double>) {
        result.vt = VT_R8;
        result.dblVal = value;
    } else {
        static_assert(std::same_as<Value, CStringW>);
        result.vt = VT_BSTR;
        result.bstrVal = BstrOf(value);
    }
    return result;
}

// A VARIANT that the operation was given by value, owned from here on.
[[nodiscard]] inline OwnedVariant Take(VARIANT& value) noexcept {
    return static_cast<VARIANT&&>(value);
}

template <VARTYPE Type>
struct VariantMaker {
    [[nodiscard]] BorrowedArgument<Type> operator()(const VARIANT& value) const noexcept { return {&value}; }
    [[nodiscard]] OwnedArgument<Type> operator()(OwnedVariant&& value) const noexcept {
        return {std::move(value)};
    }
    [[nodiscard]] OwnedArgument<Type> operator()(const auto& value) const noexcept {
        VARIANT made = VariantOf(value);
        const bool complete = made.vt != VT_BSTR || made.bstrVal;
        return {static_cast<VARIANT&&>(made), complete};
    }
};
inline constexpr VariantMaker<RequiredVariant> Variant{};
inline constexpr VariantMaker<OptionalVariant> Optional{};

[[nodiscard]] inline PlainArgument<VT_BOOL, bool> AsArgument(std::same_as<bool> auto value) noexcept {
    return {value};
}
[[nodiscard]] inline PlainArgument<VT_I4, LONG> AsArgument(LONG value) noexcept {
    return {value};
}
[[nodiscard]] inline PlainArgument<VT_R4, float> AsArgument(float value) noexcept {
    return {value};
}
[[nodiscard]] inline PlainArgument<VT_R8, double> AsArgument(double value) noexcept {
    return {value};
}
[[nodiscard]] inline TextArgument AsArgument(const CStringW& text) noexcept {
    return {OwnedBstr(BstrOf(text))};
}
// The interface that the range holds, borrowed; null of a null pointer.
[[nodiscard]] inline PlainArgument<VT_DISPATCH, IDispatch*> AsArgument(
    const std::shared_ptr<MsExcel::Range>& range) noexcept {
    return {range ? range->GetDispatch() : nullptr};
}
template <class Argument>
requires requires {
    Argument::type;
}
[[nodiscard]] const Argument& AsArgument(const Argument& argument) noexcept {
    return argument;
}

// The parameter string of a list of arguments.
template <class... Arguments>
[[nodiscard]] constexpr auto ParameterTypes() noexcept {
    std::array<WCHAR, (Arguments::count + ...) + 1> types{};
    std::size_t place = 0;
    const auto add = [&](VARTYPE type, std::size_t count) {
        while (count-- > 0) types[place++] = static_cast<WCHAR>(type);
    };
    (add(Arguments::type, Arguments::count), ...);
    return types;
}

}  // namespace kestrolumen::detail
