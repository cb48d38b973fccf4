// The companion add-in workbook, played: the functions of its code that compute what the add-in passes on.
//
// Their arguments, which the add-in hands over as the cell's formula gives them:
//   inputs     a row or column of cells, one for each input of the network
//   network    its name
//   category   (NetOutputProbabilityOfCategoryVBA only) one of the network's categories
//   fallback   the answer when an input is no number; #N/A when left out
//   low, high  the least and the greatest value of each input, cells as many as inputs; inputs beyond are
//   taken
//              to the bound. Either may be left out, and an empty cell is no bound.
//
// Names of networks and categories count without regard to case. Answers that are no prediction:
//   #VALUE!    another number of arguments, inputs or bounds than there should be; an unknown network; a
//   bound
//              that is neither a number nor empty
//   #NUM!      a low bound above the high one
//   #N/A       an unknown category
// An error value given as a name or a bound comes back as it is.
#pragma once

#include "excelhost/host.h"
#include "excelhost/network.h"

#include <span>

namespace excelhost {

// Opens the workbook with its three functions:
//   NetOutputPredictionVBA(inputs, network, fallback, low, high)              the likeliest category's name
//   NetOutputProbabilityOfPredictionVBA(the same)                             its probability, 0 to 1
//   NetOutputProbabilityOfCategoryVBA(inputs, network, category, fallback, low, high)
// The networks are kept by address.
void OpenCompanion(Host& host, TextView workbook, std::span<const Network* const> networks);

}  // namespace excelhost
