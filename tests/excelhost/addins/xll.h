/* Excel's interface as a C add-in declares it, and the few helpers that the add-ins here share. Excel is asked for its
   callback in the program that has loaded the add-in. */
#ifndef XLL_H
#define XLL_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifdef _WIN32
#include <windows.h>
#define XLL_CALL __stdcall
#define XLL_EXPORT __declspec(dllexport)
#else
#include <dlfcn.h>
#define XLL_CALL
#define XLL_EXPORT __attribute__((visibility("default")))
#endif

typedef uint16_t Unit;
typedef struct Record {
    union {
        _Alignas(8) double num;
        Unit* str;
        int32_t w;
        int32_t err;
        struct {
            uint16_t count;
            int32_t rectangle[4];
        } sref;
        struct {
            struct {
                uint16_t count;
                int32_t rectangle[4];
            } * cells;
            uintptr_t sheet;
        } ref;
        struct {
            struct Record* cells;
            int32_t rows, columns;
        } array;
        struct {
            void* data;
            int32_t size;
        } big;
    } val;
    uint32_t type;
} Record;

typedef struct OldRecord {
    union {
        _Alignas(8) double num;
        unsigned char* str;
        int16_t w;
        void* pointers[2];
    } val;
    uint16_t type;
} OldRecord;

enum {
    TypeNum = 1,
    TypeStr = 2,
    TypeBool = 4,
    TypeRef = 8,
    TypeErr = 16,
    TypeMulti = 64,
    TypeMissing = 128,
    TypeInt = 0x800,
    TypeBig = 0x802
};
enum { XLFree = 0x1000, DLLFree = 0x4000 };
enum {
    Caller = 89,
    Register = 149,
    Call = 150,
    Unregister = 201,
    Udf = 255,
    Evaluate = 257,
    Free = 0x4000,
    Coerce = 0x4002,
    Set = 0x4003,
    GetName = 0x4009,
    DefineBinaryName = 0x400C,
    GetBinaryName = 0x400D,
    AsyncReturn = 0x4010,
    Alert = 0x8076
};

typedef int(XLL_CALL* Callback)(int function, int count, Record** operands, Record* result);

static Callback Excel(void) {
#ifdef _WIN32
    return (Callback)(void (*)(void))GetProcAddress(GetModuleHandleW(NULL), "MdCallBack12");
#else
    return (Callback)dlsym(RTLD_DEFAULT, "MdCallBack12");
#endif
}

static Record Text(const char* text, Unit* buffer) {
    Record record = {.type = TypeStr};
    buffer[0] = (Unit)strlen(text);
    for (size_t i = 0; text[i] != 0; ++i) buffer[i + 1] = (unsigned char)text[i];
    record.val.str = buffer;
    return record;
}

/* Registers a procedure under its own name. */
static inline void RegisterAs(const char* procedure, const char* types) {
    static Unit buffers[2][600];
    Record module;
    Record name = Text(procedure, buffers[0]);
    Record type = Text(types, buffers[1]);
    Record* operands[] = {&module, &name, &type, &name};
    if (Excel()(GetName, 0, NULL, &module) != 0) return;
    Excel()(Register, 4, operands, NULL);
    Excel()(Free, 1, operands, NULL);
}

#endif
