// The heap of BSTRs and arrays: malloc's, counted, and with faults for tests (winapi/faults.h).
#pragma once

#include <cstddef>

namespace winapi {

// Null when memory runs out. The block is aligned for any type.
[[nodiscard]] void* OleAllocate(std::size_t bytes) noexcept;

// `block` may be null.
void OleFree(void* block) noexcept;

}  // namespace winapi
