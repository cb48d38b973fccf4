// Deep copies, which let a value outlive the call that lent it.
#pragma once

#include "excelvalues/value.h"

#include <cstring>

// A copy of `source` that owns all of its buffers, whoever owned the source's: strings, references, arrays
// with their elements to any depth. The record is copied bit for bit, flags of the type included; the bytes
// of an xltypeBigData value stay where they are. A null pointer in a record stays null. The second form
// releases its handle when done, and gives an empty handle for an empty one.
//
// Raises std::bad_alloc; what was copied until then is freed. An array of numbers costs about what copying
// its bytes costs.
[[nodiscard]] XXloperPtr XXloperCopy(const XXloper& source);
[[nodiscard]] XXloperPtr XXloperCopy(XXloperPtr source);

namespace kestrolumen::detail {

// CopyValue for what MayOwnBuffers.
void CopyWithBuffers(XLOPER12& target, const XLOPER12& source);

// Makes `target`, whose content is overwritten and not freed, such a copy. Raises std::bad_alloc, and then
// `target` is as it was. Most cells are numbers: they don't go by way of a call.
inline void CopyValue(XLOPER12& target, const XLOPER12& source) {
    if (MayOwnBuffers(source)) {
        CopyWithBuffers(target, source);
    } else {
        std::memcpy(&target, &source, sizeof target);
    }
}

// An array's block in the making: it owns the records that it has so far, and their buffers.
class RecordBlock {
  public:
    // Room for `capacity` records. Raises std::bad_alloc.
    explicit RecordBlock(std::uint64_t capacity);
    ~RecordBlock();
    RecordBlock(const RecordBlock&) = delete;
    RecordBlock& operator=(const RecordBlock&) = delete;

    // Appends a deep copy; there has to be room. Raises std::bad_alloc.
    void AppendCopy(const XLOPER12& source) {
        CopyValue(records_[count_], source);
        ++count_;
    }

    // Hands the block over, for XLOPER12::val.array.lparray.
    [[nodiscard]] XLOPER12* Release() noexcept;

  private:
    XLOPER12* records_;
    std::size_t count_ = 0;
};

}  // namespace kestrolumen::detail
