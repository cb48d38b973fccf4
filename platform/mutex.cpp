#include "platform/mutex.h"

#include "errors/vex.h"
#include "platform/messagepumps.h"
#include "platform/securityattributes.h"

#include <sysinfoapi.h>

CStringW MakeKernelObjectName(const CStringW& name, int global) {
    return CStringW(global != 0 ? TEXT("Global\\") : TEXT("Local\\")) + name;
}

CStringW MakeMutexName(const CStringW& name, bool appendVersionSuffix, int global) {
    return MakeKernelObjectName(appendVersionSuffix ? name + TEXT("_v8") : name, global);
}

Mutex::Mutex(const CStringW& name, bool appendVersionSuffix, int global, bool* alreadyExisted)
    : Mutex(name, appendVersionSuffix, global, alreadyExisted, false) {}

Mutex::Mutex(const CStringW& name, bool appendVersionSuffix, int global, bool* alreadyExisted,
             bool initialOwner)
    : name_(MakeMutexName(name, appendVersionSuffix, global)) {
    handle_ = CreateMutexW(NullSecurityAttributes().get(), initialOwner ? TRUE : FALSE, name_.GetString());
    if (handle_ == nullptr) {
        const DWORD error = GetLastError();
        throw VexKernelObjectError("Mutex::Mutex", VexCode::MutexCreate, CStringWFormat(TEXT("%d"), error),
                                   name);
    }
    if (alreadyExisted != nullptr) *alreadyExisted = GetLastError() == ERROR_ALREADY_EXISTS;
}

Mutex::~Mutex() {
    if (handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
}

bool Mutex::WaitPumping(std::uint32_t timeoutMs) const {
    const std::uint32_t start = GetTickCount();
    DWORD result = WaitForSingleObject(handle_, 1);
    while (result == WAIT_TIMEOUT) {
        if (static_cast<std::uint32_t>(GetTickCount()) - start > timeoutMs) break;
        PumpMessagesFor(1, false);
        result = WaitForSingleObject(handle_, 1);
    }
    return result == WAIT_OBJECT_0;
}

bool Mutex::Exists(const CStringW& name, bool appendVersionSuffix, int global) {
    const CStringW fullName = MakeMutexName(name, appendVersionSuffix, global);
    const HANDLE handle = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, fullName.GetString());
    if (handle == nullptr) return false;
    CloseHandle(handle);
    return true;
}
