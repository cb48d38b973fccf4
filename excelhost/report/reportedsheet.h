// What a report needs of a sheet.
#pragma once

#include "excelhost/csv.h"
#include "excelhost/grid.h"

#include <functional>
#include <string>

namespace excelhost {

// A sheet as a page shows it. The calls of its cells come from the sheet whose id is its place among the sheets, from 1.
struct ReportedSheet {
    std::string name;
    CsvTable fields;  // what was typed: values, and formulas behind "="
    // What a formula's cell shows, when it is calculated.
    std::function<std::string(Place)> shown;
};

}  // namespace excelhost
