// A library for tests to load: it notes what the loader tells it and exports a few functions.
#include <windows.h>

namespace {

HMODULE ownHandle = nullptr;
int* unloads = nullptr;

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) ownHandle = module;
    if (reason == DLL_PROCESS_DETACH && unloads != nullptr) ++*unloads;
    return TRUE;
}

int ProbeAnswer() {
    return 42;
}
HMODULE ProbeHandle() {
    return ownHandle;
}
// Where to count unloads from now on.
void ProbeCountUnloads(int* counter) {
    unloads = counter;
}
}
