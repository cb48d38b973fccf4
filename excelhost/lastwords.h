// What is to be said when the program ends in an add-in's code.
#pragma once

#include <string>

namespace excelhost {

// Whose code runs on this thread, and its last calls into Excel; empty when no add-in's code does. Locks nothing: it
// is called from handlers of crashes.
[[nodiscard]] std::string LastWords();

}  // namespace excelhost
