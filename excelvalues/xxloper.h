// Excel values: all of the layer in one header.
#pragma once

#include "excelvalues/xlcall.h"       // Excel's interface
#include "excelvalues/value.h"        // XXloper, XXloperPtr and who frees what
#include "excelvalues/lent.h"         // records of others, as handles that cost no memory
#include "excelvalues/callexcel.h"    // calls into Excel
#include "excelvalues/makers.h"       // values of plain things
#include "excelvalues/copy.h"         // deep copies
#include "excelvalues/numbers.h"      // numbers and the errors they carry
#include "excelvalues/variant.h"      // automation's VARIANT
#include "excelvalues/arraymakers.h"  // arrays of cells
#include "excelvalues/geometry.h"     // references and the size of a sheet
