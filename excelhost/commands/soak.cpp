#include "excelhost/commands/soak.h"

#include "excelhost/machine/memory.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace excelhost {
namespace {

constexpr std::size_t kSamples = 100;
constexpr double kNoise = 256 << 10;

}  // namespace

double GrowthOf(const MemoryCourse& course) noexcept {
    const std::size_t last = course.samples.size() - 1;
    const std::size_t warm = last / 10;
    const std::size_t middle = warm + (last - warm) / 2;
    const auto at = [&](std::size_t i) { return static_cast<double>(course.samples[i]); };
    if (at(middle) - at(warm) <= kNoise || at(last) - at(middle) <= kNoise) return 0;
    const double share = static_cast<double>(last - warm) / static_cast<double>(last);
    return (at(last) - at(warm)) / (share * static_cast<double>(course.repetitions));
}

MemoryCourse Soak(std::uint64_t repetitions, const std::function<void()>& once,
                  const std::function<void(std::size_t done, std::size_t all)>& progress) {
    const auto samples = static_cast<std::size_t>(std::clamp<std::uint64_t>(repetitions, 2, kSamples));
    MemoryCourse course{repetitions, {ResidentMemory()}};
    course.samples.reserve(samples + 1);
    std::uint64_t done = 0;
    for (std::size_t sample = 1; sample <= samples; ++sample) {
        // Without an overflow, whatever the count.
        const std::uint64_t until = sample == samples ? repetitions : repetitions / samples * sample;
        for (; done < until; ++done) once();
        course.samples.push_back(ResidentMemory());
        progress(sample, samples);
    }
    return course;
}

std::string Mebibytes(std::size_t bytes) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f MiB", static_cast<double>(bytes) / (1 << 20));
    return text.data();
}

}  // namespace excelhost
