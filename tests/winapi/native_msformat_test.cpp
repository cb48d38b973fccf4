// The engine beside the C library's, where their dialects agree: numbers.
#include <cstdio>

#include "formatted.h"
#include "randomformats.h"

namespace {

template <typename Value>
void ExpectAsRuntime(const std::string& format, Value value) {
    char text[2048];
    std::snprintf(text, sizeof text, format.c_str(), value);
    ASSERT_EQ(Both(format.c_str(), value), text) << format;
}

TEST(MsFormatAsTheCLibrary, RandomNumbers) {
    RandomFormats random(1);
    for (int i = 0; i < 4000 && !testing::Test::HasFatalFailure(); ++i) {
        const std::int64_t value = random.Integer();
        const int precision = i % 2 == 0 ? -1 : 40;
        for (const char* size : {"", "h", "hh"}) {
            ExpectAsRuntime(random.Specification(size, "diuoxX", precision), static_cast<int>(value));
        }
        ExpectAsRuntime(random.Specification("ll", "diuoxX", precision), value);
        for (const double denominator : {1.0, 64.0, 1e6}) {
            ExpectAsRuntime(random.Specification("", "eEfFgG", precision), random.Double(denominator));
        }
        ExpectAsRuntime(random.Specification("", "eg", 800), random.Double(7));
        ExpectAsRuntime(random.Specification("", "aA", 20), random.Double(7));
    }
}

}  // namespace
