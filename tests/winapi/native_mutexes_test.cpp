// What the stand-in's way of keeping names has to get right: folders, files that the dead left, forks.
#include "support/home.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

constexpr const WCHAR* name = u"kestrolumen/names";
constexpr const char* fileName = "kestrolumen%2Fnames.mutex";

HANDLE Create() {
    return CreateMutexW(nullptr, FALSE, name);
}

bool Exists() {
    const HANDLE handle = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, name);
    return handle != nullptr && CloseHandle(handle) != FALSE;
}

std::filesystem::path LocalFolder() {
    return std::filesystem::path(getenv("KESTROLUMEN_RUNTIME_DIR")) / "Local";
}

TEST(MutexNames, StandInTheUsersFolderAloneAsLongAsSomebodyHoldsThem) {
    const support::RuntimeFolder folder;
    const HANDLE first = Create();
    EXPECT_EQ(folder.Files(), std::vector<std::string>{fileName});
    const auto forOthers = std::filesystem::perms::group_all | std::filesystem::perms::others_all;
    EXPECT_EQ(std::filesystem::status(LocalFolder()).permissions() & forOthers, std::filesystem::perms::none);
    CloseHandle(first);
    std::ofstream(LocalFolder() / fileName) << '1';  // as somebody leaves it who owned the mutex when killed
    EXPECT_FALSE(Exists());
    EXPECT_TRUE(folder.Files().empty()) << "removed by whoever looks";

    std::ofstream(LocalFolder() / fileName) << '1';
    const HANDLE handle = Create();
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(WaitForSingleObject(handle, 0), DWORD{WAIT_OBJECT_0}) << "a new mutex was abandoned by nobody";
    CloseHandle(handle);
    EXPECT_TRUE(folder.Files().empty());
}

TEST(MutexNames, AForkedChildCanNotTakeTheNameAway) {
    const support::RuntimeFolder folder;
    const HANDLE handle = Create();
    const pid_t child = fork();
    if (child == 0) {
        CloseHandle(handle);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    EXPECT_EQ(folder.Files().size(), 1U);
    EXPECT_TRUE(Exists());
    CloseHandle(handle);
    EXPECT_FALSE(Exists());
}

}  // namespace
