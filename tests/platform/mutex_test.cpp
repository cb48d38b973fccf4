#include "platform/platform.h"

#include "errors/vex.h"
#include "support/allocations.h"
#include "support/children.h"
#include "support/home.h"

#include <new>
#include <string>

#include <gtest/gtest.h>

namespace {

using support::Arguments;
using support::Child;

// Holds a Mutex, with the version suffix or without it, until its parent lets it go.
const support::Role holder("hold a Mutex", [](const Arguments& arguments) {
    bool existed = false;
    const Mutex mutex(CStringW(arguments[0].c_str()), arguments[1] == "suffix", 0, &existed);
    support::Say(existed ? "existed" : "new");
    static_cast<void>(support::Hear());
    return 0;
});

class Mutexes : public testing::Test {
  protected:
    support::RuntimeFolder folder;
    const std::string narrowName = "kestrolumen platform test " + std::to_string(GetCurrentProcessId());
    const CStringW name{narrowName.c_str()};
};

TEST(MutexNames, HaveTheirPrefixAheadAndTheirSuffixBehind) {
    EXPECT_EQ(MakeKernelObjectName(TEXT("a"), 0), TEXT("Local\\a"));
    EXPECT_EQ(MakeKernelObjectName(TEXT("a"), 1), TEXT("Global\\a"));
    EXPECT_EQ(MakeKernelObjectName(TEXT("a"), 2), TEXT("Global\\a"));
    EXPECT_EQ(MakeKernelObjectName(TEXT("a"), -1), TEXT("Global\\a"));
    EXPECT_EQ(MakeMutexName(TEXT("a"), false, 0), TEXT("Local\\a"));
    EXPECT_EQ(MakeMutexName(TEXT("a"), true, 1), TEXT("Global\\a_v8"));
    EXPECT_EQ(MakeMutexName(TEXT("Kestrolumen is loaded mutex name 129342734"), true, 0),
              TEXT("Local\\Kestrolumen is loaded mutex name 129342734_v8"));
}

TEST_F(Mutexes, SayWhetherTheNameWasThere) {
    bool existed = true;
    const Mutex first(name, true, 0, &existed);
    EXPECT_FALSE(existed);
    EXPECT_EQ(first.name(), MakeMutexName(name, true, 0));
    const Mutex second(name, true, 0, &existed);
    EXPECT_TRUE(existed);
    const Mutex global(name, true, 2, &existed);
    EXPECT_FALSE(existed);
    const Mutex sameGlobal(name, true, 1, &existed);
    EXPECT_TRUE(existed);
    const Mutex withoutSuffix(name, false, 0, &existed);
    EXPECT_FALSE(existed);
    const Mutex notAsked(name, true, 0, nullptr);
}

TEST_F(Mutexes, AreFoundWithTheFlagsOfTheirCreatorAlone) {
    for (const bool suffix : {false, true}) {
        for (const int global : {0, 1}) {
            const Mutex mutex(name, suffix, global, nullptr);
            for (const bool askedSuffix : {false, true}) {
                for (const int askedGlobal : {0, 1, 2}) {
                    const bool same = askedSuffix == suffix && (askedGlobal != 0) == (global != 0);
                    EXPECT_EQ(Mutex::Exists(name, askedSuffix, askedGlobal), same);
                }
            }
        }
    }
    EXPECT_FALSE(Mutex::Exists(name, true, 0));
    EXPECT_FALSE(Mutex::Exists(TEXT("no\\name"), true, 0)) << "what can't be opened is absent";
}

TEST_F(Mutexes, AreOwnedOnlyIfAskedFor) {
    const auto release = [](const Mutex& mutex) {
        const HANDLE handle = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, mutex.name().GetString());
        const bool released = ReleaseMutex(handle) != FALSE;
        CloseHandle(handle);
        return released;
    };
    EXPECT_FALSE(release(Mutex(name, false, 0, nullptr)));
    EXPECT_FALSE(release(Mutex(name, false, 0, nullptr, false)));
    EXPECT_TRUE(release(Mutex(name, false, 0, nullptr, true)));
}

TEST_F(Mutexes, ThatCanNotBeMadeRaise) {
    bool existed = true;
    try {
        const Mutex mutex(TEXT("no\\name"), true, 0, &existed);
        FAIL();
    } catch (const VexKernelObjectError& error) {
        EXPECT_EQ(error.key, TEXT("VexKernelObjectError"));
        EXPECT_EQ(error.code, 2619);
        EXPECT_EQ(error.function, TEXT("Mutex::Mutex"));
        ASSERT_EQ(error.args.size(), 2U);
        EXPECT_EQ(error.args[0], TEXT("3"));
        EXPECT_EQ(error.args[1], TEXT("no\\name")) << "without prefix and suffix";
    }
    EXPECT_TRUE(existed) << "left alone";
}

TEST_F(Mutexes, AreSeenByOtherProcessesUntilTheirHolderEnds) {
    for (const bool killed : {false, true}) {
        Child child("hold a Mutex", {narrowName, "suffix"});
        EXPECT_EQ(child.ReadLine(), "new");
        EXPECT_TRUE(Mutex::Exists(name, true, 0));
        EXPECT_FALSE(Mutex::Exists(name, false, 0));
        if (killed) {
            child.Kill();
        } else {
            EXPECT_EQ(child.Finish(), 0);
        }
        EXPECT_FALSE(Mutex::Exists(name, true, 0));
        EXPECT_TRUE(folder.Files().empty());
    }
    const Mutex mutex(name, false, 0, nullptr);
    Child child("hold a Mutex", {narrowName, "plain"});
    EXPECT_EQ(child.ReadLine(), "existed");
}

TEST_F(Mutexes, LeaveNoHandleOpen) {
    const auto useAll = [&] {
        EXPECT_FALSE(Mutex::Exists(name, true, 0));
        const Mutex mutex(name, true, 0, nullptr, true);
        EXPECT_TRUE(Mutex::Exists(name, true, 0));
        EXPECT_THROW(Mutex(TEXT("no\\name"), false, 0, nullptr), VexKernelObjectError);
    };
    useAll();
    const std::size_t before = support::OpenHandles();
    for (int round = 0; round < 30; ++round) useAll();
    EXPECT_EQ(support::OpenHandles(), before);
}

TEST_F(Mutexes, WithoutMemoryNothingIsLeftOpen) {
    const std::size_t handles = support::OpenHandles();
    const std::size_t failures = support::FailEachAllocation(
        [&] {
            try {
                const Mutex mutex(name, true, 0, nullptr);
            } catch (const std::bad_alloc&) {
            } catch (const VexKernelObjectError&) {
            }
        },
        [&] { EXPECT_FALSE(Mutex::Exists(name, true, 0)); });
    EXPECT_GT(failures, 0U);
    EXPECT_LE(support::OpenHandles(), handles + 2) << "Wine keeps a few of its own";
}

TEST(NullAttributes, GrantEveryoneEverything) {
    NullSecurityAttributes attributes;
    SECURITY_ATTRIBUTES* const raw = attributes.get();
    EXPECT_EQ(raw->nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_EQ(raw->bInheritHandle, TRUE);
    const auto& descriptor = *static_cast<const SECURITY_DESCRIPTOR*>(raw->lpSecurityDescriptor);
    EXPECT_EQ(descriptor.Revision, 1);
    const auto address = reinterpret_cast<std::uintptr_t>(raw->lpSecurityDescriptor);
    const auto own = reinterpret_cast<std::uintptr_t>(&attributes);
    EXPECT_TRUE(address >= own && address < own + sizeof attributes) << "held inline";

    BOOL present = FALSE, defaulted = TRUE;
    ACL other{};
    PACL list = &other;
    ASSERT_TRUE(GetSecurityDescriptorDacl(raw->lpSecurityDescriptor, &present, &list, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_EQ(list, nullptr);
    EXPECT_FALSE(defaulted);
}

}  // namespace
