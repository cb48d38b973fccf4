// How an add-in that is loaded into this program finds the simulated Excel. One of the sources beside this
// header stands behind it in each of the programs.
#pragma once

// Makes Excel's callback findable for an add-in that is loaded from now on.
void OfferExcel();

// How many entries came in by the way that this program offers, so far.
[[nodiscard]] int EntriesByThisWay();
