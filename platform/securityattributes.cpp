#include "platform/securityattributes.h"

NullSecurityAttributes::NullSecurityAttributes() noexcept
    : attributes_{sizeof(SECURITY_ATTRIBUTES), &descriptor_, TRUE}, descriptor_{} {
    InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE);
}
