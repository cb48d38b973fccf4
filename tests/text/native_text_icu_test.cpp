// The case of every unit held against ICU.
#include "text/search.h"

#include <unicode/uchar.h>

#include <gtest/gtest.h>

namespace {

// One to one and back, as the functions on single units are.
WCHAR Mapped(UChar32 unit, UChar32 (*there)(UChar32), UChar32 (*back)(UChar32)) {
    const UChar32 mapped = there(unit);
    return static_cast<WCHAR>(mapped < 0x10000 && back(mapped) == unit ? mapped : unit);
}

TEST(Icu, AgreesAboutCase) {
    for (UChar32 unit = 1; unit < 0x10000; ++unit) {
        const WCHAR text[] = {static_cast<WCHAR>(unit), 0};
        ASSERT_EQ(UpperW(text)[0], Mapped(unit, u_toupper, u_tolower)) << std::hex << unit;
        ASSERT_EQ(LowerW(text)[0], Mapped(unit, u_tolower, u_toupper)) << std::hex << unit;
    }
}

}  // namespace
