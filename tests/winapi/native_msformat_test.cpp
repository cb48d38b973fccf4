// The engine beside the C library's, where their dialects agree: numbers.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include "formatted.h"

namespace {

// Random number formats and values. The seed is fixed: a failure comes back.
class RandomFormats {
  public:
    explicit RandomFormats(unsigned seed) : random_(seed) {}

    // A specification with random flags, width, and precision (none if `mostPrecision` is negative), ended by
    // `size` and one of `conversions`.
    std::string Specification(std::string_view size, std::string_view conversions, int mostPrecision) {
        std::string text = "%";
        for (const char flag : std::string_view("-+ #0")) {
            if (Below(4) == 0) text += flag;
        }
        if (Below(2) == 0) text += std::to_string(Below(40) + 1);
        if (mostPrecision >= 0) text += "." + std::to_string(Below(mostPrecision + 1));
        text += size;
        text += conversions[static_cast<std::size_t>(Below(static_cast<int>(conversions.size())))];
        return text;
    }

    // Of every magnitude, with the ends and zero among them.
    std::int64_t Integer() {
        const auto bits = static_cast<std::int64_t>(random_()) >> Below(64);
        return Below(8) == 0 ? INT64_MIN : Below(8) == 0 ? 0 : bits;
    }

    // Finite: any bits at all, or a fraction with this denominator: 64 gives ties, 7 none, 1 whole numbers.
    double Double(double denominator) {
        if (Below(2) == 0) return static_cast<double>(Integer() % 100'000) / denominator;
        for (;;) {
            const std::uint64_t bits = random_();
            double value = 0;
            std::memcpy(&value, &bits, sizeof value);
            if (std::isfinite(value)) return value;
        }
    }

    int Below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

  private:
    std::mt19937_64 random_;
};

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
