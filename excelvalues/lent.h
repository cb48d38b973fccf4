// Values whose records belong to somebody else, as handles that ask for no memory.
#pragma once

#include "excelvalues/value.h"

#include <cstddef>

namespace kestrolumen::detail {

// Room for the control block of one handle.
struct ControlBlockRoom {
    // What a control block holds is two counts, a pointer to the value and one to this room, in every
    // standard library that we know.
    static constexpr std::size_t size = 8 * sizeof(void*);
    alignas(std::max_align_t) std::byte bytes[size];
};

// Puts one control block into its room. The room outlives it.
template <typename T>
struct ControlBlockAllocator {
    using value_type = T;

    explicit ControlBlockAllocator(ControlBlockRoom& target) noexcept : room(&target) {}
    template <typename U>
    ControlBlockAllocator(const ControlBlockAllocator<U>& other) noexcept : room(other.room) {}

    [[nodiscard]] T* allocate(std::size_t) noexcept {
        static_assert(sizeof(T) <= ControlBlockRoom::size && alignof(T) <= alignof(std::max_align_t));
        return reinterpret_cast<T*>(room->bytes);
    }
    void deallocate(T*, std::size_t) noexcept {}

    template <typename U>
    friend bool operator==(const ControlBlockAllocator& a, const ControlBlockAllocator<U>& b) noexcept {
        return a.room == b.room;
    }

    ControlBlockRoom* room;
};

}  // namespace kestrolumen::detail

// A handle around a record that stays its owner's, Excel's above all, under ExcelOwnsItSoDoNotFree. Its
// control block stands in this object, so that lending costs no memory. Every copy of the handle has to go
// before this object does, and this object before the record:
//
//     const LentXXloper argument(record);  // as Excel handed it over
//     CallExcel(xlUDF, target, argument.Handle());
class LentXXloper {
  public:
    explicit LentXXloper(const XLOPER12* record) noexcept
        : handle_(static_cast<const XXloper*>(record), ExcelOwnsItSoDoNotFree(),
                  kestrolumen::detail::ControlBlockAllocator<XXloper>(room_)) {}
    LentXXloper(const LentXXloper&) = delete;
    LentXXloper& operator=(const LentXXloper&) = delete;

    // Valid as long as this object.
    [[nodiscard]] const XXloperPtr& Handle() const noexcept { return handle_; }

  private:
    kestrolumen::detail::ControlBlockRoom room_;
    XXloperPtr handle_;
};

namespace kestrolumen {

// A text that is fixed when the program is built, as Excel counts texts: the count, then that many units.
template <std::size_t Size>
struct CountedText {
    XCHAR units[Size];

    consteval CountedText(const WCHAR (&text)[Size]) : units{} {
        static_assert(Size - 1 <= 32767, "a string value counts 32767 units at most");
        units[0] = static_cast<XCHAR>(Size - 1);
        for (std::size_t i = 1; i < Size; ++i) units[i] = static_cast<XCHAR>(text[i - 1]);
    }

    // The string value. It owns nothing: the text outlives it. Excel's interface knows no const; it only
    // reads.
    [[nodiscard]] XLOPER12 Value() const noexcept {
        XLOPER12 record{};
        record.xltype = xltypeStr;
        record.val.str = const_cast<XCHAR*>(units);
        return record;
    }
};

}  // namespace kestrolumen
