// Tables of operations: one row for each, with what it must send and give.
#pragma once

#include "world.h"

#include "support/raised.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <memory>
#include <tuple>
#include <vector>

namespace world {

// What an operation gives, as text. An object is told by what stands behind it in the server: of the objects
// that have come to life since `before` it must be the only one, held by one reference.
class Shown {
  public:
    Shown(World& its, std::string livingBefore) : world(its), before(std::move(livingBefore)) {}

    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(LONG value) const { return std::to_string(value); }
    std::string operator()(double value) const { return "R8 " + excelhost::NumberText(value); }
    std::string operator()(float value) const {
        return "R4 " + excelhost::NumberText(static_cast<double>(value));
    }
    std::string operator()(const CStringW& text) const { return excelhost::Utf8(text.GetString()); }
    std::string operator()(const CStringA& text) const { return text.GetString(); }
    std::string operator()(IDispatch* borrowed) const {
        const auto* object = world.server.Find(borrowed);
        return object == nullptr ? "stranger" : "raw " + std::string(object->Class().name);
    }
    std::string operator()(const kestrolumen::ComPtr<IDispatch>& owned) const {
        return owned ? Newcomer() : "null";
    }
    template <class Object>
    std::string operator()(const std::shared_ptr<Object>& object) const {
        return object == nullptr ? "empty" : Newcomer();
    }
    std::string operator()(VARIANT value) const;

  private:
    [[nodiscard]] std::string ShownLent(const VARIANT& value) const;
    [[nodiscard]] std::string Newcomer() const {
        const std::string living = world.Live();
        if (!living.starts_with(before)) return "an object is gone: " + living;
        std::string object = living.substr(before.size());
        if (object.empty()) return "null";
        return object.ends_with(" 1; ") ? object.substr(0, object.size() - 4)
                                        : "not one reference: " + object;
    }

    World& world;
    std::string before;
};

inline std::string Shown::operator()(VARIANT value) const {
    const OwnedVariant owner(std::move(value));
    return ShownLent(owner);
}

inline std::string Shown::ShownLent(const VARIANT& value) const {
    if (value.vt == VT_DISPATCH) return Newcomer();
    if (value.vt == VT_EMPTY) return "EMPTY";
    if (value.vt == VT_NULL) return "NULL";
    if (value.vt == VT_BOOL) return "BOOL " + (*this)(value.boolVal != VARIANT_FALSE);
    if (value.vt == VT_BSTR) return "BSTR " + excelhost::Utf8(excelhost::automation::BstrText(value));
    if (value.vt == VT_I4) return "I4 " + std::to_string(value.lVal);
    return value.vt == VT_R8 ? (*this)(value.dblVal) : "type " + std::to_string(value.vt);
}

// Arguments of a row, made for the call: a range of Sheet1, a text in a VARIANT that the operation takes.
struct Cells {
    const WCHAR* address;
};
struct Words {
    const WCHAR* text;
};
// The same for an operation that takes the VARIANT by reference, and leaves it to its caller.
struct LentWords {
    const WCHAR* text;
};
inline std::shared_ptr<MsExcel::Range> Made(World& world, Cells cells) {
    return world.Range(cells.address);
}
inline VARIANT Made(World&, Words words) {
    return Variant(words.text).Detach();
}
struct LentVariant {
    Variant variant;
    operator const VARIANT&() const noexcept { return variant.Get(); }
};
inline LentVariant Made(World&, LentWords words) {
    return {words.text};
}
template <class Given>
const Given& Made(World&, const Given& given) {
    return given;
}
inline VARIANT Whole(LONG number) {
    return Variant(number).Detach();
}
inline VARIANT Number(double number) {
    return Variant(number).Detach();
}
inline VARIANT Flag(bool flag) {
    return Variant(flag).Detach();
}

// So many omitted arguments.
template <std::size_t Count>
auto Omitted() {
    std::array<VARIANT, Count> omitted;
    omitted.fill(MissingArgument);
    return omitted;
}

// So many numbers from 1 on, that none may change places.
template <std::size_t Count>
auto Numbers() {
    std::array<VARIANT, Count> numbers;
    std::ranges::generate(numbers, [next = 0.0]() mutable { return Number(++next); });
    return numbers;
}

// Picks an overload by its parameters.
template <class... Parameters>
struct Taking {
    template <class Class, class Result>
    auto operator()(Result (Class::*method)(Parameters...)) const {
        return method;
    }
    template <class Class, class Result>
    auto operator()(Result (Class::*method)(Parameters...) const) const {
        return method;
    }
};
template <class... Parameters>
inline constexpr Taking<Parameters...> taking;

// The virtual one of an operation's overloads, which is lent so many VARIANTs.
template <class Result, class Class, std::size_t... Places>
auto LendingMethod(std::index_sequence<Places...>)
    -> Result (Class::*)(std::conditional_t<Places == SIZE_MAX, void, const VARIANT&>...);
template <class Result, class Class, std::size_t Count>
using Lending = decltype(LendingMethod<Result, Class>(std::make_index_sequence<Count>()));

// An operation's place in the virtual table, by the Itanium ABI, which all of our compilers follow: the first
// word of a pointer to a virtual member is one more than the offset of its slot.
template <class Method>
std::size_t SlotOf(Method method) {
    struct Pointer {
        std::uintptr_t offsetAndOne;
        std::ptrdiff_t adjustment;
    };
    static_assert(sizeof(Method) == sizeof(Pointer));
    return (std::bit_cast<Pointer>(method).offsetAndOne - 1) / sizeof(void*);
}

// What a body gives; or "com" and the number of a _com_error, or a Vex exception with all that it holds.
template <class Body>
std::string Outcome(const Body& body) {
    try {
        return body();
    } catch (const _com_error& error) {
        char text[16];
        std::snprintf(text, sizeof(text), "com %08X", static_cast<unsigned>(error.Error()));
        return text;
    } catch (const VexException& raised) {
        return support::TextOf(raised);
    }
}

inline constexpr const char* anything = "*";

// Calls the operation, and tells what it gives. Ranges that are arguments have come to life before.
template <class Class, class Method, class... Arguments>
std::string Call(World& world, Class& object, Method method, const Arguments&... arguments) {
    const Shown shown(world, world.Live());
    if constexpr (std::is_void_v<decltype((object.*method)(arguments...))>) {
        (object.*method)(arguments...);
        return "";
    } else {
        return shown((object.*method)(arguments...));
    }
}

// The same with the last arguments in an array.
template <class Class, class Method, std::size_t Count, class... Arguments>
std::string Call(World& world, Class& object, Method method, const std::array<VARIANT, Count>& last,
                 const Arguments&... arguments) {
    return std::apply([&](const auto&... each) { return Call(world, object, method, arguments..., each...); },
                      last);
}

// An operation of some class, which is named where it is made and nowhere else: hundreds of types of rows would have
// compilers at work for a quarter of a minute.
struct Operation {
    std::size_t slot;
    std::string sent;   // the calls that it makes, as Describe tells them
    std::string given;  // what it gives, as Shown tells it

    virtual ~Operation() = default;
    // `object` is one of its class.
    virtual std::string Run(World& world, void* object) const = 0;

  protected:
    Operation(std::size_t its, std::string calls, std::string result)
        : slot(its), sent(std::move(calls)), given(std::move(result)) {}
};
using Operations = std::vector<std::shared_ptr<const Operation>>;

template <class Class, class Body>
struct OperationOf final : Operation {
    OperationOf(std::size_t its, std::string calls, std::string result, Body does)
        : Operation(its, std::move(calls), std::move(result)), body(does) {}
    std::string Run(World& world, void* object) const override {
        return body(world, *static_cast<Class*>(object));
    }

    Body body;
};

// A row of a class's table: an operation, the calls, what it gives, its own arguments; an array of the last ones
// comes first. Or a property: the operations that get and put it, the class and the DISPID in the calls of both, what
// the first gives and what the second sends, and the value to put.
template <class Class>
struct Row : Operations {
    template <class Method, class... Given>
    Row(Method method, const char* calls, const char* result, Given... arguments) {
        Add(method, calls, result, arguments...);
    }
    template <class Getter, class Putter, class Given>
    Row(Getter get, Putter put, const std::string& member, const char* given, const std::string& sent,
        Given value) {
        Add(get, member + " get", given);
        Add(put, member + " put = " + sent, "", value);
    }

  private:
    template <class Method, class... Given>
    void Add(Method method, std::string calls, const char* result, Given... arguments) {
        const auto body = [=](World& world, Class& object) {
            return Call(world, object, method, Made(world, arguments)...);
        };
        Operation* const made =
            new OperationOf<Class, decltype(body)>(SlotOf(method), std::move(calls), result, body);
        emplace_back(made);
    }
};

// One operation without its class, and all of them, for those who run operations at random.
using AnyOperation = std::function<void(World&)>;
[[nodiscard]] std::vector<AnyOperation> AllOperations();

// The operations of a class, and the way to an object of it.
struct AnyTable {
    std::function<std::shared_ptr<void>(World&)> reach;
    Operations operations;
};
template <class Class>
struct Table : AnyTable {
    Table(std::shared_ptr<Class> (*way)(World&), std::initializer_list<Row<Class>> rows) : AnyTable{way, {}} {
        for (const Operations& row : rows) operations.insert(operations.end(), row.begin(), row.end());
    }
};

}  // namespace world
