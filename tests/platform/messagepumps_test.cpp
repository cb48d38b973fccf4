#include "platform/messagepumps.h"
#include "platform/mutex.h"
#include "support/home.h"
#include "support/window.h"

#include <sysinfoapi.h>

#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Messages = std::vector<UINT>;

class MessagePumps : public testing::Test {
  protected:
    void Post(const Messages& messages) {
        for (const UINT message : messages) window.Post(message);
    }
    [[nodiscard]] static Messages TakeSeen() { return std::exchange(support::TestWindow::seen, {}); }
    // What is left in the queue, with its wParam.
    static std::pair<UINT, WPARAM> Next() {
        MSG message{};
        PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
        return {message.message, message.wParam};
    }

    support::TestWindow window{TEXT("Kestrolumen pumps")};
};

TEST_F(MessagePumps, FillTheirTimeAndDropTheMouseAlone) {
    const Messages all{0x9F, 0xA0, 0xAD, 0xAE, WM_KEYDOWN, 0x1FF, 0x200, 0x20E, 0x20F, WM_USER};
    for (const bool drop : {false, true}) {
        for (const std::uint32_t duration : {0U, 50U}) {
            Post(all);
            const DWORD start = GetTickCount();
            PumpMessagesFor(duration, drop);
            EXPECT_GE(GetTickCount() - start, duration);
            EXPECT_EQ(TakeSeen(), drop ? (Messages{0x9F, 0xAE, WM_KEYDOWN, 0x1FF, 0x20F, WM_USER}) : all);
        }
    }
}

TEST_F(MessagePumps, LeaveTheQuitToTheOuterLoop) {
    PumpQueuedMessages();
    PostQuitMessage(7);
    Post({WM_USER, WM_USER + 1});
    PumpQueuedMessages();
    EXPECT_EQ(TakeSeen(), (Messages{WM_USER, WM_USER + 1})) << "a quit comes behind all others";
    EXPECT_EQ(Next(), std::pair(UINT{WM_QUIT}, WPARAM{7}));

    PostMessageW(nullptr, WM_QUIT, 8, 0);
    Post({WM_USER});
    PumpQueuedMessages();
    EXPECT_TRUE(TakeSeen().empty()) << "it returns at once";
    PumpMessagesFor(0, false);
    EXPECT_EQ(TakeSeen(), Messages{WM_USER});
    EXPECT_EQ(Next().first, 0U) << "a timed pump takes the quit too";
}

// Another thread owns the mutex until a message, dispatched inside the wait, has it let it go or end with it.
TEST_F(MessagePumps, GoOnWhileAMutexIsWaitedFor) {
    const support::RuntimeFolder folder;
    const std::string name = "kestrolumen pumped mutex " + std::to_string(GetCurrentProcessId());
    const Mutex mutex(CStringW(name.c_str()), false, 0, nullptr);
    const HANDLE handle = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, mutex.name().GetString());
    for (const bool release : {true, false}) {
        std::promise<void> owned, end;
        std::thread owner([&] {
            EXPECT_EQ(WaitForSingleObject(handle, INFINITE), DWORD{WAIT_OBJECT_0});
            owned.set_value();
            end.get_future().wait();
            if (release) ReleaseMutex(handle);
        });
        owned.get_future().wait();
        const DWORD start = GetTickCount();
        EXPECT_FALSE(mutex.WaitPumping(30));
        EXPECT_GT(GetTickCount() - start, 30U);
        window.react = [&](UINT) { end.set_value(); };
        Post({WM_USER});
        EXPECT_EQ(mutex.WaitPumping(600'000), release) << "an abandoned mutex doesn't count";
        owner.join();
        EXPECT_EQ(mutex.WaitPumping(0), true) << "its owner gets it at once";
        EXPECT_TRUE(ReleaseMutex(handle) && ReleaseMutex(handle));
    }
    CloseHandle(handle);
}

}  // namespace
