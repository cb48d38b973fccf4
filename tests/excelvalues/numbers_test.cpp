#include "excelvalues/xxloper.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <random>

namespace {

// Doubles travel as bits and by reference here: a function that returns one would quiet a signalling NaN on
// 32-bit x86.
std::uint64_t BitsOf(const double& x) {
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

std::uint64_t BitsOf(double&& x) {
    return BitsOf(static_cast<const double&>(x));
}

// What a conversion made: an error with a code, the empty value, or a number with its bits.
struct Outcome {
    DWORD type;
    std::uint64_t payload;

    friend bool operator==(const Outcome&, const Outcome&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
        return stream << "type " << outcome.type << ", payload 0x" << std::hex << outcome.payload << std::dec;
    }
};

Outcome Error(int code) {
    return {xltypeErr, static_cast<std::uint64_t>(code)};
}
Outcome Number(std::uint64_t bits) {
    return {xltypeNum, bits};
}
constexpr Outcome Nil = {xltypeNil, 0};

Outcome OutcomeOf(const XXloper& value) {
    switch (value.xltype) {
        case xltypeErr:
            EXPECT_EQ(value.val.returnCode, 0);
            return Error(value.val.err);
        case xltypeNum:
            return Number(BitsOf(value.val.num));
        default:
            return {value.xltype, 0};
    }
}

struct Row {
    std::uint64_t bits;
    Outcome fromDouble;
    Outcome fromNumber;
    Outcome inPlace;
};

void ExpectRow(const Row& row) {
    SCOPED_TRACE(testing::Message() << "bits 0x" << std::hex << row.bits);
    double x;
    std::memcpy(&x, &row.bits, sizeof x);
    EXPECT_EQ(OutcomeOf(*XXloperFromDouble(x)), row.fromDouble);
    EXPECT_EQ(OutcomeOf(*XXloperFromNumber(x)), row.fromNumber);
    EXPECT_EQ(OutcomeOf(XXloper(x)), row.inPlace);
}

constexpr std::array<int, 14> ErrorNumbers = {0, 7, 15, 23, 29, 36, 42, 43, 45, 48, 49, 50, 46, 47};

TEST(Numbers, ErrorNaNsAreDecodedByAll) {
    ASSERT_EQ(ExcelErrorCodes, ErrorNumbers);
    for (std::uint32_t i = 0; i < ErrorNumbers.size(); ++i) {
        const double nan = ErrorNaN(i);
        EXPECT_EQ(BitsOf(nan), (0x7FF80000ULL + i) << 32);
        EXPECT_TRUE(IsErrorNaN(nan));
        ExpectRow({BitsOf(nan), Error(ErrorNumbers[i]), Error(ErrorNumbers[i]), Error(ErrorNumbers[i])});
    }
}

TEST(Numbers, SentinelsDifferByConversion) {
    const Row rows[] = {
        {0xFFFFFFFFFFFFFFF8, Nil, Number(0xFFFFFFFFFFFFFFF8), Number(0xFFFFFFFFFFFFFFF8)},
        {0xFFFFFFFFFFFFFFF7, Error(42), Number(0xFFFFFFFFFFFFFFF7), Number(0xFFFFFFFFFFFFFFF7)},
        {0xFFFFFFFFFFFFFFF2, Error(36), Number(0xFFFFFFFFFFFFFFF2), Number(0xFFFFFFFFFFFFFFF2)},
        {0xFFFFFFFFFFFFFFF1, Error(7), Number(0xFFFFFFFFFFFFFFF1), Number(0xFFFFFFFFFFFFFFF1)},
        {0xFFFFFFFFFFFFFFF5, Error(15), Error(15), Number(0xFFFFFFFFFFFFFFF5)},
        {0xFFFFFFFFFFFFFFFF, Error(15), Error(15), Number(0xFFFFFFFFFFFFFFFF)},
        {0x7FF0000000000000, Error(36), Number(0x7FF0000000000000), Number(0x7FF0000000000000)},
        {0xFFF0000000000000, Error(36), Number(0xFFF0000000000000), Number(0xFFF0000000000000)},
    };
    for (const Row& row : rows) ExpectRow(row);
}

TEST(Numbers, OtherNaNsAreErrorsForOneAndNumbersForTwo) {
    for (const std::uint64_t bits :
         {0x7FF8000E00000000ULL,                                                // index 14
          0x7FF8000200000001ULL,                                                // a low word
          0xFFF8000200000000ULL,                                                // a sign
          0x7FFFFFFF00000000ULL, 0x7FFFFFFFFFFFFFFFULL, 0xFFF8000000000000ULL,  // the CPU's own NaN
          0x7FF0000000000001ULL, 0x7FF4000000000000ULL, 0xFFF0000000000002ULL,  // signalling
          0x7FF0000200000000ULL,                                                // signalling, like index 2
          0xFFFFFFFFFFFFFFF0ULL, 0xFFFFFFFFFFFFFFF3ULL, 0xFFFFFFFFFFFFFFF4ULL,  // beside the sentinels
          0xFFFFFFFFFFFFFFF6ULL, 0xFFFFFFFFFFFFFFF9ULL, 0xFFFFFFFFFFFFFFFEULL, 0x7FFFFFFFFFFFFFF8ULL}) {
        ExpectRow({bits, Error(15), Number(bits), Number(bits)});
    }
}

TEST(Numbers, FiniteOnesKeepEveryBit) {
    for (const double x :
         {0.0, -0.0, 1.0, -1.5, DBL_MAX, -DBL_MAX, DBL_MIN, DBL_TRUE_MIN, -DBL_TRUE_MIN, 0.1}) {
        const std::uint64_t bits = BitsOf(x);
        ExpectRow({bits, Number(bits), Number(bits), Number(bits)});
    }
}

// Against the runtime library's own classification, which the product doesn't use.
TEST(Numbers, RandomBitsFollowTheirClass) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 100000; ++i) {
        std::uint64_t bits = random();
        if (i % 2 == 0) bits |= 0x7FF0000000000000;
        if (i % 4 == 0) bits &= 0xFFFFFFFF00000000 + (random() & 0xFF);
        double x;
        std::memcpy(&x, &bits, sizeof x);
        const bool errorNaN = bits >= 0x7FF8000000000000 && bits < 0x7FF8000E00000000 && bits << 32 == 0;
        ASSERT_EQ(IsErrorNaN(x), errorNaN);
        const XXloperPtr value = XXloperFromDouble(x);
        if (std::isfinite(x)) {
            ASSERT_EQ(OutcomeOf(*value), Number(bits));
        } else if (std::isinf(x)) {
            ASSERT_EQ(OutcomeOf(*value), Error(36));
        } else if (!errorNaN && bits < 0xFFFFFFFFFFFFFFF0) {
            ASSERT_EQ(OutcomeOf(*value), Error(15));
        }
        if (!errorNaN) {
            ASSERT_EQ(OutcomeOf(XXloper(x)), Number(bits));
        }
    }
}

TEST(Numbers, ErrorsSurviveTheWayThereAndBack) {
    for (const int code : ErrorNumbers) {
        const double coded = DoubleFromXXloper(XXloperFromError(code));
        EXPECT_EQ(OutcomeOf(*XXloperFromDouble(coded)), Error(code));
        EXPECT_EQ(OutcomeOf(*XXloperFromNumber(coded)), Error(code));
    }
    for (const int code : {1, 14, 44, 51, 2015, -1}) {
        const double unknown = DoubleFromXXloper(XXloperFromError(code));
        EXPECT_EQ(BitsOf(unknown), 0x7FF8000E00000000u);
        EXPECT_FALSE(IsErrorNaN(unknown));
        EXPECT_EQ(OutcomeOf(*XXloperFromDouble(unknown)), Error(15));
        EXPECT_EQ(OutcomeOf(*XXloperFromNumber(unknown)), Number(0x7FF8000E00000000));
    }
}

TEST(Numbers, EveryTypeReadsAsADouble) {
    constexpr std::uint64_t valueError = 0x7FF8000200000000;
    const auto record = [](DWORD type) {
        XLOPER12 made{};
        made.xltype = type;
        return made;
    };
    const auto check = [](const XLOPER12& made, std::uint64_t bits) {
        SCOPED_TRACE(made.xltype);
        EXPECT_EQ(BitsOf(DoubleFromXXloper(static_cast<const XXloper&>(made))), bits);
        EXPECT_EQ(BitsOf(DoubleFromXXloper(XXloperLentByExcel(&made))), bits);
    };
    for (const std::uint64_t bits :
         {BitsOf(1.25), BitsOf(-0.0), std::uint64_t{0xFFFFFFFFFFFFFFF8}, std::uint64_t{0x7FF8000300000000}}) {
        XLOPER12 number = record(xltypeNum | xlbitXLFree);
        std::memcpy(&number.val.num, &bits, sizeof bits);
        check(number, bits);
    }
    for (const int w : {0, -5, 2147483647, -2147483647 - 1}) {
        XLOPER12 integer = record(xltypeInt);
        integer.val.w = w;
        check(integer, BitsOf(static_cast<double>(w)));
    }
    for (const int truth : {0, 1, 2, -1}) {
        XLOPER12 boolean = record(xltypeBool | xlbitDLLFree);
        boolean.val.xbool = truth;
        check(boolean, BitsOf(truth != 0 ? -1.0 : 0.0));
    }
    for (const DWORD type : {xltypeStr, xltypeRef, xltypeSRef, xltypeMulti, xltypeMissing, xltypeNil,
                             xltypeFlow, xltypeBigData, DWORD{0}}) {
        check(record(type), valueError);
    }
    EXPECT_EQ(BitsOf(DoubleFromXXloper(XXloperPtr())), valueError);
}

TEST(Numbers, ReadingReleasesTheHandle) {
    XXloperPtr value = XXloperFromNumber(2.5);
    const std::weak_ptr<const XXloper> watched = value;
    EXPECT_EQ(DoubleFromXXloper(std::move(value)), 2.5);
    EXPECT_TRUE(watched.expired());
}

}  // namespace
