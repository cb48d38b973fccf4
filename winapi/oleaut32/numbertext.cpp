#include "numbertext.h"

#include "winapi/dispatch.h"
#include "winapi/errorcodes.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace winapi {

std::string Ascii(BSTR bstr) {
    std::string text;
    for (const OLECHAR unit : std::basic_string_view<OLECHAR>(bstr ? bstr : u"", SysStringLen(bstr))) {
        const bool blank = unit == ' ' || (unit >= '\t' && unit <= '\r');
        text += blank ? ' ' : unit > ' ' && unit < 0x7F ? static_cast<char>(unit) : '?';
    }
    text.erase(0, text.find_first_not_of(' '));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

template <std::floating_point Number>
Number NumberFromText(BSTR bstr) {
    std::string text = Ascii(bstr);
    if (text.starts_with('+')) text.erase(0, 1);
    if (text.starts_with('-')) text.erase(1, text.find_first_not_of(' ', 1) - 1);
    Number value = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    // Names of what is no number are none here.
    const bool isNumber = text.find_first_not_of("0123456789.eE+-") == std::string::npos;
    if (error == std::errc::invalid_argument || end != last || !isNumber) Refuse(DISP_E_TYPEMISMATCH);
    if (error == std::errc()) return value;
    // Too far from 0, unless a negative exponent makes it too near to it.
    if (text.find('-', 1) == std::string::npos) Refuse(DISP_E_OVERFLOW);
    return 0;
}

template double NumberFromText<double>(BSTR);
template long double NumberFromText<long double>(BSTR);

std::string FloatingText(double value, int digits) {
    if (std::isnan(value)) return "1.#QNAN";
    if (std::isinf(value)) return value < 0 ? "-1.#INF" : "1.#INF";
    if (value == 0) return "0";
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, digits).ptr;
    std::string result(text.data(), end);
    if (const auto at = result.find('e'); at != std::string::npos) result[at] = 'E';
    return result;
}

}  // namespace winapi
