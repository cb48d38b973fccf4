// VariantChangeType over pairs of scalar types, and its rules about targets, references and objects.
#include "olevalues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace {

Variant R8(double number) {
    return {VT_R8, &VARIANT::dblVal, number};
}
Variant I4(LONG number) {
    return {VT_I4, &VARIANT::lVal, number};
}
Variant Boolean(bool flag) {
    return {VT_BOOL, &VARIANT::boolVal, flag ? VARIANT_TRUE : VARIANT_FALSE};
}
Variant Currency(LONGLONG tenThousandths) {
    CY value{};
    value.int64 = tenThousandths;
    return {VT_CY, &VARIANT::cyVal, value};
}
Variant Decimal(bool negative, ULONG high, ULONGLONG low, BYTE scale) {
    DECIMAL value{};
    value.sign = negative ? 0x80 : 0;
    value.Hi32 = high;
    value.Lo64 = low;
    value.scale = scale;
    return {VT_DECIMAL, &VARIANT::decVal, value};
}

std::string Floating(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

// The value alone, as the columns below write it.
std::string Shown(const VARIANT& v) {
    switch (v.vt) {
        case VT_UI1:
            return std::to_string(v.bVal);
        case VT_I2:
            return std::to_string(v.iVal);
        case VT_I4:
            return std::to_string(v.lVal);
        case VT_I8:
            return std::to_string(v.llVal);
        case VT_R8:
        case VT_DATE:
            return Floating(v.dblVal);
        case VT_CY:
            return std::to_string(v.cyVal.int64);
        case VT_BOOL:
            return std::to_string(v.boolVal);
        case VT_BSTR:
            return std::string(v.bstrVal, v.bstrVal + SysStringLen(v.bstrVal));
        default:
            return "type " + std::to_string(v.vt);
    }
}

// "over" for DISP_E_OVERFLOW, "-" for DISP_E_TYPEMISMATCH.
std::string Converted(const VARIANT& source, int type, USHORT flags = 0) {
    Variant target;
    const HRESULT hresult =
        VariantChangeType(&target, const_cast<VARIANT*>(&source), flags, static_cast<VARTYPE>(type));
    if (hresult == DISP_E_OVERFLOW) return "over";
    if (hresult == DISP_E_TYPEMISMATCH) return "-";
    if (FAILED(hresult)) return "hresult " + std::to_string(hresult);
    EXPECT_EQ(target.vt, type);
    return Shown(target);
}

const std::string badType = "hresult " + std::to_string(DISP_E_BADVARTYPE);

constexpr VARTYPE columns[] = {VT_UI1, VT_I2, VT_I4, VT_I8, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_BSTR};

TEST(VariantChangeType, PairsOfScalarTypes) {
    const struct {
        Variant source;
        // One value a column, parted by bars; "?" for what is nobody's promise.
        std::string_view expected;
    } rows[] = {
        {Variant(VT_EMPTY), "0|0|0|0|0|0|0|0|"},
        {{VT_ERROR, &VARIANT::scode, DISP_E_PARAMNOTFOUND}, "-|-|-|-|-|-|-|-|-"},
        // Whole numbers: by value, but for those of the same width, which keep their bits.
        {{VT_I1, &VARIANT::bVal, 0xFB}, "251|-5|-5|-5|-5|-50000|-5|-1|-5"},
        {I4(INT_MAX), "over|over|2147483647|2147483647|2147483647|21474836470000|over|-1|2147483647"},
        {{VT_UI4, &VARIANT::ulVal, UINT_MAX},
         "over|over|-1|4294967295|4294967295|42949672950000|over|-1|4294967295"},
        {{VT_I8, &VARIANT::llVal, LLONG_MIN},
         "over|over|over|-9223372036854775808|-9.22337203685478e+18|over|over|-1|-9223372036854775808"},
        {Boolean(true), "255|-1|-1|-1|-1|-10000|-1|-1|-1"},
        // Floating numbers: halves go to the even neighbour, and the limits are those of the rounded number.
        {{VT_R4, &VARIANT::fltVal, 0.1F}, "0|0|0|0|0.100000001490116|1000|0.100000001490116|-1|0.1"},
        {R8(-2.5), "over|-2|-2|-2|-2.5|-25000|-2.5|-1|-2.5"},
        {R8(1e300), "over|over|over|over|1e+300|over|over|-1|1E+300"},
        {R8(INFINITY), "over|over|over|over|inf|over|over|-1|?"},
        {Currency(-25000), "over|-2|-2|?|-2.5|-25000|-2.5|-1|-2.5"},
        {Currency(LLONG_MAX),
         "over|over|over|922337203685478|922337203685478|9223372036854775807|?|-1|922337203685477.5807"},
        {{VT_DATE, &VARIANT::date, 45000.75},
         "over|over|45001|45001|45000.75|450007500|45000.75|-1|3/15/2023 6:00:00 PM"},
        {Decimal(false, UINT_MAX, ULLONG_MAX, 0), "over|over|over|over|7.92281625142643e+28|over|?|-1|?"},
        // Texts.
        {Text(nullptr), "-|-|-|-|-|-|-|-|"},
        {Text(TEXT(" 12\t")), "12|12|12|12|12|120000|-|-1| 12\t"},
        {Text(TEXT("-12.5")), "over|-12|-12|-12|-12.5|-125000|-|-1|-12.5"},
        {Text(TEXT("9007199254740993")),
         "over|over|over|9007199254740993|9.00719925474099e+15|over|-|-1|9007199254740993"},
        {Text(TEXT("1e400")), "over|over|over|over|over|over|-|over|1e400"},
        {Text(TEXT("fALSE")), "-|-|-|-|-|-|-|0|fALSE"},
    };
    for (const auto& row : rows) {
        std::string_view rest = row.expected;
        for (const VARTYPE type : columns) {
            const std::string_view expected = rest.substr(0, rest.find('|'));
            rest.remove_prefix(std::min(rest.size(), expected.size() + 1));
            if (expected == "?") continue;
            EXPECT_EQ(Converted(row.source, type), expected)
                << "from type " << row.source.vt << " '" << Shown(row.source) << "' to type " << type;
        }
    }
    for (const int type : {int{VT_ERROR}, int{VT_DISPATCH}, int{VT_VARIANT}, VT_ARRAY | VT_I4}) {
        EXPECT_EQ(Converted(I4(3), type), "-") << type;
    }
    EXPECT_EQ(Converted(I4(3), 75), badType);
    EXPECT_EQ(Converted(Boolean(true), VT_BSTR, VARIANT_ALPHABOOL), "True");
}

TEST(VariantChangeType, DatesBecomeTextAndComeBack) {
    const std::pair<double, const WCHAR*> rows[] = {
        {0.5, TEXT("12:00:00 PM")}, {45293.0 + 1.0 / 86400, TEXT("1/2/2024 12:00:01 AM")},
        {0, TEXT("12:00:00 AM")},   {-1.25, TEXT("12/29/1899 6:00:00 AM")},
        {60, TEXT("2/28/1900")},    {2958465, TEXT("12/31/9999")},
    };
    for (const auto& [days, text] : rows) {
        const Variant source = Text(text);
        EXPECT_EQ(Converted(Variant(VT_DATE, &VARIANT::date, days), VT_BSTR), Shown(source));
        EXPECT_EQ(Converted(source, VT_DATE), Floating(days)) << Shown(source);
    }
    EXPECT_EQ(Converted(Text(TEXT(" 2024-01-02 18:00:00 ")), VT_DATE), "45293.75");
    for (const WCHAR* const text : {TEXT("2/30/2024"), TEXT("24:00"), TEXT("15:60"), TEXT("1/2/2024 x")}) {
        EXPECT_EQ(Converted(Text(text), VT_DATE), "-");
    }
    for (const double outside : {2958466.0, -657435.0}) EXPECT_EQ(Converted(R8(outside), VT_DATE), "over");
}

TEST(VariantChangeType, ReferencesCountAsWhatTheyPointTo) {
    LONG number = 300;
    Variant inner = Text(TEXT("2.5"));
    EXPECT_EQ(Converted(Variant(VT_BYREF | VT_I4, &VARIANT::plVal, &number), VT_UI1), "over");
    EXPECT_EQ(Converted(Variant(VT_BYREF | VT_VARIANT, &VARIANT::pvarVal, &inner), VT_R8), "2.5");
    EXPECT_EQ(Converted(Variant(VT_BYREF | VT_BSTR, &VARIANT::pbstrVal, &inner.bstrVal), VT_R8), "2.5");
    EXPECT_EQ(Shown(inner), "2.5") << "what a reference points to is borrowed";
}

}  // namespace
