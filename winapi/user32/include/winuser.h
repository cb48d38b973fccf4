// Microsoft's winuser.h, as far as it is needed beside windows.h.
#pragma once

#include "winapi/messages.h"
#include "winapi/windowtable.h"
