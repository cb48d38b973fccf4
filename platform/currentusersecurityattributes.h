#pragma once

#include "text/text.h"

#include <windows.h>

#include <memory>
#include <string>

// Security attributes that let nobody but the current user at an object, where there is a reason to, and else
// grant everyone all access as NullSecurityAttributes do. The handle is inherited in both cases.
//
// The list that names the user is made for an elevated process only, and not if the registry value "Use NULL
// Security Attributes" (REG_DWORD, HKEY_CURRENT_USER\Software\Quillmar, 32-bit view) is other than 0. A value
// that can't be read counts as 0, and a process whose elevation the system doesn't tell as not elevated.
class CurrentUserSecurityAttributes {
  public:
    // Raises VexSecurityFunctionError, VexCode::Sentence, naming the call of the system that failed and the
    // thread's last error then.
    CurrentUserSecurityAttributes();

    // The attributes refer to the descriptor beside them.
    CurrentUserSecurityAttributes(const CurrentUserSecurityAttributes&) = delete;
    CurrentUserSecurityAttributes& operator=(const CurrentUserSecurityAttributes&) = delete;

    // Valid as long as the object lives.
    [[nodiscard]] SECURITY_ATTRIBUTES* get() noexcept { return &attributes_; }
    // The list that names the user; null where everyone has access.
    [[nodiscard]] const ACL* acl() const noexcept { return acl_.get(); }

    // The security identifier of a user, on malloc's heap: the caller releases it with free. The domain that
    // the system tells beside it is dropped. Raises VexSecurityFunctionError, VexCode::Sentence, for a name
    // that the system can't map, whatever the cause.
    [[nodiscard]] static PSID GetUserSID(const StdWString& userName);

  private:
    struct FreeLocal {
        void operator()(ACL* list) const noexcept;
    };

    void GrantTo(const StdWString& userName);
    void GrantToEveryone() noexcept;

    std::unique_ptr<ACL, FreeLocal> acl_;
    SECURITY_DESCRIPTOR descriptor_{};
    SECURITY_ATTRIBUTES attributes_;
};

// The name of the calling thread's user; empty when the system doesn't tell, or for one of more than 256
// units.
[[nodiscard]] StdWString GetCurrentUserName();
