// One call of a registered function from a cell.
#pragma once

#include "excelhost/state.h"

#include <optional>
#include <span>

namespace excelhost {

// Lends the arguments, calls, copies the result and settles the account. Arguments may be fewer than the function
// has; `caller` is the calling cell. The value may be a reference.
[[nodiscard]] Value CallWorksheetFunction(HostState& state, const Registration& function,
                                          std::span<const Value> arguments, std::optional<Reference> caller);

}  // namespace excelhost
