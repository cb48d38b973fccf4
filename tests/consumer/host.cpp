// What an add-in looks for in the program that loads it.
#include "excelhost/host.h"

#include <windows.h>

#include <cstdio>

int main() {
    const bool isExported = GetProcAddress(GetModuleHandleW(nullptr), "MdCallBack12") != nullptr;
    const excelhost::Host host;
    std::printf("excelhost %d\n", static_cast<int>(isExported && excelhost::Host::Current() == &host));
}
