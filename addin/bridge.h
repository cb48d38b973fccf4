// The three worksheet functions. Each hands its arguments, as they came, to the function of the same name
// with the suffix "VBA" in the companion workbook, and gives Excel what that function gave. The workbook may
// be open under two names: a call that Excel refuses under the first one is made once more under the second.
//
// With macro alerts off (xlfError with 0) the call goes out as xlUDF, and then the alerts come back on
// (xlfError with 1). A refused call is told by the return code in its value: an error that the workbook's
// function returned, such as #N/A, is an answer like any other. When both names are refused, the cell shows
// #VALUE!.
//
// No argument is given a meaning, converted or copied, so an array of any size costs the same. A call asks for
// two blocks of memory, the result's record and its handle's. An exception of the memory layer passes on to
// Excel, with the alerts back on, as border.h tells.
#pragma once

#include "excelvalues/xlcall.h"

extern "C" {
LPXLOPER12 WINAPI NetOutputPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                      LPXLOPER12 a5);

LPXLOPER12 WINAPI NetOutputProbabilityOfPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                                   LPXLOPER12 a5);

LPXLOPER12 WINAPI NetOutputProbabilityOfCategory(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                                 LPXLOPER12 a5, LPXLOPER12 a6);
}
