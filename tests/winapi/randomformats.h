// Random number formats and values, for comparing two engines. The seed is fixed: a failure comes back.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

class RandomFormats {
  public:
    explicit RandomFormats(unsigned seed) : random_(seed) {}

    // A specification with random flags, width, and precision (none if `mostPrecision` is negative), ended by
    // `size` and one of `conversions`.
    std::string Specification(std::string_view size, std::string_view conversions, int mostPrecision,
                              std::string_view flags = "-+ #0") {
        std::string text = "%";
        for (const char flag : flags) {
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
