// The type text of a registered function: one letter for its result, one for each argument, then marks, as
// Microsoft's "xlfRegister (Form 1)" lists them.
//
//     TypeText type = TypeTextFrom(TEXT("QBC%U#"));   // QBC%U#: result Q; arguments B, C%, U; for macro
//     sheets
#pragma once

#include "excelhost/value.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace excelhost {

// Most arguments of a function in Excel 2007 and later.
inline constexpr std::size_t kArityLimit = 255;

// What the machine passes for one letter. All fits a register but a Double on 32 bits.
enum class Passing : unsigned char { Nothing, Short, UnsignedShort, Long, Double, Pointer };

// One letter, with the "%" behind it that makes texts and arrays the wide ones of Excel 2007.
struct ValueType {
    char letter = 0;
    bool wide = false;
    Passing passing = Passing::Nothing;

    friend bool operator==(const ValueType&, const ValueType&) = default;
};

struct TypeText {
    // Nothing for functions whose result is an argument that they change (`inPlace`) or that comes later
    // (`asynchronous`).
    ValueType result;
    // Without the handle of an asynchronous function, which no formula gives.
    std::vector<ValueType> arguments;
    std::size_t inPlace = 0;          // the argument that is the result, 1 for the first; 0 for none
    bool asynchronous = false;        // "X": a handle stands at `handle` among the arguments
    std::size_t handle = 0;           // arguments in front of the handle
    bool recalculatesAlways = false;  // "!"
    bool threadSafe = false;          // "$"
    bool forMacroSheets = false;      // "#"
    bool clusterSafe = false;         // "&"
};

// What is wrong with a type text.
class TypeTextFault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Reads a type text. The result may also be a digit 1 to 9, which names the argument that the function
// changes and so gives back, or ">", which promises no result: then the first argument that can be changed is
// one, or the result comes later through the handle "X". TypeTextFault for anything that Excel wouldn't take.
[[nodiscard]] TypeText TypeTextFrom(TextView text);

// "B", "C%".
[[nodiscard]] std::string Describe(ValueType type);

// "number (B)", "text, ended by a zero, UTF-16 (C%)"; "nothing" for no type.
[[nodiscard]] std::string InWords(ValueType type);

// Whether a function may change what it is lent under this type: E, F, G, K, L, M, N and O.
[[nodiscard]] bool CanBeChanged(ValueType type) noexcept;

}  // namespace excelhost
