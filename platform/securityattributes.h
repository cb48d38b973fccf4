#pragma once

#include <windows.h>

// Security attributes with a null DACL, which grants everyone all access, and with inheritance of the handle.
// Built as a temporary for the length of one call that makes a kernel object or a registry key. Raises
// nothing: the calls that fill the descriptor can't fail for a descriptor of the current revision.
class NullSecurityAttributes {
  public:
    NullSecurityAttributes() noexcept;

    // The attributes refer to the descriptor beside them.
    NullSecurityAttributes(const NullSecurityAttributes&) = delete;
    NullSecurityAttributes& operator=(const NullSecurityAttributes&) = delete;

    // Valid as long as the object lives.
    [[nodiscard]] SECURITY_ATTRIBUTES* get() noexcept { return &attributes_; }

  private:
    SECURITY_ATTRIBUTES attributes_;
    SECURITY_DESCRIPTOR descriptor_;
};
