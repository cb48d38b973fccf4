// What the add-in's platform layer knows: of the machine, of its folders, and of the add-in's own file.
#pragma once

#include "excelhost/commands/command.h"

#include <atlstr.h>

#include <string>

namespace excelhost {

// A page of text in UTF-8, in three sections. A section's line has its name; each line below it is indented
// by two columns and has a label, and its value from the 25th column on. Lines end in a line feed. A fact
// that the system doesn't tell is written "unknown".
//
// `module` is the path of a library. Raises VexErrorOpeningFile or VexErrorReadingFile where it can't be
// read.
[[nodiscard]] std::string Description(const CStringW& module);

// The command "describe" of the program.
[[nodiscard]] Command DescribeCommand();

}  // namespace excelhost
