// Worksheet calls by type: values into the arguments that a type text wants, and the result back into a
// value.
#pragma once

#include "excelhost/blocks.h"
#include "excelhost/machine/invoke.h"
#include "excelhost/oldvalues.h"
#include "excelhost/typetext.h"
#include "excelhost/value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace excelhost {

// Excel's arrays of numbers for type K, row by row: before 2007 and since. `array` goes on.
struct FP {
    WORD rows;
    WORD columns;
    alignas(8) double array[1];
};
struct FP12 {
    std::int32_t rows;
    std::int32_t columns;
    alignas(8) double array[1];
};
static_assert(offsetof(FP, array) == 8 && offsetof(FP12, array) == 8);

[[nodiscard]] Signature SignatureOf(const TypeText& type);

// Whether arguments of this type see a reference as it is; all others get its cells.
[[nodiscard]] inline bool TakesReferences(ValueType type) noexcept {
    return type.letter == 'R' || type.letter == 'U';
}
// Whether one value is all that they see of an argument.
[[nodiscard]] bool TakesOneValue(ValueType type) noexcept;

// The arguments of one call, in memory that the called function is lent. What it may not change is compared
// afterwards.
class LentArguments {
  public:
    explicit LentArguments(const TypeText& type);

    // The next argument. Excel doesn't call a function whose argument can't be had in the wanted type: the
    // error value that is the result then.
    [[nodiscard]] std::optional<ErrorValue> Add(const Value& value);
    // Where an asynchronous function gets its handle.
    void SetHandle(const void* handle) noexcept { handle_ = handle; }

    // All are there: the words for the call.
    [[nodiscard]] std::span<Word> Seal();

    enum class Harm { None, Changed, Overrun };
    // What the call has done to what it was lent: wrote into it, or over its ends.
    [[nodiscard]] Harm Inspect() const;

    // What the function has made of an argument, counted from 1.
    [[nodiscard]] Value Changed(std::size_t argument) const;

    // Records and other pieces lent.
    [[nodiscard]] std::size_t Count() const noexcept { return next_; }

  private:
    struct Piece {
        std::size_t word = 0;   // its first one
        std::size_t block = 0;  // its first one, when it has any
    };
    [[nodiscard]] std::optional<ErrorValue> AddOneValue(ValueType type, const Value& value);
    [[nodiscard]] std::optional<ErrorValue> AddNumbers(ValueType type, const Value& value);
    void AddText(ValueType type, TextView text);
    void AddRecord(ValueType type, const Value& value);
    void AddArray(ValueType type, std::size_t rows, std::size_t columns, std::span<const double> numbers);
    template <class T>
    void AddCell(T content);
    std::byte* NewBlock(std::size_t size);
    [[nodiscard]] bool MayChange(std::size_t block) const;

    const TypeText& type_;
    const void* handle_ = nullptr;
    Blocks blocks_;
    std::size_t records_ = 0;  // used of the first block
    std::vector<Word> words_;
    std::vector<Piece> pieces_;
    std::size_t next_ = 0;
    std::vector<bool> mayChange_;  // by block
    std::vector<std::byte> before_;
};

// The value in a result; #NUM! for a null pointer, #VALUE! for what can't be read.
[[nodiscard]] Value ResultFrom(ValueType type, Word result);

}  // namespace excelhost
