// Security descriptors and attributes.
#pragma once

#include "winapi/types.h"
