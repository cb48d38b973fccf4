// What the stand-in's registry file has to get right: every content, damage, other processes, sudden ends.
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

// The key "Software\Test" and its values.
class TestKey {
  public:
    TestKey() {
        RegCreateKeyExW(HKEY_CURRENT_USER, u"Software\\Test", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_,
                        nullptr);
    }
    ~TestKey() { RegCloseKey(key_); }
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;

    LSTATUS Set(const std::u16string& name, std::string_view data) const {
        return RegSetValueExW(key_, name.c_str(), 0, REG_BINARY, reinterpret_cast<const BYTE*>(data.data()),
                              static_cast<DWORD>(data.size()));
    }
    [[nodiscard]] std::string Get(const WCHAR* name) const {
        BYTE data[100];
        DWORD size = sizeof data;
        const LSTATUS result = RegQueryValueExW(key_, name, nullptr, nullptr, data, &size);
        return result == 0 ? std::string(data, data + size) : "result " + std::to_string(result);
    }

  private:
    HKEY key_ = nullptr;
};

const support::Role endlessWriter("write to the registry", [](const support::Arguments&) {
    const TestKey key;
    for (int number = 0;; ++number) {
        key.Set(u"number", std::string(20, static_cast<char>('a' + number % 26)));
        if (number == 0) support::Say("started");
    }
    return 0;
});

const support::Role adder("add to the registry", [](const support::Arguments& arguments) {
    const TestKey key;
    for (char16_t number = 0; number < 40; ++number) {
        if (key.Set({static_cast<char16_t>(arguments[0][0]), number}, arguments[0]) != 0) return 1;
    }
    return 0;
});

TEST(RegistryFile, IsMadeByAWriteAndSeenThroughEveryChange) {
    const support::FreshRegistry registry;
    HKEY none = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"Software", 0, KEY_READ, &none), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(std::filesystem::exists(registry.File().parent_path()));
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"", 0, 0x300, &none), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"\\a", 0, KEY_READ, &none), ERROR_BAD_PATHNAME);

    const TestKey key;
    key.Set(u"a", "one");
    const auto content = [&] {
        std::ifstream stream(registry.File(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    std::string text = content();
    const std::size_t data = text.find("\n\"a\"=3:6F6E65\n");
    ASSERT_NE(data, std::string::npos) << text;
    std::ofstream(registry.File()) << text.replace(data + 7, 6, "7468726565");  // by hand, in place
    EXPECT_EQ(key.Get(u"a"), "three");
    for (const char* damage : {"x", "[\"A\"] 1", "\"a\"=3:0\n", "\"\\u12", ""}) {
        const std::string damaged = *damage != '\0' ? text + damage : "";
        std::ofstream(registry.File()) << damaged;
        EXPECT_EQ(key.Get(u"a"), "result 1009") << damaged;
        EXPECT_EQ(key.Set(u"a", "three"), ERROR_BADDB);
        EXPECT_EQ(content(), damaged) << "what isn't understood isn't overwritten";
    }
    std::filesystem::remove(registry.File());
    EXPECT_EQ(key.Get(u"a"), "result 1018");
}

TEST(RegistryFile, IsWrittenThroughLinks) {
    const support::FreshRegistry registry;
    const auto link = registry.File(), folder = link.parent_path();
    std::filesystem::create_directories(folder / "there");
    std::filesystem::create_symlink("second", link);
    std::filesystem::create_symlink("there/file", folder / "second");
    for (const char* value : {"made", "changed"}) {
        EXPECT_EQ(TestKey().Set(u"a", value), 0);
        EXPECT_EQ(TestKey().Get(u"a"), value);
        EXPECT_TRUE(is_symlink(link) && is_symlink(folder / "second"));
        EXPECT_TRUE(is_regular_file(symlink_status(folder / "there" / "file")));
    }
    std::filesystem::remove(folder / "second");
    std::filesystem::create_symlink(link, folder / "second");
    EXPECT_NE(TestKey().Set(u"a", "in a circle"), 0);
    EXPECT_TRUE(is_symlink(link));
}

TEST(RegistryFile, HoldsTheOldOrTheNewValueWheneverItsWriterIsKilled) {
    const support::FreshRegistry registry;
    const TestKey key;
    key.Set(u"kept", "for ever");
    std::mt19937 random(11);  // NOLINT
    for (int round = 0; round < 200; ++round) {
        support::Child writer("write to the registry");
        ASSERT_EQ(writer.ReadLine(), "started");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        writer.Kill();
        const std::string value = key.Get(u"number");
        ASSERT_EQ(value, std::string(20, value[0]));
        ASSERT_EQ(key.Get(u"kept"), "for ever");
    }
    EXPECT_EQ(key.Set(u"number", "after all"), 0) << "nothing stays locked";
}

TEST(RegistryFile, WritersInTwoProcessesLoseNothing) {
    const support::FreshRegistry registry;
    support::Child first("add to the registry", {"1"}), second("add to the registry", {"2"});
    EXPECT_EQ(first.Finish() + second.Finish(), 0);
    const TestKey key;
    for (char16_t number = 1; number < 40; ++number) {
        EXPECT_EQ(key.Get(std::u16string{u'1', number}.c_str()), "1");
        EXPECT_EQ(key.Get(std::u16string{u'2', number}.c_str()), "2");
    }
}

}  // namespace
