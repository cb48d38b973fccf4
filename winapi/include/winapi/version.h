// Version resources.
#pragma once

#include "winapi/types.h"
