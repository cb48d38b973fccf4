/* One bad habit a function. FAULTY_OPENING in the environment chooses one for xlAutoOpen. */
#include "xll.h"

#include <stdlib.h>
#ifndef _WIN32
#include <unistd.h>
#endif

#define F(type) XLL_EXPORT type XLL_CALL

static Record OwnName(void) {
    Record name;
    Excel()(GetName, 0, NULL, &name);
    return name;
}
static int32_t FreeRecord(Record* record) {
    return Excel()(Free, 1, &record, NULL);
}

F(int32_t) Leaks(void) {
    return OwnName().val.str[0] > 0;
}
F(int32_t) FreesTwice(void) {
    Record name = OwnName();
    Record copy = name;
    FreeRecord(&name);
    return FreeRecord(&copy);
}
F(int32_t) FreesForeign(void) {
    static Unit buffer[8];
    Record own = Text("own", buffer);
    return FreeRecord(&own);
}
F(int32_t) WritesText(Record* a) {
    if (a->type == TypeStr) a->val.str[1] = 'X';
    return 1;
}
F(int32_t) WritesNumber(double* a) {
    *a = 7;
    return 1;
}
F(int32_t) WritesBeyond(char* text) {
    text[strlen(text) + 1] = 'X';
    return 1;
}
/* The compiler is kept from seeing what is done here. */
static Record* volatile gone;
F(Record*) GivesStack(void) {
    Record local = {.type = TypeNum};
    gone = &local;
    return gone;
}
F(Record*) GivesUnfreeable(void) {
    static Record flagged = {.type = TypeNum | DLLFree};
    return &flagged;
}
F(Record*) GivesNull(void) {
    return NULL;
}
F(int32_t) CoercesGarbage(void) {
    Record garbage, wild = {.type = TypeStr}, value;
    Record *operands[] = {&garbage}, *wilds[] = {&wild};
    memset(&garbage, 0xCD, sizeof garbage);
    wild.val.str = (Unit*)(uintptr_t)16;
    return Excel()(Coerce, 1, operands, &value) + 1000 * Excel()(Coerce, 1, wilds, &value) +
           FreeRecord(&garbage);
}
F(int32_t) AlertsUser(void) {
    return Excel()(Alert, 0, NULL, NULL);
}
F(int32_t) CrashesAtOnce(void) {
    volatile uintptr_t nowhere = 16;
    return *(volatile int32_t*)nowhere;
}

/* In naps: a sanitizer hands on a signal where a thread waits. */
F(int32_t) Hangs(void) {
    static volatile int32_t forever = 1;
    OwnName();
    while (forever) {
#ifdef _WIN32
        Sleep(1);
#else
        usleep(1000);
#endif
    }
    return 0;
}

/* Which of so many allocations failed, 0 for none. */
F(int32_t) Allocates(int32_t count) {
    for (int32_t i = 1; i <= count; ++i) {
        void* volatile memory = i % 3 == 0 ? calloc(2, 8) : i % 3 == 1 ? malloc(16) : realloc(NULL, 16);
        if (memory == NULL) return i;
        free(memory);
    }
    return 0;
}

F(int) xlAutoOpen(void) {
    static const char* const functions[][2] = {
        {"Leaks", "J"},         {"FreesTwice", "J"},     {"FreesForeign", "J"}, {"WritesText", "JQ"},
        {"WritesNumber", "JE"}, {"WritesBeyond", "JC"},  {"GivesStack", "Q"},   {"GivesUnfreeable", "Q"},
        {"GivesNull", "Q"},     {"CoercesGarbage", "J"}, {"AlertsUser", "J"},   {"CrashesAtOnce", "J"},
        {"Hangs", "J"},         {"Allocates", "JJ"},     {"Leaks", "QZ"},       {"Leaks", "%"},
        {"NotThere", "Q"},      {"Leaks", "Q#$"},
    };
    const char* habit = getenv("FAULTY_OPENING");
    if (habit == NULL) habit = "";
    if (strcmp(habit, "nothing") == 0) return 1;
    RegisterAs("Leaks", "J");
    if (strcmp(habit, "exit") == 0) exit(0);
    if (strcmp(habit, "abort") == 0) abort();
    if (strcmp(habit, "crash") == 0) return CrashesAtOnce();
    if (strcmp(habit, "refuse") == 0) return 0;
    for (size_t i = 0; i < sizeof functions / sizeof *functions; ++i)
        RegisterAs(functions[i][0], functions[i][1]);
    return 1;
}
