#include "excelhost/machine/crashstack.h"

#include <windows.h>

namespace excelhost {

// Windows keeps the last pages of a thread's own stack for its handler.
struct CrashStack::Room {};

CrashStack::CrashStack() {
    ULONG bytes = 64UL << 10;
    SetThreadStackGuarantee(&bytes);
}

CrashStack::~CrashStack() = default;

}  // namespace excelhost
