// A view of text in any class that the library speaks: how an operation takes all of them in one form.
#pragma once

#include "text/strings.h"

#include <comdef.h>

#include <concepts>

namespace kestrolumen {

// Converts from zero-terminated text, CStringA or CStringW, standard strings and their views, and wide from
// _bstr_t. Counted text is seen whole, its zero units included. A null pointer is empty text.
template <typename Unit>
class TextView : public std::basic_string_view<Unit> {
    using View = std::basic_string_view<Unit>;

  public:
    TextView(const Unit* text) noexcept : View(text == nullptr ? View() : View(text)) {}
    TextView(const CStringOf<Unit>& text) noexcept
        : View(text.GetString(), static_cast<std::size_t>(text.GetLength())) {}
    TextView(const std::basic_string<Unit>& text) noexcept : View(text) {}
    TextView(View text) noexcept : View(text) {}
    // A template, so that nothing is made a _bstr_t on the way.
    template <std::same_as<_bstr_t> Bstr>
    requires std::same_as<Unit, WCHAR> TextView(const Bstr& text)
    noexcept : View(static_cast<const WCHAR*>(text), text.length()) {}
};

using TextViewA = TextView<char>;
using TextViewW = TextView<WCHAR>;

}  // namespace kestrolumen
