// A source of its own: an add-in that links the layer and has no DllMain gets this one, and none of the other exports.
#include "addin/detail/atborder.h"
#include "addin/detail/module.h"
#include "addin/lifecycle.h"
#include "addin/locateexcel.h"

namespace {

void Attach(HMODULE module) noexcept {
    try {
        AttachModule(module);
    } catch (...) {
        // No memory for the texts; the handshake notes them. Excel is found all the same.
        LocateExcel12Entry();
    }
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    return AtBorder([=] {
        if (reason == DLL_PROCESS_ATTACH) Attach(module);
        return TRUE;
    });
}
