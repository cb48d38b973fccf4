// Security descriptors and attributes.
#pragma once

#include "winapi/types.h"

#define SECURITY_DESCRIPTOR_REVISION 1
#define SE_DACL_PRESENT 0x0004
#define SE_DACL_DEFAULTED 0x0008
#define SE_SELF_RELATIVE 0x8000

struct ACL {
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;
    WORD AceCount;
    WORD Sbz2;
};
using PACL = ACL*;
using PSID = PVOID;
using PSECURITY_DESCRIPTOR = PVOID;
using SECURITY_DESCRIPTOR_CONTROL = WORD;

struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

// An absolute descriptor with no owner, group or list. ERROR_UNKNOWN_REVISION for a revision other than 1.
BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) noexcept;

// Sets or, with `present` FALSE, takes away the discretionary list. The list isn't copied. A list that is
// present and null grants everyone all access.
BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL dacl,
                                      BOOL defaulted) noexcept;

// Reads the discretionary list back; `dacl` and `defaulted` are only set when one is present.
BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL* present, PACL* dacl,
                                      BOOL* defaulted) noexcept;
