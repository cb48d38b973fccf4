// A library for tests to load: it notes what the loader tells it and exports a few functions.
#include "support/probestatics.h"

#include <windows.h>

namespace {

HMODULE ownHandle = nullptr;
bool staticsWereBuilt = false;
int* unloads = nullptr;

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        ownHandle = module;
        staticsWereBuilt = ProbeStaticText() == "built by an initialiser";
    }
    if (reason == DLL_PROCESS_DETACH && unloads != nullptr) ++*unloads;
    return TRUE;
}

int ProbeAnswer() {
    return 42;
}
HMODULE ProbeHandle() {
    return ownHandle;
}
int ProbeStaticsWereBuilt() {
    return staticsWereBuilt ? 1 : 0;
}
// Where to count unloads from now on.
void ProbeCountUnloads(int* counter) {
    unloads = counter;
}
}
