/* Functions that are called from several threads, and one that can't bear it. */
#include "xll.h"

#include <stdatomic.h>
#ifdef _WIN32
#define THIS_THREAD (uintptr_t) GetCurrentThreadId()
#define YIELD SwitchToThread
#else
#include <pthread.h>
#include <sched.h>
#define THIS_THREAD (uintptr_t) pthread_self()
#define YIELD sched_yield
#endif

#define F(type) XLL_EXPORT type XLL_CALL

/* Registered without "$": its count is guarded by nothing. */
F(int32_t) Counts(void) {
    static int32_t count;
    return ++count;
}

/* 1 when another call has begun before this one ends. Gives up after a while. */
F(int32_t) Meets(double a) {
    static atomic_int begun;
    (void)a;
    atomic_fetch_add(&begun, 1);
    for (int32_t i = 0; i < 20000000 && atomic_load(&begun) < 2; ++i) {
        YIELD();
    }
    return atomic_load(&begun) >= 2;
}

/* The value of a cell and the row of the calling one, both from Excel: 100 * value + row, counted from 1. */
F(double) Asks(Record* a) {
    Record value, caller, type = {.type = TypeInt}, *operands[] = {a, &type}, *freed[] = {&value, &caller};
    type.val.w = TypeNum;
    if (Excel()(Coerce, 2, operands, &value) != 0 || value.type != TypeNum) return -1;
    if (Excel()(Caller, 0, NULL, &caller) != 0 || caller.type != TypeRef) return -2;
    const double answer = value.val.num * 100 + caller.val.ref.cells->rectangle[0] + 1;
    Excel()(Free, 2, freed, NULL);
    return answer;
}

/* What Excel keeps from thread-safe functions: the sum of its return codes. */
F(int32_t) IsRefused(double a) {
    static const int functions[] = {Register, Unregister, Evaluate, Udf, Alert};
    Unit buffer[8];
    Record text = Text("A1", buffer), *operands[] = {&text, &text, &text};
    int32_t sum = 0;
    (void)a;
    for (size_t i = 0; i < sizeof functions / sizeof *functions; ++i)
        sum += Excel()(functions[i], i == 0 ? 3 : 1, operands, NULL);
    return sum;
}

F(int32_t) Crashes(double a) {
    volatile uintptr_t nowhere = 16;
    (void)a;
    return *(volatile int32_t*)nowhere;
}
/* The compiler is kept from making a loop of it. */
static int32_t Deeper(volatile char* above);
static int32_t (*volatile const deeper)(volatile char*) = Deeper;
static int32_t Deeper(volatile char* above) {
    volatile char room[4096];
    room[0] = *above;
    return deeper(room) + room[0];
}
F(int32_t) Overflows(double a) {
    volatile char room = (char)a;
    return deeper(&room);
}

/* Doesn't come to an end on any thread but the main one, which lets another one in first. */
static uintptr_t mainThread;
F(int32_t) HangsElsewhere(double a) {
    static atomic_int isElsewhere;
    const int hangs = THIS_THREAD != mainThread;
    (void)a;
    if (hangs) atomic_store(&isElsewhere, 1);
    while (hangs || !atomic_load(&isElsewhere)) YIELD();
    return 1;
}

F(int) xlAutoOpen(void) {
    mainThread = THIS_THREAD;
    RegisterAs("HangsElsewhere", "JB$");
    RegisterAs("Counts", "J!");
    RegisterAs("Meets", "JB$");
    RegisterAs("Asks", "BU$");
    RegisterAs("IsRefused", "JB$");
    RegisterAs("Crashes", "JB$");
    RegisterAs("Overflows", "JB$");
    return 1;
}
