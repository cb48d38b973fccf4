// Formulas that may be calculated at the same time.
#pragma once

#include "excelhost/order.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace excelhost {

// Formulas of one sheet, by their numbers. None of them refers to another one.
struct Batch {
    IDSHEET sheet = 0;
    bool isShared = false;  // by several threads; else one after another
    std::vector<std::uint32_t> formulas;
};

// How many formulas of the order are looked at together; a plan takes time with the square of it.
inline constexpr std::size_t kBatchWindow = 1000;

// Puts a stretch of the order of calculation into batches, each behind those that it needs. Formulas that can't be
// shared keep their order among themselves and stay behind all that were in front of them.
[[nodiscard]] std::vector<Batch> BatchesOf(std::span<const std::uint32_t> stretch,
                                           std::span<const LocatedFormula> formulas,
                                           std::span<const Grid* const> sheets,
                                           const std::function<bool(const Formula&)>& canBeShared);

}  // namespace excelhost
