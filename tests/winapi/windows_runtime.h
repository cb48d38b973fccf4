// Microsoft's universal runtime, ucrtbase.dll, by the functions under its printf family.
#pragma once

#include <windows.h>

#include <cstdarg>
#include <string>

// With %s of the format's own width, as the printf family has it.
std::string UniversalFormattedV(const char* format, va_list arguments);
std::wstring UniversalFormattedV(const wchar_t* format, va_list arguments);
