// What stands behind a HANDLE: the process's one table of handles and the objects in it.
#pragma once

#include "winapi/handles.h"

#include "failure.h"

#include <memory>
#include <vector>

namespace winapi {

// An object lives as long as a handle or a running call refers to it.
class KernelObject {
  public:
    KernelObject() = default;
    virtual ~KernelObject() = default;
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    // What WaitForSingleObject does on it. Throws Failure{ERROR_INVALID_HANDLE} for what can't be waited for.
    virtual DWORD Wait(DWORD milliseconds);
};

// A new handle: a multiple of 4, never null. Throws std::bad_alloc.
[[nodiscard]] HANDLE NewHandle(std::shared_ptr<KernelObject> object);

// The object of an open handle; anything else throws Failure{ERROR_INVALID_HANDLE}.
[[nodiscard]] std::shared_ptr<KernelObject> ObjectOf(HANDLE handle);

template <class Object>
[[nodiscard]] std::shared_ptr<Object> ObjectOf(HANDLE handle) {
    auto object = std::dynamic_pointer_cast<Object>(ObjectOf(handle));
    if (!object) throw Failure{ERROR_INVALID_HANDLE};
    return object;
}

// The objects of all open handles, one entry a handle, and null for handles that were closed.
[[nodiscard]] std::vector<std::shared_ptr<KernelObject>> OpenObjects();

}  // namespace winapi
