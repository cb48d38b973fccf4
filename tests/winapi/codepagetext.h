// Conversions between code pages through buffers of exactly the right size.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

using Wide = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

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

// Asks for the size, converts into that much, and expects a refusal of one unit less.
template <class To, class From, class Call>
std::basic_string<To> Through(std::basic_string_view<From> text, std::size_t offset, Call call) {
    const ExactCopy<From> source(text, offset);
    const int size = call(source.Data(), source.Size(), nullptr, 0);
    const std::basic_string<To> blank(static_cast<std::size_t>(size), To{});
    const ExactCopy<To> target(blank, offset);
    EXPECT_EQ(call(source.Data(), source.Size(), target.Data(), size), size);
    // Wine sees no want of room where half a surrogate pair has it.
    if (size > 1 && (target.View().back() & 0xFC00) != 0xDC00) {
        const ExactCopy<To> tooSmall(std::basic_string_view<To>(blank).substr(1), offset);
        EXPECT_EQ(call(source.Data(), source.Size(), tooSmall.Data(), size - 1), 0);
    }
    return std::basic_string<To>(target.View());
}

inline Wide WideOf(UINT codePage, std::string_view text, DWORD flags = 0, std::size_t offset = 0) {
    return Through<WCHAR>(text, offset, [&](const char* from, int length, WCHAR* to, int size) {
        return MultiByteToWideChar(codePage, flags, from, length, to, size);
    });
}

inline std::string NarrowOf(UINT codePage, WideView text, DWORD flags = 0, std::size_t offset = 0) {
    return Through<char>(text, offset, [&](const WCHAR* from, int length, char* to, int size) {
        return WideCharToMultiByte(codePage, flags, from, length, to, size, nullptr, nullptr);
    });
}
