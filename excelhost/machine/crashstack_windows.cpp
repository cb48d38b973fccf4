#include "excelhost/machine/crashstack.h"

#include <windows.h>

namespace excelhost {

// The last pages of a thread's own stack are kept for its handler.
struct CrashStack::Room {};

CrashStack::CrashStack() {
    constexpr ULONG bytes = 64UL << 10;
    ULONG kept = bytes;
    SetThreadStackGuarantee(&kept);

    // Wine (8.0) raises the overflow in a stack's very last page all the same, and a handler that finds no room there
    // leaves the program standing. So the page that raises it is moved. Windows refuses that: there the stack hasn't
    // grown so far yet.
    MEMORY_BASIC_INFORMATION stack{};
    VirtualQuery(&stack, &stack, sizeof stack);
    DWORD before = 0;
    VirtualProtect(static_cast<char*>(stack.AllocationBase) + bytes, 1, PAGE_READWRITE | PAGE_GUARD, &before);
}

CrashStack::~CrashStack() = default;

}  // namespace excelhost
