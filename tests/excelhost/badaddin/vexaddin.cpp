// An add-in whose handshake raises an exception of the library's own, which passes on to the host as it is where
// both have one runtime.
#include "errors/vex.h"

#include <oleauto.h>

extern "C" {
std::int32_t WINAPI xlAutoOpen() {
    return 1;
}
std::int32_t WINAPI xlAutoClose() {
    return 1;
}
void WINAPI InitializeXlaInformationVB(std::int32_t, std::int32_t, std::int32_t, BSTR*, std::int32_t, BSTR*,
                                       std::int32_t, BSTR*) {
    throw VexKernelObjectError("WinMutex::WinMutex", VexCode::MutexCreate, CStringW("5"), CStringW("Marker"));
}
}
