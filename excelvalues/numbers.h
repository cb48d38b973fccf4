// Numbers that carry Excel's error values, and the conversions between them and values.
//
// A vector of doubles can hold a #DIV/0! or an #N/A among its numbers, and an empty cell too: an error is an
// ErrorNaN, or one of a few sentinels told by their exact bits. What each conversion makes of one double:
//
//   input                                 XXloperFromDouble     XXloperFromNumber   XXloper(double)
//   ErrorNaN with index i                 ExcelErrorCodes[i]    the same            the same
//   SentinelEmpty                         xltypeNil             number              number
//   SentinelNA, SentinelNum, SentinelDiv0 #N/A, #NUM!, #DIV/0!  number              number
//   SentinelValue, SentinelAllOnes        #VALUE!               #VALUE!             number
//   positive or negative infinity         #NUM!                 number              number
//   any other NaN                         #VALUE!               number              number
//   any finite value                      number                number              number
//
// "number" is an xltypeNum with the very 64 bits of the input.
#pragma once

#include "excelvalues/value.h"

#include <array>
#include <cstdint>
#include <span>

// Excel's error numbers; the index of a number is the payload of its ErrorNaN. The order is that of their
// arrival in Excel, not of the numbers.
inline constexpr std::array<std::int32_t, 14> ExcelErrorCodes = {
    xlerrNull, xlerrDiv0, xlerrValue, xlerrRef, xlerrName, xlerrNum, xlerrNA, xlerrGettingData,
    45,  // #SPILL!
    48,  // #UNKNOWN!
    49,  // #FIELD!
    50,  // #CALC!
    46,  // #CONNECT!
    47,  // #BLOCKED!
};

// Bits of the sentinels, which are all NaNs.
inline constexpr std::uint64_t SentinelEmpty = 0xFFFFFFFFFFFFFFF8;
inline constexpr std::uint64_t SentinelNA = 0xFFFFFFFFFFFFFFF7;
inline constexpr std::uint64_t SentinelNum = 0xFFFFFFFFFFFFFFF2;
inline constexpr std::uint64_t SentinelDiv0 = 0xFFFFFFFFFFFFFFF1;
inline constexpr std::uint64_t SentinelValue = 0xFFFFFFFFFFFFFFF5;
inline constexpr std::uint64_t SentinelAllOnes = 0xFFFFFFFFFFFFFFFF;

// The ErrorNaN with an index into ExcelErrorCodes: the quiet NaN of high word 0x7FF80000 + index, low word 0.
[[nodiscard]] double ErrorNaN(std::uint32_t index) noexcept;

// Whether `x` is an ErrorNaN, with an index inside ExcelErrorCodes.
[[nodiscard]] bool IsErrorNaN(double x) noexcept;

// For numbers from arrays of results, where every value that isn't finite means something.
[[nodiscard]] XXloperPtr XXloperFromDouble(double x);

// For a single number that is meant as a number, such as a registration id.
[[nodiscard]] XXloperPtr XXloperFromNumber(double x);

// A number stays, an integer is widened, a true boolean is -1.0 and a false one 0.0. An error is the ErrorNaN
// of its number, or, when ExcelErrorCodes lacks the number, the NaN of high word 0x7FF8000E, which is no
// ErrorNaN. Anything else, an empty handle too, is the ErrorNaN of #VALUE!. The second form releases its
// handle when done. (On 32-bit x86 a double is returned through the x87 unit, which quiets a signalling NaN;
// none of the codings is one.)
[[nodiscard]] double DoubleFromXXloper(const XXloper& value) noexcept;
[[nodiscard]] double DoubleFromXXloper(XXloperPtr value) noexcept;

namespace kestrolumen::detail {

// What XXloperFromDouble and XXloperFromNumber make, in a record whose content is overwritten and not freed.
void SetFromDouble(XLOPER12& record, double x) noexcept;
void SetFromNumber(XLOPER12& record, double x) noexcept;

// The same as SetFromDouble for each of `values`, into the records from `first` on.
void SetFromDoubles(XLOPER12* first, std::span<const double> values) noexcept;

}  // namespace kestrolumen::detail
