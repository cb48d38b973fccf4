// The suite under a locale that KESTROLUMEN_TEST_LOCALE names, or under "C".
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace {

class AskedLocale : public testing::Environment {
  public:
    void SetUp() override {
        const char* const name = std::getenv("KESTROLUMEN_TEST_LOCALE");
        if (name != nullptr && std::setlocale(LC_ALL, name) == nullptr) {
            GTEST_SKIP() << "this machine has no locale " << name;
        }
    }
};

const testing::Environment* const asked = testing::AddGlobalTestEnvironment(new AskedLocale);

TEST(Locale, IsTheOneAskedFor) {
    const bool german = std::getenv("KESTROLUMEN_TEST_LOCALE") != nullptr;
    EXPECT_NE(asked, nullptr);
    EXPECT_EQ(std::string(std::localeconv()->decimal_point), german ? "," : ".");
}

}  // namespace
