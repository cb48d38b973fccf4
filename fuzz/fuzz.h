// What the fuzz targets share: their entry, as libFuzzer calls it, and text of any bytes.
#pragma once

#include "text/strings.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

inline void Check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "doesn't hold: %s\n", what);
    std::abort();
}

inline CStringA Narrow(Bytes bytes) {
    return CStringA(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

// Bytes below 0x80 are units of their own; the others, with the byte behind, are units beyond ASCII.
inline CStringW Wide(Bytes bytes) {
    CStringW text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        unsigned unit = bytes[i];
        if (unit >= 0x80 && i + 1 < bytes.size()) unit = unit << 8 | bytes[++i];
        text += static_cast<WCHAR>(unit);
    }
    return text;
}

}  // namespace fuzz
