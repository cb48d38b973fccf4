// Formatted text in the string classes.
#include "atlstr.h"

#include "checkedlength.h"
#include "msformat.h"

#include <algorithm>
#include <climits>

// Most texts are short: they are formatted once. Only a longer one is formatted again, at its size.
template <typename Unit>
template <typename Fill>
void CStringT<Unit>::AppendFilled(Fill fill) {
    XCHAR local[256];
    const std::size_t length = fill(local, std::size(local));
    const int units =
        atlstr::CheckedLength(static_cast<std::int64_t>(std::min<std::size_t>(length, INT_MAX)));
    if (length <= std::size(local)) return Append(local, units);
    CStringT formatted = WithCapacity(units);
    fill(formatted.text_, length);
    formatted.SetLength(units);
    *this += formatted;
}

template <typename Unit>
void CStringT<Unit>::FormatV(PCXSTR format, va_list arguments) {
    CStringT formatted;
    formatted.AppendFormatV(format, arguments);
    Swap(formatted);
}

template <typename Unit>
void CStringT<Unit>::AppendFormatV(PCXSTR format, va_list arguments) {
    AppendFilled([&](XCHAR* target, std::size_t capacity) {
        return msformat::Fill(target, capacity, format, arguments);
    });
}

template <typename Unit>
void CStringT<Unit>::AppendFormatted(PCXSTR format, std::span<const msformat::Argument> arguments) {
    AppendFilled([&](XCHAR* target, std::size_t capacity) {
        return msformat::Fill(target, capacity, format, arguments);
    });
}

template void CStringT<char>::FormatV(PCXSTR, va_list);
template void CStringT<char>::AppendFormatV(PCXSTR, va_list);
template void CStringT<char>::AppendFormatted(PCXSTR, std::span<const msformat::Argument>);
template void CStringT<WCHAR>::FormatV(PCXSTR, va_list);
template void CStringT<WCHAR>::AppendFormatV(PCXSTR, va_list);
template void CStringT<WCHAR>::AppendFormatted(PCXSTR, std::span<const msformat::Argument>);
