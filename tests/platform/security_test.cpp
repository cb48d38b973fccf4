#include "platform/currentusersecurityattributes.h"

#include "errors/vex.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"
#include "support/allocations.h"
#include "support/registry.h"

#include <windows.h>

#include <processthreadsapi.h>
#include <securitybaseapi.h>

#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

namespace {

bool IsElevated() {
    HANDLE token = nullptr;
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    EXPECT_TRUE(GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size));
    CloseHandle(token);
    return elevation.TokenIsElevated != 0;
}

PACL ListOf(CurrentUserSecurityAttributes& attributes) {
    BOOL present = FALSE, defaulted = TRUE;
    ACL other{};
    PACL list = &other;
    EXPECT_TRUE(
        GetSecurityDescriptorDacl(attributes.get()->lpSecurityDescriptor, &present, &list, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_FALSE(defaulted);
    EXPECT_EQ(attributes.get()->nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_EQ(attributes.get()->bInheritHandle, TRUE);
    EXPECT_EQ(list, attributes.acl());
    return list;
}

TEST(CurrentUserAttributes, NameTheUserForAnElevatedProcessUnlessASettingForbidsIt) {
    const support::FreshRegistry registry;
    const struct {
        DWORD kind;
        DWORD value;
        bool forbids;
    } rows[] = {{REG_NONE, 0, false}, {REG_DWORD, 0, false}, {REG_DWORD, 2, true}, {REG_SZ, '1', false}};
    for (const auto& row : rows) {
        if (row.kind != REG_NONE) {
            const RegistryKey key(1, HKEY_CURRENT_USER, TEXT("Software\\Quillmar"), KEY_ALL_ACCESS,
                                  NullSecurityAttributes().get());
            RegSetValueExW(key.key(), TEXT("Use NULL Security Attributes"), 0, row.kind,
                           reinterpret_cast<const BYTE*>(&row.value), sizeof row.value);
        }
        CurrentUserSecurityAttributes attributes;
        const PACL list = ListOf(attributes);
        if (row.forbids || !IsElevated()) {
            EXPECT_EQ(list, nullptr);
            continue;
        }
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->AceCount, 1);
        LPVOID entry = nullptr;
        ASSERT_TRUE(GetAce(list, 0, &entry));
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        EXPECT_EQ(allowed->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
        EXPECT_EQ(allowed->Header.AceFlags, CONTAINER_INHERIT_ACE);
        EXPECT_EQ(allowed->Mask, DWORD{KEY_ALL_ACCESS});
        const std::unique_ptr<void, decltype(&std::free)> sid(
            CurrentUserSecurityAttributes::GetUserSID(GetCurrentUserName()), &std::free);
        EXPECT_TRUE(EqualSid(&allowed->SidStart, sid.get()));
    }
}

TEST(CurrentUserAttributes, OfAUserWhomNobodyKnowsRaise) {
    try {
        static_cast<void>(CurrentUserSecurityAttributes::GetUserSID(TEXT("no such user at all")));
        FAIL();
    } catch (const VexSecurityFunctionError& error) {
        EXPECT_EQ(error.code, 2845);
        EXPECT_EQ(error.function, TEXT("CurrentUserSecurityAttributes::GetUserSID"));
        EXPECT_EQ(error.args, std::vector<CStringW>{TEXT("LookupAccountName err=1332")});
    }
}

TEST(CurrentUserAttributes, LeaveNothingBehind) {
    const support::FreshRegistry registry;
    const auto use = [] {
        try {
            const CurrentUserSecurityAttributes attributes;
            std::free(CurrentUserSecurityAttributes::GetUserSID(GetCurrentUserName()));
        } catch (const std::bad_alloc&) {
        } catch (const VexSecurityFunctionError&) {
        }
    };
    use();
    const std::size_t handles = support::OpenHandles();
    EXPECT_EQ(support::BlocksLeftBy([&] { support::FailEachAllocation(use, [] {}); }), 0);
    EXPECT_EQ(support::OpenHandles(), handles);
}

}  // namespace
