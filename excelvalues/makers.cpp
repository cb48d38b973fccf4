#include "excelvalues/makers.h"

#include "excelvalues/detail/newvalue.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace {

// The most units that a string value counts.
constexpr std::size_t LongestString = 32767;

std::size_t LengthUpToLimit(const WCHAR* text) noexcept {
    return std::min(std::char_traits<WCHAR>::length(text), LongestString);
}

// `length` is at most LongestString.
XXloperPtr StringOf(const WCHAR* units, std::size_t length) {
    auto value = kestrolumen::detail::NewValue();
    value->val.str = kestrolumen::detail::MallocArray<XCHAR>(length + 1);
    value->xltype = xltypeStr;
    value->val.str[0] = static_cast<XCHAR>(length);
    std::copy_n(units, length, value->val.str + 1);
    return value;
}

// Narrow text that is short when widened: it needs no block of its own on its way into a value.
struct ShortText {
    WCHAR units[256];
    std::size_t length = 0;

    // Whether the whole of `text` found room.
    bool Widen(const char* text) noexcept {
        for (length = 0; length < std::size(units); ++length) {
            const auto byte = static_cast<unsigned char>(text[length]);
            if (byte == 0) return true;
            if (byte >= 0x80) break;
            units[length] = byte;
        }
        if (length == std::size(units)) return false;
        const int count = MultiByteToWideChar(CP_ACP, 0, text, -1, units, static_cast<int>(std::size(units)));
        length = count > 0 ? static_cast<std::size_t>(count) - 1 : 0;
        return count > 0;
    }
};

XXloperPtr ValueOfType(DWORD type) {
    auto value = kestrolumen::detail::NewValue();
    value->xltype = type;
    return value;
}

}  // namespace

XXloperPtr XXloperFromInt(std::int32_t number) {
    auto value = kestrolumen::detail::NewValue();
    value->xltype = xltypeInt;
    value->val.w = number;
    return value;
}

XXloperPtr XXloperFromString(const WCHAR* text) {
    return StringOf(text, text != nullptr ? LengthUpToLimit(text) : 0);
}

XXloperPtr XXloperFromString(const char* text) {
    ShortText wide;
    if (text == nullptr || wide.Widen(text)) return StringOf(wide.units, wide.length);
    return XXloperFromString(CStringWFromAnsi(text).GetString());
}

XXloperPtr XXloperFromString(const StdWString& text) {
    return XXloperFromString(text.c_str());
}

XXloperPtr XXloperFromString(const std::string& text) {
    return XXloperFromString(text.c_str());
}

XXloperPtr XXloperFromString(std::nullptr_t) {
    return XXloperFromString(static_cast<const WCHAR*>(nullptr));
}

XXloperPtr XXloperFromBool(BYTE truth) {
    auto value = kestrolumen::detail::NewValue();
    value->xltype = xltypeBool;
    value->val.xbool = truth;
    return value;
}

XXloperPtr XXloperFromError(std::int32_t code) {
    auto value = kestrolumen::detail::NewValue();
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
    auto value = kestrolumen::detail::NewValue();
    value->xltype = xltypeBigData;
    // The record's published layout knows no const; nobody writes through it.
    value->val.bigdata.h.lpbData = bytes.empty() ? nullptr : const_cast<BYTE*>(bytes.data());
    value->val.bigdata.cbData = static_cast<std::int32_t>(bytes.size());
    return value;
}

void SetErrorValue(XLOPER12& record, std::int32_t code) noexcept {
    record.xltype = xltypeErr;
    record.val.err = code;
    record.val.failure.returnCode = 0;
}

void SetSingleCellArray(XLOPER12& record, XLOPER12* element) noexcept {
    record.xltype = xltypeMulti;
    record.val.array.lparray = element;
    record.val.array.rows = 1;
    record.val.array.columns = 1;
}
