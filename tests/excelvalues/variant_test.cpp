#include "excelvalues/xxloper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <algorithm>
#include <cmath>
#include <functional>

namespace {

VARIANT Variant(VARTYPE type, const std::function<void(VARIANT&)>& fill = {}) {
    VARIANT v;
    std::memset(&v, 0xA5, sizeof v);  // what a type doesn't use is not to be looked at
    v.vt = type;
    if (fill) fill(v);
    return v;
}

TEST(FromVariant, Integers) {
    struct Case {
        VARIANT v;
        int number;
    };
    const Case cases[] = {
        {Variant(VT_I1, [](VARIANT& v) { v.bVal = 0x80; }), -128},
        {Variant(VT_UI1, [](VARIANT& v) { v.bVal = 0x80; }), 128},
        {Variant(VT_I2, [](VARIANT& v) { v.iVal = -1; }), -1},
        {Variant(VT_UI2, [](VARIANT& v) { v.uiVal = 0xFFFF; }), 65535},
        {Variant(VT_I4, [](VARIANT& v) { v.lVal = -2147483647 - 1; }), -2147483647 - 1},
        {Variant(VT_UI4, [](VARIANT& v) { v.ulVal = 0xFFFFFFFF; }), -1},
        {Variant(VT_INT, [](VARIANT& v) { v.intVal = 2147483647; }), 2147483647},
        {Variant(VT_UINT, [](VARIANT& v) { v.uintVal = 0x80000000; }), -2147483647 - 1},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.v.vt);
        const XXloperPtr value = XXloperFromVariant(each.v);
        EXPECT_EQ(value->xltype, xltypeInt);
        EXPECT_EQ(value->val.w, each.number);
    }
}

TEST(FromVariant, Numbers) {
    const auto number = [](const VARIANT& v) {
        const XXloperPtr value = XXloperFromVariant(v);
        EXPECT_EQ(value->xltype, xltypeNum);
        return value->val.num;
    };
    EXPECT_EQ(number(Variant(VT_R4, [](VARIANT& v) { v.fltVal = 0.1F; })), static_cast<double>(0.1F));
    EXPECT_EQ(number(Variant(VT_R8, [](VARIANT& v) { v.dblVal = -1e300; })), -1e300);
    EXPECT_EQ(number(Variant(VT_DATE, [](VARIANT& v) { v.date = 45000.25; })), 45000.25);
    // An error coded in the number is decoded, an infinity is not.
    const XXloperPtr error = XXloperFromVariant(Variant(VT_R8, [](VARIANT& v) { v.dblVal = ErrorNaN(6); }));
    EXPECT_EQ(error->xltype, xltypeErr);
    EXPECT_EQ(error->val.err, xlerrNA);
    EXPECT_EQ(number(Variant(VT_R8, [](VARIANT& v) { v.dblVal = HUGE_VAL; })), HUGE_VAL);
}

TEST(FromVariant, EmptinessTruthAndErrors) {
    EXPECT_EQ(XXloperFromVariant(Variant(VT_EMPTY))->xltype, xltypeNil);
    EXPECT_EQ(XXloperFromVariant(Variant(VT_NULL))->xltype, xltypeNil);
    for (const short truth : {short{0}, short{1}, short{2}, short{-1}}) {
        const XXloperPtr value = XXloperFromVariant(Variant(VT_BOOL, [&](VARIANT& v) { v.boolVal = truth; }));
        EXPECT_EQ(value->xltype, xltypeBool);
        EXPECT_EQ(value->val.xbool, truth != 0 ? 1 : 0);
    }
    struct Case {
        std::uint32_t scode;
        int error;
    };
    for (const Case& each :
         {Case{0x800A07DF, 2015}, Case{0x80020004, 4}, Case{0x0000FFFF, 65535}, Case{0, 0}}) {
        const XXloperPtr value = XXloperFromVariant(
            Variant(VT_ERROR, [&](VARIANT& v) { v.scode = static_cast<SCODE>(each.scode); }));
        EXPECT_EQ(value->xltype, xltypeErr);
        EXPECT_EQ(value->val.err, each.error);
    }
}

TEST(FromVariant, Texts) {
    const auto text = [](const VARIANT& v) {
        const XXloperPtr value = XXloperFromVariant(v);
        EXPECT_EQ(value->xltype, xltypeStr);
        return StdWString(value->val.str + 1, value->val.str[0]);
    };
    const auto bstr = [&](const StdWString& content) {
        const BSTR made = SysAllocStringLen(content.data(), static_cast<UINT>(content.size()));
        const StdWString read = text(Variant(VT_BSTR, [&](VARIANT& v) { v.bstrVal = made; }));
        SysFreeString(made);
        return read;
    };
    EXPECT_EQ(bstr(TEXT("text")), TEXT("text"));
    EXPECT_EQ(bstr(StdWString(TEXT("a\0b"), 3)), TEXT("a"));
    EXPECT_EQ(bstr(StdWString(40000, u'x')), StdWString(32767, u'x'));
    EXPECT_EQ(text(Variant(VT_LPSTR, [](VARIANT& v) { v.byref = const_cast<char*>("narrow"); })),
              TEXT("narrow"));
    EXPECT_EQ(text(Variant(VT_LPWSTR, [](VARIANT& v) { v.byref = const_cast<WCHAR*>(TEXT("wide")); })),
              TEXT("wide"));
    for (const VARTYPE type : {VT_BSTR, VT_LPSTR, VT_LPWSTR}) {
        EXPECT_EQ(text(Variant(type, [](VARIANT& v) { v.byref = nullptr; })), TEXT("")) << type;
    }
}

TEST(FromVariant, EverythingElseIsVisualBasicsValueError) {
    const VARTYPE known[] = {VT_EMPTY, VT_NULL, VT_I1,    VT_I2,   VT_UI1,   VT_UI2,
                             VT_I4,    VT_UI4,  VT_INT,   VT_UINT, VT_R4,    VT_R8,
                             VT_DATE,  VT_BOOL, VT_ERROR, VT_BSTR, VT_LPSTR, VT_LPWSTR};
    for (const int flags : {0, 0x1000, 0x2000, 0x4000, 0x8000}) {  // vector, array, by reference, reserved
        for (int type = 0; type < 0x1000; ++type) {
            const auto whole = static_cast<VARTYPE>(type | flags);
            if (std::find(std::begin(known), std::end(known), whole) != std::end(known)) continue;
            const XXloperPtr value = XXloperFromVariant(Variant(whole));
            ASSERT_EQ(value->xltype, xltypeErr) << whole;
            ASSERT_EQ(value->val.err, 2015) << whole;
        }
    }
}

}  // namespace
