// The table of the functions that a host serves, by number.
//
// To serve another one, write its handler in the room of served/ that it belongs to and give it a row in
// that room's table: {number, name, fewest and most operands, from where, handler}. All else follows from
// the row: its name in the trace and the checks of its operands' count and of who calls.
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

// From where Excel lets a function be called.
enum class From : unsigned char {
    Anywhere,
    MainThread,  // not from thread-safe functions ("$")
    Macros,      // not from worksheet functions but those for macro sheets ("#")
    Commands,    // not from worksheet functions
};

struct ServedFunction {
    int number;
    std::string_view name;
    unsigned char fewest;  // operands
    unsigned char most;
    From from;
    // Locks what it needs of the state itself, so that no lock is held while an add-in's or a workbook's code
    // runs.
    Outcome (*run)(HostState& state, Operands operands);
};

// The bit of commands, which are numbered on their own, up to the highest there may be.
inline constexpr int kCommand = 0x8000;
inline constexpr int kHighestCommand = 0x3FF;

// Null for a number that isn't served. Every command is.
[[nodiscard]] const ServedFunction* FindServed(int number) noexcept;

// What stands for a function in a trace: "xlUDF", "xlfError"..., a name with a number behind it, "xlCommand|7", or
// the number alone.
struct FunctionLabel {
    std::string_view name;
    std::optional<int> number;
};
[[nodiscard]] FunctionLabel LabelOf(int number) noexcept;
[[nodiscard]] std::string FunctionName(int number);

// The rooms of the table.
[[nodiscard]] std::span<const ServedFunction> ServedMemory();
[[nodiscard]] std::span<const ServedFunction> ServedRegistration();
[[nodiscard]] std::span<const ServedFunction> ServedWorkbooks();
[[nodiscard]] std::span<const ServedFunction> ServedSwitches();
[[nodiscard]] std::span<const ServedFunction> ServedSurroundings();
[[nodiscard]] std::span<const ServedFunction> ServedValues();
[[nodiscard]] std::span<const ServedFunction> ServedInformation();
[[nodiscard]] std::span<const ServedFunction> ServedCalling();
[[nodiscard]] std::span<const ServedFunction> ServedNames();
[[nodiscard]] std::span<const ServedFunction> ServedWorksheetFunctions();
[[nodiscard]] std::span<const ServedFunction> ServedCommands();

// The number of the function that a trace shows under this name; nothing when there is none.
[[nodiscard]] std::optional<int> FunctionNumber(std::string_view name);

// Operands as handlers read them. A number is also a truth value or an integer.
[[nodiscard]] std::optional<double> NumberOf(const XLOPER12& record);
[[nodiscard]] inline bool IsLeftOut(const XLOPER12& record) noexcept {
    const DWORD type = record.xltype & 0xFFF;
    return type == xltypeMissing || type == xltypeNil;
}

}  // namespace excelhost
