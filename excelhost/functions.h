// The table of the functions that a host serves, by number.
//
// To serve another one, write its handler in the room of functions/ that it belongs to and give it a row in
// that room's table: {number, name, fewest and most operands, handler}. All else follows from the row: its
// name in the trace, the check of its operands' count, its place in `excelhost functions`.
#pragma once

#include "excelhost/value.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace excelhost {

struct HostState;

// What a function does with its operands: a value, or a return code other than xlretSuccess and no value. The
// note tells people why.
struct Outcome {
    int returnCode = xlretSuccess;
    Value value;
    std::string note;

    static Outcome Of(Value value, std::string note = {}) {
        return {xlretSuccess, std::move(value), std::move(note)};
    }
    static Outcome Error(int number, std::string why = {}) {
        return {xlretSuccess, ErrorValue{number}, std::move(why)};
    }
    static Outcome Failed(int code, std::string why = {}) { return {code, Value{}, std::move(why)}; }
};

// None is null.
using Operands = std::span<const LPXLOPER12>;

struct ServedFunction {
    int number;
    std::string_view name;
    std::size_t fewest;  // operands
    std::size_t most;
    // Locks what it needs of the state itself, so that no lock is held while an add-in's or a workbook's code
    // runs.
    Outcome (*run)(HostState& state, Operands operands);
};

// Null for a number that isn't served.
[[nodiscard]] const ServedFunction* FindServed(int number) noexcept;

// "xlUDF", "xlfError"...; the number for any other.
[[nodiscard]] std::string FunctionName(int number);

// The rooms of the table.
[[nodiscard]] std::span<const ServedFunction> MemoryFunctions();
[[nodiscard]] std::span<const ServedFunction> RegistrationFunctions();
[[nodiscard]] std::span<const ServedFunction> WorkbookFunctions();
[[nodiscard]] std::span<const ServedFunction> SwitchFunctions();
[[nodiscard]] std::span<const ServedFunction> SurroundingsFunctions();

// Operands as handlers read them. A number is also a truth value or an integer.
[[nodiscard]] std::optional<double> NumberOf(const XLOPER12& record);
[[nodiscard]] inline bool IsLeftOut(const XLOPER12& record) noexcept {
    const DWORD type = record.xltype & 0xFFF;
    return type == xltypeMissing || type == xltypeNil;
}

}  // namespace excelhost
