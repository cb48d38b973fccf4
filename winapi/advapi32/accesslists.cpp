#include "accounts.h"
#include "aclapi.h"
#include "kernel32/failure.h"
#include "kernel32/kernelobject.h"
#include "kernel32/paths.h"
#include "processthreadsapi.h"
#include "securitybaseapi.h"
#include "winbase.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <unistd.h>

using winapi::AtBorder;
using winapi::Failure;

namespace {

// ---- Identifiers ---------------------------------------------------------------------------------------

// S-1-22-1-<uid>, as Samba numbers the users of a Unix system.
struct UserSid {
    BYTE revision = 1;
    BYTE count = 2;
    BYTE authority[6] = {0, 0, 0, 0, 0, 22};
    DWORD unixUsers = 1;
    DWORD uid;
};

constexpr std::u16string_view unixUserDomain = u"Unix User";

UserSid SidOf(std::u16string_view name) {
    return {.uid = winapi::AccountNamed(winapi::Utf8FromUtf16(name)).id};
}

DWORD SizeOf(const SID& sid) noexcept {
    return static_cast<DWORD>(offsetof(SID, SubAuthority) + sid.SubAuthorityCount * sizeof(DWORD));
}

// ---- Lists ---------------------------------------------------------------------------------------------

void AppendEntry(std::vector<BYTE>& list, const EXPLICIT_ACCESS_W& access) {
    if (access.grfAccessMode != SET_ACCESS && access.grfAccessMode != GRANT_ACCESS) {
        throw Failure{ERROR_INVALID_PARAMETER};
    }
    UserSid user;
    const void* sid = access.Trustee.ptstrName;
    if (access.Trustee.TrusteeForm == TRUSTEE_IS_NAME) {
        user = SidOf(access.Trustee.ptstrName);
        sid = &user;
    }
    const DWORD sidSize = SizeOf(*static_cast<const SID*>(sid));
    ACCESS_ALLOWED_ACE entry{};
    const std::size_t size = offsetof(ACCESS_ALLOWED_ACE, SidStart) + sidSize;
    entry.Header = {ACCESS_ALLOWED_ACE_TYPE, static_cast<BYTE>(access.grfInheritance),
                    static_cast<WORD>(size)};
    entry.Mask = access.grfAccessPermissions;
    const std::size_t start = list.size();
    list.resize(start + size);
    std::memcpy(&list[start], &entry, offsetof(ACCESS_ALLOWED_ACE, SidStart));
    std::memcpy(&list[start + offsetof(ACCESS_ALLOWED_ACE, SidStart)], sid, sidSize);
}

PACL NewList(const EXPLICIT_ACCESS_W* entries, ULONG count) {
    std::vector<BYTE> list(sizeof(ACL));
    for (ULONG i = 0; i < count; ++i) AppendEntry(list, entries[i]);
    constexpr std::size_t longest = 0xFFFF;
    if (list.size() > longest) throw Failure{ERROR_INVALID_PARAMETER};
    const ACL head{ACL_REVISION, 0, static_cast<WORD>(list.size()), static_cast<WORD>(count), 0};
    std::memcpy(list.data(), &head, sizeof head);
    void* const memory = std::malloc(list.size());
    if (memory == nullptr) throw std::bad_alloc();
    std::memcpy(memory, list.data(), list.size());
    return static_cast<PACL>(memory);
}

// ---- Tokens --------------------------------------------------------------------------------------------

class Token : public winapi::KernelObject {
  public:
    explicit Token(DWORD access) noexcept : access_(access) {}
    [[nodiscard]] bool Allows(DWORD right) const noexcept { return (access_ & right) != 0; }

  private:
    const DWORD access_;
};

}  // namespace

BOOL WINAPI LookupAccountNameW(LPCWSTR, LPCWSTR name, PSID sid, LPDWORD sidSize, LPWSTR domain,
                               LPDWORD domainSize, PSID_NAME_USE use) noexcept {
    return AtBorder(FALSE, [&] {
        const UserSid user = SidOf(name != nullptr ? name : u"");
        constexpr auto domainUnits = static_cast<DWORD>(unixUserDomain.size() + 1);
        const bool fits = *sidSize >= sizeof user && *domainSize >= domainUnits;
        *sidSize = sizeof user;
        *domainSize = domainUnits;
        if (!fits) throw Failure{ERROR_INSUFFICIENT_BUFFER};
        std::memcpy(sid, &user, sizeof user);
        domain[unixUserDomain.copy(domain, unixUserDomain.size())] = u'\0';
        --*domainSize;
        *use = SidTypeUser;
        return TRUE;
    });
}

BOOL WINAPI EqualSid(PSID one, PSID other) noexcept {
    const DWORD size = SizeOf(*static_cast<const SID*>(one));
    return size == SizeOf(*static_cast<const SID*>(other)) && std::memcmp(one, other, size) == 0;
}

BOOL WINAPI GetAce(PACL list, DWORD index, LPVOID* entry) noexcept {
    if (index >= list->AceCount) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    BYTE* at = reinterpret_cast<BYTE*>(list + 1);
    for (; index != 0; --index) at += reinterpret_cast<const ACE_HEADER*>(at)->AceSize;
    *entry = at;
    return TRUE;
}

DWORD WINAPI SetEntriesInAclW(ULONG count, PEXPLICIT_ACCESS_W entries, PACL oldList, PACL* newList) noexcept {
    try {
        if (oldList != nullptr) return ERROR_INVALID_PARAMETER;
        *newList = NewList(entries, count);
        return ERROR_SUCCESS;
    } catch (const Failure& failure) {
        return failure.code;
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

HANDLE WINAPI LocalFree(HANDLE memory) noexcept {
    std::free(memory);
    return nullptr;
}

HANDLE WINAPI GetCurrentProcess() noexcept {
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, PHANDLE token) noexcept {
    return AtBorder(FALSE, [&] {
        if (process != GetCurrentProcess()) throw Failure{ERROR_INVALID_HANDLE};
        *token = winapi::NewHandle(std::make_shared<Token>(access));
        return TRUE;
    });
}

BOOL WINAPI GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size,
                                LPDWORD needed) noexcept {
    return AtBorder(FALSE, [&] {
        if (!winapi::ObjectOf<Token>(token)->Allows(TOKEN_QUERY)) throw Failure{ERROR_ACCESS_DENIED};
        if (kind != TokenElevation || needed == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        const TOKEN_ELEVATION elevation{geteuid() == 0 ? 1U : 0U};
        *needed = sizeof elevation;
        if (size < sizeof elevation) throw Failure{ERROR_BAD_LENGTH};
        std::memcpy(buffer, &elevation, sizeof elevation);
        return TRUE;
    });
}
