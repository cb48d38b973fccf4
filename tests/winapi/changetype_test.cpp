// VariantChangeType over every pair of scalar types, and its rules about targets, references and objects.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr LCID englishUnitedStates = 0x0409;

struct Owned {
    VARIANT value;

    Owned() { VariantInit(&value); }
    explicit Owned(const VARIANT& taken) : value(taken) {}
    Owned(Owned&& other) noexcept : value(other.value) { VariantInit(&other.value); }
    Owned& operator=(Owned&&) = delete;
    ~Owned() { VariantClear(&value); }
};

template <class Set>
VARIANT Make(VARTYPE type, Set set) {
    VARIANT value{};
    set(value);
    value.vt = type;
    return value;
}

VARIANT Text(const WCHAR* text) {
    return Make(VT_BSTR, [&](VARIANT& v) { v.bstrVal = text ? SysAllocString(text) : nullptr; });
}
VARIANT R8(double number) {
    return Make(VT_R8, [&](VARIANT& v) { v.dblVal = number; });
}
VARIANT I4(LONG number) {
    return Make(VT_I4, [&](VARIANT& v) { v.lVal = number; });
}
VARIANT Boolean(bool flag) {
    return Make(VT_BOOL, [&](VARIANT& v) { v.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE; });
}
VARIANT Date(double days) {
    return Make(VT_DATE, [&](VARIANT& v) { v.date = days; });
}
VARIANT Currency(LONGLONG tenThousandths) {
    return Make(VT_CY, [&](VARIANT& v) { v.cyVal.int64 = tenThousandths; });
}
VARIANT Decimal(bool negative, ULONG high, ULONGLONG low, BYTE scale) {
    return Make(VT_DECIMAL, [&](VARIANT& v) {
        v.decVal.sign = negative ? 0x80 : 0;
        v.decVal.Hi32 = high;
        v.decVal.Lo64 = low;
        v.decVal.scale = scale;
    });
}
VARIANT Empty(VARTYPE type) {
    return Make(type, [](VARIANT&) {});
}

std::string Floating(double value, int digits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    return text;
}

// The value alone, as the columns below write it.
std::string Shown(const VARIANT& v) {
    switch (v.vt) {
        case VT_EMPTY:
            return "empty";
        case VT_NULL:
            return "null";
        case VT_I1:
            return std::to_string(static_cast<signed char>(v.cVal));
        case VT_UI1:
            return std::to_string(v.bVal);
        case VT_I2:
            return std::to_string(v.iVal);
        case VT_UI2:
            return std::to_string(v.uiVal);
        case VT_I4:
            return std::to_string(v.lVal);
        case VT_INT:
            return std::to_string(v.intVal);
        case VT_UI4:
            return std::to_string(v.ulVal);
        case VT_UINT:
            return std::to_string(v.uintVal);
        case VT_I8:
            return std::to_string(v.llVal);
        case VT_UI8:
            return std::to_string(v.ullVal);
        case VT_R4:
            return Floating(static_cast<double>(v.fltVal), 7);
        case VT_R8:
            return Floating(v.dblVal, 15);
        case VT_DATE:
            return Floating(v.date, 15);
        case VT_CY:
            return std::to_string(v.cyVal.int64);
        case VT_BOOL:
            return std::to_string(v.boolVal);
        case VT_BSTR:
            return std::string(v.bstrVal, v.bstrVal + SysStringLen(v.bstrVal));
        case VT_DECIMAL:
            return (v.decVal.sign ? "-" : "") + (v.decVal.Hi32 ? std::to_string(v.decVal.Hi32) + ":" : "") +
                   std::to_string(v.decVal.Lo64) + "e-" + std::to_string(v.decVal.scale);
        default:
            return "type " + std::to_string(v.vt);
    }
}

std::string Converted(const VARIANT& value, VARTYPE type) {
    VARIANT source = value;
    Owned target;
    const HRESULT hresult = VariantChangeTypeEx(&target.value, &source, englishUnitedStates, 0, type);
    if (hresult == DISP_E_OVERFLOW) return "over";
    if (hresult == DISP_E_TYPEMISMATCH) return "-";
    if (FAILED(hresult)) return "hresult " + std::to_string(hresult);
    EXPECT_EQ(target.value.vt, type);
    return Shown(target.value);
}

constexpr VARTYPE columns[] = {VT_I1,   VT_UI1, VT_I2, VT_UI2, VT_I4,   VT_UI4,  VT_I8,   VT_UI8,    VT_INT,
                               VT_UINT, VT_R4,  VT_R8, VT_CY,  VT_DATE, VT_BOOL, VT_BSTR, VT_DECIMAL};

struct Row {
    VARIANT source;
    // One value a column, parted by bars: "over" for DISP_E_OVERFLOW, "-" for DISP_E_TYPEMISMATCH, "?" for
    // what is nobody's promise.
    std::string_view expected;
};

TEST(VariantChangeType, EveryPairOfScalarTypes) {
    const std::vector<Row> rows = {
        {Empty(VT_EMPTY), "0|0|0|0|0|0|0|0|0|0|0|0|0|0|0||0e-0"},
        {Empty(VT_NULL), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-"},
        {Make(VT_ERROR, [](VARIANT& v) { v.scode = DISP_E_PARAMNOTFOUND; }),
         "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-"},
        // Whole numbers: by value, but for those of the same width, which keep their bits.
        {Make(VT_I1, [](VARIANT& v) { v.bVal = 0xFB; }),
         "-5|251|-5|over|-5|over|-5|over|-5|over|-5|-5|-50000|-5|-1|-5|-5e-0"},
        {Make(VT_UI1, [](VARIANT& v) { v.bVal = 200; }),
         "-56|200|200|200|200|200|200|200|200|200|200|200|2000000|200|-1|200|200e-0"},
        {Make(VT_I2, [](VARIANT& v) { v.iVal = -300; }),
         "over|over|-300|65236|-300|over|-300|over|-300|over|-300|-300|-3000000|-300|-1|-300|-300e-0"},
        {Make(VT_UI2, [](VARIANT& v) { v.uiVal = 65535; }),
         "over|over|-1|65535|65535|65535|65535|65535|65535|65535|65535|65535|655350000|65535|-1|65535|65535e-"
         "0"},
        {I4(INT_MAX),
         "over|over|over|over|2147483647|2147483647|2147483647|2147483647|2147483647|2147483647|2.147484e+09|"
         "2147483647|21474836470000|over|-1|2147483647|2147483647e-0"},
        {I4(-1), "-1|over|-1|over|-1|4294967295|-1|over|-1|4294967295|-1|-1|-10000|-1|-1|-1|-1e-0"},
        {Make(VT_UI4, [](VARIANT& v) { v.ulVal = UINT_MAX; }),
         "over|over|over|over|-1|4294967295|4294967295|4294967295|-1|4294967295|4.294967e+09|4294967295|"
         "42949672950000|over|-1|4294967295|4294967295e-0"},
        {Make(VT_INT, [](VARIANT& v) { v.intVal = 7; }), "7|7|7|7|7|7|7|7|7|7|7|7|70000|7|-1|7|7e-0"},
        {Make(VT_UINT, [](VARIANT& v) { v.uintVal = UINT_MAX; }),
         "over|over|over|over|-1|4294967295|4294967295|4294967295|-1|4294967295|4.294967e+09|4294967295|"
         "42949672950000|over|-1|4294967295|4294967295e-0"},
        {Make(VT_I8, [](VARIANT& v) { v.llVal = LLONG_MIN; }),
         "over|over|over|over|over|over|-9223372036854775808|9223372036854775808|over|over|-9.223372e+18|"
         "-9.22337203685478e+18|over|over|-1|-9223372036854775808|-9223372036854775808e-0"},
        {Make(VT_UI8, [](VARIANT& v) { v.ullVal = ULLONG_MAX; }),
         "over|over|over|over|over|over|-1|18446744073709551615|over|over|1.844674e+19|1.84467440737096e+19|"
         "over|"
         "over|-1|18446744073709551615|18446744073709551615e-0"},
        {Boolean(true),
         "-1|255|-1|65535|-1|4294967295|-1|18446744073709551615|-1|4294967295|-1|-1|-10000|-1|-1|-1|?"},
        {Boolean(false), "0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0e-0"},
        // Floating numbers: halves go to the even neighbour, and the limits are those of the rounded number.
        {Make(VT_R4, [](VARIANT& v) { v.fltVal = 0.1F; }),
         "0|0|0|0|0|0|0|0|0|0|0.1|0.100000001490116|1000|0.100000001490116|-1|0.1|1e-1"},
        {R8(0.5), "0|0|0|0|0|0|0|0|0|0|0.5|0.5|5000|0.5|-1|0.5|5e-1"},
        {R8(1.5), "2|2|2|2|2|2|2|2|2|2|1.5|1.5|15000|1.5|-1|1.5|15e-1"},
        {R8(-2.5), "-2|over|-2|over|-2|over|-2|over|-2|over|-2.5|-2.5|-25000|-2.5|-1|-2.5|-25e-1"},
        {R8(-0.5), "0|0|0|0|0|0|0|0|0|0|-0.5|-0.5|-5000|-0.5|-1|-0.5|-5e-1"},
        {R8(127.5), "over|128|128|128|128|128|128|128|128|128|127.5|127.5|1275000|127.5|-1|127.5|1275e-1"},
        {R8(255.5), "over|over|256|256|256|256|256|256|256|256|255.5|255.5|2555000|255.5|-1|255.5|2555e-1"},
        {R8(32767.5),
         "over|over|over|32768|32768|32768|32768|32768|32768|32768|32767.5|32767.5|327675000|32767.5|-1|"
         "32767.5|"
         "327675e-1"},
        {R8(2147483647.5),
         "over|over|over|over|over|2147483648|2147483648|2147483648|over|2147483648|2.147484e+09|2147483647."
         "5|"
         "21474836475000|over|-1|2147483647.5|21474836475e-1"},
        {R8(-2147483648.5),
         "over|over|over|over|-2147483648|over|-2147483648|over|-2147483648|over|-2.147484e+09|-2147483648.5|"
         "-21474836485000|over|-1|-2147483648.5|-21474836485e-1"},
        {R8(9223372036854775808.0),
         "over|over|over|over|over|over|over|9223372036854775808|over|over|9.223372e+18|9.22337203685478e+18|"
         "over|"
         "over|-1|9.22337203685478E+18|?"},
        {R8(1e-5), "0|0|0|0|0|0|0|0|0|0|1e-05|1e-05|0|1e-05|-1|1E-05|1e-5"},
        {R8(1e15),
         "over|over|over|over|over|over|1000000000000000|1000000000000000|over|over|1e+15|1e+15|over|over|-1|"
         "1E+15|"
         "1000000000000000e-0"},
        {R8(1e300), "over|over|over|over|over|over|over|over|over|over|over|1e+300|over|over|-1|1E+300|over"},
        {R8(-0.0), "0|0|0|0|0|0|0|0|0|0|-0|-0|0|-0|0|0|0e-0"},
        {R8(INFINITY), "over|over|over|over|over|over|over|over|over|over|?|inf|over|over|-1|?|over"},
        {Currency(12345), "1|1|1|1|1|1|1|1|1|1|1.2345|1.2345|12345|1.2345|-1|1.2345|12345e-4"},
        {Currency(5000), "0|0|0|0|0|0|0|0|0|0|0.5|0.5|5000|0.5|-1|0.5|5000e-4"},
        {Currency(-25000), "-2|over|-2|over|-2|over|?|over|-2|over|-2.5|-2.5|-25000|-2.5|-1|-2.5|-25000e-4"},
        {Currency(LLONG_MAX),
         "over|over|over|over|over|over|922337203685478|922337203685478|over|over|9.223372e+14|"
         "922337203685478|"
         "9223372036854775807|?|-1|922337203685477.5807|9223372036854775807e-4"},
        {Date(45000.75),
         "over|over|over|45001|45001|45001|45001|45001|45001|45001|45000.75|45000.75|450007500|45000.75|-1|"
         "3/15/2023 6:00:00 PM|4500075e-2"},
        {Decimal(false, 0, 12345, 3),
         "12|12|12|12|12|12|12|12|12|12|12.345|12.345|123450|12.345|-1|12.345|12345e-3"},
        {Decimal(true, 0, 25, 1),
         "-2|over|-2|over|-2|over|-2|over|-2|over|-2.5|-2.5|-25000|-2.5|-1|-2.5|-25e-1"},
        {Decimal(false, 0, 100, 2), "1|1|1|1|1|1|1|1|1|1|1|1|10000|1|-1|1|100e-2"},
        {Decimal(false, UINT_MAX, ULLONG_MAX, 0),
         "over|over|over|over|over|over|over|over|over|over|7.922816e+28|7.92281625142643e+28|over|?|-1|"
         "79228162514264337593543950335|4294967295:18446744073709551615e-0"},
        // Texts.
        {Text(nullptr), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-||-"},
        {Text(TEXT("")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-||-"},
        {Text(TEXT("12")), "12|12|12|12|12|12|12|12|12|12|12|12|120000|-|-1|12|12e-0"},
        {Text(TEXT(" 12\t")), "12|12|12|12|12|12|12|12|12|12|12|12|120000|-|-1| 12\t|12e-0"},
        {Text(TEXT("-12.5")),
         "-12|over|-12|over|-12|over|-12|over|-12|over|-12.5|-12.5|-125000|-|-1|-12.5|-125e-1"},
        {Text(TEXT("2.5")), "2|2|2|2|2|2|2|2|2|2|2.5|2.5|25000|?|-1|2.5|25e-1"},
        {Text(TEXT(".5")), "0|0|0|0|0|0|0|0|0|0|0.5|0.5|5000|-|-1|.5|5e-1"},
        {Text(TEXT("5.")), "5|5|5|5|5|5|5|5|5|5|5|5|50000|-|-1|5.|5e-0"},
        {Text(TEXT("1E+3")),
         "over|over|1000|1000|1000|1000|1000|1000|1000|1000|1000|1000|10000000|-|-1|1E+3|1000e-0"},
        {Text(TEXT("- 7")), "-7|over|-7|over|-7|over|-7|over|-7|over|-7|-7|-70000|-|-1|- 7|-7e-0"},
        {Text(TEXT("+7")), "7|7|7|7|7|7|7|7|7|7|7|7|70000|-|-1|+7|7e-0"},
        {Text(TEXT("9007199254740993")),
         "over|over|over|over|over|over|9007199254740993|9007199254740993|over|over|9.007199e+15|"
         "9.00719925474099e+15|over|-|-1|9007199254740993|9007199254740993e-0"},
        {Text(TEXT("18446744073709551615")),
         "over|over|over|over|over|over|over|18446744073709551615|over|over|1.844674e+19|1.84467440737096e+"
         "19|over|"
         "-|-1|18446744073709551615|18446744073709551615e-0"},
        {Text(TEXT("1e400")),
         "over|over|over|over|over|over|over|over|over|over|over|over|over|-|over|1e400|over"},
        {Text(TEXT("True")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-1|True|-"},
        {Text(TEXT("fALSE")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|0|fALSE|-"},
        {Text(TEXT("#TRUE#")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-1|#TRUE#|-"},
        {Text(TEXT(".")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|.|-"},
        {Text(TEXT("-")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-"},
        {Text(TEXT("1e")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|1e|-"},
        {Text(TEXT("12abc")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|12abc|-"},
        {Text(TEXT("0x10")), "-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|0x10|-"},
    };
    for (const Row& row : rows) {
        const Owned source(row.source);
        std::string_view rest = row.expected;
        for (const VARTYPE type : columns) {
            const std::string_view expected = rest.substr(0, rest.find('|'));
            rest.remove_prefix(std::min(rest.size(), expected.size() + 1));
            if (expected == "?") continue;
            EXPECT_EQ(Converted(row.source, type), expected)
                << "from type " << row.source.vt << " '" << Shown(row.source) << "' to type " << type;
        }
    }
}

TEST(VariantChangeType, TypesThatHoldNoNumber) {
    for (const VARIANT& value : {I4(3), R8(2.5), Boolean(true), Date(1)}) {
        EXPECT_EQ(Converted(value, VT_EMPTY), "empty");
        EXPECT_EQ(Converted(value, VT_NULL), "null");
        for (const VARTYPE type : {VT_ERROR, VT_DISPATCH, VT_UNKNOWN, VT_VARIANT}) {
            EXPECT_EQ(Converted(value, type), "-") << type;
        }
        EXPECT_EQ(Converted(value, VT_ARRAY | VT_I4), "-");
        for (const VARTYPE type : {VARTYPE{15}, VARTYPE{VT_VOID}, VARTYPE{75}}) {
            EXPECT_EQ(Converted(value, type), "hresult " + std::to_string(DISP_E_BADVARTYPE)) << type;
        }
    }
    EXPECT_EQ(Converted(Empty(VT_NULL), VT_EMPTY), "-");
    EXPECT_EQ(Converted(Empty(VT_EMPTY), VT_DISPATCH), "-");
    EXPECT_EQ(Converted(Empty(VT_EMPTY), VT_UNKNOWN), "-");
}

TEST(VariantChangeType, DatesBecomeTextAndComeBack) {
    const struct {
        double days;
        const WCHAR* text;
    } cases[] = {
        {0.5, TEXT("12:00:00 PM")},
        {0, TEXT("12:00:00 AM")},
        {45000, TEXT("3/15/2023")},
        {45000.75, TEXT("3/15/2023 6:00:00 PM")},
        {45293.0 + 1.0 / 86400, TEXT("1/2/2024 12:00:01 AM")},
        {-1.25, TEXT("12/29/1899 6:00:00 AM")},
        {2958465, TEXT("12/31/9999")},
        {60, TEXT("2/28/1900")},
        {61, TEXT("3/1/1900")},
    };
    for (const auto& [days, text] : cases) {
        const Owned source(Text(text));
        EXPECT_EQ(Converted(Date(days), VT_BSTR), Shown(source.value));
        EXPECT_EQ(Converted(source.value, VT_DATE), Floating(days, 15)) << Shown(source.value);
    }
    const struct {
        const WCHAR* text;
        double days;
    } others[] = {
        {TEXT("2024-01-02"), 45293},
        {TEXT(" 2024-01-02 15:04:05 "), 45293 + (15 * 3600 + 4 * 60 + 5) / 86400.0},
        {TEXT("15:04"), (15 * 60 + 4) / 1440.0},
        {TEXT("2/29/2024"), 45351},
    };
    for (const auto& [text, days] : others) {
        const Owned source(Text(text));
        EXPECT_EQ(Converted(source.value, VT_DATE), Floating(days, 15)) << Shown(source.value);
    }
    for (const WCHAR* const text :
         {TEXT("2/30/2024"), TEXT("24:00"), TEXT("15:60"), TEXT("abc"), TEXT("1/2/2024 x")}) {
        const Owned source(Text(text));
        EXPECT_EQ(Converted(source.value, VT_DATE), "-") << Shown(source.value);
    }
    EXPECT_EQ(Converted(R8(2958466), VT_DATE), "over");
    EXPECT_EQ(Converted(R8(-657435), VT_DATE), "over");
    EXPECT_EQ(Converted(R8(-657434), VT_DATE), "-657434");
}

TEST(VariantChangeType, AlphaboolNamesTheBooleans) {
    for (const bool flag : {true, false}) {
        VARIANT source = Boolean(flag);
        Owned target;
        ASSERT_EQ(
            VariantChangeTypeEx(&target.value, &source, englishUnitedStates, VARIANT_ALPHABOOL, VT_BSTR),
            S_OK);
        EXPECT_EQ(Shown(target.value), flag ? "True" : "False");
    }
}

TEST(VariantChangeType, InPlaceAndOntoAValueThatOwnsSomething) {
    Owned text(Text(TEXT("12.5")));
    ASSERT_EQ(VariantChangeType(&text.value, &text.value, 0, VT_R8), S_OK);
    EXPECT_EQ(text.value.vt, VT_R8);
    EXPECT_EQ(text.value.dblVal, 12.5);
    ASSERT_EQ(VariantChangeType(&text.value, &text.value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(Shown(text.value), "12.5");

    Owned target(Text(TEXT("owned and to be freed")));
    VARIANT number = I4(7);
    ASSERT_EQ(VariantChangeType(&target.value, &number, 0, VT_I2), S_OK);
    EXPECT_EQ(target.value.iVal, 7);
}

TEST(VariantChangeType, AFailureLeavesTheTargetAsItWas) {
    Owned target(Text(TEXT("kept")));
    VARIANT source = Empty(VT_NULL);
    EXPECT_EQ(VariantChangeType(&target.value, &source, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Shown(target.value), "kept");
    EXPECT_EQ(VariantChangeType(&target.value, &target.value, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Shown(target.value), "kept");
}

TEST(VariantChangeType, ReferencesCountAsWhatTheyPointTo) {
    LONG number = 300;
    VARIANT reference = Make(VT_BYREF | VT_I4, [&](VARIANT& v) { v.plVal = &number; });
    EXPECT_EQ(Converted(reference, VT_BSTR), "300");
    EXPECT_EQ(Converted(reference, VT_I4), "300");
    EXPECT_EQ(Converted(reference, VT_UI1), "over");

    Owned inner(Text(TEXT("2.5")));
    const VARIANT indirect = Make(VT_BYREF | VT_VARIANT, [&](VARIANT& v) { v.pvarVal = &inner.value; });
    EXPECT_EQ(Converted(indirect, VT_R8), "2.5");
    const VARIANT text = Make(VT_BYREF | VT_BSTR, [&](VARIANT& v) { v.pbstrVal = &inner.value.bstrVal; });
    EXPECT_EQ(Converted(text, VT_R8), "2.5");
    EXPECT_EQ(Shown(inner.value), "2.5") << "what a reference points to is borrowed";
}

// An object with or without IDispatch, whose default property is a number.
class Fake final : public IDispatch {
  public:
    explicit Fake(bool automation) : automatic(automation) {}
    virtual ~Fake() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == IID_IUnknown || (automatic && iid == IID_IDispatch)) {
            ++count;
            *object = static_cast<IDispatch*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++count; }
    ULONG STDMETHODCALLTYPE Release() override { return --count; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        if (dispid != DISPID_VALUE || !(flags & DISPATCH_PROPERTYGET)) return DISP_E_MEMBERNOTFOUND;
        *result = I4(42);
        return S_OK;
    }

    ULONG count = 1;
    bool automatic;
};

TEST(VariantChangeType, ObjectsByQueryInterfaceAndByTheirDefaultProperty) {
    Fake automatic(true);
    Fake plain(false);
    const VARIANT dispatch = Make(VT_DISPATCH, [&](VARIANT& v) { v.pdispVal = &automatic; });
    const VARIANT unknown = Make(VT_UNKNOWN, [&](VARIANT& v) { v.punkVal = &automatic; });
    const VARIANT noDispatch = Make(VT_UNKNOWN, [&](VARIANT& v) { v.punkVal = &plain; });

    for (const auto& [source, type] : {std::pair{dispatch, VT_UNKNOWN}, std::pair{unknown, VT_DISPATCH},
                                       std::pair{dispatch, VT_DISPATCH}, std::pair{unknown, VT_UNKNOWN}}) {
        VARIANT from = source;
        Owned target;
        ASSERT_EQ(VariantChangeType(&target.value, &from, 0, static_cast<VARTYPE>(type)), S_OK);
        EXPECT_EQ(target.value.vt, type);
        EXPECT_EQ(target.value.punkVal, static_cast<IUnknown*>(&automatic));
        EXPECT_EQ(automatic.count, 2U);
    }
    EXPECT_EQ(automatic.count, 1U);

    // In place, the old reference goes with the new one that comes.
    VARIANT own = dispatch;
    automatic.AddRef();
    ASSERT_EQ(VariantChangeType(&own, &own, 0, VT_UNKNOWN), S_OK);
    EXPECT_EQ(automatic.count, 2U);
    VariantClear(&own);
    EXPECT_EQ(automatic.count, 1U);

    VARIANT from = noDispatch;
    Owned target;
    EXPECT_EQ(VariantChangeType(&target.value, &from, 0, VT_DISPATCH), E_NOINTERFACE);
    EXPECT_EQ(plain.count, 1U);

    EXPECT_EQ(Converted(dispatch, VT_R8), "42");
    EXPECT_EQ(Converted(dispatch, VT_BSTR), "42");
    EXPECT_EQ(Converted(unknown, VT_R8), "-");
    EXPECT_EQ(automatic.count, 1U);
    from = dispatch;
    EXPECT_TRUE(FAILED(VariantChangeType(&target.value, &from, VARIANT_NOVALUEPROP, VT_R8)));
}

TEST(VariantChangeType, NullObjects) {
    const VARIANT dispatch = Empty(VT_DISPATCH);
    const VARIANT unknown = Empty(VT_UNKNOWN);
    EXPECT_EQ(Converted(dispatch, VT_UNKNOWN), "type " + std::to_string(VT_UNKNOWN));
    EXPECT_EQ(Converted(unknown, VT_DISPATCH), "type " + std::to_string(VT_DISPATCH));
    EXPECT_EQ(Converted(dispatch, VT_I4), "hresult " + std::to_string(DISP_E_BADVARTYPE));
    EXPECT_EQ(Converted(unknown, VT_I4), "-");
}

}  // namespace
