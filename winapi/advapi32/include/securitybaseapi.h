// Tokens, access lists and security identifiers, as Microsoft's securitybaseapi.h and winnt.h describe them.
#pragma once

#include "winapi/errorcodes.h"
#include "winapi/security.h"

enum TOKEN_INFORMATION_CLASS { TokenElevation = 20 };

struct TOKEN_ELEVATION {
    DWORD TokenIsElevated;
};

// Of TokenElevation: whether the process runs as the superuser. ERROR_BAD_LENGTH for a buffer that is too
// small, ERROR_INVALID_PARAMETER for another class, ERROR_ACCESS_DENIED without TOKEN_QUERY.
BOOL WINAPI GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size,
                                LPDWORD needed) noexcept;

struct SID {
    BYTE Revision;
    BYTE SubAuthorityCount;
    BYTE IdentifierAuthority[6];
    DWORD SubAuthority[1];  // as many as SubAuthorityCount says
};

[[nodiscard]] BOOL WINAPI EqualSid(PSID one, PSID other) noexcept;

#define ACL_REVISION 2
#define ACCESS_ALLOWED_ACE_TYPE 0
#define CONTAINER_INHERIT_ACE 2

struct ACE_HEADER {
    BYTE AceType;
    BYTE AceFlags;
    WORD AceSize;
};
struct ACCESS_ALLOWED_ACE {
    ACE_HEADER Header;
    DWORD Mask;
    DWORD SidStart;  // the identifier begins here
};

// The entry at an index of a list; ERROR_INVALID_PARAMETER behind the last.
BOOL WINAPI GetAce(PACL list, DWORD index, LPVOID* entry) noexcept;
