// BSTRs in both layouts, to and from the library's strings.
#include "automation/arraytest.h"

#include <cstring>
#include <memory>

namespace {

using namespace std::string_literals;

struct Free {
    void operator()(BSTR text) const { SysFreeString(text); }
};
using Bstr = std::unique_ptr<WCHAR, Free>;

StdWString operator""_w(const char* ascii, std::size_t length) {
    return {ascii, ascii + length};
}

TEST(BstrText, EndsWhereTheCountOrAZeroSays) {
    const struct {
        const char* what;
        std::string bytes;
        StdWString asWide;
        StdWString asAnsi;
    } rows[] = {
        {"one byte is no unit", "a", {}, "a"_w},
        {"seven bytes are three units", Wide("abcd"_w).substr(0, 7), "abc"_w, "a"_w},
        {"a zero unit ends wide text", Wide("ab\0cd"_w), "ab"_w, "a"_w},
        {"a zero byte ends ANSI text", "ab\0cd"s, {0x6261, 0x6300}, "ab"_w},
        {"a zero unit at once", "\0\0ab"s, {}, {}},
        {"page 1252", "\x80\xE9", {0xE980}, {0x20AC, 0x00E9}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Bstr text(SysAllocStringByteLen(row.bytes.data(), static_cast<UINT>(row.bytes.size())));
        for (const bool ansiBytes : {false, true}) {
            const StdWString& expected = ansiBytes ? row.asAnsi : row.asWide;
            const CStringW wide = CStringWFromBstr(text.get(), ansiBytes);
            EXPECT_EQ(wide.GetLength(), static_cast<int>(expected.size()));
            EXPECT_EQ(wide, expected.c_str());
            EXPECT_EQ(StdWStringFromBstr(text.get(), ansiBytes), expected);
            EXPECT_EQ(CStringAFromBstr(text.get(), ansiBytes), CStringAFromWide(wide));
            EXPECT_EQ(StdStringFromBstr(text.get(), ansiBytes), CStringAFromWide(wide).GetString());
        }
        EXPECT_EQ(BytesOf(text.get()), row.bytes) << "reading leaves the BSTR alone";
    }
    const Bstr chinese(SysAllocString(TEXT("\x4E00 caf\xE9 \x4E8C")));
    EXPECT_EQ(StdStringFromBstr(chinese.get(), false), "? caf\xE9 ?");
}

TEST(BstrText, OfNullAndOfANegativeCountIsEmpty) {
    const Bstr text(SysAllocString(TEXT("abcdef")));
    for (const bool ansiBytes : {false, true}) {
        EXPECT_TRUE(CStringWFromBstr(nullptr, ansiBytes).IsEmpty());
        EXPECT_TRUE(StdWStringFromBstr(nullptr, ansiBytes).empty());
        for (const std::int32_t count : {-1, INT32_MIN, 12}) {
            std::memcpy(reinterpret_cast<char*>(text.get()) - sizeof count, &count, sizeof count);
            EXPECT_EQ(CStringWFromBstr(text.get(), ansiBytes).IsEmpty(), count < 0) << count;
        }
    }
}

TEST(AssignBstr, StoresEitherLayoutFromEitherWidth) {
    BSTR slot = nullptr;
    const std::pair<std::string, StdWString> texts[] = {
        {"", {}}, {"a", "a"_w}, {"caf\xE9 \x80", {'c', 'a', 'f', 0xE9, ' ', 0x20AC}}};
    for (const auto& [narrow, wide] : texts) {
        for (const bool ansiBytes : {true, false}) {
            const std::string expected = ansiBytes ? narrow : Wide(wide);
            AssignBstrA(slot, ansiBytes, narrow.c_str());
            EXPECT_EQ(BytesOf(slot), expected);
            AssignBstrW(slot, ansiBytes, wide);
            EXPECT_EQ(BytesOf(slot), expected);
            ASSERT_NE(slot, nullptr);
        }
        EXPECT_EQ(BytesOf(Bstr(MakeBstr(narrow.c_str())).get()), Wide(wide));
        EXPECT_EQ(BytesOf(Bstr(MakeBstr(wide.c_str())).get()), Wide(wide));
    }
    AssignBstrW(slot, true, TEXT("\x4E00\x4E8C."));
    EXPECT_EQ(BytesOf(slot), "??.");
    AssignBstrW(slot, false, "ab\0cd"_w);
    EXPECT_EQ(BytesOf(slot), Wide("ab"_w));
    SysFreeString(slot);
}

TEST(AssignBstr, OfNullTextIsRaisedWithTheOldBstrGone) {
    const WCHAR* const noWide = nullptr;
    const char* const noNarrow = nullptr;
    for (const bool ansiBytes : {true, false}) {
        BSTR slot = SysAllocString(TEXT("old"));
        EXPECT_EQ(Raised([&] { AssignBstrA(slot, ansiBytes, noNarrow); }), "VexOutOfMemory AssignBstrA 2635");
        slot = SysAllocString(TEXT("old"));
        EXPECT_EQ(Raised([&] { AssignBstrW(slot, ansiBytes, noWide); }), "VexOutOfMemory AssignBstrW 2635");
        EXPECT_EQ(slot, nullptr);
    }
    EXPECT_EQ(Raised([&] { Bstr(MakeBstr(noWide)); }), "VexOutOfMemory MakeBstr 2635");
    EXPECT_EQ(Raised([&] { Bstr(MakeBstr(noNarrow)); }), "VexOutOfMemory MakeBstr 2635");
}

TEST(Variants, HoldABstrOfTheirOwnOrAreMissing) {
    for (const WCHAR* const text : {TEXT("text \x4E00"), TEXT("")}) {
        VARIANT variant = VariantFromCStringW(text);
        EXPECT_EQ(variant.vt, VT_BSTR);
        EXPECT_EQ(CStringWFromBstr(variant.bstrVal, false), text);
        EXPECT_FALSE(IsMissingVariant(&variant));
        VariantClear(&variant);
    }
    EXPECT_TRUE(IsMissingVariant(nullptr));
    VARIANT variant{};
    for (const SCODE code : {SCODE{DISP_E_PARAMNOTFOUND}, SCODE{DISP_E_TYPEMISMATCH}}) {
        for (const int type : {int{VT_ERROR}, int{VT_EMPTY}, VT_BYREF | VT_ERROR}) {
            variant.vt = static_cast<VARTYPE>(type);
            variant.scode = code;
            EXPECT_EQ(IsMissingVariant(&variant), type == VT_ERROR && code == DISP_E_PARAMNOTFOUND);
        }
    }
}

}  // namespace
