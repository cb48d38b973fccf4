// How an exported function fails. The caller of a native module is C++ like the module itself: what leaves the
// body passes on as it is.
#pragma once

namespace winapi {

template <typename Failure, typename Body>
auto GuardExport(Body body) {
    return body();
}

}  // namespace winapi
