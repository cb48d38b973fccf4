/* An add-in that links Excel's functions by name. */
#include "xll.h"

/* On 32-bit Windows the import library knows the names without the size of their arguments. */
#if defined(_WIN32) && defined(__i386__)
#define NAMED(name) __asm__("_" #name)
#else
#define NAMED(name)
#endif

extern int Excel12(int function, Record* result, int count, ...);
extern int XLL_CALL Excel12v(int function, Record* result, int count, Record* operands[]) NAMED(Excel12v);
extern int XLL_CALL XLCallVer(void) NAMED(XLCallVer);
extern int Excel4(int function, void* result, int count, ...);
extern Callback XLL_CALL GetExcel12EntryPt(void) NAMED(GetExcel12EntryPt);

XLL_EXPORT int32_t XLL_CALL Version(void) {
    return XLCallVer() + Excel4(GetName, NULL, 0) + (GetExcel12EntryPt() == Excel() ? 0 : 1);
}

XLL_EXPORT double XLL_CALL Twice(double number) {
    return 2 * number;
}
XLL_EXPORT int XLL_CALL Ring(void) {
    return 1;
}

/* A function and a command with all that the wizard and the menus show. */
static void RegisterWithHelp(Record* module) {
    static const char* const texts[] = {
        "Twice",      "BB$",  "TWICE", "number", "Say \"2\"", "Twice a \"number\"\t<&>",
        "the \\ one", "Ring", "J",     "RING",   "",          "R"};
    static Unit buffers[12][32];
    Record r[12], missing = {.type = TypeMissing}, one = {.type = TypeInt}, two = {.type = TypeInt};
    for (int i = 0; i < 12; ++i) r[i] = Text(texts[i], buffers[i]);
    one.val.w = 1;
    two.val.w = 2;
    Excel12(Register, NULL, 11, module, &r[0], &r[1], &r[2], &r[3], &one, &r[4], &missing, &missing, &r[5],
            &r[6]);
    Excel12(Register, NULL, 8, module, &r[7], &r[8], &r[9], &r[10], &two, &missing, &r[11]);
}

XLL_EXPORT int XLL_CALL xlAutoOpen(void) {
    static Unit buffers[2][16];
    Record module, name = Text("Version", buffers[0]), type = Text("J", buffers[1]);
    Record* freed[] = {&module};
    if (Excel12v(GetName, &module, 0, NULL) != 0) return 0;
    Excel12(Register, NULL, 4, &module, &name, &type, &name);
    RegisterWithHelp(&module);
    Excel12(Free, NULL, 1, freed[0]);
    return 1;
}

/* Each tells by a command which it is. */
static int Tell(int command) {
    return Excel12v(0x8000 | command, NULL, 0, NULL) == 0;
}
XLL_EXPORT int XLL_CALL xlAutoAdd(void) {
    return Tell(119);
}
XLL_EXPORT int XLL_CALL xlAutoRemove(void) {
    return Tell(110);
}
XLL_EXPORT int XLL_CALL xlAutoClose(void) {
    return Tell(16);
}
XLL_EXPORT Record* XLL_CALL xlAddInManagerInfo12(Record* action) {
    static Unit buffer[16];
    static Record name;
    name = Text("Linked by name", buffer);
    return action->type == TypeInt && action->val.w == 1 ? &name : NULL;
}
