#include "excelvalues/numbers.h"

#include "excelvalues/detail/newvalue.h"
#include "excelvalues/makers.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::uint32_t QuietNaNHighWord = 0x7FF80000;
constexpr std::uint32_t ValueErrorIndex = 2;
static_assert(ExcelErrorCodes[ValueErrorIndex] == xlerrValue);

std::uint64_t BitsOf(const double& x) noexcept {
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

double DoubleOf(std::uint64_t bits) noexcept {
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// The index of an ErrorNaN, or the size of ExcelErrorCodes for anything else.
std::size_t ErrorIndex(std::uint64_t bits) noexcept {
    const std::uint64_t index = (bits >> 32) - QuietNaNHighWord;
    const bool isErrorNaN = static_cast<std::uint32_t>(bits) == 0 && index < ExcelErrorCodes.size();
    return isErrorNaN ? static_cast<std::size_t>(index) : ExcelErrorCodes.size();
}

// The number goes from memory to memory as bits: no register of a floating-point unit sees it.
void SetNumber(XLOPER12& record, std::uint64_t bits) noexcept {
    record.xltype = xltypeNum;
    std::memcpy(&record.val.num, &bits, sizeof bits);
}

// An ErrorNaN becomes its error, anything else a number.
void SetFromCodedBits(XLOPER12& record, std::uint64_t bits) noexcept {
    if (const std::size_t index = ErrorIndex(bits); index < ExcelErrorCodes.size()) {
        return SetErrorValue(record, ExcelErrorCodes[index]);
    }
    SetNumber(record, bits);
}

bool IsFinite(std::uint64_t bits) noexcept {
    constexpr std::uint64_t exponent = 0x7FF0000000000000;
    return (bits & exponent) != exponent;
}

bool IsInfinite(std::uint64_t bits) noexcept {
    return bits << 1 == 0xFFE0000000000000;
}

void SetFromNonFinite(XLOPER12& record, std::uint64_t bits) noexcept {
    if (ErrorIndex(bits) < ExcelErrorCodes.size()) return SetFromCodedBits(record, bits);
    if (IsInfinite(bits)) return SetErrorValue(record, xlerrNum);
    switch (bits) {
        case SentinelEmpty:
            record.xltype = xltypeNil;
            return;
        case SentinelNA:
            return SetErrorValue(record, xlerrNA);
        case SentinelNum:
            return SetErrorValue(record, xlerrNum);
        case SentinelDiv0:
            return SetErrorValue(record, xlerrDiv0);
        default:
            return SetErrorValue(record, xlerrValue);
    }
}

// The finite numbers, which are nearly all, in a few instructions.
inline void SetFromBits(XLOPER12& record, std::uint64_t bits) noexcept {
    if (!IsFinite(bits)) return SetFromNonFinite(record, bits);
    SetNumber(record, bits);
}

}  // namespace

XXloper::XXloper(double x) noexcept : XLOPER12{} {
    SetFromCodedBits(*this, BitsOf(x));
}

double ErrorNaN(std::uint32_t index) noexcept {
    return DoubleOf(std::uint64_t{QuietNaNHighWord + index} << 32);
}

bool IsErrorNaN(double x) noexcept {
    return ErrorIndex(BitsOf(x)) < ExcelErrorCodes.size();
}

namespace kestrolumen::detail {

void SetFromNumber(XLOPER12& record, double x) noexcept {
    const std::uint64_t bits = BitsOf(x);
    if (bits == SentinelValue || bits == SentinelAllOnes) return SetErrorValue(record, xlerrValue);
    SetFromCodedBits(record, bits);
}

void SetFromDouble(XLOPER12& record, double x) noexcept {
    SetFromBits(record, BitsOf(x));
}

void SetFromDoubles(XLOPER12* first, std::span<const double> values) noexcept {
    for (const double& x : values) SetFromBits(*first++, BitsOf(x));
}

}  // namespace kestrolumen::detail

XXloperPtr XXloperFromDouble(double x) {
    auto value = kestrolumen::detail::NewValue();
    kestrolumen::detail::SetFromDouble(*value, x);
    return value;
}

XXloperPtr XXloperFromNumber(double x) {
    auto value = kestrolumen::detail::NewValue();
    kestrolumen::detail::SetFromNumber(*value, x);
    return value;
}

double DoubleFromXXloper(const XXloper& value) noexcept {
    switch (TypeOf(value)) {
        case xltypeNum:
            return value.val.num;
        case xltypeInt:
            return value.val.w;
        case xltypeBool:
            return value.val.xbool != 0 ? -1.0 : 0.0;
        case xltypeErr: {
            const auto found = std::find(ExcelErrorCodes.begin(), ExcelErrorCodes.end(), value.val.err);
            return ErrorNaN(static_cast<std::uint32_t>(found - ExcelErrorCodes.begin()));
        }
        default:
            return ErrorNaN(ValueErrorIndex);
    }
}

double DoubleFromXXloper(XXloperPtr value) noexcept {
    const XXloperPtr held = std::move(value);
    return held ? DoubleFromXXloper(*held) : ErrorNaN(ValueErrorIndex);
}
