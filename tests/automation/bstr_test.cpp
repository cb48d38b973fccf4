// BSTRs in both layouts, to and from the library's strings.
#include "automation/automation.h"
#include "errors/vex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

struct Free {
    void operator()(BSTR text) const { SysFreeString(text); }
};
using Bstr = std::unique_ptr<WCHAR, Free>;

Bstr OfBytes(const std::string& bytes) {
    return Bstr(SysAllocStringByteLen(bytes.data(), static_cast<UINT>(bytes.size())));
}

std::string BytesOf(BSTR text) {
    return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
}

// The bytes of UTF-16 units.
std::string Wide(const StdWString& units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(WCHAR)};
}

StdWString operator""_w(const char* ascii, std::size_t length) {
    return {ascii, ascii + length};
}

void ExpectOutOfMemory(const char* function, const std::function<void()>& attempt) {
    try {
        attempt();
        ADD_FAILURE() << "nothing was raised";
    } catch (VexException record) {
        EXPECT_EQ(record.key, TEXT("VexOutOfMemory"));
        EXPECT_EQ(record.function, function);
        EXPECT_EQ(record.code, VexCode::BstrAllocation);
        EXPECT_TRUE(record.args.empty());
    }
}

// The bytes behind a BSTR, and its text under each reading.
struct Row {
    const char* what;
    std::string bytes;
    StdWString asWide;
    StdWString asAnsi;
};

std::vector<Row> Rows() {
    return {
        {"no bytes", "", {}, {}},
        {"one byte is no unit", "a", {}, "a"_w},
        {"wide text", Wide("hello"_w), "hello"_w, "h"_w},
        {"seven bytes are three units", Wide("abcd"_w).substr(0, 7), "abc"_w, "a"_w},
        {"a zero unit ends wide text", Wide("ab\0cd"_w), "ab"_w, "a"_w},
        {"a zero byte ends ANSI text", "ab\0cd"s, {0x6261, 0x6300}, "ab"_w},
        {"five bytes are two units", "abcde", {0x6261, 0x6463}, "abcde"_w},
        {"a zero unit at once", "\0\0ab"s, {}, {}},
        {"page 1252", "\x80\xE9", {0xE980}, {0x20AC, 0x00E9}},
        {"surrogates are units", Wide({0xD83D, 0xDE00, 0xD800}), {0xD83D, 0xDE00, 0xD800}, {0x3D, 0xD8, 0}},
    };
}

TEST(BstrText, EndsWhereTheCountOrAZeroSays) {
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.what);
        const Bstr text = OfBytes(row.bytes);
        const CStringW wide = CStringWFromBstr(text.get(), false);
        EXPECT_EQ(wide, row.asWide.c_str());
        EXPECT_EQ(wide.GetLength(), static_cast<int>(row.asWide.size()));
        EXPECT_EQ(StdWStringFromBstr(text.get(), false), row.asWide);
        EXPECT_EQ(CStringAFromBstr(text.get(), false), CStringAFromWide(wide));
        EXPECT_EQ(StdStringFromBstr(text.get(), false), CStringAFromWide(wide).GetString());

        if (row.bytes == Wide({0xD83D, 0xDE00, 0xD800})) continue;
        const CStringW ansi = CStringWFromBstr(text.get(), true);
        EXPECT_EQ(ansi, row.asAnsi.c_str());
        EXPECT_EQ(ansi.GetLength(), static_cast<int>(row.asAnsi.size()));
        EXPECT_EQ(StdWStringFromBstr(text.get(), true), row.asAnsi);
        EXPECT_EQ(StdStringFromBstr(text.get(), true), row.bytes.c_str());
        EXPECT_EQ(CStringAFromBstr(text.get(), true), row.bytes.c_str());
        EXPECT_EQ(BytesOf(text.get()), row.bytes) << "reading leaves the BSTR alone";
    }
}

TEST(BstrText, OfNullIsEmptyInEveryForm) {
    for (const bool ansiBytes : {false, true}) {
        EXPECT_TRUE(CStringWFromBstr(nullptr, ansiBytes).IsEmpty());
        EXPECT_TRUE(CStringAFromBstr(nullptr, ansiBytes).IsEmpty());
        EXPECT_TRUE(StdStringFromBstr(nullptr, ansiBytes).empty());
        EXPECT_TRUE(StdWStringFromBstr(nullptr, ansiBytes).empty());
    }
}

TEST(BstrText, WithACountThatIsNegativeIsEmpty) {
    const Bstr text = OfBytes("abcdef");
    const std::int32_t counts[] = {-1, -2, std::numeric_limits<std::int32_t>::min(), 6};
    for (const std::int32_t count : counts) {
        std::memcpy(reinterpret_cast<char*>(text.get()) - sizeof count, &count, sizeof count);
        EXPECT_EQ(CStringWFromBstr(text.get(), false).GetLength(), count > 0 ? 3 : 0);
        EXPECT_EQ(CStringWFromBstr(text.get(), true).GetLength(), count > 0 ? 6 : 0);
    }
}

TEST(BstrText, CharactersThatTheCodePageLacksAreReplaced) {
    const Bstr text(SysAllocString(TEXT("\x4E00 caf\xE9 \x4E8C")));
    EXPECT_EQ(CStringAFromBstr(text.get(), false), "? caf\xE9 ?");
    EXPECT_EQ(StdStringFromBstr(text.get(), false), "? caf\xE9 ?");
}

TEST(AssignBstr, StoresEitherLayoutFromEitherWidth) {
    struct Case {
        const char* narrow;
        const WCHAR* wide;
        std::string ansiBytes;
        std::string unitBytes;
    };
    const Case cases[] = {
        {"", TEXT(""), "", ""},
        {"a", TEXT("a"), "a", Wide("a"_w)},
        {"caf\xE9 \x80", TEXT("caf\xE9 \x20AC"), "caf\xE9 \x80", Wide({'c', 'a', 'f', 0xE9, ' ', 0x20AC})},
    };
    BSTR slot = nullptr;
    for (const Case& one : cases) {
        for (const bool ansiBytes : {true, false}) {
            const std::string& expected = ansiBytes ? one.ansiBytes : one.unitBytes;
            AssignBstrA(slot, ansiBytes, one.narrow);
            ASSERT_NE(slot, nullptr);
            EXPECT_EQ(BytesOf(slot), expected);
            AssignBstrW(slot, ansiBytes, one.wide);
            ASSERT_NE(slot, nullptr);
            EXPECT_EQ(BytesOf(slot), expected);
            AssignBstrW(slot, ansiBytes, StdWString(one.wide));
            EXPECT_EQ(BytesOf(slot), expected);
        }
        for (const Bstr& made : {Bstr(MakeBstr(one.narrow)), Bstr(MakeBstr(one.wide))}) {
            ASSERT_NE(made, nullptr);
            EXPECT_EQ(BytesOf(made.get()), one.unitBytes);
        }
    }
    SysFreeString(slot);
}

TEST(AssignBstr, StoresDefaultCharactersForWhatTheCodePageLacks) {
    BSTR slot = nullptr;
    AssignBstrW(slot, true, TEXT("\x4E00\x4E8C."));
    EXPECT_EQ(BytesOf(slot), "??.");
    SysFreeString(slot);
}

TEST(AssignBstr, TakesTextUpToItsFirstZero) {
    BSTR slot = nullptr;
    AssignBstrW(slot, false, StdWString("ab\0cd"_w));
    EXPECT_EQ(BytesOf(slot), Wide("ab"_w));
    SysFreeString(slot);
}

TEST(AssignBstr, OfNullTextIsRaisedWithTheOldBstrGone) {
    for (const bool ansiBytes : {true, false}) {
        BSTR slot = SysAllocString(TEXT("old"));
        ExpectOutOfMemory("AssignBstrA", [&] { AssignBstrA(slot, ansiBytes, nullptr); });
        EXPECT_EQ(slot, nullptr);
        slot = SysAllocString(TEXT("old"));
        ExpectOutOfMemory("AssignBstrW",
                          [&] { AssignBstrW(slot, ansiBytes, static_cast<const WCHAR*>(nullptr)); });
        EXPECT_EQ(slot, nullptr);
    }
    ExpectOutOfMemory("MakeBstr", [] { Bstr(MakeBstr(static_cast<const WCHAR*>(nullptr))); });
    ExpectOutOfMemory("MakeBstr", [] { Bstr(MakeBstr(static_cast<const char*>(nullptr))); });
}

TEST(BstrText, ComesBackAsItWentIn) {
    std::mt19937 random(20241);
    BSTR slot = nullptr;
    for (int round = 0; round < 2000; ++round) {
        StdWString text(random() % 40, WCHAR{0});
        for (WCHAR& unit : text) unit = static_cast<WCHAR>(1 + random() % 0xFFFF);
        AssignBstrW(slot, false, text);
        ASSERT_EQ(StdWStringFromBstr(slot, false), text);

        std::string ansi(random() % 40, ' ');
        for (char& byte : ansi) byte = static_cast<char>(' ' + random() % 95);
        AssignBstrA(slot, true, ansi.c_str());
        ASSERT_EQ(StdStringFromBstr(slot, true), ansi);
        AssignBstrA(slot, false, ansi.c_str());
        ASSERT_EQ(StdStringFromBstr(slot, false), ansi);
    }
    SysFreeString(slot);
}

TEST(VariantText, HoldsABstrOfItsOwn) {
    const CStringW text = TEXT("text \x4E00");
    VARIANT variant = VariantFromCStringW(text);
    EXPECT_EQ(variant.vt, VT_BSTR);
    EXPECT_EQ(CStringWFromBstr(variant.bstrVal, false), text);
    VariantClear(&variant);
    variant = VariantFromCStringW(CStringW());
    EXPECT_NE(variant.bstrVal, nullptr);
    EXPECT_EQ(SysStringByteLen(variant.bstrVal), 0u);
    VariantClear(&variant);
}

TEST(MissingVariant, IsNullOrTheOneErrorCode) {
    EXPECT_TRUE(IsMissingVariant(nullptr));
    VARIANT variant;
    VariantInit(&variant);
    EXPECT_FALSE(IsMissingVariant(&variant));
    variant.vt = VT_ERROR;
    variant.scode = DISP_E_PARAMNOTFOUND;
    EXPECT_TRUE(IsMissingVariant(&variant));
    for (const SCODE other : {SCODE{S_OK}, SCODE{DISP_E_TYPEMISMATCH}, SCODE{2015}}) {
        variant.scode = other;
        EXPECT_FALSE(IsMissingVariant(&variant));
    }
    variant.scode = DISP_E_PARAMNOTFOUND;
    for (const VARTYPE type : {VT_EMPTY, VT_I4, VT_NULL}) {
        variant.vt = type;
        EXPECT_FALSE(IsMissingVariant(&variant));
    }
    variant.vt = VT_BYREF | VT_ERROR;
    EXPECT_FALSE(IsMissingVariant(&variant));
}

}  // namespace
