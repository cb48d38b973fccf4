// An add-in whose handshake fails with an exception of the library's own, which crosses the border as the add-in's
// own failures do: as it is on Linux, as a Windows exception there.
#include "addin/detail/atborder.h"
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
    AtBorder([] {
        throw VexKernelObjectError("WinMutex::WinMutex", VexCode::MutexCreate, CStringW("5"),
                                   CStringW("Marker"));
    });
}
}
