// Faults on purpose: calls into Excel that fail because the command line says so.
#pragma once

#include <cstddef>
#include <string>

namespace excelhost {

struct ScriptedRefusal {
    int function = 0;
    std::size_t nth = 0;  // call from the beginning, 0 for every one
    int returnCode = 0;
};

// "xlCoerce=xlretFailed", "xlfRegister:2=32", "16386=64": a function by the name that a trace shows or by its number,
// which of its calls, and the return code by its name or number. UsageError.
[[nodiscard]] ScriptedRefusal RefusalFrom(const std::string& text);

}  // namespace excelhost
