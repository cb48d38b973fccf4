#include "excelvalues/value.h"

#include "excelvalues/detail/memory.h"

#include <algorithm>
#include <cstring>

XXloper::XXloper() noexcept : XLOPER12{} {
    xltype = xltypeNil;
}

XXloper::~XXloper() {
    kestrolumen::detail::FreeBuffers(*this);
}

CStringW XXloper::ToCStringW() const {
    CStringW text;
    if (val.str == nullptr) return text;
    const int count = val.str[0];
    WCHAR* const buffer = text.GetBuffer(count + 1);
    std::copy_n(val.str + 1, count, buffer);
    buffer[count] = 0;
    text.ReleaseBuffer(-1);
    return text;
}

namespace kestrolumen::detail {

std::shared_ptr<XXloper> NewValue() {
    return std::allocate_shared<XXloper>(MallocAllocator<XXloper>());
}

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
