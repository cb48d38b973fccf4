// What the system does about errors, as Microsoft's errhandlingapi.h describes it.
#pragma once

#include "winapi/errorcodes.h"

#define SEM_FAILCRITICALERRORS 0x0001

// Sets the process's mode and gives the one before it. There are no dialogs that it could suppress here.
UINT WINAPI SetErrorMode(UINT mode) noexcept;
