#include "winapi/security.h"

#include "winapi/errorcodes.h"

namespace {

BOOL Refuse(DWORD code) noexcept {
    SetLastError(code);
    return FALSE;
}

}  // namespace

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) noexcept {
    if (revision != SECURITY_DESCRIPTOR_REVISION) return Refuse(ERROR_UNKNOWN_REVISION);
    auto& target = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    target = {};
    target.Revision = SECURITY_DESCRIPTOR_REVISION;
    return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL dacl,
                                      BOOL defaulted) noexcept {
    auto& target = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    if (target.Revision != SECURITY_DESCRIPTOR_REVISION) return Refuse(ERROR_UNKNOWN_REVISION);
    if ((target.Control & SE_SELF_RELATIVE) != 0) return Refuse(ERROR_INVALID_SECURITY_DESCR);
    unsigned control = target.Control & ~unsigned{SE_DACL_PRESENT | SE_DACL_DEFAULTED};
    if (present != FALSE) control |= SE_DACL_PRESENT;
    if (present != FALSE && defaulted != FALSE) control |= SE_DACL_DEFAULTED;
    target.Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>(control);
    target.Dacl = present != FALSE ? dacl : nullptr;
    return TRUE;
}

BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL* present, PACL* dacl,
                                      BOOL* defaulted) noexcept {
    const auto& source = *static_cast<const SECURITY_DESCRIPTOR*>(descriptor);
    if (source.Revision != SECURITY_DESCRIPTOR_REVISION) return Refuse(ERROR_UNKNOWN_REVISION);
    *present = (source.Control & SE_DACL_PRESENT) != 0;
    if (*present != FALSE) {
        *dacl = source.Dacl;
        *defaulted = (source.Control & SE_DACL_DEFAULTED) != 0;
    }
    return TRUE;
}
