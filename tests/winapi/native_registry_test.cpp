// What the stand-in's registry file has to get right: every content, damage, other processes, sudden ends.
#include "src/failure.h"
#include "src/registrytext.h"
#include "support/children.h"
#include "support/registry.h"

#include <windows.h>

#include <winreg.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

HKEY Create(const WCHAR* path = u"Software\\Test") {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              0);
    return key;
}

LSTATUS Set(HKEY key, const std::u16string& name, std::string_view data) {
    return RegSetValueExW(key, name.c_str(), 0, REG_BINARY, reinterpret_cast<const BYTE*>(data.data()),
                          static_cast<DWORD>(data.size()));
}

std::string Get(HKEY key, const WCHAR* name) {
    BYTE data[100];
    DWORD size = sizeof data;
    const LSTATUS result = RegQueryValueExW(key, name, nullptr, nullptr, data, &size);
    return result == 0 ? std::string(data, data + size) : "result " + std::to_string(result);
}

std::string Content(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

const support::Role endlessWriter("write to the registry", [](const support::Arguments&) {
    const HKEY key = Create();
    for (int number = 0;; ++number) {
        Set(key, u"number", std::string(20, static_cast<char>('a' + number % 26)));
        if (number == 0) support::Say("started");
    }
    return 0;
});

const support::Role adder("add to the registry", [](const support::Arguments& arguments) {
    const HKEY key = Create(arguments[0] == "0" ? u"Software\\Test" : u"Software\\Test\\Below");
    for (char16_t number = 0; number < 40; ++number) {
        if (Set(key, std::u16string{u'v', number}, arguments[0]) != 0) return 1;
    }
    return 0;
});

TEST(RegistryFile, IsMadeByAWriteAndSeenThroughEveryChange) {
    const support::FreshRegistry registry;
    HKEY none = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"Software", 0, KEY_READ, &none), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(std::filesystem::exists(registry.File().parent_path()));
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"", 0, KEY_WOW64_32KEY | KEY_WOW64_64KEY, &none),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"\\a", 0, KEY_READ, &none), ERROR_BAD_PATHNAME);

    const HKEY key = Create();
    Set(key, u"a", "one");
    std::string text = Content(registry.File());
    EXPECT_NE(text.find("\n\"a\"=3:6F6E65\n"), std::string::npos) << text;
    text.replace(text.find("6F6E65"), 6, "74776F");
    std::ofstream(registry.File()) << text;  // by hand, in place
    EXPECT_EQ(Get(key, u"a"), "two");

    for (const char* damage : {"", "Kestrolumen registry 2\n", "x", "[\"A\"] 1", "\"a\"=3:0\n", "\"\\u12"}) {
        const std::string damaged = *damage == 'K' || *damage == 0 ? damage : text + damage;
        std::ofstream(registry.File()) << damaged;
        EXPECT_EQ(Get(key, u"a"), "result 1009") << damage;
        EXPECT_EQ(Set(key, u"a", "three"), ERROR_BADDB);
        EXPECT_EQ(Content(registry.File()), damaged) << "what isn't understood isn't overwritten";
    }
    std::filesystem::remove(registry.File());
    EXPECT_EQ(Get(key, u"a"), "result 1018");
    RegCloseKey(key);
}

TEST(RegistryFile, AnyNamesAndDataComeBackAsTheyWere) {
    std::mt19937 random(7);  // NOLINT: the same names in each run
    const auto units = [&](std::size_t longest) {
        std::u16string text(random() % (longest + 1), u'\0');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(random() % 3 == 0 ? random() : 0x20 + random() % 0x60);
            if (unit == u'\\') unit = u'"';
        }
        return text;
    };
    winapi::RegistryNode root = winapi::EmptyRegistry();
    for (int round = 0; round < 500; ++round) {
        std::u16string path = u"HKEY_USERS";
        for (auto depth = random() % 4; depth != 0; --depth) path += u'\\' + units(3);
        winapi::RegistryNode& node = root.Make(path, random());
        std::vector<BYTE> data(random() % 8);
        for (BYTE& octet : data) octet = static_cast<BYTE>(random() % 2 == 0 ? 0 : random());
        node.SetValue({units(4), static_cast<DWORD>(random() % 2 == 0 ? REG_SZ : random()), data});
    }
    const std::string text = winapi::TextFromRegistry(root);
    const winapi::RegistryNode back = winapi::RegistryFromText(text);
    const auto same = [](const auto& self, const winapi::RegistryNode& a,
                         const winapi::RegistryNode& b) -> bool {
        const auto sameValue = [](const auto& x, const auto& y) {
            return x.name == y.name && x.kind == y.kind && x.data == y.data;
        };
        return a.name == b.name && a.lastWrite == b.lastWrite &&
               std::equal(a.values.begin(), a.values.end(), b.values.begin(), b.values.end(), sameValue) &&
               std::equal(a.subkeys.begin(), a.subkeys.end(), b.subkeys.begin(), b.subkeys.end(),
                          [&](const auto& x, const auto& y) { return self(self, x, y); });
    };
    root.lastWrite = back.lastWrite;  // of what stands above the roots, and isn't kept
    EXPECT_TRUE(same(same, root, back));
}

TEST(RegistryFile, HoldsTheOldOrTheNewValueWheneverItsWriterIsKilled) {
    const support::FreshRegistry registry;
    const HKEY key = Create();
    Set(key, u"kept", "for ever");
    std::mt19937 random(11);  // NOLINT
    for (int round = 0; round < 200; ++round) {
        support::Child writer("write to the registry");
        ASSERT_EQ(writer.ReadLine(), "started");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        writer.Kill();
        const std::string value = Get(key, u"number");
        ASSERT_EQ(value, std::string(20, value[0]));
        ASSERT_EQ(Get(key, u"kept"), "for ever");
    }
    EXPECT_EQ(Set(key, u"number", "after all"), 0) << "nothing stays locked";
    RegCloseKey(key);
}

TEST(RegistryFile, WritersInTwoProcessesLoseNothing) {
    const support::FreshRegistry registry;
    support::Child first("add to the registry", {"0"}), second("add to the registry", {"1"});
    EXPECT_EQ(first.Finish() + second.Finish(), 0);
    for (const WCHAR* path : {u"Software\\Test", u"Software\\Test\\Below"}) {
        const HKEY key = Create(path);
        DWORD values = 0;
        RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &values, nullptr, nullptr,
                         nullptr, nullptr);
        EXPECT_EQ(values, 40U);
        RegCloseKey(key);
    }
}

}  // namespace
