// The worksheet functions that the simulated Excel calculates by itself.
#pragma once

#include "excelhost/grid.h"
#include "excelhost/value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace excelhost {

struct Builtin {
    std::string_view name;
    std::size_t fewest;
    std::size_t most;
    // Arguments as they stand: references, arrays and missing ones among them.
    Value (*calculate)(std::span<const Value> arguments, const Grid& grid, const Place& place);
};

// ABS, AVERAGE, COUNT, EXACT, IFERROR, MAX, MIN, NA, ROUND and SUM; null for any other name, IF included,
// which is control flow. Case doesn't matter.
[[nodiscard]] const Builtin* FindBuiltin(TextView name) noexcept;

}  // namespace excelhost
