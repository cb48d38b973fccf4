// Microsoft's fileapi.h, as far as it is needed beside windows.h.
#pragma once

#include "winapi/drives.h"
#include "winapi/files.h"
