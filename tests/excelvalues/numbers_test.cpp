// Numbers, errors coded in numbers, and VARIANTs: what each becomes as a value and what is read back.
#include "excelhost/value.h"
#include "excelvalues/xxloper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

namespace {

using excelhost::ErrorValue;
using excelhost::Text;

// Doubles travel as bits and by reference here: a function that returns one would quiet a signalling NaN on
// 32-bit x86.
std::uint64_t BitsOf(const double& x) {
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

// What a conversion made, as "error 15", "nil", or "number" with its bits.
std::string Number(std::uint64_t bits) {
    return "number " + std::to_string(bits);
}
std::string Shown(const XXloper& value) {
    if (value.xltype == xltypeNum) return Number(BitsOf(value.val.num));
    if (value.xltype == xltypeErr && value.val.failure.returnCode == 0)
        return "error " + std::to_string(value.val.err);
    return value.xltype == xltypeNil ? "nil" : "type " + std::to_string(value.xltype);
}

// Where no outcome is given it is the number itself.
void ExpectConversions(std::uint64_t bits, std::string fromDouble, std::string fromNumber = "",
                       std::string inPlace = "") {
    SCOPED_TRACE(bits);
    double x;
    std::memcpy(&x, &bits, sizeof x);
    EXPECT_EQ(Shown(*XXloperFromDouble(x)), fromDouble);
    EXPECT_EQ(Shown(*XXloperFromNumber(x)), fromNumber.empty() ? Number(bits) : fromNumber);
    EXPECT_EQ(Shown(XXloper(x)), inPlace.empty() ? Number(bits) : inPlace);
}

TEST(Numbers, ErrorsAreCodedInNaNsAndComeBack) {
    constexpr int codes[] = {0, 7, 15, 23, 29, 36, 42, 43, 45, 48, 49, 50, 46, 47};
    for (std::uint32_t i = 0; i < std::size(codes); ++i) {
        const double nan = ErrorNaN(i);
        const std::string error = "error " + std::to_string(codes[i]);
        EXPECT_EQ(BitsOf(nan), (0x7FF80000ULL + i) << 32);
        ExpectConversions(BitsOf(nan), error, error, error);
        EXPECT_EQ(BitsOf(DoubleFromXXloper(XXloperFromError(codes[i]))), BitsOf(nan));
    }
    for (const int code : {1, 14, 44, 51, 2015, -1}) {
        EXPECT_EQ(BitsOf(DoubleFromXXloper(XXloperFromError(code))), 0x7FF8000E00000000u) << code;
    }
}

TEST(Numbers, SentinelsAndOtherNaNsDifferByConversion) {
    ExpectConversions(0xFFFFFFFFFFFFFFF8, "nil");
    ExpectConversions(0xFFFFFFFFFFFFFFF7, "error 42");
    ExpectConversions(0xFFFFFFFFFFFFFFF2, "error 36");
    ExpectConversions(0xFFFFFFFFFFFFFFF1, "error 7");
    ExpectConversions(0xFFFFFFFFFFFFFFF5, "error 15", "error 15");
    ExpectConversions(0xFFFFFFFFFFFFFFFF, "error 15", "error 15");
    ExpectConversions(0xFFF0000000000000, "error 36");
    for (const std::uint64_t bits :
         {0x7FF8000E00000000ULL,                                                // index 14
          0x7FF8000200000001ULL,                                                // a low word
          0xFFF8000200000000ULL,                                                // a sign
          0x7FFFFFFF00000000ULL, 0x7FFFFFFFFFFFFFFFULL, 0xFFF8000000000000ULL,  // the CPU's own NaN
          0x7FF0000000000001ULL, 0x7FF4000000000000ULL, 0xFFF0000000000002ULL,  // signalling
          0x7FF0000200000000ULL,                                                // signalling, like index 2
          0xFFFFFFFFFFFFFFF0ULL, 0xFFFFFFFFFFFFFFF3ULL, 0xFFFFFFFFFFFFFFF4ULL,  // beside the sentinels
          0xFFFFFFFFFFFFFFF6ULL, 0xFFFFFFFFFFFFFFF9ULL, 0xFFFFFFFFFFFFFFFEULL, 0x7FFFFFFFFFFFFFF8ULL}) {
        ExpectConversions(bits, "error 15");
    }
    for (const double x : {0.0, -0.0, 1.0, DBL_MAX, -DBL_MAX, DBL_MIN, DBL_TRUE_MIN, -DBL_TRUE_MIN}) {
        ExpectConversions(BitsOf(x), Number(BitsOf(x)));
    }
}

// Against the runtime library's own classification, which the product doesn't use.
TEST(Numbers, OfAnyBitsFollowTheirClass) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 100000; ++i) {
        std::uint64_t bits = random();
        if (i % 2 == 0) bits |= 0x7FF0000000000000;
        if (i % 4 == 0) bits &= 0xFFFFFFFF00000000 + (random() & 0xFF);
        double x;
        std::memcpy(&x, &bits, sizeof x);
        const bool errorNaN = bits >= 0x7FF8000000000000 && bits < 0x7FF8000E00000000 && bits << 32 == 0;
        ASSERT_EQ(IsErrorNaN(x), errorNaN);
        if (errorNaN) continue;
        ASSERT_EQ(Shown(XXloper(x)), Number(bits));
        const std::string shown = Shown(*XXloperFromDouble(x));
        if (bits < 0xFFFFFFFFFFFFFFF0) {
            ASSERT_EQ(shown, std::isfinite(x) ? Number(bits) : std::isinf(x) ? "error 36" : "error 15");
        }
    }
}

TEST(Numbers, EveryTypeReadsAsADouble) {
    XLOPER12 record{};
    const auto check = [&](DWORD type, std::uint64_t bits) {
        record.xltype = type | xlbitXLFree;
        EXPECT_EQ(BitsOf(DoubleFromXXloper(static_cast<const XXloper&>(record))), bits) << type;
        EXPECT_EQ(BitsOf(DoubleFromXXloper(XXloperLentByExcel(&record))), bits) << type;
    };
    for (const std::uint64_t bits : {0x3FF4000000000000u, 0x8000000000000000u, 0xFFFFFFFFFFFFFFF8u}) {
        std::memcpy(&record.val.num, &bits, sizeof bits);
        check(xltypeNum, bits);
    }
    for (const int w : {0, -5, 2147483647, -2147483647 - 1}) {
        record.val.w = w;
        check(xltypeInt, BitsOf(w));
        check(xltypeBool, BitsOf(w != 0 ? -1.0 : 0.0));
    }
    for (const DWORD type : {xltypeStr, xltypeRef, xltypeSRef, xltypeMulti, xltypeMissing, xltypeNil,
                             xltypeFlow, xltypeBigData, DWORD{0}}) {
        check(type, 0x7FF8000200000000);
    }
    EXPECT_EQ(BitsOf(DoubleFromXXloper(XXloperPtr())), 0x7FF8000200000000u);
}

// A VARIANT whose unused bytes are nonsense: what a type doesn't use is not to be looked at.
template <typename Content = int>
VARIANT Variant(VARTYPE type, Content content = {}) {
    VARIANT v;
    std::memset(&v, 0xA5, sizeof v);
    v.vt = type;
    std::memcpy(&v.bVal, &content, sizeof content);
    return v;
}

TEST(FromVariant, NumbersTruthAndTexts) {
    const std::unique_ptr<WCHAR, decltype(&SysFreeString)> zero(SysAllocStringLen(TEXT("a\0b"), 3),
                                                                &SysFreeString);
    const std::unique_ptr<WCHAR, decltype(&SysFreeString)> longer(
        SysAllocString(StdWString(40000, u'x').c_str()), &SysFreeString);
    const std::pair<VARIANT, excelhost::Value> cases[] = {
        {Variant(VT_I1, BYTE{0x80}), -128},
        {Variant(VT_UI1, BYTE{0x80}), 128},
        {Variant(VT_I2, short{-1}), -1},
        {Variant(VT_UI2, USHORT{0xFFFF}), 65535},
        {Variant(VT_I4, 0x80000000), -2147483647 - 1},
        {Variant(VT_UI4, 0xFFFFFFFF), -1},
        {Variant(VT_INT, 7), 7},
        {Variant(VT_UINT, 0xFFFFFFFE), -2},
        {Variant(VT_R4, 0.1F), static_cast<double>(0.1F)},
        {Variant(VT_R8, HUGE_VAL), HUGE_VAL},
        {Variant(VT_DATE, 45000.25), 45000.25},
        {Variant(VT_R8, ErrorNaN(6)), ErrorValue{xlerrNA}},
        {Variant(VT_BOOL, short{0}), false},
        {Variant(VT_BOOL, short{0x100}), true},
        {Variant(VT_ERROR, 0x800A07DF), ErrorValue{2015}},
        {Variant(VT_EMPTY), excelhost::Empty{}},
        {Variant(VT_NULL), excelhost::Empty{}},
        {Variant(VT_BSTR, zero.get()), Text(TEXT("a"))},
        {Variant(VT_BSTR, longer.get()), Text(32767, u'x')},
        {Variant(VT_BSTR, nullptr), Text()},
        {Variant(VT_LPSTR, "narrow"), Text(TEXT("narrow"))},
        {Variant(VT_LPWSTR, TEXT("wide")), Text(TEXT("wide"))},
    };
    for (const auto& [variant, expected] : cases) {
        EXPECT_EQ(excelhost::ValueFrom(*XXloperFromVariant(variant)), expected) << variant.vt;
    }
    const VARIANT truth = Variant(VT_BOOL, VARIANT_TRUE);
    EXPECT_EQ(XXloperFromVariant(truth)->val.xbool, 1);
}

TEST(FromVariant, EverythingElseIsVisualBasicsValueError) {
    const VARTYPE known[] = {VT_EMPTY, VT_NULL, VT_I1,    VT_I2,   VT_UI1,   VT_UI2,
                             VT_I4,    VT_UI4,  VT_INT,   VT_UINT, VT_R4,    VT_R8,
                             VT_DATE,  VT_BOOL, VT_ERROR, VT_BSTR, VT_LPSTR, VT_LPWSTR};
    for (const int flags : {0, 0x1000, 0x2000, 0x4000, 0x8000}) {  // vector, array, by reference, reserved
        for (int type = 0; type < 0x1000; ++type) {
            const auto whole = static_cast<VARTYPE>(type | flags);
            if (std::ranges::count(known, whole) != 0) continue;
            const VARIANT variant = Variant(whole);
            ASSERT_EQ(Shown(*XXloperFromVariant(variant)), "error 2015") << whole;
        }
    }
}

}  // namespace
