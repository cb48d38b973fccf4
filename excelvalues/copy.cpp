#include "excelvalues/copy.h"

#include "excelvalues/detail/newvalue.h"

#include <cstring>
#include <utility>

namespace {

template <typename T>
T* CopyOfBlock(const T* source, std::size_t bytes) {
    return static_cast<T*>(std::memcpy(kestrolumen::detail::Malloc(bytes), source, bytes));
}

XLOPER12* CopyOfRecords(const XLOPER12* source, std::uint64_t count) {
    kestrolumen::detail::RecordBlock block(count);
    for (const XLOPER12* end = source + count; source != end; ++source) block.AppendCopy(*source);
    return block.Release();
}

// Gives `copy`, so far a bitwise copy of a record, buffers of its own where it has any.
void CopyBuffers(XLOPER12& copy) {
    auto& val = copy.val;
    switch (TypeOf(copy)) {
        case xltypeStr:
            if (val.str != nullptr)
                val.str = CopyOfBlock(val.str, (val.str[0] + std::size_t{1}) * sizeof(XCHAR));
            break;
        case xltypeRef:
            if (XLMREF12*& block = val.mref.lpmref; block != nullptr) {
                block = CopyOfBlock(block, offsetof(XLMREF12, reflref) + block->count * sizeof(XLREF12));
            }
            break;
        case xltypeMulti:
            if (val.array.lparray != nullptr) {
                val.array.lparray = CopyOfRecords(val.array.lparray, ElementCount(copy));
            }
            break;
        default:
            break;
    }
}

}  // namespace

namespace kestrolumen::detail {

void CopyWithBuffers(XLOPER12& target, const XLOPER12& source) {
    XLOPER12 copy;
    std::memcpy(&copy, &source, sizeof copy);
    CopyBuffers(copy);
    std::memcpy(&target, &copy, sizeof copy);
}

RecordBlock::RecordBlock(std::uint64_t capacity) {
    if (capacity > std::numeric_limits<std::size_t>::max()) throw BadAllocation();
    records_ = MallocArray<XLOPER12>(static_cast<std::size_t>(capacity));
}

RecordBlock::~RecordBlock() {
    FreeRecords(records_, count_);
}

XLOPER12* RecordBlock::Release() noexcept {
    return std::exchange(records_, nullptr);
}

}  // namespace kestrolumen::detail

XXloperPtr XXloperCopy(const XXloper& source) {
    auto value = kestrolumen::detail::NewValue();
    kestrolumen::detail::CopyValue(*value, source);
    return value;
}

XXloperPtr XXloperCopy(XXloperPtr source) {
    const XXloperPtr held = std::move(source);
    return held ? XXloperCopy(*held) : nullptr;
}
