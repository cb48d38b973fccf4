#include "addin/lifecycle.h"

#include "addin/detail/atborder.h"
#include "addin/handshake.h"
#include "addin/resultstore.h"
#include "errors/vex.h"

#include <new>

namespace {

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
