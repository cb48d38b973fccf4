// Microsoft's string classes CStringW and CStringA, for the toolchains that lack them: the operations that
// the product calls, by their published names and behaviour (Microsoft's "CStringT Class" and
// "CSimpleStringT Class" pages).
//
// A string is one pointer wide. A copy shares its buffer until one side changes it; the counts are atomic,
// so that copies of one string may live on several threads, while one object belongs to one thread at a
// time. The empty string owns no buffer. A zero unit stands behind the text at all times, and zero units
// inside the text are text: only operations that take a plain pointer end at the first of them.
//
// Lengths, indices and counts are in units, never in characters. Text of the other width is converted by
// the ANSI code page: what can't be carried over is replaced, without a word. A null pointer counts as empty
// text. Counts and indices outside the text are clamped; where that says nothing, the comment says what
// happens instead.
//
// Failures: std::bad_alloc, and std::length_error beyond 2^31 - 2 units. Either leaves the string as it was.
#pragma once

#include "msformat.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <compare>
#include <concepts>
#include <cstdarg>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ansitext {
template <typename Unit>
class CharacterStarts;
}

namespace atlstr {

// What stands in front of the units of a buffer.
struct BufferHead {
    std::atomic<int> references;
    int length;
    int capacity;  // units, the terminator not counted
};

template <typename Unit>
struct EmptyBuffer {
    BufferHead head{1, 0, 0};
    Unit terminator = 0;
};

// Shared by all empty strings; never counted, written or freed.
template <typename Unit>
inline constinit const EmptyBuffer<Unit> emptyBuffer{};

}  // namespace atlstr

template <typename Unit>
class CStringT {
  public:
    using XCHAR = Unit;
    using YCHAR = std::conditional_t<std::is_same_v<Unit, char>, WCHAR, char>;
    using PXSTR = XCHAR*;
    using PCXSTR = const XCHAR*;
    using PCYSTR = const YCHAR*;

    CStringT() noexcept : text_(Nil()) {}
    CStringT(const CStringT& other) noexcept : text_(other.text_) { Retain(); }
    CStringT(CStringT&& other) noexcept : text_(std::exchange(other.text_, Nil())) {}
    CStringT(PCXSTR text) : CStringT(text, StringLength(text)) {}
    CStringT(PCYSTR text) : CStringT(text, CStringT<YCHAR>::StringLength(text)) {}
    CStringT(const CStringT<YCHAR>& other) : CStringT(other.GetString()) {}
    // Exactly `length` units at `text`, zero units included.
    CStringT(PCXSTR text, int length);
    CStringT(PCYSTR text, int length) : CStringT() { AppendConverted(text, length); }
    explicit CStringT(XCHAR unit, int count = 1);
    explicit CStringT(YCHAR unit, int count = 1);
    ~CStringT() { Release(); }

    CStringT& operator=(const CStringT& other) noexcept {
        CStringT(other).Swap(*this);
        return *this;
    }
    CStringT& operator=(CStringT&& other) noexcept {
        CStringT(std::move(other)).Swap(*this);
        return *this;
    }
    CStringT& operator=(PCXSTR text) {
        SetString(text);
        return *this;
    }
    CStringT& operator=(PCYSTR text) { return *this = CStringT(text); }
    CStringT& operator=(const CStringT<YCHAR>& other) { return *this = CStringT(other); }
    CStringT& operator=(XCHAR unit) {
        SetString(&unit, 1);
        return *this;
    }
    CStringT& operator=(YCHAR unit) { return *this = CStringT(unit); }

    [[nodiscard]] int GetLength() const noexcept { return Head().length; }
    [[nodiscard]] bool IsEmpty() const noexcept { return GetLength() == 0; }
    // Units that fit without a new buffer.
    [[nodiscard]] int GetAllocLength() const noexcept { return Head().capacity; }
    [[nodiscard]] PCXSTR GetString() const noexcept { return text_; }
    operator PCXSTR() const noexcept { return text_; }

    // The unit at `index`; zero at the text's end and anywhere outside the text.
    [[nodiscard]] XCHAR GetAt(int index) const noexcept {
        return index >= 0 && index < GetLength() ? text_[index] : XCHAR{0};
    }
    XCHAR operator[](int index) const noexcept { return GetAt(index); }
    // Throws std::out_of_range for an index outside the text.
    void SetAt(int index, XCHAR unit);

    // Gives back the buffer too.
    void Empty() noexcept { CStringT().Swap(*this); }
    // May point into this very string.
    void SetString(PCXSTR text) { SetString(text, StringLength(text)); }
    void SetString(PCXSTR text, int length);
    void Append(PCXSTR text) { Append(text, StringLength(text)); }
    void Append(PCXSTR text, int length);
    // Makes room for `length` units, so that growing up to there needs no further buffer.
    void Preallocate(int length);
    // Cuts the text to its first `length` units.
    void Truncate(int length);

    CStringT& operator+=(const CStringT& other) {
        if (text_ == Nil()) return *this = other;
        Append(other.text_, other.GetLength());
        return *this;
    }
    CStringT& operator+=(PCXSTR text) {
        Append(text);
        return *this;
    }
    CStringT& operator+=(PCYSTR text) {
        AppendConverted(text, CStringT<YCHAR>::StringLength(text));
        return *this;
    }
    CStringT& operator+=(const CStringT<YCHAR>& other) { return *this += other.GetString(); }
    CStringT& operator+=(XCHAR unit) {
        Append(&unit, 1);
        return *this;
    }
    CStringT& operator+=(YCHAR unit) {
        AppendConverted(&unit, 1);
        return *this;
    }

    [[nodiscard]] CStringT Left(int count) const { return Mid(0, count); }
    [[nodiscard]] CStringT Right(int count) const {
        return Mid(GetLength() - std::clamp(count, 0, GetLength()));
    }
    [[nodiscard]] CStringT Mid(int first) const { return Mid(first, GetLength()); }
    [[nodiscard]] CStringT Mid(int first, int count) const;

    // The index of the first match at or behind `start`, or -1; also -1 for a `start` outside the text. Empty
    // text is found at `start`. In CStringA of a double-byte code page a match begins with a whole character.
    [[nodiscard]] int Find(PCXSTR text, int start = 0) const noexcept;
    [[nodiscard]] int Find(XCHAR unit, int start = 0) const noexcept;
    // The index of the last match, or -1.
    [[nodiscard]] int ReverseFind(XCHAR unit) const noexcept;

    // Skips a run of units of the set `delimiters`, gives the text up to the next of them and moves
    // `position` behind that one, or behind the end. When nothing is left it gives an empty string and sets
    // `position` to -1, as for a `position` outside the text. Without delimiters the rest is one token.
    [[nodiscard]] CStringT Tokenize(PCXSTR delimiters, int& position) const;

    // White space: U+0009 to U+000D and the blank, in wide text also Unicode's other spaces.
    CStringT& Trim() { return TrimRight().TrimLeft(); }
    CStringT& TrimLeft();
    CStringT& TrimRight();

    // By the system's case rules, unit by unit: the length stays. Narrow characters whose other case the code
    // page lacks stay as they are.
    CStringT& MakeUpper();
    CStringT& MakeLower();

    // Each gives the number of occurrences. An empty `from` occurs nowhere; a null `to` is empty. In CStringA
    // an occurrence begins with a whole character, as in Find.
    int Replace(PCXSTR from, PCXSTR to) {
        return from == nullptr ? 0 : ReplaceAll(from, to == nullptr ? View() : View(to));
    }
    int Replace(XCHAR from, XCHAR to) { return from == to ? 0 : ReplaceAll(View(&from, 1), View(&to, 1)); }

    // Negative, zero or positive, by the value of the units up to the first zero on either side.
    [[nodiscard]] int Compare(PCXSTR text) const noexcept {
        return View(text_).compare(View(text == nullptr ? Nil() : text));
    }
    // The same after MakeLower of both sides.
    [[nodiscard]] int CompareNoCase(PCXSTR text) const;

    // Printf-style text in Microsoft's dialect, see msformat.h: numbers, pointers, and texts as pointers or as
    // strings of these classes. Anything else doesn't compile, and what doesn't suit its conversion is written
    // by its own kind. The arguments may hold this string's text.
    template <typename... Arguments>
    requires(std::constructible_from<msformat::Argument, const Arguments&>&&...) void Format(
        PCXSTR format, const Arguments&... arguments) {
        CStringT formatted;
        formatted.AppendFormat(format, arguments...);
        Swap(formatted);
    }
    template <typename... Arguments>
    requires(std::constructible_from<msformat::Argument, const Arguments&>&&...) void AppendFormat(
        PCXSTR format, const Arguments&... arguments) {
        AppendFormatted(
            format, std::array<msformat::Argument, sizeof...(arguments)>{msformat::Argument(arguments)...});
    }
    // The same with arguments of which only the caller knows the types: they have to agree with the format.
    void FormatV(PCXSTR format, va_list arguments);
    void AppendFormatV(PCXSTR format, va_list arguments);

    // A buffer of this string's own, with room for at least `length` units and a terminator, which holds the
    // text as it was. Writes through it are the caller's until ReleaseBuffer, and so is the terminator.
    [[nodiscard]] PXSTR GetBuffer(int length = 0);
    // The same, with the length set already; units behind the former text are whatever memory held.
    [[nodiscard]] PXSTR GetBufferSetLength(int length) {
        PXSTR buffer = GetBuffer(length);
        SetLength(std::max(length, 0));
        return buffer;
    }
    // -1: the text ends before its first zero unit. Else its length is `length`, and at most GetAllocLength.
    void ReleaseBuffer(int length = -1);
    void ReleaseBufferSetLength(int length) { ReleaseBuffer(length < 0 ? 0 : length); }

    void Swap(CStringT& other) noexcept { std::swap(text_, other.text_); }

    friend bool operator==(const CStringT& left, const CStringT& right) noexcept {
        return left.Text() == right.Text();
    }
    friend bool operator==(const CStringT& left, PCXSTR right) noexcept { return left.Compare(right) == 0; }
    friend bool operator==(const CStringT& left, PCYSTR right) { return left == CStringT(right); }
    friend bool operator==(const CStringT& left, XCHAR right) noexcept {
        return left.GetLength() == 1 && left.text_[0] == right;
    }
    friend std::strong_ordering operator<=>(const CStringT& left, const CStringT& right) noexcept {
        return left.Text().compare(right.Text()) <=> 0;
    }
    friend std::strong_ordering operator<=>(const CStringT& left, PCXSTR right) noexcept {
        return left.Compare(right) <=> 0;
    }

    // A left side that is about to go lends its buffer to the result.
    friend CStringT operator+(CStringT left, const CStringT& right) { return std::move(left += right); }
    friend CStringT operator+(CStringT left, PCXSTR right) { return std::move(left += right); }
    friend CStringT operator+(CStringT left, XCHAR right) { return std::move(left += right); }
    friend CStringT operator+(CStringT left, YCHAR right) { return std::move(left += right); }
    friend CStringT operator+(PCXSTR left, const CStringT& right) {
        return Joined(left, StringLength(left), right);
    }
    friend CStringT operator+(XCHAR left, const CStringT& right) { return Joined(&left, 1, right); }
    friend CStringT operator+(YCHAR left, const CStringT& right) { return CStringT(left) += right; }

    // The units before the first zero; 0 for a null pointer.
    [[nodiscard]] static int StringLength(PCXSTR text);

  private:
    using BufferHead = atlstr::BufferHead;
    using View = std::basic_string_view<XCHAR>;

    static PXSTR Nil() noexcept { return const_cast<PXSTR>(&atlstr::emptyBuffer<XCHAR>.terminator); }
    [[nodiscard]] BufferHead& Head() const noexcept { return reinterpret_cast<BufferHead*>(text_)[-1]; }
    [[nodiscard]] View Text() const noexcept { return {text_, static_cast<std::size_t>(GetLength())}; }
    [[nodiscard]] bool IsShared() const noexcept {
        return text_ == Nil() || Head().references.load(std::memory_order_acquire) > 1;
    }
    void Retain() noexcept {
        if (text_ != Nil()) Head().references.fetch_add(1, std::memory_order_relaxed);
    }
    // The only reference needs no atomic subtraction: nobody else could add one meanwhile.
    void Release() noexcept {
        if (text_ == Nil()) return;
        if (!IsShared() || Head().references.fetch_sub(1, std::memory_order_acq_rel) == 1) Free(&Head());
    }

    static CStringT Joined(PCXSTR left, int length, const CStringT& right);
    static void Free(BufferHead* head) noexcept;
    [[nodiscard]] static CStringT WithCapacity(int capacity);
    void SetLength(int length) noexcept { text_[Head().length = length] = 0; }
    PXSTR PrepareWrite(int capacity);
    [[nodiscard]] int GrownCapacity(int length) const noexcept;
    PXSTR PrepareAppend(std::size_t count);
    void AppendConverted(PCYSTR text, int length);
    void AppendFormatted(PCXSTR format, std::span<const msformat::Argument> arguments);
    template <typename Fill>
    void AppendFilled(Fill fill);
    [[nodiscard]] int FindFrom(View text, int start, ansitext::CharacterStarts<XCHAR>& starts) const noexcept;
    int ReplaceAll(View from, View to);

    PXSTR text_;
};

extern template class CStringT<char>;
extern template class CStringT<WCHAR>;

using CStringA = CStringT<char>;
using CStringW = CStringT<WCHAR>;
