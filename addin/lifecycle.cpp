#include "addin/lifecycle.h"

#include "addin/detail/atborder.h"
#include "addin/detail/locateexcel.h"
#include "addin/detail/module.h"
#include "addin/detail/resultstore.h"
#include "addin/handshake.h"
#include "errors/vex.h"

#include <new>

namespace {

void Attach(HMODULE module) noexcept {
    try {
        AttachModule(module);
    } catch (...) {
        // No memory for the texts; the handshake notes them. Excel is found all the same.
        LocateExcel12Entry();
    }
}

int Open() {
    try {
        OpenThreadResultStore();
    } catch (const VexException&) {
        return 0;
    } catch (const std::bad_alloc&) {
        // Without a store there are no results; the handshake makes one.
    }
    return 1;
}

int Close() noexcept {
    UnregisterAll();
    CloseThreadResultStore();
    return 1;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    return AtBorder([=] {
        if (reason == DLL_PROCESS_ATTACH) Attach(module);
        return TRUE;
    });
}

int WINAPI xlAutoOpen() {
    return AtBorder(Open);
}

int WINAPI xlAutoClose() {
    return AtBorder(Close);
}

int WINAPI xlAutoAdd() {
    return AtBorder([] { return 1; });
}

int WINAPI xlAutoRemove() {
    return AtBorder([] { return 1; });
}

void WINAPI xlAutoFree(void*) {
    AtBorder([] {});
}
