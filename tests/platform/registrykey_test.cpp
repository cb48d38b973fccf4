#include "platform/registrykey.h"

#include "errors/vex.h"
#include "platform/securityattributes.h"
#include "support/allocations.h"
#include "support/registry.h"

#include <windows.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr const WCHAR* path = TEXT("Software\\Kestrolumen test");

class RegistryKeys : public testing::Test {
  protected:
    static RegistryKey Open(REGSAM access = KEY_ALL_ACCESS, const WCHAR* subkey = path,
                            HKEY root = HKEY_CURRENT_USER, std::uint32_t view = 1) {
        return RegistryKey(view, root, subkey, access, NullSecurityAttributes().get());
    }
    void Set(const WCHAR* name, DWORD kind, std::string_view data) const {
        ASSERT_EQ(RegSetValueExW(key.key(), name, 0, kind, reinterpret_cast<const BYTE*>(data.data()),
                                 static_cast<DWORD>(data.size())),
                  0);
    }

    support::FreshRegistry registry;
    RegistryKey key = Open();
};

// "class code function args" of what a call raises, without the last error in the result's text, which the
// registry's calls need not set; empty if it raises nothing.
template <typename Call>
std::string Raised(Call call) {
    try {
        call();
        return "";
    } catch (const VexRegKeyError& error) {
        CStringW text = CStringWFormat(TEXT("%s %d %s"), error.key, error.code, error.function);
        for (CStringW arg : error.args) {
            const int comma = arg.Find(TEXT(", err="));
            text += TEXT("|") + (comma >= 0 ? arg.Left(comma) : arg);
        }
        return std::string(CStringAFromWide(text.GetString()).GetString());
    }
}

// Bytes of UTF-16 text.
std::string Units(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

TEST_F(RegistryKeys, AreMadeOnlyForWritingAndTellTheirNames) {
    EXPECT_EQ(key.disposition(), DWORD{REG_CREATED_NEW_KEY});
    EXPECT_EQ(Open().disposition(), DWORD{REG_OPENED_EXISTING_KEY});
    EXPECT_TRUE(RegistryKey::Exists(HKEY_CURRENT_USER, path));
    EXPECT_EQ(key.KeyName(0), TEXT("HKEY_CURRENT_USER\\Software\\Kestrolumen test"));
    EXPECT_EQ(key.KeyName(1), path);
    EXPECT_EQ(key.KeyName(2), TEXT("Kestrolumen test"));
    EXPECT_EQ(Open(KEY_READ, TEXT("Software")).KeyName(9), TEXT("Software"));
    EXPECT_EQ(RegistryKey::RootKeyName(HKEY_DYN_DATA), TEXT("HKEY_DYN_DATA"));
    EXPECT_NE(key.LastWriteTime().dwHighDateTime, 0U);
    EXPECT_EQ(Open(KEY_READ | KEY_WOW64_32KEY, path, HKEY_CURRENT_USER, 2).view(), 2U)
        << "two views at once would be refused";

    const auto bogus = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x7FFFFFF0));
    EXPECT_EQ(Raised([&] { Open(KEY_READ, TEXT("Software\\None")); }),
              "VexRegKeyOpenFailed 2602 RegistryKey::RegistryKey|(rc=2|HKEY_CURRENT_USER\\Software\\None");
    EXPECT_EQ(Raised([&] { Open(KEY_SET_VALUE, TEXT("Software\\None")); }).substr(0, 24),
              "VexRegKeyOpenFailed 2602");
    EXPECT_FALSE(RegistryKey::Exists(HKEY_CURRENT_USER, TEXT("Software\\None")));
    EXPECT_EQ(Raised([&] { Open(KEY_WRITE, TEXT("a"), bogus); }),
              "VexRegKeyCreateFailed 2603 RegistryKey::RegistryKey|(rc=6|\\a");
}

TEST_F(RegistryKeys, ValuesOfAllKindsComeBack) {
    const CStringW wide(std::basic_string<WCHAR>(513, TEXT('x')).c_str());
    key.ValueWrite("int", -7);
    key.ValueWrite(TEXT("unsigned"), 0xFFFFFFFFU);
    key.ValueWrite("int64", INT64_MIN + 1);
    key.ValueWrite(TEXT("wide"), wide);
    key.ValueWrite("narrow", CStringA("caf\xE9"));
    key.ValueWrite("std", std::string("s"));
    key.ValueWrite(nullptr, StdWString(TEXT("default")));
    key.ValueWrite("bytes", RegistryKey::Bytes{1, 0, 2});
    key.ValueWrite("nothing", RegistryKey::Bytes{});

    EXPECT_EQ(key.ValueReadInt(TEXT("INT")), -7);
    DWORD number = 0;
    key.ValueRead("unsigned", number);
    EXPECT_EQ(number, 0xFFFFFFFFU);
    EXPECT_EQ(key.ValueReadInt64("int64"), INT64_MIN + 1);
    EXPECT_EQ(key.ValueReadStringW("wide"), wide);
    EXPECT_EQ(key.ValueReadStringA("narrow"), "caf\xE9");
    EXPECT_EQ(key.ValueReadStdString(TEXT("std")), "s");
    EXPECT_EQ(key.ValueReadStdWString(nullptr), TEXT("default"));
    EXPECT_EQ(key.ValueReadBinary("bytes"), (RegistryKey::Bytes{1, 0, 2}));
    EXPECT_TRUE(key.ValueReadBinary("nothing").empty());
    EXPECT_EQ(key.ValueNames(REG_DWORD).size(), 2U);
    EXPECT_EQ(key.ValueNames(RegistryKey::anyKind).size(), 9U);

    EXPECT_TRUE(key.ValueExists("nothing"));
    key.ValueDelete("nothing");
    EXPECT_FALSE(key.ValueExists("nothing"));
    EXPECT_EQ(key.ValueReadStringW("nothing"), TEXT("")) << "missing, and swallowed";
    EXPECT_EQ(Raised([&] { key.ValueDelete(TEXT("nothing")); }),
              "VexRegValueDeleteFailed 2606 RegistryKey::ValueDelete|(rc=2|nothing|HKEY_CURRENT_USER\\"
              "Software\\Kestrolumen test");
    RegistryKey reader = Open(KEY_READ);
    EXPECT_EQ(Raised([&] { reader.ValueWrite(nullptr, 1); }),
              "VexRegValueWriteFailed 2605 RegistryKey::ValueWrite|(rc=5||HKEY_CURRENT_USER\\Software\\"
              "Kestrolumen test");
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
        {REG_EXPAND_SZ, Units(u"%KESTROLUMEN_TEST%\\%None at all%"), u"value\\%None at all%"},
        {REG_EXPAND_SZ, Units(longText + u"%KESTROLUMEN_TEST%"), longText + u"value"},
    };
    for (const auto& row : rows) {
        Set(TEXT("text"), row.kind, row.data);
        const CStringW text = key.ValueReadStringW("text");
        EXPECT_EQ(Units(std::u16string(text.GetString(), text.GetString() + text.GetLength())),
                  Units(row.text));
    }
    std::vector<CStringW> list = {TEXT("there before")};
    Set(TEXT("list"), REG_MULTI_SZ, Units({u"one\0two\0\0three\0\0", 17}));
    key.ValueRead("list", list);
    Set(TEXT("list"), REG_MULTI_SZ, "");
    key.ValueRead("list", list);
    Set(TEXT("list"), REG_MULTI_SZ, Units(longText));
    key.ValueRead("list", list);
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[2], TEXT("two"));
    EXPECT_EQ(list[3].GetLength(), 4000);
}

TEST_F(RegistryKeys, WrongKindsAndSizesRaiseAndLeaveTheDestinationAlone) {
    const struct {
        const WCHAR* name;
        DWORD kind;
        std::string data;
        std::vector<int> codes;  // of reading a DWORD, a QWORD, text, a list and bytes; 0: none
    } rows[] = {
        {TEXT("dword"), REG_DWORD, "1234", {0, 2871, 2609, 2610, 2859}},
        {TEXT("qword"), REG_QWORD, "12345678", {2604, 0, 2609, 2610, 2859}},
        {TEXT("text"), REG_SZ, Units(u"7"), {2608, 2871, 0, 2610, 2859}},
        {TEXT("more"), REG_EXPAND_SZ, Units(u"12345"), {2604, 2604, 0, 2610, 2859}},
        {TEXT("list"), REG_MULTI_SZ, std::string(2000, 'l'), {2604, 2604, 2604, 0, 2859}},
        {TEXT("bytes"), REG_BINARY, "123", {2608, 2871, 2609, 2610, 0}},
        {TEXT("many"), REG_BINARY, std::string(1026, 'b'), {2604, 2604, 2604, 2604, 0}},
        {TEXT("none"), REG_NONE, "absent", {2604, 2604, 2604, 2604, 2604}},
    };
    for (const auto& row : rows) {
        if (row.data != "absent") Set(row.name, row.kind, row.data);
        int number = 42;
        CStringW text = TEXT("42");
        std::vector<CStringW> list = {text};
        RegistryKey::Bytes bytes = {42};
        const std::string raised[] = {
            Raised([&] { key.ValueRead(row.name, number); }),
            Raised([&] { static_cast<void>(key.ValueReadInt64(row.name)); }),
            Raised([&] { key.ValueRead(row.name, text); }),
            Raised([&] { key.ValueRead(row.name, list); }),
            Raised([&] { key.ValueRead(row.name, bytes); }),
        };
        for (std::size_t i = 0; i < std::size(raised); ++i) {
            const int code = row.codes[i];
            const std::string name(CStringA(row.name).GetString());
            std::string expected =
                "VexRegValueReadFailed " + std::to_string(code) + " RegistryKey::ValueRead";
            if (i == 1) expected += "Int64";
            if (code == 2604) expected += row.data == "absent" ? "|(rc=2" : "|(rc=234";
            expected += "|" + name + "|HKEY_CURRENT_USER\\Software\\Kestrolumen test";
            EXPECT_EQ(raised[i], code == 0 ? "" : expected);
        }
        EXPECT_EQ(number == 42, row.codes[0] != 0);
        EXPECT_EQ(text == TEXT("42"), row.codes[2] != 0);
        EXPECT_EQ(list.size() == 1, row.codes[3] != 0);
        EXPECT_EQ(bytes == RegistryKey::Bytes{42}, row.codes[4] != 0);
    }
}

std::string seen;

void See(std::int32_t depth, RegistryKey* key, ULONG_PTR context) {
    EXPECT_EQ(context, 77U);
    seen += std::to_string(depth) + CStringA(key->KeyName(2)).GetString() + " ";
}

TEST_F(RegistryKeys, WalksGoDepthFirstAndCloseWhatTheyOpen) {
    for (const WCHAR* subkey : {TEXT("b\\x\\y"), TEXT("a"), TEXT("b\\w")}) {
        Open(KEY_WRITE, (CStringW(path) + TEXT("\\") + subkey).GetString());
    }
    const std::size_t handles = support::OpenHandles();
    const auto walk = [&](const RegistryKey& top, bool includeSelf, bool recursive) {
        seen.clear();
        const_cast<RegistryKey&>(top).SubkeysIterate(includeSelf, recursive, 77, See);
        return seen;
    };
    EXPECT_EQ(walk(key, true, false), "0Kestrolumen test 1a 1b ");
    EXPECT_EQ(walk(key, false, true), "1a 1b 2w 2x 3y ");
    EXPECT_EQ(walk(Open(KEY_READ, (CStringW(path) + TEXT("\\a")).GetString()), true, true), "0a ");
    EXPECT_EQ(walk(Open(KEY_READ, nullptr), false, false), "1Software ") << "from the root itself";
    EXPECT_EQ(support::OpenHandles(), handles);

    RegDeleteTreeW(HKEY_CURRENT_USER, path);
    EXPECT_EQ(Raised([&] { walk(key, false, true); }),
              "VexRegKeyEnumFailed 2607 RegistryKey::SubkeysIteratePrivate|(rc=1018|HKEY_CURRENT_USER\\"
              "Software\\Kestrolumen test");
    EXPECT_TRUE(key.ValueNames(RegistryKey::anyKind).empty());
    EXPECT_EQ(key.LastWriteTime().dwHighDateTime, 0U);
}

TEST_F(RegistryKeys, WithoutMemoryNothingIsLostOrLeftOpen) {
    key.ValueWrite("text", CStringW(TEXT("some text")));
    const std::size_t handles = support::OpenHandles();
    const auto use = [&] {
        try {
            CStringW text = TEXT("before");
            try {
                Open(KEY_READ).ValueRead("text", text);
                EXPECT_EQ(text, TEXT("some text"));
            } catch (...) {
                EXPECT_EQ(text, TEXT("before"));
                throw;
            }
        } catch (const std::bad_alloc&) {
        } catch (const VexRegKeyError&) {
        }
    };
    EXPECT_EQ(support::BlocksLeftBy([&] { support::FailEachAllocation(use, [] {}); }), 0);
    EXPECT_EQ(support::OpenHandles(), handles);
}

}  // namespace
