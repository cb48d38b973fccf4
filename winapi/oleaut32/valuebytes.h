// What each type of value takes.
#pragma once

#include "winapi/variant.h"

#include <array>

namespace winapi {

// The bytes of a value of a base type, as an array or a reference has it; 0 for a type that holds nothing.
constexpr ULONG ValueBytes(VARTYPE type) noexcept {
    constexpr BYTE pointer = sizeof(void*);
    // In the order of the types, from VT_EMPTY to VT_UINT.
    constexpr std::array<BYTE, VT_UINT + 1> bytes = {
        0, 0, 2, 4, 4, 8, 8, 8, pointer, pointer, 4, 2, sizeof(VARIANT), pointer, sizeof(DECIMAL),
        0, 1, 1, 2, 4, 8, 8, 4, 4};
    return type < bytes.size() ? bytes[type] : 0;
}

}  // namespace winapi
