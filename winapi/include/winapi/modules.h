// Loaded modules, their paths and their exports.
#pragma once

#include "winapi/types.h"
