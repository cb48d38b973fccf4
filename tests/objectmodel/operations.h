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

template <class... Given>
std::tuple<Given...> with(Given... given) {
    return {given...};
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

template <class Class>
struct Operation {
    // `sent`: the calls that the operation makes, as Describe tells them. `given`: what it gives, as Shown
    // tells it.
    template <class Method, class... Given>
    Operation(Method method, std::tuple<Given...> arguments, std::string calls, const char* result)
        : slot(SlotOf(method)), sent(std::move(calls)), given(result) {
        run = [method, arguments](World& world, Class& object) {
            // Ranges that are arguments come to life before the call.
            const auto made =
                std::apply([&](const auto&... each) { return std::tuple{Made(world, each)...}; }, arguments);
            const Shown shown(world, world.Live());
            return std::apply(
                [&](const auto&... each) -> std::string {
                    if constexpr (std::is_void_v<decltype((object.*method)(each...))>) {
                        (object.*method)(each...);
                        return "";
                    } else {
                        return shown((object.*method)(each...));
                    }
                },
                made);
        };
    }

    std::size_t slot;
    std::string sent;
    std::string given;
    std::function<std::string(World&, Class&)> run;
};

// One operation without its class, and all of them, for those who run operations at random.
using AnyOperation = std::function<void(World&)>;
[[nodiscard]] std::vector<AnyOperation> AllOperations();

// A class's table, and the way to an object of the class.
template <class Class>
struct Table {
    // A row is an operation, or a property: the operations that get and put it, the value to put, the class
    // and the DISPID in the calls of both, what the first gives and what the second sends.
    struct Row : std::vector<Operation<Class>> {
        template <class Method, class... Given>
        Row(Method method, std::tuple<Given...> arguments, const char* calls, const char* result)
            : std::vector<Operation<Class>>{{method, arguments, calls, result}} {}
        template <class Getter, class Putter, class... Given>
        Row(Getter get, Putter put, std::tuple<Given...> value, const std::string& member, const char* given,
            const std::string& sent)
            : std::vector<Operation<Class>>{{get, std::tuple<>(), member + " get", given},
                                            {put, value, member + " put = " + sent, ""}} {}
    };
    Table(std::shared_ptr<Class> (*way)(World&), std::initializer_list<Row> table) : reach(way) {
        for (const Row& row : table) rows.insert(rows.end(), row.begin(), row.end());
    }

    std::shared_ptr<Class> (*reach)(World&);
    std::vector<Operation<Class>> rows;

    // Each row on a world of its own. The rows go through the virtual table in its order, behind the
    // destructor's two slots, and leave none out.
    void Check() const {
        std::size_t slot = 1;
        for (const auto& row : rows) {
            SCOPED_TRACE(row.sent + " -> " + row.given);
            World world;
            {
                const auto object = reach(world);
                world.server.ClearRecord();
                const std::string before = world.Counts();
                const std::string given = Outcome([&] { return row.run(world, *object); });
                EXPECT_TRUE(row.given == anything || row.given == given) << given;
                EXPECT_EQ(world.Calls(), row.sent);
                EXPECT_EQ(world.Counts(), before);
                for (const auto& call : world.server.Record()) EXPECT_EQ(call.lcid, 0U);
            }
            EXPECT_TRUE(row.slot == slot || row.slot == slot + 1) << "slot " << row.slot << " after " << slot;
            slot = row.slot;
            EXPECT_EQ(world.Live(), "Application  1; ");
            EXPECT_TRUE(world.server.Faults().empty());
        }
    }

    void AddTo(std::vector<AnyOperation>& operations) const {
        for (const auto& row : rows) {
            operations.push_back([reach = reach, run = row.run](World& world) { run(world, *reach(world)); });
        }
    }
};

}  // namespace world
