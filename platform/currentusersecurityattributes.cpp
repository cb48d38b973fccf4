#include "platform/currentusersecurityattributes.h"

#include "errors/vex.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"

#include <windows.h>

#include <aclapi.h>
#include <processthreadsapi.h>
#include <securitybaseapi.h>
#include <winbase.h>

#include <cstdlib>
#include <utility>
#include <vector>

namespace {

[[noreturn]] void Raise(const char* raiser, const WCHAR* call) {
    const DWORD error = GetLastError();
    throw VexSecurityFunctionError(raiser, VexCode::Sentence, CStringWFormat(TEXT("%s err=%d"), call, error));
}

bool NullAttributesAreWanted() noexcept {
    try {
        const RegistryKey key(1, HKEY_CURRENT_USER, TEXT("Software\\Quillmar"), KEY_READ,
                              NullSecurityAttributes().get());
        return key.ValueReadInt(TEXT("Use NULL Security Attributes")) != 0;
    } catch (...) {
        return false;
    }
}

bool ProcessIsElevated() noexcept {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return false;
    DWORD elevation = 0;
    DWORD size = 0;
    const BOOL told = GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size);
    CloseHandle(token);
    return told != FALSE && elevation != 0;
}

struct FreeMalloc {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
using Sid = std::unique_ptr<void, FreeMalloc>;

Sid NewSid(DWORD size) {
    Sid sid(std::malloc(size));
    if (sid == nullptr) throw std::bad_alloc();
    return sid;
}

}  // namespace

void CurrentUserSecurityAttributes::FreeLocal::operator()(ACL* list) const noexcept {
    LocalFree(list);
}

CurrentUserSecurityAttributes::CurrentUserSecurityAttributes()
    : attributes_{sizeof(SECURITY_ATTRIBUTES), &descriptor_, TRUE} {
    if (!NullAttributesAreWanted() && ProcessIsElevated()) {
        GrantTo(GetCurrentUserName());
    } else {
        GrantToEveryone();
    }
}

void CurrentUserSecurityAttributes::GrantTo(const StdWString& userName) {
    constexpr const char* raiser = "CurrentUserSecurityAttributes::CurrentUserSecurityAttributes";
    // The structure takes a name that may be written to, which nobody does.
    const TRUSTEE_W user = {nullptr, NO_MULTIPLE_TRUSTEE, TRUSTEE_IS_NAME, TRUSTEE_IS_USER,
                            const_cast<WCHAR*>(userName.c_str())};
    EXPLICIT_ACCESS_W access = {KEY_ALL_ACCESS, SET_ACCESS, SUB_CONTAINERS_ONLY_INHERIT, user};
    PACL list = nullptr;
    if (SetEntriesInAclW(1, &access, nullptr, &list) != ERROR_SUCCESS)
        Raise(raiser, TEXT("SetEntriesInAclW"));
    acl_.reset(list);
    if (InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) == FALSE) {
        Raise(raiser, TEXT("InitializeSecurityDescriptor"));
    }
    if (SetSecurityDescriptorDacl(&descriptor_, TRUE, list, FALSE) == FALSE) {
        Raise(raiser, TEXT("SetSecurityDescriptorDacl"));
    }
}

void CurrentUserSecurityAttributes::GrantToEveryone() noexcept {
    InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE);
}

PSID CurrentUserSecurityAttributes::GetUserSID(const StdWString& userName) {
    DWORD sidSize = 65, domainSize = 16;
    Sid sid = NewSid(sidSize);
    std::vector<WCHAR> domain(domainSize);
    SID_NAME_USE use{};
    const auto lookUp = [&] {
        return LookupAccountNameW(nullptr, userName.c_str(), sid.get(), &sidSize, domain.data(), &domainSize,
                                  &use) != FALSE;
    };
    bool found = lookUp();
    if (!found && GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
        sid = NewSid(sidSize);
        domain.assign(domainSize, 0);
        found = lookUp();
    }
    if (!found) Raise("CurrentUserSecurityAttributes::GetUserSID", TEXT("LookupAccountName"));
    return sid.release();
}

StdWString GetCurrentUserName() {
    WCHAR name[257] = {};
    DWORD size = std::size(name);
    if (GetUserNameW(name, &size) == FALSE) return {};
    return name;
}
