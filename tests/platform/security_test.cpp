#include "platform/currentusersecurityattributes.h"

#include "platform/registrykey.h"
#include "platform/securityattributes.h"
#include "support/allocations.h"
#include "support/home.h"
#include "support/raised.h"
#include "support/registry.h"

#include <windows.h>

#include <processthreadsapi.h>
#include <securitybaseapi.h>

#include <cstdlib>

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

void ExpectTheUserAlone(PACL list) {
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->AceCount, 1);
    LPVOID entry = nullptr;
    ASSERT_TRUE(GetAce(list, 0, &entry));
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    EXPECT_EQ(allowed->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
    EXPECT_EQ(allowed->Header.AceFlags, CONTAINER_INHERIT_ACE);
    EXPECT_EQ(allowed->Mask, DWORD{KEY_ALL_ACCESS});
    const PSID sid = CurrentUserSecurityAttributes::GetUserSID(GetCurrentUserName());
    EXPECT_TRUE(EqualSid(&allowed->SidStart, sid));
    std::free(sid);
}

TEST(CurrentUserAttributes, NameTheUserForAnElevatedProcessUnlessASettingForbidsIt) {
    const support::FreshRegistry registry;
    const auto expect = [](bool named) {
        CurrentUserSecurityAttributes attributes;
        BOOL present = FALSE, defaulted = TRUE;
        PACL list = nullptr;
        EXPECT_TRUE(
            GetSecurityDescriptorDacl(attributes.get()->lpSecurityDescriptor, &present, &list, &defaulted));
        EXPECT_TRUE(present && !defaulted && attributes.get()->bInheritHandle);
        EXPECT_EQ(list, attributes.acl());
        if (named && IsElevated()) {
            ExpectTheUserAlone(list);
        } else {
            EXPECT_EQ(list, nullptr);
        }
    };
    expect(true);
    {
        const support::WithoutElevation plain;
        expect(true);
    }
    RegistryKey key(1, HKEY_CURRENT_USER, TEXT("Software\\Quillmar"), KEY_WRITE,
                    NullSecurityAttributes().get());
    const WCHAR* const setting = TEXT("Use NULL Security Attributes");
    key.ValueWrite(setting, 0);
    expect(true);
    key.ValueWrite(setting, 2);
    expect(false);
    key.ValueWrite(setting, CStringW(TEXT("1")));
    expect(true);
}

TEST(CurrentUserAttributes, LeaveNothingBehindAndRaiseForAUserWhomNobodyKnows) {
    const support::FreshRegistry registry;
    EXPECT_EQ(support::BlocksLeftBy([] {
                  const CurrentUserSecurityAttributes attributes;
                  std::free(CurrentUserSecurityAttributes::GetUserSID(GetCurrentUserName()));
              }),
              0);
    EXPECT_EQ(support::Raised([] {
                  static_cast<void>(CurrentUserSecurityAttributes::GetUserSID(TEXT("no such user at all")));
              }),
              "VexSecurityFunctionError CurrentUserSecurityAttributes::GetUserSID 2845 "
              "<LookupAccountName err=1332>");
}

}  // namespace
