// The temporary folder.
#pragma once

#include "winapi/types.h"
