// The engine beside Microsoft's universal runtime, ucrtbase.dll, whose dialect it speaks. Left out is what
// Wine's runtime does in its own way: the size hh, the flags 0 and # beside a precision of integers,
// hexadecimal doubles, ties of the rounding, the names of what is no number's kinds.
#include "formatted.h"
#include "randomformats.h"

#include <windows.h>

#include <stdexcept>

namespace {

// Of the functions under its printf family, with %s of the format's own width.
template <typename Unit>
std::basic_string<Unit> UniversalFormattedV(const Unit* format, va_list arguments) {
    // Of Microsoft's corecrt_stdio_config.h: standard snprintf behaviour, legacy wide specifiers.
    constexpr unsigned long long options = 2 | 4;
    using Function = int(__cdecl*)(unsigned long long, Unit*, std::size_t, const Unit*, void*, va_list);
    static const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(
        GetProcAddress(LoadLibraryW(L"ucrtbase.dll"),
                       sizeof(Unit) == 1 ? "__stdio_common_vsprintf" : "__stdio_common_vswprintf")));
    if (function == nullptr) throw std::runtime_error("ucrtbase.dll has no printf family");
    Unit text[4096];
    const int length = function(options, text, 4096, format, nullptr, arguments);
    if (length < 0) throw std::runtime_error("the runtime refuses the format");
    return {text, static_cast<std::size_t>(length)};
}

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

TEST(MsFormatAsUniversal, RandomNumbers) {
    RandomFormats random(5);
    const auto specification = [&](const char* size) {
        return random.Below(2) == 0 ? random.Specification(size, "diuoxX", 30, "-+ ")
                                    : random.Specification(size, "diuoxX", -1);
    };
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
        const std::int64_t value = random.Integer();
        for (const char* size : {"I64", "ll", "j"}) ExpectAsUniversal(specification(size).c_str(), value);
        for (const char* size : {"I32", "l", "h", ""}) {
            ExpectAsUniversal(specification(size).c_str(), static_cast<int>(value));
        }
        for (const char* size : {"I", "z", "t"}) {
            ExpectAsUniversal(specification(size).c_str(), static_cast<std::ptrdiff_t>(value));
        }
        const std::string format = random.Specification("", "eEfFgG", i % 2 == 0 ? -1 : 30);
        ExpectAsUniversal(Widened(format).c_str(), random.Double(7));
    }
}

TEST(MsFormatAsUniversal, TextsOfBothWidths) {
    const void* const narrow = "narrow";
    const void* const wide = L"wide";
    const void* const null = nullptr;
    for (const char* field : {"", "9", "-9", "09", ".3", "-9.3", ".0"}) {
        for (const std::string type : {"s", "S", "hs", "ls", "ws", "hS", "lS", "wS"}) {
            const std::string format = std::string("[%") + field + type + "]";
            const bool sized = type[0] == 'l' || type[0] == 'w';
            ExpectAsUniversal(format.c_str(), sized || type == "S" ? wide : narrow);
            ExpectAsUniversal(Widened(format).c_str(), sized || type == "s" ? wide : narrow);
            ExpectAsUniversal(format.c_str(), null);
        }
    }
    for (const char* format : {"[%5c]", "[%-5c]", "[%C]", "[%hc]", "[%lc]", "[%wc]", "[%hC]", "[%lC]"}) {
        ExpectAsUniversal(format, 'x');
        ExpectAsUniversal(Widened(format).c_str(), 'x');
    }
}

}  // namespace
