// The functions that a loaded module takes from others.
#pragma once

#include <windows.h>

namespace excelhost {

// Lets the module's own calls of a function that it imports go elsewhere; other modules keep theirs. Gives where they
// went before, null when it doesn't import the function.
[[nodiscard]] void* ReplaceImport(HMODULE module, const char* name, void* function);

}  // namespace excelhost
