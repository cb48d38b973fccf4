// What the compiler's run-time library keeps in a DLL for C++ exceptions, a pool and a state, in forms that need
// nothing of the process but what the loader gives, and leave nothing behind when the DLL is unloaded.
#include <windows.h>

#include <cxxabi.h>

namespace __gnu_cxx {
void __freeres();
}

namespace {

// A pool for exceptions that are thrown when there is no memory. Nobody frees it unless asked to. The object is
// built first and so goes last, when no other destructor may raise.
struct PoolOfExceptions {
    ~PoolOfExceptions() { __gnu_cxx::__freeres(); }
};
[[gnu::init_priority(101)]] PoolOfExceptions pool;

}  // namespace

// The state of a thread's exceptions, laid out as the C++ ABI for Itanium says ("Exception Handling", 2.2.2).
// The library's own stands in emulated thread-local storage, which takes one of the process's indexes and memory
// on first use, and ends the process without them. Here it stands in the storage that the loader makes for
// each thread from the section ".tls".
namespace __cxxabiv1 {

struct __cxa_eh_globals {
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

}  // namespace __cxxabiv1

extern "C" {
// The section's beginning, and its number among the modules of the process: both are the C run-time's.
extern char* _tls_start;
extern ULONG _tls_index;

[[gnu::section(".tls$KLU"), gnu::used]] __cxxabiv1::__cxa_eh_globals winapi_exception_state = {nullptr, 0};
}

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept {
    // ThreadLocalStoragePointer of the thread's block, where compilers that know the section look, too.
    const auto fields = reinterpret_cast<char***>(NtCurrentTeb());
    char** const blocks = fields[11];
    const auto offset =
        reinterpret_cast<char*>(&winapi_exception_state) - reinterpret_cast<char*>(&_tls_start);
    return reinterpret_cast<__cxa_eh_globals*>(blocks[_tls_index] + offset);
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return __cxa_get_globals();
}

}  // namespace __cxxabiv1
