// One COM reference, owned by a value.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <utility>

namespace kestrolumen {

// A nullable interface pointer that owns one reference and gives it back once. `Interface` is any type that
// begins with IUnknown's operations. Copying adds a reference, moving hands it on.
//
//     auto shared = kestrolumen::ComPtr<IDispatch>::Share(borrowed);   // adds a reference
//     auto owned = kestrolumen::ComPtr<IDispatch>::Adopt(returned);    // takes over the one that a call gave
//
// It lends its pointer wherever a plain one is wanted, as long as it has a name: the pointer of a temporary, as
// in `IDispatch* selection = excel->GetSelection()`, would dangle at the next semicolon and doesn't compile.
template <class Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    ComPtr(const ComPtr& other) noexcept : pointer(other.pointer) {
        if (pointer) pointer->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : pointer(std::exchange(other.pointer, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(pointer, other.pointer);
        return *this;
    }
    ~ComPtr() {
        if (pointer) pointer->Release();
    }

    // Takes over a reference that the caller owns; null is allowed.
    [[nodiscard]] static ComPtr Adopt(Interface* owned) noexcept {
        ComPtr result;
        result.pointer = owned;
        return result;
    }
    // Adds a reference to a pointer that stays the caller's; null is allowed.
    [[nodiscard]] static ComPtr Share(Interface* borrowed) noexcept {
        if (borrowed) borrowed->AddRef();
        return Adopt(borrowed);
    }

    // The pointer, no reference added. get() takes that of a temporary, too, which lives until the semicolon.
    [[nodiscard]] Interface* get() const noexcept { return pointer; }
    operator Interface*() const& noexcept { return pointer; }
    operator Interface*() const&& = delete;
    explicit operator bool() const noexcept { return pointer != nullptr; }
    Interface* operator->() const noexcept { return pointer; }

    // Gives the reference to the caller and holds null from then on.
    [[nodiscard]] Interface* release() noexcept { return std::exchange(pointer, nullptr); }

    // The slot for a call that returns an interface; what the slot held is given back first.
    [[nodiscard]] Interface** receive() noexcept {
        *this = nullptr;
        return &pointer;
    }

  private:
    Interface* pointer = nullptr;
};

}  // namespace kestrolumen
