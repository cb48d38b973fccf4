// The engine beside the C library's, where their dialects agree: numbers, and text of the format's own width.
#include <cstdio>

#include "formatted.h"
#include "randomformats.h"

namespace {

template <typename... Values>
std::string RuntimeFormatted(const char* format, Values... values) {
    char text[2048];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

template <typename... Values>
void ExpectAsRuntime(const std::string& format, Values... values) {
    ASSERT_EQ(Both(format.c_str(), values...), RuntimeFormatted(format.c_str(), values...)) << format;
}

TEST(MsFormatAsTheCLibrary, RandomIntegers) {
    RandomFormats random(1);
    for (int i = 0; i < 4000; ++i) {
        const std::int64_t value = random.Integer();
        ExpectAsRuntime(random.Specification("", "diuoxX", 30), static_cast<int>(value));
        ExpectAsRuntime(random.Specification("h", "diuoxX", 30), static_cast<int>(value));
        ExpectAsRuntime(random.Specification("hh", "diuoxX", 30), static_cast<int>(value));
        ExpectAsRuntime(random.Specification("ll", "diuoxX", 30), value);
        ExpectAsRuntime(random.Specification("z", "diuoxX", 30), static_cast<std::ptrdiff_t>(value));
        if (HasFatalFailure()) return;
    }
}

TEST(MsFormatAsTheCLibrary, RandomDoubles) {
    RandomFormats random(2);
    for (int i = 0; i < 4000; ++i) {
        const double value = random.Double();
        ExpectAsRuntime(random.Specification("", "eEfFgG", 40), value);
        ExpectAsRuntime(random.Specification("", "eg", 800), value);
        ExpectAsRuntime(random.Specification("", "aA", 20, true), value);
        if (HasFatalFailure()) return;
    }
}

TEST(MsFormatAsTheCLibrary, RandomMixtures) {
    RandomFormats random(3);
    for (int i = 0; i < 4000; ++i) {
        const std::string before = "a " + random.Specification("", "diuoxX", 20) + "%%b" +
                                   random.Specification("", "eEfgG", 20) + " %-*.*";
        const std::string behind = "s" + random.Specification("ll", "dx", 20) + "%c|";
        const auto integer = static_cast<int>(random.Integer());
        const double number = random.Double();
        const int width = random.Below(20) - 10;
        const int precision = random.Below(8) - 2;
        const std::int64_t wide = random.Integer();
        const auto make = [&](auto formatted, const std::string& format) {
            return formatted(format.c_str(), integer, number, width, precision, "text", wide, 'A' + i % 26);
        };
        const auto both = [](const char* format, auto... values) { return Both(format, values...); };
        const auto runtime = [](const char* format, auto... values) {
            return RuntimeFormatted(format, values...);
        };
        ASSERT_EQ(make(both, before + "h" + behind), make(runtime, before + behind));
    }
}

}  // namespace
