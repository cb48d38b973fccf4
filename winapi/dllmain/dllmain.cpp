// The loader's calls to DllMain, for a native shared library that links winapi_dllmain. As on Windows the
// library's static objects are built before the first call and destroyed after the last one.
//
// The result of DllMain isn't looked at (a constructor can't refuse the load), and `reserved` is always null,
// which Windows says for libraries loaded and freed at run time.
#include "winapi/modules.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

// The library's ELF header; the linker defines it.
extern "C" __attribute__((visibility("hidden"))) const char __ehdr_start;  // NOLINT

namespace {

void Notify(DWORD reason) noexcept {
    const auto module = reinterpret_cast<HINSTANCE>(reinterpret_cast<std::uintptr_t>(&__ehdr_start));
    static_cast<void>(DllMain(module, reason, nullptr));
}

}  // namespace

extern "C" {
__attribute__((constructor, visibility("hidden"))) void winapi_dllmain_attach() {
    Notify(DLL_PROCESS_ATTACH);
}
__attribute__((destructor, visibility("hidden"))) void winapi_dllmain_detach() {
    Notify(DLL_PROCESS_DETACH);
}
}
