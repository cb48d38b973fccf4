/* A caller written in C, on Windows: it takes an exception as Excel or Visual Basic would, by a structured handler
   in a frame of its own. GCC has no __try, so the handler is put in place by hand. */
#pragma once

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Called within the handler, where the exception's addresses still hold. */
typedef void (*NoteException)(const EXCEPTION_RECORD* exception, void* into);

/* Runs `call`: 0 when it came back, 1 when an exception was taken, after `note` has seen it. One at a time. */
int TakeException(void (*call)(void), NoteException note, void* into);

#ifdef __cplusplus
}
#endif
