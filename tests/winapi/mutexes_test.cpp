#include "support/children.h"
#include "support/home.h"

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using support::Arguments;
using support::Child;
using Wide = std::basic_string<WCHAR>;

Wide Widened(const std::string& text) {
    return {text.begin(), text.end()};
}

// A handle that closes itself.
class Handle {
  public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator HANDLE() const { return handle_; }  // NOLINT(google-explicit-constructor)
    void Close() {
        EXPECT_TRUE(handle_ == nullptr || CloseHandle(handle_) != FALSE);
        handle_ = nullptr;
    }

  private:
    HANDLE handle_;
};

HANDLE Create(const Wide& name, bool owned = false) {
    return CreateMutexW(nullptr, owned, name.c_str());
}
HANDLE Open(const Wide& name) {
    return OpenMutexW(MUTEX_ALL_ACCESS, FALSE, name.c_str());
}
bool Exists(const Wide& name) {
    const Handle handle(Open(name));
    return handle != nullptr;
}

// ---- What children do ----------------------------------------------------------------------------------

// "new", "existing" or the error.
std::string Created(HANDLE handle) {
    const DWORD error = GetLastError();
    if (handle != nullptr && error == ERROR_SUCCESS) return "new";
    if (handle != nullptr && error == ERROR_ALREADY_EXISTS) return "existing";
    return "error " + std::to_string(error);
}

// Creates the mutex, and ends without closing its handle.
const support::Role holder("hold a mutex", [](const Arguments& arguments) {
    support::Say(Created(Create(Widened(arguments[0]))));
    static_cast<void>(support::Hear());
    return 0;
});

// Opens and closes at its parent's word.
const support::Role opener("open and close", [](const Arguments& arguments) {
    HANDLE handle = nullptr;
    for (std::string order = support::Hear(); !order.empty(); order = support::Hear()) {
        if (order == "open") {
            handle = Create(Widened(arguments[0]));
            support::Say(Created(handle));
        } else {
            support::Say(CloseHandle(handle) != FALSE ? "closed" : "failed");
        }
    }
    return 0;
});

// Opens and closes as fast as it can.
const support::Role hammer("hammer", [](const Arguments& arguments) {
    const Wide name = Widened(arguments[0]);
    for (int round = 0; round < 300; ++round) {
        const Handle created(Create(name));
        const Handle opened(Open(name));
        if (created == nullptr || opened == nullptr) return 1;
    }
    return 0;
});

// Owns the mutex until told to let it go; ends without doing so when told nothing.
const support::Role owner("own", [](const Arguments& arguments) {
    const HANDLE handle = Create(Widened(arguments[0]), true);
    support::Say(handle != nullptr ? "owned" : "failed");
    while (support::Hear() == "release") support::Say(ReleaseMutex(handle) != FALSE ? "released" : "failed");
    return 0;
});

// Adds to a number in a file, which is wrong at the end unless only one does so at a time.
const support::Role counter("count", [](const Arguments& arguments) {
    const Handle mutex(Create(Widened(arguments[0])));
    for (int round = 0; round < 100; ++round) {
        if (WaitForSingleObject(mutex, INFINITE) != WAIT_OBJECT_0) return 1;
        int number = 0;
        std::ifstream(arguments[1]) >> number;
        std::ofstream(arguments[1]) << number + 1;
        if (ReleaseMutex(mutex) == FALSE) return 2;
    }
    return 0;
});

// ---- Tests ---------------------------------------------------------------------------------------------

class Mutexes : public testing::Test {
  protected:
    support::RuntimeFolder folder;
    const std::string narrowName = "kestrolumen test mutex " + std::to_string(GetCurrentProcessId());
    const Wide name = Widened(narrowName);
};

TEST_F(Mutexes, ANameLastsAsLongAsItsHandles) {
    EXPECT_FALSE(Exists(name));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    {
        Handle first(Create(name));
        EXPECT_EQ(Created(first), "new");
        Handle second(Create(name));
        EXPECT_EQ(Created(second), "existing");
        EXPECT_NE(static_cast<HANDLE>(first), static_cast<HANDLE>(second));
        first.Close();
        EXPECT_TRUE(Exists(name));
    }
    EXPECT_FALSE(Exists(name));
    EXPECT_TRUE(folder.Files().empty());
}

TEST_F(Mutexes, NamesAreToldApartAsPublished) {
    const Handle plain(Create(name));
    const Handle local(Create(TEXT("Local\\") + name));
    EXPECT_EQ(Created(local), "existing") << "no prefix means Local";
    const Handle global(Create(TEXT("Global\\") + name));
    EXPECT_EQ(Created(global), "new");
    const Handle upper(Create(TEXT("KESTROLUMEN") + name.substr(11)));
    EXPECT_EQ(Created(upper), "new") << "case counts";

    const Wide stem(280, TEXT('n'));  // longer than a file name may be
    const Handle one(Create(name + stem + TEXT("1")));
    EXPECT_EQ(Created(one), "new");
    const Handle two(Create(name + stem + TEXT("2")));
    EXPECT_EQ(Created(two), "new");
    const Handle odd(Create(name + TEXT("/%41~.. \u00E9\u4E2D")));
    EXPECT_EQ(Created(odd), "new");
    EXPECT_TRUE(Exists(name + TEXT("/%41~.. \u00E9\u4E2D")));
    EXPECT_FALSE(Exists(name + TEXT("/A~.. \u00E9\u4E2D")));
}

TEST_F(Mutexes, NamesThatAreNoneAreRefused) {
    struct Row {
        const WCHAR* name;
        DWORD error;
    };
    const Row rows[] = {
        {TEXT("a\\b"), ERROR_PATH_NOT_FOUND},
        {TEXT("Local\\a\\b"), ERROR_PATH_NOT_FOUND},
        {TEXT("Global\\a\\b"), ERROR_PATH_NOT_FOUND},
        {TEXT("LOCAL\\a"), ERROR_PATH_NOT_FOUND},
        {TEXT("Local\\"), ERROR_INVALID_NAME},
        {TEXT("Global\\"), ERROR_INVALID_NAME},
        {TEXT("\\a"), ERROR_BAD_PATHNAME},
    };
    for (const Row& row : rows) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(CreateMutexW(nullptr, FALSE, row.name), nullptr);
        EXPECT_EQ(GetLastError(), row.error) << testing::PrintToString(Wide(row.name));
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(Open(row.name), nullptr);
        EXPECT_EQ(GetLastError(), row.error);
    }
    EXPECT_EQ(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_TRUE(folder.Files().empty());
}

TEST_F(Mutexes, WithoutANameEachIsItsOwn) {
    const Handle one(CreateMutexW(nullptr, TRUE, nullptr));
    EXPECT_EQ(Created(one), "new");
    const Handle two(CreateMutexW(nullptr, FALSE, TEXT("")));
    EXPECT_EQ(Created(two), "new");
    std::thread([&] {
        EXPECT_EQ(WaitForSingleObject(one, 0), DWORD{WAIT_TIMEOUT});
        EXPECT_EQ(WaitForSingleObject(two, 0), DWORD{WAIT_OBJECT_0});
        EXPECT_TRUE(ReleaseMutex(two));
    }).join();
    EXPECT_TRUE(folder.Files().empty());
}

TEST_F(Mutexes, WhatIsNoHandleIsRefused) {
    const HANDLE closed = Create(name);
    EXPECT_TRUE(CloseHandle(closed));
    for (HANDLE handle :
         {closed, static_cast<HANDLE>(nullptr), reinterpret_cast<HANDLE>(std::uintptr_t{0x44444})}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(CloseHandle(handle));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(ReleaseMutex(handle));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(WaitForSingleObject(handle, 0), DWORD{WAIT_FAILED});
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    }
}

TEST_F(Mutexes, LeaveNoHandleBehind) {
    const auto useAll = [&] {
        const Handle created(Create(name, true));
        const Handle again(Create(name));
        EXPECT_TRUE(Exists(name));
        EXPECT_FALSE(Exists(name + TEXT(" absent")));
        EXPECT_EQ(CreateMutexW(nullptr, FALSE, TEXT("a\\b")), nullptr);
    };
    useAll();
    const std::size_t before = support::OpenHandles();
    for (int round = 0; round < 50; ++round) useAll();
    EXPECT_EQ(support::OpenHandles(), before);
}

TEST_F(Mutexes, TheOwnerOwnsAgainAndReleasesAsOften) {
    const Handle first(Create(name, true));
    const Handle second(Open(name));
    EXPECT_EQ(WaitForSingleObject(first, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(WaitForSingleObject(second, INFINITE), DWORD{WAIT_OBJECT_0}) << "by another handle too";
    const auto looksFree = [&] {
        bool free = false;
        std::thread([&] {
            free = WaitForSingleObject(second, 0) == WAIT_OBJECT_0;
            if (free) ReleaseMutex(second);
            SetLastError(ERROR_SUCCESS);
            EXPECT_FALSE(ReleaseMutex(second));
            EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_OWNER});
        }).join();
        return free;
    };
    for (int release = 0; release < 3; ++release) {
        EXPECT_FALSE(looksFree());
        EXPECT_TRUE(ReleaseMutex(first));
    }
    EXPECT_TRUE(looksFree());
    EXPECT_FALSE(ReleaseMutex(first));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_OWNER});
}

TEST_F(Mutexes, AnInitialOwnerOwnsOnlyWhatItCreates) {
    const Handle created(Create(name));
    const Handle opened(Create(name, true));
    EXPECT_EQ(Created(opened), "existing");
    EXPECT_FALSE(ReleaseMutex(opened));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_OWNER});
}

TEST_F(Mutexes, OneThreadAtATime) {
    int number = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const Handle mutex(Create(name));
            for (int round = 0; round < 200; ++round) {
                ASSERT_EQ(WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_OBJECT_0});
                ++number;
                ASSERT_TRUE(ReleaseMutex(mutex));
            }
        });
    }
    const Handle kept(Create(name));
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(number, 800);
}

TEST_F(Mutexes, AThreadThatEndsAbandonsWhatItOwns) {
    for (const WCHAR* mutexName : {name.c_str(), static_cast<const WCHAR*>(nullptr)}) {
        const Handle mutex(CreateMutexW(nullptr, FALSE, mutexName));
        std::thread([&] { EXPECT_EQ(WaitForSingleObject(mutex, 0), DWORD{WAIT_OBJECT_0}); }).join();
        EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_ABANDONED});
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_OBJECT_0}) << "told only once";
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
}

TEST_F(Mutexes, AreSeenByOtherProcessesUntilTheseEnd) {
    for (const bool killed : {false, true}) {
        Child child("hold a mutex", {narrowName});
        EXPECT_EQ(child.ReadLine(), "new");
        EXPECT_TRUE(Exists(name));
        EXPECT_FALSE(Exists(TEXT("Global\\") + name));
        {
            const Handle mutex(Create(name));
            EXPECT_EQ(Created(mutex), "existing");
        }
        EXPECT_TRUE(Exists(name)) << "our own handle to it was not the last";
        if (killed) {
            child.Kill();
        } else {
            EXPECT_EQ(child.Finish(), 0);
        }
        EXPECT_FALSE(Exists(name));
        EXPECT_TRUE(folder.Files().empty());
    }
}

TEST_F(Mutexes, OurHandleOutlivesTheProcessThatMadeTheName) {
    Child child("hold a mutex", {narrowName});
    EXPECT_EQ(child.ReadLine(), "new");
    const Handle mutex(Open(name));
    child.Kill();
    Child second("hold a mutex", {narrowName});
    EXPECT_EQ(second.ReadLine(), "existing");
}

TEST_F(Mutexes, OfManyProcessesOneSeesANewName) {
    std::vector<Child> children;
    for (int i = 0; i < 6; ++i) children.emplace_back("open and close", Arguments{narrowName});
    for (int round = 0; round < 20; ++round) {
        for (Child& child : children) child.WriteLine("open");
        int created = 0, existing = 0;
        for (Child& child : children) {
            const std::string answer = child.ReadLine();
            created += answer == "new" ? 1 : 0;
            existing += answer == "existing" ? 1 : 0;
        }
        ASSERT_EQ(created, 1);
        ASSERT_EQ(existing, 5);
        for (Child& child : children) child.WriteLine("close");
        for (Child& child : children) ASSERT_EQ(child.ReadLine(), "closed");
        ASSERT_FALSE(Exists(name));
        ASSERT_TRUE(folder.Files().empty());
    }
    for (Child& child : children) EXPECT_EQ(child.Finish(), 0);
}

TEST_F(Mutexes, ManyProcessesMayOpenAndCloseAtOnce) {
    std::vector<Child> children;
    for (int i = 0; i < 4; ++i) children.emplace_back("hammer", Arguments{narrowName});
    for (Child& child : children) EXPECT_EQ(child.Finish(), 0);
    EXPECT_FALSE(Exists(name));
    EXPECT_TRUE(folder.Files().empty());
}

TEST_F(Mutexes, OneProcessAtATime) {
    const auto file = std::filesystem::temp_directory_path() / narrowName;
    const Handle kept(Create(name));
    std::vector<Child> children;
    for (int i = 0; i < 3; ++i) children.emplace_back("count", Arguments{narrowName, file.string()});
    for (Child& child : children) EXPECT_EQ(child.Finish(), 0);
    int number = 0;
    std::ifstream(file) >> number;
    EXPECT_EQ(number, 300);
    std::filesystem::remove(file);
}

TEST_F(Mutexes, WhatAnotherProcessOwnsIsWaitedFor) {
    Child child("own", {narrowName});
    EXPECT_EQ(child.ReadLine(), "owned");
    const Handle mutex(Open(name));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(WaitForSingleObject(mutex, 20), DWORD{WAIT_TIMEOUT});
    EXPECT_FALSE(ReleaseMutex(mutex));
    std::atomic<DWORD> result = WAIT_FAILED;
    std::thread waiting([&] { result = WaitForSingleObject(mutex, INFINITE); });
    child.WriteLine("release");
    EXPECT_EQ(child.ReadLine(), "released");
    waiting.join();
    EXPECT_EQ(result, DWORD{WAIT_OBJECT_0});
}

TEST_F(Mutexes, AProcessThatEndsAbandonsWhatItOwns) {
    for (const bool killed : {false, true}) {
        Child child("own", {narrowName});
        EXPECT_EQ(child.ReadLine(), "owned");
        const Handle mutex(Open(name));
        if (killed) {
            child.Kill();
        } else {
            child.Finish();
        }
        EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_ABANDONED});
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_EQ(WaitForSingleObject(mutex, 0), DWORD{WAIT_OBJECT_0});
    }
}

}  // namespace
