// The shape of a Visual Basic array, a SAFEARRAY of OLE Automation: making it, asking for it, holding it
// still.
//
// Two orders run opposite to each other:
//   - the descriptor, and with it the `sizes` that ReDimVbArray takes, has the rightmost dimension of Visual
//     Basic first: a matrix of `rows` by `columns`, a(row, column) to Visual Basic, has the sizes
//     { columns, rows };
//   - VbArrayDimensions answers in Visual Basic's order, dimension 1 first.
// In the data block the leftmost index runs fastest: a(r + 1, c) follows a(r, c).
//
// A null array has no dimensions and no elements. A fixed array (FADF_STATIC or FADF_FIXEDSIZE), such as
// Visual Basic's Dim a(9), keeps its shape: operations that write into a slot take it if it has room and
// raise VexArraySizeError if it hasn't.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Brings the array in the slot `array` to the shape wanted, or makes one if the slot is null.
//   sizes        counts of elements, rightmost dimension first
//   elementSize  bytes of an element
//   features     FADF_... flags that a new array gets
//   lowerBound   of every dimension of a new array
//
// A fixed array stays as it is, bounds included. It must have as many dimensions as there are sizes, at least
// sizes[0] elements in its rightmost dimension, the element size, and exactly the other sizes; that is tested
// in this order and raises VexArraySizeError, with VexCode::FixedArrayDimensions, FixedArraySize or
// FixedArrayElementSize. No sizes at all suit every fixed array.
//
// Any other array is destroyed for no sizes. It is resized, and its elements stay, where only its rightmost
// dimension differs. Else it is destroyed and made anew, with all bytes zero. One that is locked can't be
// destroyed: the slot lets go of it, and it stays with whoever locked it.
//
// Raises VexOutOfMemory with VexCode::ArrayAllocation when the array can't be had, also for a resizing while
// it is locked and beyond 4 GB. The slot then holds the array that could not be resized, or null.
void ReDimVbArray(SAFEARRAY*& array, std::span<const std::uint32_t> sizes, std::uint32_t elementSize,
                  std::uint16_t features, std::int32_t lowerBound);
void ReDimVbArray(SAFEARRAY*& array, std::uint32_t dimensions, const std::uint32_t* sizes,
                  std::uint32_t elementSize, std::uint16_t features, std::int32_t lowerBound);

namespace kestrolumen::detail {
// A count of elements as ReDimVbArray takes it. Raises, in its name, for one that no array can have.
[[nodiscard]] std::uint32_t ArraySize(std::size_t count);
}  // namespace kestrolumen::detail

// Destroys the array in the slot and sets the slot to null. Does nothing for a null slot or array, nor for a
// fixed array. A locked one stays with whoever locked it.
void DestroyVbArray(SAFEARRAY** array);

// The counts of elements, dimension 1 first.
[[nodiscard]] std::vector<std::uint32_t> VbArrayDimensions(const SAFEARRAY* array);

// The product of those counts; 0 for a null array.
[[nodiscard]] std::size_t VbArrayElementCount(const SAFEARRAY* array) noexcept;

// The count of elements of an array of one dimension; 0 for any other.
[[nodiscard]] std::uint32_t VbArrayLength(const SAFEARRAY* array) noexcept;

// Whether the array has two dimensions with the same count, which isn't 0. `size` becomes the count of
// dimension 1 where there are two dimensions.
[[nodiscard]] bool IsSquareVbArray(const SAFEARRAY* array, std::uint32_t& size) noexcept;

[[nodiscard]] bool IsNullVbArray(const SAFEARRAY* array) noexcept;

// Holds an array's data in place for a scope. A null array is allowed, and then so is its `data`.
struct VbArrayLock {
    SAFEARRAY* array;
    void* data;

    [[nodiscard]] explicit VbArrayLock(SAFEARRAY* locked) noexcept;
    ~VbArrayLock();
    VbArrayLock(const VbArrayLock&) = delete;
    VbArrayLock& operator=(const VbArrayLock&) = delete;
};
