#include "support/takeexception.h"

#include <setjmp.h>

static NoteException noteException;
static void* noteInto;

#ifdef _WIN64

static jmp_buf landing;

/* The system calls it for the frame of TakeException, once to ask and once to unwind. longjmp unwinds all frames
   between, as a handler that was compiled would. */
EXCEPTION_DISPOSITION HandleException(EXCEPTION_RECORD* exception, void* frame, CONTEXT* context, void* dispatcher) {
    (void)frame;
    (void)context;
    (void)dispatcher;
    if (exception->ExceptionFlags & (EXCEPTION_UNWINDING | EXCEPTION_EXIT_UNWIND)) return ExceptionContinueSearch;
    noteException(exception, noteInto);
    longjmp(landing, 1);
}

__attribute__((noinline)) int TakeException(void (*call)(void), NoteException note, void* into) {
    __asm__ volatile("\t.seh_handler HandleException, @except\n");
    noteException = note;
    noteInto = into;
    if (setjmp(landing) != 0) return 1;
    call();
    return 0;
}

#else

struct Registration {
    EXCEPTION_REGISTRATION_RECORD record;
    void* landing[5];
};

static EXCEPTION_DISPOSITION HandleException(EXCEPTION_RECORD* exception, void* frame, CONTEXT* context,
                                             void* dispatcher) {
    (void)context;
    (void)dispatcher;
    if (exception->ExceptionFlags & (EXCEPTION_UNWINDING | EXCEPTION_EXIT_UNWIND)) return ExceptionContinueSearch;
    noteException(exception, noteInto);
    RtlUnwind(frame, NULL, exception, NULL);
    __builtin_longjmp(((struct Registration*)frame)->landing, 1);
}

__attribute__((noinline)) int TakeException(void (*call)(void), NoteException note, void* into) {
    struct Registration registration;
    int taken = 0;
    noteException = note;
    noteInto = into;
    registration.record.Next = (EXCEPTION_REGISTRATION_RECORD*)__readfsdword(0);
    registration.record.Handler = (PEXCEPTION_ROUTINE)HandleException;
    __writefsdword(0, (DWORD)&registration);
    if (__builtin_setjmp(registration.landing) == 0) {
        call();
    } else {
        taken = 1;
    }
    __writefsdword(0, (DWORD)registration.record.Next);
    return taken;
}

#endif
