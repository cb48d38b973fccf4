#include "atlstr.h"

#include "ansitext.h"
#include "checkedlength.h"
#include "letters.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

namespace {

using atlstr::BufferHead;
using atlstr::CheckedLength;
using letters::IsSpace;
using letters::LetterCase;
using letters::MapAsciiCase;
using letters::MapCase;

// The text has to stand directly behind its head, in a buffer of our own as in the empty one.
static_assert(sizeof(atlstr::EmptyBuffer<char>) <= sizeof(BufferHead) + alignof(BufferHead));
static_assert(sizeof(atlstr::EmptyBuffer<WCHAR>) <= sizeof(BufferHead) + alignof(BufferHead));
static_assert(sizeof(CStringA) == sizeof(void*) && sizeof(CStringW) == sizeof(void*));

}  // namespace

template <typename Unit>
CStringT<Unit>::CStringT(PCXSTR text, int length) : CStringT() {
    if (text == nullptr || length <= 0) return;
    *this = WithCapacity(CheckedLength(length));
    std::char_traits<XCHAR>::copy(text_, text, static_cast<std::size_t>(length));
    SetLength(length);
}

template <typename Unit>
CStringT<Unit>::CStringT(XCHAR unit, int count) : CStringT() {
    if (count <= 0) return;
    std::fill_n(PrepareWrite(CheckedLength(count)), count, unit);
    SetLength(count);
}

template <typename Unit>
CStringT<Unit>::CStringT(YCHAR unit, int count) : CStringT() {
    const CStringT one(&unit, 1);
    if (count <= 0) return;
    Preallocate(CheckedLength(std::int64_t{one.GetLength()} * count));
    for (int i = 0; i < count; ++i) Append(one.text_, one.GetLength());
}

template <typename Unit>
int CStringT<Unit>::StringLength(PCXSTR text) {
    if (text == nullptr) return 0;
    return CheckedLength(static_cast<std::int64_t>(std::char_traits<XCHAR>::length(text)));
}

template <typename Unit>
CStringT<Unit> CStringT<Unit>::WithCapacity(int capacity) {
    const std::uint64_t units = static_cast<std::uint64_t>(capacity) + 1;
    const std::uint64_t bytes = sizeof(BufferHead) + units * sizeof(XCHAR);
    if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max()))
        throw std::bad_alloc();
    auto* head = new (::operator new(static_cast<std::size_t>(bytes))) BufferHead{1, 0, capacity};
    CStringT made;
    made.text_ = reinterpret_cast<PXSTR>(head + 1);
    made.text_[0] = 0;
    return made;
}

template <typename Unit>
void CStringT<Unit>::Free(BufferHead* head) noexcept {
    ::operator delete(head);
}

template <typename Unit>
typename CStringT<Unit>::PXSTR CStringT<Unit>::PrepareWrite(int capacity) {
    if (IsShared() || capacity > GetAllocLength()) {
        CStringT own = WithCapacity(std::max(capacity, GetLength()));
        std::copy_n(text_, GetLength(), own.text_);
        own.SetLength(GetLength());
        Swap(own);
    }
    return text_;
}

// The capacity for a text of `length` units that was appended to: ahead of need if it had a buffer of its
// own.
template <typename Unit>
int CStringT<Unit>::GrownCapacity(int length) const noexcept {
    if (IsShared()) return length;
    return static_cast<int>(
        std::clamp<std::int64_t>(std::int64_t{GetAllocLength()} * 3 / 2, length, atlstr::longestText));
}

// Makes room for `count` more units and gives the place behind the text.
template <typename Unit>
typename CStringT<Unit>::PXSTR CStringT<Unit>::PrepareAppend(std::size_t count) {
    const int length = CheckedLength(GetLength() + static_cast<std::int64_t>(count));
    PrepareWrite(length <= GetAllocLength() ? length : GrownCapacity(length));
    return text_ + GetLength();
}

// A byte of ANSI text gives one unit at most. A unit gives two bytes at most in a double-byte page; only
// UTF-8 as the ANSI code page can ask for more, and is measured then.
template <typename Unit>
void CStringT<Unit>::AppendConverted(PCYSTR text, int length) {
    if (text == nullptr || length <= 0) return;
    const auto size = static_cast<std::size_t>(length);
    constexpr std::size_t most = std::is_same_v<XCHAR, char> ? 2 : 1;
    std::size_t room = ansitext::IsAscii(text, size) ? size : most * size;
    std::size_t converted = ansitext::Convert(text, size, PrepareAppend(room), room);
    if (converted == 0) {
        room = ansitext::ConvertedLength(text, size);
        converted = ansitext::Convert(text, size, PrepareAppend(room), room);
    }
    SetLength(GetLength() + static_cast<int>(converted));
}

template <typename Unit>
CStringT<Unit> CStringT<Unit>::Joined(PCXSTR left, int length, const CStringT& right) {
    CStringT joined;
    joined.Preallocate(CheckedLength(std::int64_t{length} + right.GetLength()));
    joined.Append(left, length);
    joined.Append(right.text_, right.GetLength());
    return joined;
}

template <typename Unit>
void CStringT<Unit>::SetAt(int index, XCHAR unit) {
    if (index < 0 || index >= GetLength()) {
        throw std::out_of_range("CStringT::SetAt: index " + std::to_string(index) + " in a text of " +
                                std::to_string(GetLength()) + " units");
    }
    PrepareWrite(GetLength())[index] = unit;
}

template <typename Unit>
void CStringT<Unit>::SetString(PCXSTR text, int length) {
    if (text == nullptr || length <= 0) return Empty();
    if (IsShared() || length > GetAllocLength()) {
        *this = CStringT(text, length);
    } else {
        std::char_traits<XCHAR>::move(text_, text, static_cast<std::size_t>(length));
        SetLength(length);
    }
}

template <typename Unit>
void CStringT<Unit>::Append(PCXSTR text, int length) {
    if (text == nullptr || length <= 0) return;
    // What points into this string moves with its text.
    const bool inner = std::less_equal<>{}(text_, text) && std::less_equal<>{}(text, text_ + GetLength());
    const std::ptrdiff_t offset = inner ? text - text_ : 0;
    PXSTR const end = PrepareAppend(static_cast<std::size_t>(length));
    std::char_traits<XCHAR>::move(end, inner ? text_ + offset : text, static_cast<std::size_t>(length));
    SetLength(GetLength() + length);
}

template <typename Unit>
void CStringT<Unit>::Preallocate(int length) {
    if (length > 0) PrepareWrite(CheckedLength(length));
}

template <typename Unit>
void CStringT<Unit>::Truncate(int length) {
    if (length >= GetLength()) return;
    if (length <= 0 || IsShared()) {
        *this = Left(length);
    } else {
        SetLength(length);
    }
}

template <typename Unit>
CStringT<Unit> CStringT<Unit>::Mid(int first, int count) const {
    const int begin = std::clamp(first, 0, GetLength());
    const int taken = std::min(count, GetLength() - begin);
    if (taken == GetLength()) return *this;
    return CStringT(text_ + begin, taken);
}

template <typename Unit>
int CStringT<Unit>::FindFrom(View text, int start, ansitext::CharacterStarts<XCHAR>& starts) const noexcept {
    if (start < 0) return -1;
    auto found = Text().find(text, static_cast<std::size_t>(start));
    while (found != View::npos && !starts.At(found)) found = Text().find(text, found + 1);
    return found == View::npos ? -1 : static_cast<int>(found);
}

template <typename Unit>
int CStringT<Unit>::Find(PCXSTR text, int start) const noexcept {
    ansitext::CharacterStarts<XCHAR> starts(text_);
    return text == nullptr ? -1 : FindFrom(View(text), start, starts);
}

template <typename Unit>
int CStringT<Unit>::Find(XCHAR unit, int start) const noexcept {
    ansitext::CharacterStarts<XCHAR> starts(text_);
    return FindFrom(View(&unit, 1), start, starts);
}

template <typename Unit>
int CStringT<Unit>::ReverseFind(XCHAR unit) const noexcept {
    // From the front: what tells the halves of characters is read once that way.
    ansitext::CharacterStarts<XCHAR> starts(text_);
    int found = -1;
    for (int at = FindFrom(View(&unit, 1), 0, starts); at >= 0; at = FindFrom(View(&unit, 1), at + 1, starts))
        found = at;
    return found;
}

template <typename Unit>
CStringT<Unit> CStringT<Unit>::Tokenize(PCXSTR delimiters, int& position) const {
    const int length = GetLength();
    const View set = delimiters == nullptr ? View() : View(delimiters);
    ansitext::CharacterStarts<XCHAR> starts(text_);
    const auto delimits = [&](int index) {
        return set.find(text_[index]) != View::npos && starts.At(static_cast<std::size_t>(index));
    };
    int first = position < 0 ? length : position;
    while (first < length && delimits(first)) ++first;
    if (first >= length) {
        position = -1;
        return CStringT();
    }
    int last = first;
    while (last < length && !delimits(last)) ++last;
    position = last + 1;
    return Mid(first, last - first);
}

template <typename Unit>
CStringT<Unit>& CStringT<Unit>::TrimLeft() {
    int count = 0;
    while (count < GetLength() && IsSpace(text_[count])) ++count;
    if (count > 0) SetString(text_ + count, GetLength() - count);
    return *this;
}

template <typename Unit>
CStringT<Unit>& CStringT<Unit>::TrimRight() {
    int length = GetLength();
    while (length > 0 && IsSpace(text_[length - 1])) --length;
    // The last half of a character that looks like such a unit is none, and stays with all ahead of it.
    ansitext::CharacterStarts<XCHAR> starts(text_);
    for (int index = length; index < GetLength(); ++index) {
        if (!starts.At(static_cast<std::size_t>(index))) length = index + 1;
    }
    Truncate(length);
    return *this;
}

template <typename Unit>
CStringT<Unit>& CStringT<Unit>::MakeUpper() {
    if (!IsEmpty()) MapCase(PrepareWrite(GetLength()), Text().size(), LetterCase::upper);
    return *this;
}

template <typename Unit>
CStringT<Unit>& CStringT<Unit>::MakeLower() {
    if (!IsEmpty()) MapCase(PrepareWrite(GetLength()), Text().size(), LetterCase::lower);
    return *this;
}

// Always into a new buffer, at its exact size: either text may point into this string.
template <typename Unit>
int CStringT<Unit>::ReplaceAll(View from, View to) {
    if (from.empty()) return 0;
    const auto step = static_cast<int>(from.size());
    std::int64_t count = 0;
    ansitext::CharacterStarts<XCHAR> counted(text_), copied(text_);
    for (int at = FindFrom(from, 0, counted); at >= 0; at = FindFrom(from, at + step, counted)) ++count;
    if (count == 0) return 0;

    const auto growth = static_cast<std::int64_t>(to.size()) - static_cast<std::int64_t>(from.size());
    const int length = CheckedLength(GetLength() + count * growth);
    CStringT changed = WithCapacity(length);
    PXSTR end = changed.text_;
    int begin = 0;
    for (int at = FindFrom(from, 0, copied); at >= 0; at = FindFrom(from, begin, copied)) {
        end = std::copy(text_ + begin, text_ + at, end);
        end = std::copy(to.begin(), to.end(), end);
        begin = at + step;
    }
    std::copy(text_ + begin, text_ + GetLength(), end);
    changed.SetLength(length);
    Swap(changed);
    return static_cast<int>(count);
}

template <typename Unit>
int CStringT<Unit>::CompareNoCase(PCXSTR text) const {
    PCXSTR left = text_;
    PCXSTR right = text == nullptr ? Nil() : text;
    for (; letters::IsAscii(*left) && letters::IsAscii(*right); ++left, ++right) {
        const int difference =
            MapAsciiCase(*left, LetterCase::lower) - MapAsciiCase(*right, LetterCase::lower);
        if (difference != 0 || *left == 0) return difference;
    }
    return CStringT(left).MakeLower().Compare(CStringT(right).MakeLower());
}

template <typename Unit>
typename CStringT<Unit>::PXSTR CStringT<Unit>::GetBuffer(int length) {
    return PrepareWrite(CheckedLength(std::max(length, GetLength())));
}

template <typename Unit>
void CStringT<Unit>::ReleaseBuffer(int length) {
    const auto capacity = static_cast<std::size_t>(GetAllocLength());
    if (length < 0) {
        PCXSTR zero = std::char_traits<XCHAR>::find(text_, capacity, XCHAR{0});
        length = zero == nullptr ? GetAllocLength() : static_cast<int>(zero - text_);
    }
    length = std::min(length, GetAllocLength());
    if (text_ == Nil()) return;
    if (IsShared()) {
        *this = CStringT(text_, length);
    } else {
        SetLength(length);
    }
}

// All members but those of atlstrformat.cpp.
template class CStringT<char>;
template class CStringT<WCHAR>;
