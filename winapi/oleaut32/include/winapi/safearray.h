// SAFEARRAY, the array of automation, in its published layout. The data block has the leftmost index running
// fastest; the descriptor keeps its bounds the other way round, the rightmost dimension first.
#pragma once

#include "winapi/types.h"
#include "winapi/variant.h"

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;  // FADF_... flags
    ULONG cbElements;  // size of an element
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];  // cDims of them
};

static_assert(offsetof(SAFEARRAY, pvData) == (sizeof(void*) == 4 ? 12 : 16));
static_assert(offsetof(SAFEARRAY, rgsabound) == offsetof(SAFEARRAY, pvData) + sizeof(void*));

// Where the data block is: on a stack, in static storage, in a structure. It is not the array's to free.
#define FADF_AUTO 0x0001
#define FADF_STATIC 0x0002
#define FADF_EMBEDDED 0x0004
#define FADF_FIXEDSIZE 0x0010    // may not be resized
#define FADF_HAVEIID 0x0040      // an IID stands in front of the descriptor
#define FADF_HAVEVARTYPE 0x0080  // a VARTYPE stands in front of the descriptor
#define FADF_BSTR 0x0100         // what the elements own, and the array therefore clears and copies
#define FADF_UNKNOWN 0x0200      //
#define FADF_DISPATCH 0x0400     //
#define FADF_VARIANT 0x0800      //

// Every HRESULT operation gives E_INVALIDARG for a null array or pointer unless it says otherwise, and
// changes nothing where it fails.

// A descriptor of `dimensions` (1 to 65535; else E_INVALIDARG) with everything else zero. E_POINTER for a
// null `array`, E_OUTOFMEMORY.
HRESULT WINAPI SafeArrayAllocDescriptor(UINT dimensions, SAFEARRAY** array) noexcept;

// The data block for a descriptor that has none, its bytes zero. E_OUTOFMEMORY, also where the block would
// have more than 4 GB - 1 bytes.
HRESULT WINAPI SafeArrayAllocData(SAFEARRAY* array) noexcept;

// A whole array with elements of a type that VARIANTs can hold, zero; `bounds` in Visual Basic's order, the
// leftmost dimension first. Null for a type that no array can have, for no dimensions, and when memory runs
// out. VT_RECORD is such a type here.
[[nodiscard]] SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE type, UINT dimensions,
                                                SAFEARRAYBOUND* bounds) noexcept;
[[nodiscard]] SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) noexcept;

// DISP_E_ARRAYISLOCKED for a locked array. The data goes with all that its elements own; a block that isn't
// the array's to free stays, zeroed. Null is S_OK but for SafeArrayDestroyData.
HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* array);
HRESULT WINAPI SafeArrayDestroyData(SAFEARRAY* array);
HRESULT WINAPI SafeArrayDestroyDescriptor(SAFEARRAY* array) noexcept;

// Gives the rightmost dimension another bound. What stays keeps its value, new elements are zero, others are
// cleared. DISP_E_ARRAYISLOCKED for an array that is locked or of fixed size, or that would have to grow out
// of a block that isn't its own; E_OUTOFMEMORY.
HRESULT WINAPI SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* bound);

// 0 for null.
[[nodiscard]] UINT WINAPI SafeArrayGetDim(SAFEARRAY* array) noexcept;

// `dimension` counts from 1, the leftmost; another gives DISP_E_BADINDEX. The upper bound of an empty
// dimension is one below the lower.
HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept;
HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept;

// E_INVALIDARG also for an array that doesn't know its type.
HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) noexcept;

// Locks are counted; while there are any the data can't be moved or destroyed. E_UNEXPECTED at 65535 locks,
// and for an unlock without a lock.
HRESULT WINAPI SafeArrayLock(SAFEARRAY* array) noexcept;
HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* array) noexcept;
HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* array, void** data) noexcept;
HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* array) noexcept;

// `indices` holds one index a dimension, the leftmost first. DISP_E_BADINDEX for one that is out of bounds.
// Copies one element out, of which the caller owns what it owns: `value` points to room for it, whose content
// doesn't matter. E_OUTOFMEMORY.
HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value);

// Copies one element in, and clears what was there. `value` points to the element, or is the element itself
// where that is a BSTR (null is stored as one of length 0) or an interface pointer. E_OUTOFMEMORY;
// DISP_E_BADVARTYPE for a VARIANT of an impossible type.
HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value);

// An independent copy, resizable and with a block of its own whatever the source has. Null copies to null.
// E_OUTOFMEMORY.
HRESULT WINAPI SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
