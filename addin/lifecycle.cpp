#include "addin/lifecycle.h"

#include "addin/handshake.h"
#include "addin/detail/locateexcel.h"
#include "addin/detail/module.h"
#include "addin/detail/resultstore.h"
#include "errors/vex.h"

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    try {
        AttachModule(module);
    } catch (...) {
        // No memory for the texts. Excel is found all the same.
        LocateExcel12Entry();
    }
    return TRUE;
}

int WINAPI xlAutoOpen() {
    try {
        OpenThreadResultStore();
        return 1;
    } catch (const VexException&) {
        return 0;
    }
}

int WINAPI xlAutoClose() {
    UnregisterAll();
    CloseThreadResultStore();
    return 1;
}

int WINAPI xlAutoAdd() {
    return 1;
}

int WINAPI xlAutoRemove() {
    return 1;
}

void WINAPI xlAutoFree(void*) {}
