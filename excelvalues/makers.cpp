#include "excelvalues/makers.h"

#include "excelvalues/memory.h"

#include <algorithm>
#include <stdexcept>

namespace {

// The most units that a string value counts.
constexpr std::size_t LongestString = 32767;

std::size_t LengthUpToLimit(const WCHAR* text) noexcept {
    std::size_t length = 0;
    while (length < LongestString && text[length] != 0) ++length;
    return length;
}

XXloperPtr ValueOfType(DWORD type) {
    auto value = detail::NewValue();
    value->xltype = type;
    return value;
}

}  // namespace

XXloperPtr XXloperFromInt(std::int32_t number) {
    auto value = detail::NewValue();
    value->xltype = xltypeInt;
    value->val.w = number;
    return value;
}

XXloperPtr XXloperFromString(const WCHAR* text) {
    const std::size_t length = text != nullptr ? LengthUpToLimit(text) : 0;
    auto value = detail::NewValue();
    value->val.str = detail::MallocArray<XCHAR>(length + 1);
    value->xltype = xltypeStr;
    value->val.str[0] = static_cast<XCHAR>(length);
    std::copy_n(text, length, value->val.str + 1);
    return value;
}

XXloperPtr XXloperFromString(const char* text) {
    return XXloperFromString(CStringWFromAnsi(text != nullptr ? text : "").GetString());
}

XXloperPtr XXloperFromString(const StdWString& text) {
    return XXloperFromString(text.c_str());
}

XXloperPtr XXloperFromString(const std::string& text) {
    return XXloperFromString(text.c_str());
}

XXloperPtr XXloperFromBool(BYTE truth) {
    auto value = detail::NewValue();
    value->xltype = xltypeBool;
    value->val.xbool = truth;
    return value;
}

XXloperPtr XXloperFromError(std::int32_t code) {
    auto value = detail::NewValue();
    SetErrorValue(*value, code);
    return value;
}

XXloperPtr XXloperFlow() {
    return ValueOfType(xltypeFlow);
}

XXloperPtr XXloperMissing() {
    return ValueOfType(xltypeMissing);
}

XXloperPtr XXloperNil() {
    return ValueOfType(xltypeNil);
}

XXloperPtr XXloperFromBlob(const std::vector<BYTE>& bytes) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw std::length_error("XXloperFromBlob: more bytes than a value can count");
    }
    auto value = detail::NewValue();
    value->xltype = xltypeBigData;
    // The record's published layout knows no const; nobody writes through it.
    value->val.bigdata.h.lpbData = bytes.empty() ? nullptr : const_cast<BYTE*>(bytes.data());
    value->val.bigdata.cbData = static_cast<std::int32_t>(bytes.size());
    return value;
}

void SetErrorValue(XLOPER12& record, std::int32_t code) noexcept {
    record.xltype = xltypeErr;
    record.val.err = code;
    record.val.returnCode = 0;
}

void SetSingleCellArray(XLOPER12& record, XLOPER12* element) noexcept {
    record.xltype = xltypeMulti;
    record.val.array.lparray = element;
    record.val.array.rows = 1;
    record.val.array.columns = 1;
}
