// A plain model of UTF-8 and UTF-16, one character at a time by the table of well-formed sequences, and texts
// to hold against it.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace utfmodel {

using Wide = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

// With U+FFFD for each maximal subpart of an ill-formed sequence, and for each lone surrogate.
[[nodiscard]] Wide WideFromUtf8(std::string_view text);
[[nodiscard]] std::string Utf8FromWide(WideView text);

// `length` units of characters of all lengths in runs of one kind, with ill-formed sequences between them if
// `illFormed` says so.
[[nodiscard]] std::string RandomUtf8(std::mt19937& random, std::size_t length, bool illFormed);
[[nodiscard]] Wide RandomWide(std::mt19937& random, std::size_t length, bool illFormed);

// A copy of the text that ends where its block of memory ends and begins `offset` units behind the block's
// beginning: what is read or written beyond it is an error that address checkers see.
template <class Unit>
class ExactCopy {
  public:
    ExactCopy(std::basic_string_view<Unit> text, std::size_t offset)
        : block_(new Unit[offset + text.size()]), text_(block_.get() + offset), size_(text.size()) {
        text.copy(text_, size_);
    }
    [[nodiscard]] Unit* Data() const noexcept { return text_; }
    [[nodiscard]] int Size() const noexcept { return static_cast<int>(size_); }
    [[nodiscard]] std::basic_string_view<Unit> View() const noexcept { return {text_, size_}; }

  private:
    std::unique_ptr<Unit[]> block_;
    Unit* text_;
    std::size_t size_;
};

}  // namespace utfmodel
