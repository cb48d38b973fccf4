// The add-in's eleven exports, and what an add-in of one's own takes from it, all in one header.
//
//   xlAutoOpen, xlAutoClose, xlAutoAdd, xlAutoRemove, xlAutoFree             lifecycle.h
//   NetOutputPrediction, NetOutputProbabilityOfPrediction,
//   NetOutputProbabilityOfCategory                                           bridge.h
//   InitializeXlaInformationVB, InitializeXlaInformationW,
//   UninitializeXlaInformation                                               handshake.h
//
// What leaves an export on failure is told in                                border.h
// Results that outlive a call, and finding Excel, for any add-in             resultstore.h, locateexcel.h
//
// Order of life: the loader attaches the library (DllMain); xlAutoOpen makes the store for results; the companion
// workbook's handshake registers the worksheet functions; cells calculate; the workbook takes its leave;
// xlAutoClose unregisters the functions and closes the store.
#pragma once

#include "addin/border.h"
#include "addin/bridge.h"
#include "addin/handshake.h"
#include "addin/lifecycle.h"
#include "addin/locateexcel.h"
#include "addin/resultstore.h"
