// Named kernel mutexes. The add-in uses one as a presence marker: as long as any process holds it open, its
// name can be found, and nobody waits for it. The name goes when the last handle closes.
#pragma once

#include "text/text.h"

#include <windows.h>

#include <cstdint>

// The name in one of the system's two namespaces: "Global\" for a `global` other than 0, seen by every
// logon of the machine, else "Local\", seen by the processes of one logon.
[[nodiscard]] CStringW MakeKernelObjectName(const CStringW& name, int global);

// The same of a mutex's name, behind which "_v8" is put where `appendVersionSuffix` asks for it.
[[nodiscard]] CStringW MakeMutexName(const CStringW& name, bool appendVersionSuffix, int global);

// An open handle to a named mutex, closed by the destructor. There is no release operation: letting go of the
// handle is all that the object does with the mutex.
class Mutex {
  public:
    // Creates the mutex, not owned by the calling thread, or opens the one that has the name already, which
    // is a success too. `alreadyExisted`, which may be null, gets which of the two it was. Everyone has all
    // access. Raises VexKernelObjectError, VexCode::MutexCreate, with the system's error in decimal and
    // `name` as it was given.
    [[nodiscard]] Mutex(const CStringW& name, bool appendVersionSuffix, int global, bool* alreadyExisted);

    // The same; where `initialOwner` is true and the mutex is new, the calling thread owns it.
    [[nodiscard]] Mutex(const CStringW& name, bool appendVersionSuffix, int global, bool* alreadyExisted,
                        bool initialOwner);

    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // The full name in the kernel.
    [[nodiscard]] const CStringW& name() const noexcept { return name_; }

    // Waits until the calling thread owns the mutex, and dispatches the thread's messages meanwhile (see
    // platform/messagepumps.h): true when it does, false when more than `timeoutMs` milliseconds have gone by
    // or the wait fails. It waits a millisecond at least, also with a time-out of 0. A mutex that its owner
    // has abandoned gives false, although the system makes the calling thread its owner.
    [[nodiscard]] bool WaitPumping(std::uint32_t timeoutMs) const;

    // Whether some process holds a mutex of that name open now, asked with the flags that its creator used.
    // One that refuses full access counts as absent. No handle stays open.
    [[nodiscard]] static bool Exists(const CStringW& name, bool appendVersionSuffix, int global);

  private:
    HANDLE handle_ = nullptr;
    CStringW name_;
};
