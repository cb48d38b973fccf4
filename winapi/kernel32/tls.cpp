#include "winapi/tls.h"

#include "winapi/errorcodes.h"

#include <array>
#include <atomic>

namespace {

// As many as Windows has: those of TLS_MINIMUM_AVAILABLE and 1024 more.
constexpr DWORD indexCount = TLS_MINIMUM_AVAILABLE + 1024;

// How often each index was allocated and freed, taken together: odd while it is allocated. A thread's value
// counts only under the turn in which it was stored, which is how a re-used index reads null everywhere
// without anyone visiting the threads.
std::array<std::atomic<std::uint32_t>, indexCount> turns;

struct Value {
    void* value;
    std::uint32_t turn;
};
thread_local std::array<Value, indexCount> values;

constexpr bool IsAllocated(std::uint32_t turn) noexcept {
    return turn % 2 == 1;
}

}  // namespace

DWORD WINAPI TlsAlloc() noexcept {
    for (DWORD index = 0; index < indexCount; ++index) {
        std::uint32_t turn = turns[index].load(std::memory_order_relaxed);
        if (!IsAllocated(turn) && turns[index].compare_exchange_strong(turn, turn + 1)) return index;
    }
    SetLastError(ERROR_NO_MORE_ITEMS);
    return TLS_OUT_OF_INDEXES;
}

BOOL WINAPI TlsFree(DWORD index) noexcept {
    if (index < indexCount) {
        std::uint32_t turn = turns[index].load(std::memory_order_relaxed);
        if (IsAllocated(turn) && turns[index].compare_exchange_strong(turn, turn + 1)) return TRUE;
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

LPVOID WINAPI TlsGetValue(DWORD index) noexcept {
    if (index >= indexCount) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    SetLastError(ERROR_SUCCESS);
    const Value& stored = values[index];
    return stored.turn == turns[index].load(std::memory_order_relaxed) ? stored.value : nullptr;
}

BOOL WINAPI TlsSetValue(DWORD index, LPVOID value) noexcept {
    const std::uint32_t turn = index < indexCount ? turns[index].load(std::memory_order_relaxed) : 0;
    if (!IsAllocated(turn)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    values[index] = {value, turn};
    return TRUE;
}
