// Formatted numbers beside the C library's, where the two dialects agree.
#include "fuzz.h"

#include "text/format.h"

#include <cmath>
#include <cstring>
#include <string>

using fuzz::Check;

namespace {

// A specification out of three bytes: flags, width, precision; `size` and a conversion end it. Without
// precision the dialects differ where many digits may be asked for.
std::string Specification(const std::uint8_t* bytes, const char* size, const char* conversions,
                          int mostPrecision) {
    const char conversion = conversions[bytes[2] % std::strlen(conversions)];
    // The GNU C library loses a digit of %#g where rounding gives a new whole one: "%#.2g" of 99.6 is 1.e+02
    // there.
    const bool mayBeFull = conversion != 'g' && conversion != 'G';
    std::string text = "%";
    for (int flag = 0; flag < 5; ++flag) {
        if ((bytes[0] >> flag & 1) != 0 && (mayBeFull || flag != 3)) text += "-+ #0"[flag];
    }
    if (bytes[1] < 128) text += std::to_string(bytes[1] % 40 + 1);
    if (bytes[0] >= 128 || mostPrecision != 40) {
        text += "." + std::to_string((bytes[2] * 4 + (bytes[0] >> 5 & 3)) % (mostPrecision + 1));
    }
    return text + size + conversion;
}

template <typename Value>
void CheckAsTheCLibrary(const std::string& format, Value value) {
    char text[2048];
    std::snprintf(text, sizeof text, format.c_str(), value);
    Check(StdStringFormat(format.c_str(), value) == text, "narrow text is the C library's");
    const CStringW wideFormat(format.c_str());
    Check(CStringWFormat(wideFormat.GetString(), value) == CStringW(text), "wide text is the narrow one");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 11) return 0;
    std::int64_t whole = 0;
    double value = 0;
    std::memcpy(&whole, data + 3, sizeof whole);
    std::memcpy(&value, data + 3, sizeof value);
    for (const char* width : {"", "h", "hh"}) {
        CheckAsTheCLibrary(Specification(data, width, "diuoxX", 40), static_cast<int>(whole));
    }
    CheckAsTheCLibrary(Specification(data, "ll", "diuoxX", 40), whole);
    // The same bits, and fractions that are ties in binary or in decimal.
    for (const double number :
         {value, static_cast<double>(whole % 100'000) / 64, static_cast<double>(whole % 100'000) / 1e6}) {
        if (!std::isfinite(number)) continue;
        CheckAsTheCLibrary(Specification(data, "", "eEfFgG", 40), number);
        CheckAsTheCLibrary(Specification(data, "", "eg", 800), number);
        CheckAsTheCLibrary(Specification(data, "", "aA", 20), number);
    }
    return 0;
}
