// Finding Excel in the process that has loaded the add-in.
#pragma once

// Sets Excel12EntryPoint, unless it is set already: to what the export "GetExcel12EntryPt" of the module
// "XLCall32" gives, or else to the export "MdCallBack12" of the host executable. "XLCall32" is looked for
// among the loaded modules only; the add-in neither loads it nor links against it. In a process without
// Excel the pointer stays null.
void LocateExcel12Entry() noexcept;
