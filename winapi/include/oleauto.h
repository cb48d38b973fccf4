// A stand-in for the OLE Automation header of this name: strings, variants and arrays.
#pragma once

#include <windows.h>
