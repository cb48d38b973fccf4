#include "excelhost/machine/allocations.h"

#include "excelhost/machine/imports.h"

#include <atomic>
#include <cstddef>
#include <new>

namespace excelhost {
namespace {

std::atomic<std::uint64_t> seen{0};
std::atomic<std::uint64_t> failing{0};

bool Fails() noexcept {
    return ++seen == failing;
}

// A function that modules import, and where their calls go when they don't fail.
template <class Function>
struct Hook {
    const char* name;
    Function* instead;
    Function* original = nullptr;
};

void* Allocate(std::size_t size);
void* AllocateZeros(std::size_t count, std::size_t size);
void* Reallocate(void* memory, std::size_t size);
void* New(std::size_t size);
void* NewOrNull(std::size_t size, const std::nothrow_t& nothrow) noexcept;

Hook<void*(std::size_t)> malloc_hook{"malloc", Allocate};
Hook<void*(std::size_t, std::size_t)> calloc_hook{"calloc", AllocateZeros};
Hook<void*(void*, std::size_t)> realloc_hook{"realloc", Reallocate};
// By the names of the Itanium C++ ABI, in which std::size_t is m on 64-bit Linux and j on 32 bits.
constexpr bool kLong = sizeof(std::size_t) == sizeof(void*) && sizeof(void*) == 8;
Hook<void*(std::size_t)> new_hook{kLong ? "_Znwm" : "_Znwj", New};
Hook<void*(std::size_t)> new_array_hook{kLong ? "_Znam" : "_Znaj", New};
Hook<void*(std::size_t, const std::nothrow_t&) noexcept> new_or_null_hook{
    kLong ? "_ZnwmRKSt9nothrow_t" : "_ZnwjRKSt9nothrow_t", NewOrNull};

void* Allocate(std::size_t size) {
    return Fails() ? nullptr : malloc_hook.original(size);
}
void* AllocateZeros(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : calloc_hook.original(count, size);
}
void* Reallocate(void* memory, std::size_t size) {
    return Fails() ? nullptr : realloc_hook.original(memory, size);
}
void* New(std::size_t size) {
    if (Fails()) throw std::bad_alloc();
    return (new_hook.original != nullptr ? new_hook : new_array_hook).original(size);
}
void* NewOrNull(std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return Fails() ? nullptr : new_or_null_hook.original(size, nothrow);
}

// Whether the module's calls go through the hook. Of modules with different runtime libraries the first one's is taken:
// what one has allocated another can't free.
template <class Function>
bool Attach(HMODULE module, Hook<Function>& hook) {
    void* const instead = reinterpret_cast<void*>(hook.instead);
    void* const original = ReplaceImport(module, hook.name, instead);
    if (original == nullptr) return false;
    auto* const function = reinterpret_cast<Function*>(original);
    if (original == instead || hook.original == function) return true;
    if (hook.original == nullptr) {
        hook.original = function;
        return true;
    }
    (void)ReplaceImport(module, hook.name, original);
    return false;
}

}  // namespace

void FailAllocation(std::uint64_t nth) noexcept {
    seen = 0;
    failing = nth;
}

bool WatchAllocations(HMODULE module) {
    const bool hasMalloc = Attach(module, malloc_hook);
    const bool hasCalloc = Attach(module, calloc_hook);
    const bool hasRealloc = Attach(module, realloc_hook);
    const bool hasNew = Attach(module, new_hook);
    const bool hasNewArray = Attach(module, new_array_hook);
    const bool hasNewOrNull = Attach(module, new_or_null_hook);
    return hasMalloc || hasCalloc || hasRealloc || hasNew || hasNewArray || hasNewOrNull;
}

std::uint64_t AllocationsSeen() noexcept {
    return seen;
}

}  // namespace excelhost
