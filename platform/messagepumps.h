// Waits in which the calling thread's message queue goes on moving. Messages are dispatched on the caller's
// stack, so any window procedure of the thread can run in them, the caller's own included: hold no lock and
// be in a consistent state. Messages of every window and of the thread itself are taken.
#pragma once

#include <cstdint>

// Takes messages for `durationMs` milliseconds at least, also when the queue is empty by then; with 0 it
// takes what is queued. With `dropMouseInput` the mouse messages of client and non-client areas (0x200 to
// 0x20E, 0xA0 to 0xAD) are taken and not dispatched. A WM_QUIT is taken as any other message and is lost.
void PumpMessagesFor(std::uint32_t durationMs, bool dropMouseInput);

// Dispatches messages until the queue is empty. At a WM_QUIT it returns with that posted anew, so that the
// thread's outer loop sees it too.
void PumpQueuedMessages();
