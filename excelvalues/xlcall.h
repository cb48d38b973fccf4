// Excel's interface for add-ins in C, as Microsoft publishes it in "Developing Excel XLLs": the value record
// XLOPER12 and its parts, the callback's signature, and the numbers that go through it. These are our own
// declarations, laid out so that a record means the same in every home: 32 bytes, with the type at offset 24,
// on 32 and 64 bits, on Windows and elsewhere.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

// One UTF-16 unit of a string value.
using XCHAR = WCHAR;

// A zero-based row and a zero-based column; a sheet has 1,048,576 rows and 16,384 columns.
using RW = std::int32_t;
using COL = std::int32_t;

// Excel's internal number of a sheet, as wide as a pointer; 0 names no sheet.
using IDSHEET = DWORD_PTR;

// A rectangle of cells; all four limits are zero-based and belong to it.
struct XLREF12 {
    RW rwFirst;
    RW rwLast;
    COL colFirst;
    COL colLast;
};
using LPXLREF12 = XLREF12*;

// The rectangles of a reference to several areas: `count` of them stand from `reflref` on, so that a block
// for n rectangles has 4 + 16 * n bytes.
struct XLMREF12 {
    WORD count;
    XLREF12 reflref[1];
};
using LPXLMREF12 = XLMREF12*;

// An Excel value. The low 12 bits of `xltype` say which member of `val` holds it (the xltype... constants
// below), the higher ones say who frees it.
struct XLOPER12 {
    union {
        // xltypeNum. The alignment is Excel's on Windows; some 32-bit systems would give a double only four.
        alignas(8) double num;
        // xltypeStr: str[0] counts the units that follow it, 0 to 32767; no terminator stands behind them.
        XCHAR* str;
        // xltypeBool.
        BOOL xbool;
        // xltypeErr: one of the xlerr... numbers, which is failure.err too. `returnCode` is this system's own
        // addition, in room that Excel leaves unused: the code that Excel's callback gave when a call failed, 0
        // in any other value.
        std::int32_t err;
        struct {
            std::int32_t err;
            std::int32_t returnCode;
        } failure;
        // xltypeInt.
        std::int32_t w;
        // xltypeSRef: one rectangle on the current sheet; `count` is always 1.
        struct {
            WORD count;
            XLREF12 ref;
        } sref;
        // xltypeRef: rectangles of any number on any sheet.
        struct {
            XLMREF12* lpmref;
            IDSHEET idSheet;
        } mref;
        // xltypeMulti: rows * columns records, row by row. Only the low 16 bits of `columns` count.
        struct {
            XLOPER12* lparray;
            RW rows;
            COL columns;
        } array;
        // xltypeFlow: flow control in macro sheets.
        struct {
            union {
                std::int32_t level;
                std::int32_t tbctrl;
                IDSHEET idSheet;
            } valflow;
            RW rw;
            COL col;
            BYTE xlflow;
        } flow;
        // xltypeBigData: cbData bytes.
        struct {
            union {
                BYTE* lpbData;
                HANDLE hdata;
            } h;
            std::int32_t cbData;
        } bigdata;
    } val;  // read by the type
    DWORD xltype;
};
using LPXLOPER12 = XLOPER12*;

static_assert(sizeof(XCHAR) == 2);
static_assert(sizeof(XLREF12) == 16);
static_assert(sizeof(XLMREF12) == 20 && offsetof(XLMREF12, reflref) == 4);
static_assert(sizeof(XLOPER12) == 32 && alignof(XLOPER12) == 8);
static_assert(offsetof(XLOPER12, val) == 0 && offsetof(XLOPER12, xltype) == 24);
static_assert(offsetof(XLOPER12, val.err) == 0 && offsetof(XLOPER12, val.failure.returnCode) == 4);
static_assert(offsetof(XLOPER12, val.sref.ref) == 4);
static_assert(offsetof(XLOPER12, val.mref.idSheet) == sizeof(void*));
static_assert(offsetof(XLOPER12, val.array.rows) == sizeof(void*));
static_assert(offsetof(XLOPER12, val.array.columns) == sizeof(void*) + 4);
static_assert(offsetof(XLOPER12, val.flow.rw) == sizeof(void*));
static_assert(offsetof(XLOPER12, val.flow.xlflow) == sizeof(void*) + 8);
static_assert(offsetof(XLOPER12, val.bigdata.cbData) == sizeof(void*));

// Types of values, XLOPER12::xltype without its flags.
inline constexpr DWORD xltypeNum = 0x0001;
inline constexpr DWORD xltypeStr = 0x0002;
inline constexpr DWORD xltypeBool = 0x0004;
inline constexpr DWORD xltypeRef = 0x0008;
inline constexpr DWORD xltypeErr = 0x0010;
inline constexpr DWORD xltypeFlow = 0x0020;
inline constexpr DWORD xltypeMulti = 0x0040;
inline constexpr DWORD xltypeMissing = 0x0080;
inline constexpr DWORD xltypeNil = 0x0100;
inline constexpr DWORD xltypeSRef = 0x0400;
inline constexpr DWORD xltypeInt = 0x0800;
inline constexpr DWORD xltypeBigData = xltypeStr | xltypeInt;

// Flags of XLOPER12::xltype: Excel frees the value, the add-in's xlAutoFree12 frees it.
inline constexpr DWORD xlbitXLFree = 0x1000;
inline constexpr DWORD xlbitDLLFree = 0x4000;

// Numbers of Excel's error values, XLOPER12::val.err.
inline constexpr int xlerrNull = 0;
inline constexpr int xlerrDiv0 = 7;
inline constexpr int xlerrValue = 15;
inline constexpr int xlerrRef = 23;
inline constexpr int xlerrName = 29;
inline constexpr int xlerrNum = 36;
inline constexpr int xlerrNA = 42;
inline constexpr int xlerrGettingData = 43;

// Return codes of Excel's callback. xlretSuccess aside, each is a bit.
inline constexpr int xlretSuccess = 0;
inline constexpr int xlretAbort = 1;
inline constexpr int xlretInvXlfn = 2;
inline constexpr int xlretInvCount = 4;
inline constexpr int xlretInvXloper = 8;
inline constexpr int xlretStackOvfl = 16;
inline constexpr int xlretFailed = 32;
inline constexpr int xlretUncalced = 64;
inline constexpr int xlretNotThreadSafe = 128;
inline constexpr int xlretInvAsynchronousContext = 256;
inline constexpr int xlretNotClusterSafe = 512;

// Numbers of functions: of worksheet and macro functions, and, with the bit xlSpecial, of those that exist
// for add-ins only.
inline constexpr int xlfError = 84;
inline constexpr int xlfRegister = 149;
inline constexpr int xlfUnregister = 201;
inline constexpr int xlUDF = 255;
inline constexpr int xlSpecial = 0x4000;
inline constexpr int xlFree = xlSpecial | 0;
inline constexpr int xlSheetNm = xlSpecial | 5;
inline constexpr int xlEnableXLMsgs = xlSpecial | 10;
inline constexpr int xlDisableXLMsgs = xlSpecial | 11;

// Excel's callback: function number, count of operands, operands, result (which may be null). Gives a return
// code. The host executable exports it as "MdCallBack12"; the module "XLCall32", where there is one, hands it
// out through its export "GetExcel12EntryPt".
using EXCEL12PROC = int(PASCAL*)(int xlfn, int coper, LPXLOPER12* rgpxloper12, LPXLOPER12 xloper12Res);
using FNGETEXCEL12ENTRYPT = EXCEL12PROC(PASCAL*)();
