#pragma once

#include "text/text.h"

#include <cstdint>

// The system's sentence for an error code or an HRESULT, without the line end that it has there. `language`
// is a primary language of Microsoft's list, as 9 for English, or 0 for the user's own. Where the system has
// no text, not in that language, or one with a place for an argument, the result is "err=" and the code as a
// signed decimal number.
[[nodiscard]] CStringW SystemErrorText(std::uint32_t code, std::uint16_t language);
