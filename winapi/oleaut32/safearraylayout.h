// Where a SAFEARRAY has what its structure doesn't name.
#pragma once

#include "winapi/safearray.h"

#include <cstddef>
#include <span>

namespace winapi {

// In front of each descriptor, as on Windows: the IID of the elements, or their VARTYPE in the last four
// bytes.
constexpr std::size_t prefixBytes = sizeof(IID);
constexpr USHORT interfaces = FADF_UNKNOWN | FADF_DISPATCH;  // what elements are

inline char* HiddenIid(SAFEARRAY* array) noexcept {
    return reinterpret_cast<char*>(array) - prefixBytes;
}

inline char* HiddenType(SAFEARRAY* array) noexcept {
    return reinterpret_cast<char*>(array) - sizeof(ULONG);
}

// In descriptor order.
inline std::span<SAFEARRAYBOUND> Bounds(SAFEARRAY* array) noexcept {
    return {array->rgsabound, array->cDims};
}

}  // namespace winapi
