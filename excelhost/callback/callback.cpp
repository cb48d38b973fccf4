// What an add-in finds in the executable of its host: the callback under Excel's name for it.
#include "excelhost/host.h"

extern "C" int PASCAL MdCallBack12(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    excelhost::Host* host = excelhost::Host::Current();
    return host != nullptr ? host->CallBack(function, count, operands, result) : xlretFailed;
}
