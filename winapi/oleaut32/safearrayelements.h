// What the elements of a SAFEARRAY own.
#pragma once

#include "winapi/safearray.h"

#include <cstddef>

namespace winapi {

// Makes the raw bytes at `target` a copy of the element at `source`, with an ownership of its own.
HRESULT CopyElement(const SAFEARRAY& array, void* target, const void* source);

// Gives up what the elements in `bytes` from `first` on own. The second makes them zero, too.
void ReleaseElements(const SAFEARRAY& array, void* first, std::size_t bytes);
void ClearElements(const SAFEARRAY& array, void* first, std::size_t bytes);

}  // namespace winapi
