#include "excelvalues/value.h"

#include "excelvalues/detail/memory.h"
#include "text/detail/uptozero.h"

#include <algorithm>

CStringW XXloper::ToCStringW() const {
    if (val.str == nullptr) return {};
    const auto text = kestrolumen::detail::UpToZero(StdWStringView(val.str + 1, val.str[0]));
    return {text.data(), static_cast<int>(text.size())};
}

namespace kestrolumen::detail {

void FreeBuffers(const XLOPER12& value) noexcept {
    switch (TypeOf(value)) {
        case xltypeStr:
            std::free(value.val.str);
            break;
        case xltypeRef:
            std::free(value.val.mref.lpmref);
            break;
        case xltypeMulti:
            FreeRecords(value.val.array.lparray, ElementCount(value));
            break;
        default:
            break;
    }
}

void FreeRecords(XLOPER12* records, std::uint64_t count) noexcept {
    if (records == nullptr) return;
    std::for_each(records, records + count, FreeBuffers);
    std::free(records);
}

}  // namespace kestrolumen::detail
