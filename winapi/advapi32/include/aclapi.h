// Access lists made of the names of those who get access, as Microsoft's aclapi.h and accctrl.h describe it.
#pragma once

#include "winapi/security.h"

enum ACCESS_MODE { GRANT_ACCESS = 1, SET_ACCESS = 2 };
enum MULTIPLE_TRUSTEE_OPERATION { NO_MULTIPLE_TRUSTEE };
enum TRUSTEE_FORM { TRUSTEE_IS_SID, TRUSTEE_IS_NAME };
enum TRUSTEE_TYPE { TRUSTEE_IS_UNKNOWN, TRUSTEE_IS_USER };

#define SUB_CONTAINERS_ONLY_INHERIT 0x2

struct TRUSTEE_W {
    TRUSTEE_W* pMultipleTrustee;
    MULTIPLE_TRUSTEE_OPERATION MultipleTrusteeOperation;
    TRUSTEE_FORM TrusteeForm;
    TRUSTEE_TYPE TrusteeType;
    LPWSTR ptstrName;  // with TRUSTEE_IS_SID the identifier
};
struct EXPLICIT_ACCESS_W {
    DWORD grfAccessPermissions;
    ACCESS_MODE grfAccessMode;
    DWORD grfInheritance;
    TRUSTEE_W Trustee;
};
using PEXPLICIT_ACCESS_W = EXPLICIT_ACCESS_W*;

// A new list of one entry that allows access for each of `entries`, in their order; LocalFree releases it.
// Gives ERROR_SUCCESS, ERROR_NONE_MAPPED for a name that nobody has, or ERROR_INVALID_PARAMETER for an old
// list or another mode. The last error is left alone.
DWORD WINAPI SetEntriesInAclW(ULONG count, PEXPLICIT_ACCESS_W entries, PACL oldList, PACL* newList) noexcept;
