#include "platform/platform.h"

#include "errors/vex.h"
#include "support/allocations.h"
#include "support/home.h"
#include "support/raised.h"

#include <memory>
#include <new>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

class Mutexes : public testing::Test {
  protected:
    support::RuntimeFolder folder;
    const std::string narrowName = "kestrolumen platform test " + std::to_string(GetCurrentProcessId());
    const CStringW name{narrowName.c_str()};
};

TEST_F(Mutexes, AreFoundWithTheFlagsOfTheirCreatorAlone) {
    EXPECT_EQ(MakeKernelObjectName(TEXT("a"), -1), TEXT("Global\\a"));
    EXPECT_EQ(MakeMutexName(TEXT("Kestrolumen is loaded mutex name 129342734"), true, 0),
              TEXT("Local\\Kestrolumen is loaded mutex name 129342734_v8"));
    for (const bool suffix : {false, true}) {
        for (const int global : {0, 1}) {
            bool existed = true;
            const Mutex mutex(name, suffix, global, &existed);
            EXPECT_FALSE(existed);
            const Mutex second(name, suffix, global, &existed, true);
            EXPECT_TRUE(existed);
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

TEST_F(Mutexes, BelongToTheirMakerOnlyIfItAsks) {
    for (const bool asked : {false, true}) {
        const auto mutex = asked ? std::make_unique<Mutex>(name, true, 0, nullptr, true)
                                 : std::make_unique<Mutex>(name, true, 0, nullptr);
        std::thread([&] { EXPECT_NE(mutex->WaitPumping(0), asked); }).join();
    }
}

TEST_F(Mutexes, ThatCanNotBeMadeRaise) {
    EXPECT_EQ(support::Raised([] { const Mutex mutex(TEXT("no\\name"), true, 0, nullptr); }),
              "VexKernelObjectError Mutex::Mutex 2619 <3> <no\\name>")
        << "without prefix and suffix";
}

TEST_F(Mutexes, LeaveNoHandleOpenAlsoWithoutMemory) {
    const auto use = [&] {
        try {
            const Mutex mutex(name, true, 0, nullptr, true);
        } catch (const std::bad_alloc&) {
        } catch (const VexKernelObjectError&) {
        }
    };
    use();
    const std::size_t handles = support::OpenHandles();
    EXPECT_GT(support::FailEachAllocation(use, [&] { EXPECT_FALSE(Mutex::Exists(name, true, 0)); }), 0U);
    EXPECT_LE(support::OpenHandles(), handles + 2) << "Wine keeps a few of its own";
}

TEST(NullAttributes, GrantEveryoneEverything) {
    NullSecurityAttributes attributes;
    EXPECT_EQ(attributes.get()->nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_EQ(attributes.get()->bInheritHandle, TRUE);
    BOOL present = FALSE, defaulted = TRUE;
    ACL other{};
    PACL list = &other;
    ASSERT_TRUE(
        GetSecurityDescriptorDacl(attributes.get()->lpSecurityDescriptor, &present, &list, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_EQ(list, nullptr) << "present and null: no restriction";
}

}  // namespace
