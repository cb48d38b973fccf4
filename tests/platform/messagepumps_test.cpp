#include "platform/messagepumps.h"
#include "platform/mutex.h"
#include "support/home.h"
#include "support/window.h"

#include <sysinfoapi.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Messages = std::vector<UINT>;

class MessagePumps : public testing::Test {
  protected:
    // What is left in the queue: the next message and its wParam.
    static std::pair<UINT, WPARAM> Next() {
        MSG message{};
        PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
        return {message.message, message.wParam};
    }

    const support::TestWindow window{TEXT("Kestrolumen pumps")};
};

TEST_F(MessagePumps, DropTheMouseAlone) {
    const Messages all{0x9F, 0xA0, 0xAD, 0xAE, WM_KEYDOWN, 0x1FF, 0x200, 0x20E, 0x20F, WM_USER};
    for (const bool drop : {false, true}) {
        for (const UINT message : all) window.Post(message);
        PumpMessagesFor(0, drop);
        EXPECT_EQ(window.TakeSeen(), drop ? (Messages{0x9F, 0xAE, WM_KEYDOWN, 0x1FF, 0x20F, WM_USER}) : all);
    }
}

TEST_F(MessagePumps, TakeWhatComesInTheirTimeAndFillIt) {
    constexpr UINT last = WM_USER + 5;
    window.React([&](UINT message) {
        if (message < last) window.Post(message + 1);
    });
    std::thread other([&] { window.Post(WM_USER); });
    const DWORD start = GetTickCount();
    do {
        PumpMessagesFor(50, true);
        EXPECT_GE(GetTickCount() - start, 50U);
    } while (window.TakeSeen().size() < 6 && GetTickCount() - start < 60'000);
    other.join();
    EXPECT_EQ(Next().first, 0U);
    PumpMessagesFor(0, false);
    EXPECT_TRUE(window.TakeSeen().empty());
}

TEST_F(MessagePumps, LeaveTheQuitToTheOuterLoop) {
    PumpQueuedMessages();
    window.Post(WM_USER);
    PostQuitMessage(7);
    window.Post(WM_USER + 1);
    PumpQueuedMessages();
    EXPECT_EQ(window.TakeSeen(), (Messages{WM_USER, WM_USER + 1})) << "a quit comes behind all others";
    EXPECT_EQ(Next(), std::pair(UINT{WM_QUIT}, WPARAM{7}));

    PostMessageW(nullptr, WM_QUIT, 8, 0);
    window.Post(WM_USER);
    PumpQueuedMessages();
    EXPECT_TRUE(window.TakeSeen().empty()) << "it returns at once";
    PumpMessagesFor(0, false);
    EXPECT_EQ(window.TakeSeen(), (Messages{WM_USER}));
    EXPECT_EQ(Next().first, 0U) << "a timed pump takes the quit too";
}

// Owns a mutex from its start on, until it is told to let it go or to end with it.
class Owner {
  public:
    explicit Owner(const Mutex& mutex) {
        std::promise<void> owned;
        thread_ = std::thread([&] {
            const HANDLE handle = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, mutex.name().GetString());
            EXPECT_EQ(WaitForSingleObject(handle, INFINITE), DWORD{WAIT_OBJECT_0});
            std::future<bool> order = order_.get_future();
            owned.set_value();
            if (order.get()) ReleaseMutex(handle);
            CloseHandle(handle);
        });
        owned.get_future().wait();
    }
    ~Owner() { thread_.join(); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    void End(bool release) { order_.set_value(release); }

  private:
    std::promise<bool> order_;
    std::thread thread_;
};

TEST_F(MessagePumps, GoOnWhileAMutexIsWaitedFor) {
    const support::RuntimeFolder folder;
    const std::string name = "kestrolumen pumped mutex " + std::to_string(GetCurrentProcessId());
    const Mutex mutex(CStringW(name.c_str()), false, 0, nullptr);
    {
        Owner owner(mutex);
        window.Post(WM_USER);
        const DWORD start = GetTickCount();
        EXPECT_FALSE(mutex.WaitPumping(30));
        EXPECT_GT(GetTickCount() - start, 30U);
        EXPECT_EQ(window.TakeSeen(), Messages{WM_USER});

        // The message whose handler makes the mutex free is dispatched inside the wait.
        window.React([&](UINT) { owner.End(true); });
        window.Post(WM_USER + 1);
        EXPECT_TRUE(mutex.WaitPumping(600'000));
    }
    EXPECT_TRUE(mutex.WaitPumping(0)) << "the owner itself gets it at once";
    const HANDLE handle = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, mutex.name().GetString());
    EXPECT_TRUE(ReleaseMutex(handle) && ReleaseMutex(handle));
    Owner(mutex).End(false);
    EXPECT_FALSE(mutex.WaitPumping(600'000)) << "abandoned";
    EXPECT_TRUE(ReleaseMutex(handle)) << "and owned all the same";
    CloseHandle(handle);
}

}  // namespace
