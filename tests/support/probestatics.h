#pragma once

#include <string>

// A static object of a library that the probe module links, built at load time.
[[nodiscard]] const std::string& ProbeStaticText();
