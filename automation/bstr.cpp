#include "automation/bstr.h"

#include "errors/vex.h"
#include "text/detail/uptozero.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace {

BSTR AllocatedBy(const char* function, BSTR bstr) {
    if (bstr == nullptr) throw VexOutOfMemory(function, VexCode::BstrAllocation);
    return bstr;
}

BSTR BstrOfBytes(const CStringA& text) {
    return SysAllocStringByteLen(text, static_cast<UINT>(text.GetLength()));
}

void FreeBstr(BSTR& target) noexcept {
    SysFreeString(std::exchange(target, nullptr));
}

// The byte count that stands directly in front of the text.
std::int32_t ByteCount(BSTR bstr) noexcept {
    std::int32_t count = 0;
    std::memcpy(&count, reinterpret_cast<const char*>(bstr) - sizeof count, sizeof count);
    return count;
}

// `count` units from `source` on, up to the first zero among them.
template <typename Unit>
kestrolumen::CStringOf<Unit> TextFromUnits(const Unit* source, std::int32_t count) {
    if (count <= 0) return {};
    const auto text =
        kestrolumen::detail::UpToZero(std::basic_string_view<Unit>(source, static_cast<std::size_t>(count)));
    return {text.data(), static_cast<int>(text.size())};
}

}  // namespace

void AssignBstrA(BSTR& target, bool ansiBytes, const char* text) {
    FreeBstr(target);
    if (text != nullptr) {
        target = ansiBytes ? SysAllocStringByteLen(text, static_cast<UINT>(std::strlen(text)))
                           : SysAllocString(CStringWFromAnsi(text));
    }
    AllocatedBy("AssignBstrA", target);
}

void AssignBstrW(BSTR& target, bool ansiBytes, const WCHAR* text) {
    FreeBstr(target);
    if (text != nullptr) {
        target = ansiBytes ? BstrOfBytes(CStringAFromWide(text)) : SysAllocString(text);
    }
    AllocatedBy("AssignBstrW", target);
}

void AssignBstrW(BSTR& target, bool ansiBytes, const StdWString& text) {
    AssignBstrW(target, ansiBytes, text.c_str());
}

BSTR MakeBstr(const char* text) {
    return AllocatedBy("MakeBstr", text != nullptr ? SysAllocString(CStringWFromAnsi(text)) : nullptr);
}

BSTR MakeBstr(const WCHAR* text) {
    return AllocatedBy("MakeBstr", SysAllocString(text));
}

VARIANT VariantFromCStringW(const CStringW& text) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = MakeBstr(text.GetString());
    return variant;
}

CStringW CStringWFromBstr(BSTR bstr, bool ansiBytes) {
    if (bstr == nullptr) return {};
    const std::int32_t bytes = ByteCount(bstr);
    if (!ansiBytes) return TextFromUnits(bstr, bytes / std::int32_t{sizeof(WCHAR)});
    return CStringWFromAnsi(TextFromUnits(reinterpret_cast<const char*>(bstr), bytes));
}

CStringA CStringAFromBstr(BSTR bstr, bool ansiBytes) {
    return CStringAFromWide(CStringWFromBstr(bstr, ansiBytes));
}

std::string StdStringFromBstr(BSTR bstr, bool ansiBytes) {
    const CStringA text = CStringAFromBstr(bstr, ansiBytes);
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

StdWString StdWStringFromBstr(BSTR bstr, bool ansiBytes) {
    const CStringW text = CStringWFromBstr(bstr, ansiBytes);
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

bool IsMissingVariant(const VARIANT* variant) noexcept {
    return variant == nullptr || (variant->vt == VT_ERROR && variant->scode == DISP_E_PARAMNOTFOUND);
}
