// Code pages: MultiByteToWideChar, WideCharToMultiByte and their kin.
#pragma once

#include "winapi/types.h"
