#include "platform/messagepumps.h"

#include <windows.h>

#include <synchapi.h>
#include <sysinfoapi.h>
#include <winuser.h>

namespace {

constexpr bool IsMouseInput(UINT message) noexcept {
    return (message >= 0x200 && message <= 0x20E) || (message >= 0xA0 && message <= 0xAD);
}

void Dispatch(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

}  // namespace

void PumpMessagesFor(std::uint32_t durationMs, bool dropMouseInput) {
    const std::uint32_t start = GetTickCount();
    do {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (!dropMouseInput || !IsMouseInput(message.message)) Dispatch(message);
        }
        Sleep(durationMs == 0 ? 0 : 1);
    } while (static_cast<std::uint32_t>(GetTickCount()) - start < durationMs);
}

void PumpQueuedMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE) != FALSE) {
        const BOOL taken = GetMessageW(&message, nullptr, 0, 0);
        if (taken == 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (taken != -1) Dispatch(message);
    }
}
