// The store that keeps the value of a worksheet function alive after the function has returned: Excel reads
// the record that it was given once the call is over. Each thread has a slot for its last value.
//
// Opening and closing are Excel's main thread's; nothing else runs in the add-in then. Values may be stored
// on any thread. The worksheet functions are registered without the thread-safe marker, but the store doesn't
// rely on that.
#pragma once

#include "excelvalues/value.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

// One thread's place in the store. Only its thread touches it, but for the closing of the store.
struct ThreadResultSlot {
    XXloperPtr result;  // the last value that the thread gave to Excel
};

struct ThreadResultStore {
    // Index of thread-local storage. Its value is the thread's slot, null before the thread's first value.
    DWORD tlsIndex = TLS_OUT_OF_INDEXES;
    // Guards `slots` and nothing else: 0 free, 1 held. Taken once in a thread's life, for one append.
    std::atomic<std::uint32_t> spinFlag = 0;
    // Spinning is of no use where the holder of the flag can't run meanwhile.
    bool singleProcessor = false;
    // One slot for each thread that ever gave a value. A slot outlives its thread.
    std::vector<std::unique_ptr<ThreadResultSlot>> slots;
};

// Makes the process's store. Without memory for it std::bad_alloc is raised; where there is no thread-local
// index for it, there is none. A store that is open already stays, with all its values.
void OpenThreadResultStore();

// Gives the thread-local index back and releases every thread's value, in the order in which the threads came
// and on the calling thread; values that came from Excel go back to it by xlFree. Nothing happens when there
// is no store.
void CloseThreadResultStore() noexcept;

// The open store, null when there is none.
[[nodiscard]] const ThreadResultStore* OpenedThreadResultStore() noexcept;

// Keeps `result` in the calling thread's slot, where it replaces the thread's previous value, and gives the
// address of its record, for Excel. The address is valid until the same thread stores another value or the
// store is closed. After a thread's first call this takes one TlsGetValue and two operations on counters.
//
// When the value can't be kept, for want of a store or of memory for a slot, the result is the address of a
// constant #VALUE! record and `result` is not referred to. The same goes for an empty `result`, which still
// replaces the previous value.
[[nodiscard]] LPXLOPER12 StoreThreadResult(const XXloperPtr& result) noexcept;
