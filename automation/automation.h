// The automation layer's chief header: strings, Variants and arrays across the border of OLE Automation.
#pragma once

#include "automation/bstr.h"
#include "automation/vbarray.h"
#include "automation/vbmatrix.h"
#include "automation/vbstrings.h"
#include "automation/vbvectors.h"
