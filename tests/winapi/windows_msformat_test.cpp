// The engine beside the universal runtime, whose dialect it speaks. Left out is what Wine's runtime does in
// its own way: the size hh, the flags 0 and # beside a precision of integers, hexadecimal doubles, ties of
// the rounding, the names of what is no number's kinds.
#include "formatted.h"
#include "randomformats.h"
#include "windows_runtime.h"

#include <limits>

namespace {

template <typename Unit>
void ExpectAsUniversal(const Unit* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    EXPECT_EQ(FormattedV(format, arguments), UniversalFormattedV(format, again))
        << testing::PrintToString(std::basic_string<Unit>(format));
    va_end(again);
    va_end(arguments);
}

TEST(MsFormatAsUniversal, SizesOfIntegers) {
    RandomFormats random(5);
    const auto specification = [&](const char* size) {
        return random.Below(2) == 0 ? random.Specification(size, "diuoxX", 30, true, "-+ ")
                                    : random.Specification(size, "diuoxX", -1);
    };
    for (int i = 0; i < 2000; ++i) {
        const std::int64_t value = random.Integer();
        for (const char* size : {"I64", "ll", "j"}) {
            ExpectAsUniversal(specification(size).c_str(), value);
        }
        for (const char* size : {"I32", "l", "h", ""}) {
            ExpectAsUniversal(specification(size).c_str(), static_cast<int>(value));
        }
        for (const char* size : {"I", "z", "t"}) {
            ExpectAsUniversal(specification(size).c_str(), static_cast<std::ptrdiff_t>(value));
        }
        if (HasFailure()) return;
    }
}

TEST(MsFormatAsUniversal, TextsOfBothWidths) {
    const char* const narrow = "narrow";
    const wchar_t* const wide = L"wide";
    const char* const null = nullptr;
    for (const char* field : {"", "9", "-9", "09", ".3", "9.3", "-9.3", ".0"}) {
        for (const char* type : {"s", "S", "hs", "ls", "ws", "hS", "lS", "wS"}) {
            const std::string format = std::string("[%") + field + type + "]";
            const std::wstring wideFormat(format.begin(), format.end());
            const bool other = std::string(type) == "S";
            const bool takesWide = type[0] == 'l' || type[0] == 'w' || other;
            const bool wideTakesWide = type[0] == 'l' || type[0] == 'w' || std::string(type) == "s";
            ExpectAsUniversal(format.c_str(), takesWide ? static_cast<const void*>(wide) : narrow);
            ExpectAsUniversal(wideFormat.c_str(), wideTakesWide ? static_cast<const void*>(wide) : narrow);
            ExpectAsUniversal(format.c_str(), null);
            ExpectAsUniversal(wideFormat.c_str(), null);
        }
    }
}

TEST(MsFormatAsUniversal, Characters) {
    for (const char* format :
         {"[%c]", "[%5c]", "[%-5c]", "[%C]", "[%hc]", "[%lc]", "[%wc]", "[%hC]", "[%lC]"}) {
        ExpectAsUniversal(format, 'x');
        ExpectAsUniversal(std::wstring(format, format + std::strlen(format)).c_str(), 'x');
    }
}

TEST(MsFormatAsUniversal, PointersAndWhatIsNoNumber) {
    const auto pointer = reinterpret_cast<const void*>(std::uintptr_t{0xAB12});
    for (const char* format : {"[%p]", "[%20p]", "[%-20p]"}) ExpectAsUniversal(format, pointer);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const char* format : {"%f", "%G", "%e", "%A", "%+f", "% g", "%8f", "%-8f|"}) {
        ExpectAsUniversal(format, infinity);
        ExpectAsUniversal(format, -infinity);
    }
}

TEST(MsFormatAsUniversal, RandomDoubles) {
    RandomFormats random(6);
    for (int i = 0; i < 2000; ++i) {
        const std::string format = random.Specification("", "eEfFgG", 30);
        const std::wstring wideFormat(format.begin(), format.end());
        const double value = random.DoubleWithoutTies();
        ExpectAsUniversal(format.c_str(), value);
        ExpectAsUniversal(wideFormat.c_str(), value);
        if (HasFailure()) return;
    }
}

}  // namespace
