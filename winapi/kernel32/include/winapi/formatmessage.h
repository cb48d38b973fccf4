// The system's texts for its error codes, as Microsoft's winbase.h describes them.
#pragma once

#include "winapi/types.h"

#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000

#define ERROR_MR_MID_NOT_FOUND 317
#define ERROR_RESOURCE_LANG_NOT_FOUND 1815

// The text of a code of the system or of an HRESULT, ended by "\r\n", and its length without the terminator.
// English alone is spoken here, and only of the codes that this layer knows; an HRESULT that wraps a code of
// the system (0x8007....) has that code's text.
//
// 0 on failure: ERROR_MR_MID_NOT_FOUND without a text, ERROR_RESOURCE_LANG_NOT_FOUND for another primary
// language than English and the neutral one, ERROR_INSUFFICIENT_BUFFER for a text that doesn't fit, and
// ERROR_INVALID_PARAMETER for a text with a place for an argument, and for other flags than
// FORMAT_MESSAGE_FROM_SYSTEM. The source and the arguments aren't looked at.
DWORD WINAPI FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR text, DWORD size,
                            char** arguments) noexcept;
