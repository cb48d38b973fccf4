// Whether memory is there, asked of the system: an add-in may hand over a pointer that it never set.
#pragma once

#include <cstddef>

namespace excelhost {

// False when any page of the range isn't mapped. A range of no bytes is there.
[[nodiscard]] bool IsReadable(const void* start, std::size_t size) noexcept;

}  // namespace excelhost
