// One call of a registered function from a cell.
#pragma once

#include "excelhost/state.h"

#include <chrono>
#include <optional>
#include <span>

namespace excelhost {

// Lends the arguments, calls, copies the result and settles the account. Arguments may be fewer than the function
// has; `caller` is the calling cell. The value may be a reference.
[[nodiscard]] Value CallWorksheetFunction(HostState& state, const Registration& function,
                                          std::span<const Value> arguments, std::optional<Reference> caller);

// How long an asynchronous function has for its result, in the whole process: 30 seconds unless set.
void SetAsyncLimit(std::chrono::milliseconds limit) noexcept;

}  // namespace excelhost
