// The one vector step of the UTF-8 conversions that pays without AVX2. It keeps the rules of utf8_avx2.h.
#pragma once

#include <string_view>

#include "vectors.h"

namespace winapi::utf8::baseline {

[[nodiscard]] Progress CountUtf16(std::string_view text) noexcept;

}  // namespace winapi::utf8::baseline
