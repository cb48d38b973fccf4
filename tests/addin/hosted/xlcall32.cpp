// A module XLCall32 that hands out whatever entry point it was given.
#include "excelvalues/xlcall.h"

namespace {

EXCEL12PROC entryPoint = nullptr;

}  // namespace

extern "C" EXCEL12PROC PASCAL GetExcel12EntryPt() {
    return entryPoint;
}

extern "C" void PASCAL SetExcel12EntryPt(EXCEL12PROC given) {
    entryPoint = given;
}
