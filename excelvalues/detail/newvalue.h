// Where each maker begins.
#pragma once

#include "excelvalues/detail/memory.h"
#include "excelvalues/value.h"

namespace kestrolumen::detail {

// A new record under the default policy, xltypeNil until its maker fills it: when the last reference goes, the value
// is destroyed and its record freed. Raises std::bad_alloc. A part of each maker, which then makes its handle of what
// is in registers: through a pair of pointers in memory it is slower by a tenth.
[[nodiscard]] inline std::shared_ptr<XXloper> NewValue() {
    return std::allocate_shared<XXloper>(MallocAllocator<XXloper>());
}

}  // namespace kestrolumen::detail
