#include <windows.h>

#include <gtest/gtest.h>

namespace {

struct Dacl {
    BOOL present = -1;
    PACL list = nullptr;
    BOOL defaulted = -1;

    BOOL Read(SECURITY_DESCRIPTOR& descriptor) {
        return GetSecurityDescriptorDacl(&descriptor, &present, &list, &defaulted);
    }
};

TEST(SecurityDescriptor, StartsWithoutAnything) {
    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_EQ(descriptor.Revision, 1);
    EXPECT_EQ(descriptor.Control, 0);
    EXPECT_EQ(descriptor.Owner, nullptr);
    EXPECT_EQ(descriptor.Group, nullptr);
    EXPECT_EQ(descriptor.Sacl, nullptr);
    Dacl dacl;
    EXPECT_TRUE(dacl.Read(descriptor));
    EXPECT_FALSE(dacl.present);
}

TEST(SecurityDescriptor, KeepsTheListThatWasSet) {
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    ACL acl{};
    for (PACL list : {static_cast<PACL>(nullptr), &acl}) {
        for (const BOOL defaulted : {FALSE, TRUE}) {
            ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, list, defaulted));
            Dacl dacl;
            ASSERT_TRUE(dacl.Read(descriptor));
            EXPECT_TRUE(dacl.present);
            EXPECT_EQ(dacl.list, list);
            EXPECT_EQ(dacl.defaulted != FALSE, defaulted != FALSE);
        }
    }
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, FALSE, nullptr, FALSE));
    Dacl dacl;
    EXPECT_TRUE(dacl.Read(descriptor));
    EXPECT_FALSE(dacl.present);
}

TEST(SecurityDescriptor, OtherRevisionsAndFormsAreRefused) {
    SECURITY_DESCRIPTOR descriptor;
    EXPECT_FALSE(InitializeSecurityDescriptor(&descriptor, 2));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_REVISION});

    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    descriptor.Revision = 3;
    EXPECT_FALSE(SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_REVISION});
    EXPECT_FALSE(Dacl().Read(descriptor));

    descriptor.Revision = SECURITY_DESCRIPTOR_REVISION;
    descriptor.Control = SE_SELF_RELATIVE;
    EXPECT_FALSE(SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_SECURITY_DESCR});
}

}  // namespace
