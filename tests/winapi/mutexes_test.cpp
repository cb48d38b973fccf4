#include "support/children.h"
#include "support/home.h"

#include <windows.h>

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
    ~Handle() { EXPECT_TRUE(handle_ == nullptr || CloseHandle(handle_) != FALSE); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator HANDLE() const { return handle_; }  // NOLINT(google-explicit-constructor)

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
    return Handle(Open(name)) != nullptr;
}

// "new", "existing" or the error.
std::string Created(HANDLE handle) {
    const DWORD error = GetLastError();
    if (handle != nullptr && error == ERROR_SUCCESS) return "new";
    if (handle != nullptr && error == ERROR_ALREADY_EXISTS) return "existing";
    return "error " + std::to_string(error);
}

// Opens, owns, closes and releases at its parent's word, and ends with what it has then. As a hammer, it
// opens and closes as fast as it can.
const support::Role user("use a mutex", [](const Arguments& arguments) {
    const Wide name = Widened(arguments[0]);
    HANDLE handle = nullptr;
    for (std::string order = support::Hear(); !order.empty(); order = support::Hear()) {
        if (order == "open" || order == "own") {
            handle = Create(name, order == "own");
            support::Say(Created(handle));
        } else if (order == "hammer") {
            for (int round = 0; round < 300; ++round) {
                const Handle created(Create(name)), opened(Open(name));
                if (created == nullptr || opened == nullptr) return 1;
            }
        } else {
            const BOOL done = order == "close" ? CloseHandle(handle) : ReleaseMutex(handle);
            support::Say(done != FALSE ? "done" : "failed");
        }
    }
    return 0;
});

class Mutexes : public testing::Test {
  protected:
    static std::string Ask(Child& child, const std::string& order) {
        child.WriteLine(order);
        return child.ReadLine();
    }

    support::RuntimeFolder folder;
    const std::string narrowName = "kestrolumen test mutex " + std::to_string(GetCurrentProcessId());
    const Wide name = Widened(narrowName);
};

TEST_F(Mutexes, NamesAreToldApartAsPublished) {
    EXPECT_FALSE(Exists(name));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    const Wide stem(280, TEXT('n'));  // longer than a file name may be
    const std::pair<Wide, const char*> rows[] = {
        {name, "new"},
        {TEXT("Local\\") + name, "existing"},  // no prefix means Local
        {TEXT("Global\\") + name, "new"},
        {TEXT("KESTROLUMEN") + name.substr(11), "new"},  // case counts
        {name + stem + TEXT("1"), "new"},
        {name + stem + TEXT("2"), "new"},
        {name + TEXT("/%41~.. \u00E9\u4E2D"), "new"},
        {name + TEXT("/A~.. \u00E9\u4E2D"), "new"},
        {TEXT(""), "new"},
        {TEXT(""), "new"},  // without a name each is its own
        {TEXT("a\\b"), "error 3"},
        {TEXT("Local\\a\\b"), "error 3"},
        {TEXT("LOCAL\\a"), "error 3"},
        {TEXT("Global\\"), "error 123"},
        {TEXT("\\a"), "error 161"},
    };
    std::vector<HANDLE> handles;
    for (const auto& [wanted, created] : rows) {
        SetLastError(ERROR_SUCCESS);
        handles.push_back(Create(wanted));
        EXPECT_EQ(Created(handles.back()), created) << testing::PrintToString(wanted);
        EXPECT_EQ(Exists(wanted), handles.back() != nullptr && !wanted.empty());
    }
    for (const HANDLE handle : handles) EXPECT_EQ(CloseHandle(handle) != FALSE, handle != nullptr);
    EXPECT_FALSE(CloseHandle(handles.front())) << "closed twice";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_FALSE(Exists(name));
    EXPECT_TRUE(folder.Files().empty());
}

TEST_F(Mutexes, AreSeenByOtherProcessesUntilTheseEnd) {
    for (const bool killed : {false, true}) {
        Child child("use a mutex", {narrowName});
        EXPECT_EQ(Ask(child, "own"), "new");
        {
            const Handle mutex(Create(name));
            EXPECT_EQ(Created(mutex), "existing");
            EXPECT_EQ(WaitForSingleObject(mutex, 20), DWORD{WAIT_TIMEOUT});
            std::thread waiting(
                [&] { EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_OBJECT_0}); });
            EXPECT_EQ(Ask(child, "release"), "done");
            waiting.join();
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

TEST_F(Mutexes, OurHandleOutlivesTheProcessThatMadeTheNameAndOwnedIt) {
    Child child("use a mutex", {narrowName}), second("use a mutex", {narrowName});
    EXPECT_EQ(Ask(child, "own"), "new");
    const Handle mutex(Open(name));
    child.Kill();
    EXPECT_EQ(Ask(second, "open"), "existing");
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_ABANDONED});
}

TEST_F(Mutexes, OfManyProcessesOneSeesANewName) {
    std::vector<Child> children;
    for (int i = 0; i < 6; ++i) children.emplace_back("use a mutex", Arguments{narrowName});
    for (int round = 0; round < 20; ++round) {
        for (Child& child : children) child.WriteLine("open");
        int created = 0;
        for (Child& child : children) created += child.ReadLine() == "new" ? 1 : 0;
        ASSERT_EQ(created, 1);
        for (Child& child : children) ASSERT_EQ(Ask(child, "close"), "done");
        ASSERT_FALSE(Exists(name));
    }
    for (Child& child : children) child.WriteLine("hammer");
    for (Child& child : children) EXPECT_EQ(child.Finish(), 0);
    EXPECT_FALSE(Exists(name));
    EXPECT_TRUE(folder.Files().empty());
}

}  // namespace
