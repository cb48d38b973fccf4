#include "numbertext.h"

#include "winapi/dispatch.h"
#include "winapi/errorcodes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

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
    static constexpr std::string_view digits = "0123456789";
    std::string text = Ascii(bstr);
    if (text.starts_with('+')) text.erase(0, 1);
    if (text.starts_with('-')) text.erase(1, text.find_first_not_of(' ', 1) - 1);
    std::string_view rest = text;
    if (rest.starts_with('-')) rest.remove_prefix(1);

    const auto skipDigits = [&rest] {
        const auto count = std::min(rest.find_first_not_of(digits), rest.size());
        rest.remove_prefix(count);
        return count;
    };
    auto count = skipDigits();
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        count += skipDigits();
    }
    bool whole = count > 0;
    if (rest.starts_with('e') || rest.starts_with('E')) {
        rest.remove_prefix(1);
        if (rest.starts_with('+') || rest.starts_with('-')) rest.remove_prefix(1);
        whole = whole && skipDigits() > 0;
    }
    if (!whole || !rest.empty()) Refuse(DISP_E_TYPEMISMATCH);

    Number value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc()) {
        // Too far from 0, unless a negative exponent makes it too near to it.
        if (text.find('-', 1) == std::string::npos) Refuse(DISP_E_OVERFLOW);
        return 0;
    }
    return value;
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
