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

XLL_EXPORT int XLL_CALL xlAutoOpen(void) {
    static Unit buffers[2][16];
    Record module, name = Text("Version", buffers[0]), type = Text("J", buffers[1]);
    Record* freed[] = {&module};
    if (Excel12v(GetName, &module, 0, NULL) != 0) return 0;
    Excel12(Register, NULL, 4, &module, &name, &type, &name);
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
