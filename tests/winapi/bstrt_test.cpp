// _bstr_t: who owns what.
#include <windows.h>
#include <comdef.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

std::basic_string<WCHAR> Units(const _bstr_t& text) {
    return {static_cast<const WCHAR*>(text), text.length()};
}

TEST(BstrT, IsNullUntilItHoldsSomething) {
    const _bstr_t none;
    const _bstr_t ofNull(static_cast<const WCHAR*>(nullptr));
    const _bstr_t copy(none);
    for (const _bstr_t* text : {&none, &ofNull, &copy}) {
        EXPECT_TRUE(!*text);
        EXPECT_EQ(text->length(), 0u);
        EXPECT_EQ(static_cast<const WCHAR*>(*text), nullptr);
    }
    const _bstr_t empty(TEXT(""));
    EXPECT_FALSE(!empty);
    EXPECT_EQ(empty.length(), 0u);
}

TEST(BstrT, TakesOverOrCopiesABstrWhole) {
    const BSTR source = SysAllocStringLen(TEXT("a\0b"), 3);
    const _bstr_t copy(source, true);
    EXPECT_NE(static_cast<const WCHAR*>(copy), source);
    EXPECT_EQ(Units(copy), std::basic_string<WCHAR>(TEXT("a\0b"), 3));
    const _bstr_t owner(source, false);
    EXPECT_EQ(static_cast<const WCHAR*>(owner), source);

    const BSTR handedOut = owner.copy();
    EXPECT_NE(handedOut, source);
    EXPECT_EQ(SysStringLen(handedOut), 3u);
    SysFreeString(handedOut);
    EXPECT_EQ(owner.copy(false), source);
}

TEST(BstrT, CopiesLiveOnWithoutEachOther) {
    _bstr_t text(TEXT("first"));
    _bstr_t copy = text;
    text = TEXT("second");
    EXPECT_EQ(Units(copy), TEXT("first"));
    EXPECT_EQ(Units(text), TEXT("second"));
    copy = text;
    EXPECT_EQ(Units(copy), TEXT("second"));
    const _bstr_t& itself = copy;
    copy = itself;
    EXPECT_EQ(Units(copy), TEXT("second"));

    const BSTR detached = copy.Detach();
    EXPECT_TRUE(!copy);
    EXPECT_EQ(SysStringLen(detached), 6u);
    text.Attach(detached);
    EXPECT_EQ(text.GetBSTR(), detached);
}

}  // namespace
