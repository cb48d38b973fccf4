// What many repetitions do to the memory of the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace excelhost {

// Resident memory in bytes, at even distances from the first repetition to the last. At least three samples.
struct MemoryCourse {
    std::uint64_t repetitions = 0;
    std::vector<std::size_t> samples;
};

// Bytes a repetition that memory grows by, 0 when it is flat. What is taken once, by the first tenth or for a cache
// that is full one day, isn't growth: each half of what follows the first tenth must take more than 256 KiB.
[[nodiscard]] double GrowthOf(const MemoryCourse& course) noexcept;

// Repeats `once`, with the resident memory looked at. `progress` is called at each of the samples with their number
// and count.
[[nodiscard]] MemoryCourse Soak(std::uint64_t repetitions, const std::function<void()>& once,
                                const std::function<void(std::size_t done, std::size_t all)>& progress);

// "5.4 MiB".
[[nodiscard]] std::string Mebibytes(std::size_t bytes);

}  // namespace excelhost
