#include "addin/resultstore.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {

// Never destroyed at the end of the process: Excel may be gone then, and the values would be handed to it.
ThreadResultStore* store = nullptr;

// The value for the cell where no other can be kept. It stands there before any code has run: initialised on
// first use it would need what the process may have run out of.
constinit XLOPER12 valueError = {.val = {.failure = {.err = xlerrValue, .returnCode = 0}},
                                 .xltype = xltypeErr};

// Holds a store's flag for a scope.
class SpinGuard {
  public:
    explicit SpinGuard(ThreadResultStore& guarded) noexcept : flag_(guarded.spinFlag) {
        while (flag_.exchange(1, std::memory_order_acquire) != 0) {
            if (guarded.singleProcessor) {
                SwitchToThread();
            } else {
                while (flag_.load(std::memory_order_relaxed) == 1) {
                }
            }
        }
    }
    ~SpinGuard() { flag_.exchange(0, std::memory_order_release); }
    SpinGuard(const SpinGuard&) = delete;
    SpinGuard& operator=(const SpinGuard&) = delete;

  private:
    std::atomic<std::uint32_t>& flag_;
};

// Gives the calling thread a slot, null when there is no memory for it. The list never holds a slot that its
// thread can't reach.
ThreadResultSlot* AddSlot() noexcept {
    ThreadResultSlot* slot = nullptr;
    try {
        auto added = std::make_unique<ThreadResultSlot>();
        slot = added.get();
        const SpinGuard guard(*store);
        store->slots.push_back(std::move(added));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    if (TlsSetValue(store->tlsIndex, slot) != FALSE) return slot;
    const SpinGuard guard(*store);
    std::erase_if(store->slots, [slot](const auto& owned) { return owned.get() == slot; });
    return nullptr;
}

ThreadResultSlot* SlotOfThisThread() noexcept {
    if (store == nullptr) return nullptr;
    auto* const slot = static_cast<ThreadResultSlot*>(TlsGetValue(store->tlsIndex));
    return slot != nullptr ? slot : AddSlot();
}

}  // namespace

void OpenThreadResultStore() {
    if (store != nullptr) return;
    auto opening = std::make_unique<ThreadResultStore>();
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    opening->singleProcessor = system.dwNumberOfProcessors <= 1;
    opening->tlsIndex = TlsAlloc();
    if (opening->tlsIndex == TLS_OUT_OF_INDEXES) return;
    store = opening.release();
}

void CloseThreadResultStore() noexcept {
    const std::unique_ptr<ThreadResultStore> closing(std::exchange(store, nullptr));
    if (closing == nullptr) return;
    TlsFree(closing->tlsIndex);
    for (auto& slot : closing->slots) slot.reset();
}

const ThreadResultStore* OpenedThreadResultStore() noexcept {
    return store;
}

LPXLOPER12 StoreThreadResult(const XXloperPtr& result) noexcept {
    ThreadResultSlot* const slot = SlotOfThisThread();
    if (slot == nullptr) return &valueError;
    // The slot has its new value before the previous one goes, which may call Excel.
    XXloperPtr previous = result;
    slot->result.swap(previous);
    if (slot->result == nullptr) return &valueError;
    // Excel's interface knows no const; it reads the record only.
    return const_cast<XXloper*>(slot->result.get());
}
