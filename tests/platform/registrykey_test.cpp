#include "platform/registrykey.h"

#include "errors/vex.h"
#include "platform/securityattributes.h"
#include "support/allocations.h"
#include "support/raised.h"
#include "support/registry.h"

#include <windows.h>

#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr const WCHAR* path = TEXT("Software\\Kestrolumen");

RegistryKey Open(REGSAM access = KEY_ALL_ACCESS, const WCHAR* subkey = path, HKEY root = HKEY_CURRENT_USER,
                 std::uint32_t view = 1) {
    return RegistryKey(view, root, subkey, access, NullSecurityAttributes().get());
}

class RegistryKeys : public testing::Test {
  protected:
    void Set(const WCHAR* name, DWORD kind, std::string_view data) const {
        const auto size = static_cast<DWORD>(data.size());
        ASSERT_EQ(RegSetValueExW(key.key(), name, 0, kind, reinterpret_cast<const BYTE*>(data.data()), size),
                  0);
    }

    support::FreshRegistry registry;
    RegistryKey key = Open();
};

// What a call raises, without the last error in the result's text, which the registry's calls need not set,
// and with "@" for the test key's path.
template <typename Call>
std::string Raised(Call call) {
    static const std::regex lastError(", err=-?\\d+"),
        ownPath("HKEY_CURRENT_USER\\\\Software\\\\Kestrolumen>");
    const std::string text = std::regex_replace(support::Raised(call), lastError, "");
    return std::regex_replace(text, ownPath, "@>");
}

std::string Units(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

TEST_F(RegistryKeys, AreMadeOnlyForWritingAndTellTheirNames) {
    EXPECT_EQ(key.disposition(), DWORD{REG_CREATED_NEW_KEY});
    EXPECT_EQ(Open().disposition(), DWORD{REG_OPENED_EXISTING_KEY});
    EXPECT_EQ(key.KeyName(0), TEXT("HKEY_CURRENT_USER\\Software\\Kestrolumen"));
    EXPECT_EQ(key.KeyName(1), path);
    EXPECT_EQ(key.KeyName(2), TEXT("Kestrolumen"));
    EXPECT_EQ(Open(KEY_READ, TEXT("Software")).KeyName(9), TEXT("Software"));
    EXPECT_NE(key.LastWriteTime().dwHighDateTime, 0U);
    Open(KEY_READ | KEY_WOW64_32KEY, path, HKEY_CURRENT_USER, 2);  // both views at once would be refused

    const auto bogus = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x7FFFFFF0));
    const WCHAR* const none = TEXT("Software\\None");
    EXPECT_EQ(
        Raised([&] { Open(KEY_READ, none); }),
        "VexRegKeyOpenFailed RegistryKey::RegistryKey 2602 <(rc=2)> <HKEY_CURRENT_USER\\Software\\None>");
    EXPECT_NE(Raised([&] { Open(KEY_SET_VALUE, none); }), "");
    EXPECT_TRUE(RegistryKey::Exists(HKEY_CURRENT_USER, path) &&
                !RegistryKey::Exists(HKEY_CURRENT_USER, none));
    EXPECT_EQ(Raised([&] { Open(KEY_WRITE, TEXT("a"), bogus); }),
              "VexRegKeyCreateFailed RegistryKey::RegistryKey 2603 <(rc=6)> <\\a>");
}

TEST_F(RegistryKeys, ValuesOfAllKindsComeBack) {
    key.ValueWrite("int", -7);
    key.ValueWrite(TEXT("unsigned"), 0xFFFFFFFFU);
    key.ValueWrite("int64", INT64_MIN + 1);
    key.ValueWrite("narrow", CStringA("caf\xE9"));
    key.ValueWrite("std", std::string("s"));
    key.ValueWrite("literal", "caf\xE9");
    key.ValueWrite(TEXT("wide literal"), TEXT("\x20AC"));
    key.ValueWrite(nullptr, StdWString(TEXT("default")));
    key.ValueWrite("bytes", RegistryKey::Bytes{1, 0, 2});
    key.ValueWrite("none", RegistryKey::Bytes{});
    DWORD number = 0;
    key.ValueRead("UNSIGNED", number);
    EXPECT_EQ(number, 0xFFFFFFFFU);
    EXPECT_EQ(key.ValueReadInt(TEXT("int")), -7);
    EXPECT_EQ(key.ValueReadInt64("int64"), INT64_MIN + 1);
    EXPECT_EQ(key.ValueReadStringA("narrow"), "caf\xE9");
    EXPECT_EQ(key.ValueReadStdString(TEXT("std")), "s");
    EXPECT_EQ(key.ValueReadStringW("literal"), TEXT("caf\x00E9"));
    EXPECT_EQ(key.ValueReadStringW("wide literal"), TEXT("\x20AC"));
    EXPECT_EQ(key.ValueReadStdWString(nullptr), TEXT("default"));
    EXPECT_EQ(key.ValueReadBinary("bytes"), (RegistryKey::Bytes{1, 0, 2}));
    EXPECT_TRUE(key.ValueReadBinary("none").empty());
    EXPECT_EQ(key.ValueNames(REG_DWORD).size(), 2U);
    EXPECT_EQ(key.ValueNames(RegistryKey::anyKind).size(), 10U);
    key.ValueDelete("none");
    EXPECT_TRUE(key.ValueExists("bytes") && !key.ValueExists("none"));
    EXPECT_EQ(key.ValueReadStringW("none"), TEXT("")) << "missing, and swallowed";
    EXPECT_EQ(Raised([&] { key.ValueDelete(TEXT("none")); }),
              "VexRegValueDeleteFailed RegistryKey::ValueDelete 2606 <(rc=2)> <none> <@>");
    RegistryKey reader = Open(KEY_READ);
    EXPECT_EQ(Raised([&] { reader.ValueWrite(nullptr, 1); }),
              "VexRegValueWriteFailed RegistryKey::ValueWrite 2605 <(rc=5)> <> <@>");
}

TEST_F(RegistryKeys, TextIsReadWhateverItsEndAndItsLength) {
    const support::EnvironmentVariable variable("KESTROLUMEN_TEST", "value");
    const std::u16string longText(4000, u'y');
    const struct {
        DWORD kind;
        std::string data;
        std::u16string text;
    } rows[] = {
        {REG_SZ, "", u""},
        {REG_SZ, Units(u"ab"), u"ab"},  // no terminator
        {REG_SZ, Units(u"ab") + "c", u"abc"},
        {REG_SZ, Units({u"a\0b", 4}), u"a"},
        {REG_SZ, Units(longText.substr(0, 512)), longText.substr(0, 512)},
        {REG_SZ, Units(longText) + "y", longText + u"y"},
        {REG_EXPAND_SZ, Units(longText + u"% 1%%KESTROLUMEN_TEST%%No%%"), longText + u"% 1%value%No%%"},
    };
    for (const auto& row : rows) {
        Set(TEXT("text"), row.kind, row.data);
        const CStringW text = key.ValueReadStringW("text");
        EXPECT_TRUE(std::equal(row.text.begin(), row.text.end(), text.GetString(),
                               text.GetString() + text.GetLength()));
    }
    std::vector<CStringW> list = {TEXT("there before")};
    for (const std::u16string& data :
         {std::u16string(u"one\0two\0\0three\0\0", 16), std::u16string(), longText}) {
        Set(TEXT("list"), REG_MULTI_SZ, Units(data));
        key.ValueRead("list", list);
    }
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[2], TEXT("two"));
    EXPECT_EQ(list[3].GetLength(), 4000);
}

TEST_F(RegistryKeys, WrongKindsAndSizesRaiseAndLeaveTheDestinationAlone) {
    const struct {
        const char* name;
        DWORD kind;
        std::string data;
        std::vector<int> codes;  // of reading a DWORD, text, a list, bytes and a QWORD; 0: none
    } rows[] = {
        {"dword", REG_DWORD, "1234", {0, 2609, 2610, 2859, 2871}},
        {"qword", REG_QWORD, "12345678", {2604, 2609, 2610, 2859, 0}},
        {"text", REG_SZ, Units(u"7"), {2608, 0, 2610, 2859, 2871}},
        {"more", REG_EXPAND_SZ, Units(u"12345"), {2604, 0, 2610, 2859, 2604}},
        {"list", REG_MULTI_SZ, std::string(2000, 'l'), {2604, 2604, 0, 2859, 2604}},
        {"bytes", REG_BINARY, "123", {2608, 2609, 2610, 0, 2871}},
        {"many", REG_BINARY, std::string(1026, 'b'), {2604, 2604, 2604, 0, 2604}},
        {"none", REG_NONE, "", {2604, 2604, 2604, 2604, 2604}},
    };
    for (const auto& row : rows) {
        if (row.kind != REG_NONE) Set(CStringW(row.name), row.kind, row.data);
        int number = 42;
        CStringW text = TEXT("42");
        std::vector<CStringW> list = {text};
        RegistryKey::Bytes bytes = {42};
        const std::string raised[] = {
            Raised([&] { key.ValueRead(row.name, number); }),
            Raised([&] { key.ValueRead(row.name, text); }),
            Raised([&] { key.ValueRead(row.name, list); }),
            Raised([&] { key.ValueRead(row.name, bytes); }),
            Raised([&] { static_cast<void>(key.ValueReadInt64(row.name)); }),
        };
        const bool changed[] = {number != 42, text != TEXT("42"), list.size() != 1, bytes.size() != 1,
                                row.codes[4] == 0};
        for (std::size_t i = 0; i < 5; ++i) {
            std::string expected = std::string("VexRegValueReadFailed RegistryKey::ValueRead") +
                                   (i == 4 ? "Int64 " : " ") + std::to_string(row.codes[i]);
            if (row.codes[i] == 2604) expected += row.kind == REG_NONE ? " <(rc=2)>" : " <(rc=234)>";
            EXPECT_EQ(raised[i], row.codes[i] == 0 ? "" : expected + " <" + row.name + "> <@>");
            EXPECT_EQ(changed[i], row.codes[i] == 0);
        }
    }
}

TEST_F(RegistryKeys, WalksGoDepthFirstAndCloseWhatTheyOpen) {
    for (const WCHAR* subkey : {TEXT("\\b\\x\\y"), TEXT("\\a"), TEXT("\\b\\w")}) {
        Open(KEY_WRITE, CStringW(path) + subkey);
    }
    const std::size_t handles = support::OpenHandles();
    static std::string seen;
    const auto walk = [](RegistryKey& top, bool includeSelf, bool recursive) {
        seen.clear();
        top.SubkeysIterate(
            includeSelf, recursive, 77, [](std::int32_t depth, RegistryKey* found, ULONG_PTR context) {
                seen += context != 77 ? "?"
                                      : std::to_string(depth) + CStringA(found->KeyName(2)).GetString() + " ";
            });
        return seen;
    };
    EXPECT_EQ(walk(key, true, false), "0Kestrolumen 1a 1b ");
    EXPECT_EQ(walk(key, false, true), "1a 1b 2w 2x 3y ");
    {
        RegistryKey root = Open(KEY_READ, nullptr), leaf = Open(KEY_READ, CStringW(path) + TEXT("\\a"));
        EXPECT_EQ(walk(root, false, false), "1Software ");
        EXPECT_EQ(walk(leaf, true, true), "0a ");
    }
    EXPECT_EQ(support::OpenHandles(), handles);
    RegDeleteTreeW(HKEY_CURRENT_USER, path);
    EXPECT_EQ(Raised([&] { walk(key, false, true); }),
              "VexRegKeyEnumFailed RegistryKey::SubkeysIteratePrivate 2607 <(rc=1018)> <@>");
    EXPECT_TRUE(key.ValueNames(RegistryKey::anyKind).empty());
    EXPECT_EQ(key.LastWriteTime().dwHighDateTime, 0U);
}

TEST_F(RegistryKeys, WithoutMemoryNothingIsLostOrLeftOpen) {
    const CStringW before = TEXT("before"), after = TEXT("after");
    key.ValueWrite("text", after);
    const std::size_t handles = support::OpenHandles();
    const auto use = [&] {
        CStringW text = before;
        try {
            Open(KEY_READ).ValueRead("text", text);
        } catch (const std::bad_alloc&) {
        } catch (const VexRegKeyError&) {
        }
        EXPECT_TRUE(text == before || text == after);
    };
    EXPECT_EQ(support::BlocksLeftBy([&] { support::FailEachAllocation(use, [] {}); }), 0);
    EXPECT_EQ(support::OpenHandles(), handles);
}

}  // namespace
