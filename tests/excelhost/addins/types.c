/* One function for each type of argument and result, and calls of every shape. */
#include "xll.h"

#include <stdlib.h>
#include <wchar.h>

#define F(type) XLL_EXPORT type XLL_CALL

F(int16_t) TypeA(int16_t truth) {
    return (int16_t)!truth;
}
F(double) TypeB(double a, double b) {
    return a - b;
}
F(uint16_t) TypeH(uint16_t a) {
    return (uint16_t)(a + 1);
}
F(int16_t) TypeI(int16_t a) {
    return (int16_t)(a - 1);
}
F(int32_t) TypeJ(int32_t a) {
    return a * 2;
}
F(double*) TypeE(const double* a) {
    static double b;
    b = *a / 2;
    return &b;
}
F(int16_t*) TypeL(const int16_t* a) {
    static int16_t b;
    b = (int16_t) !*a;
    return &b;
}
F(int16_t*) TypeM(const int16_t* a) {
    static int16_t b;
    b = (int16_t) - *a;
    return &b;
}
F(int32_t*) TypeN(const int32_t* a) {
    static int32_t b;
    b = -*a;
    return &b;
}
F(const char*) TypeC(const char* text) {
    return text + 1;
}
F(const Unit*) TypeCWide(const Unit* text) {
    return text + 1;
}
F(unsigned char*) TypeD(const unsigned char* text) {
    static unsigned char b[256];
    memcpy(b, text, text[0] + 1u);
    b[b[0]] = '!';
    return b;
}
F(Unit*) TypeDWide(const Unit* text) {
    static Unit b[32768];
    memcpy(b, text, (text[0] + 1u) * sizeof *b);
    b[b[0]] = '!';
    return b;
}
F(void) TypeF(char* text) {
    strcat(text, " and more");
}
F(void) TypeFWide(Unit* text) {
    while (*text != 0) ++text;
    text[0] = '+';
    text[1] = 0;
}
F(void) TypeG(unsigned char* text) {
    text[++text[0]] = '+';
}
F(void) TypeGWide(Unit* text) {
    text[++text[0]] = '+';
}

typedef struct {
    uint16_t rows, columns;
    _Alignas(8) double at[1];
} Numbers;
typedef struct {
    int32_t rows, columns;
    _Alignas(8) double at[1];
} WideNumbers;
F(double) TypeK(const Numbers* a) {
    double sum = 0;
    for (int i = 0; i < a->rows * a->columns; ++i) sum += a->at[i] * (i + 1);
    return sum + 100 * a->rows;
}
F(WideNumbers*) TypeKWide(const WideNumbers* a) {
    static WideNumbers b = {1, 1, {0}};
    b.at[0] = a->rows * 10 + a->columns;
    return &b;
}
F(void) ShrinksK(WideNumbers* a) {
    a->at[0] = a->at[a->rows * a->columns - 1];
    a->rows = a->columns = 1;
}
F(double) TypeO(const uint16_t* rows, const uint16_t* columns, const double* at, double factor) {
    return (*rows * 10 + *columns + at[0]) * factor;
}
F(void) TypeOWide(int32_t* rows, int32_t* columns, double* at) {
    at[0] = at[*rows * *columns - 1];
    *rows = *columns = 1;
}
F(OldRecord*) TypeP(const OldRecord* a) {
    static OldRecord b;
    static unsigned char text[] = "\3old";
    b.type = TypeStr;
    b.val.str = text;
    if (a->type != TypeStr) {
        b.type = TypeNum;
        b.val.num = a->type;
    }
    return &b;
}
F(Record*) TypeQ(const Record* a) {
    Record* b = malloc(sizeof *b);
    *b = *a;
    if (a->type == TypeStr) {
        b->val.str = malloc((a->val.str[0] + 1u) * sizeof(Unit));
        memcpy(b->val.str, a->val.str, (a->val.str[0] + 1u) * sizeof(Unit));
    }
    b->type |= DLLFree;
    return b;
}
F(void) xlAutoFree12(Record* a) {
    if ((a->type & 0xFFF) == TypeStr) free(a->val.str);
    free(a);
}
F(double) TypeU(const Record* a) {
    return a->type;
}
F(int32_t) CoercesU(Record* a) {
    Record value, type = {.type = TypeInt};
    Record *operands[] = {a, &type}, *freed[] = {&value};
    type.val.w = TypeStr;
    if (Excel()(Coerce, 2, operands, &value) != 0 || value.type != TypeStr) return -1;
    const int32_t length = value.val.str[0];
    Excel()(Free, 1, freed, NULL);
    return length;
}
F(void) TypeX(const Record* value, Record* handle) {
    Record copy = *value;
    Record* operands[] = {handle, &copy};
    Excel()(AsyncReturn, 2, operands, NULL);
}
/* What Excel gives goes back to Excel. */
static Record* Given(int function, int count, Record** operands) {
    static Record result;
    if (Excel()(function, count, operands, &result) != 0) return NULL;
    result.type |= XLFree;
    return &result;
}
F(Record*) Evaluates(Record* a) {
    return Given(Evaluate, 1, &a);
}
F(Record*) Unregisters(Record* a) {
    return Given(Unregister, 1, &a);
}
F(Record*) RegistersLater(Record* procedure) {
    Record module, none = {.type = TypeMissing}, *operands[] = {&module, procedure, &none}, *id;
    Excel()(GetName, 0, NULL, &module);
    id = Given(Register, 3, operands);
    Excel()(Free, 1, operands, NULL);
    return id;
}
/* A worksheet function of Excel's by its number. */
F(Record*) ByNumber(double number, Record* a, Record* b) {
    Record* operands[] = {a, b};
    return Given((int)number, b->type == TypeMissing ? 1 : 2, operands);
}
F(Record*) Calls(Record* procedure, Record* types, Record* a) {
    Record module, *operands[] = {&module, procedure, types, a}, *value;
    Excel()(GetName, 0, NULL, &module);
    value = Given(Call, 4, operands);
    Excel()(Free, 1, operands, NULL);
    return value;
}
/* A text kept under a binary name and read back; then the name goes. The sum of the last return codes. */
F(int32_t) KeepsName(Record* a) {
    Record data = {.type = TypeBig}, kept, *operands[] = {a, &data}, *freed[] = {&kept};
    data.val.big.data = a->val.str;
    data.val.big.size = (int32_t)((a->val.str[0] + 1u) * sizeof(Unit));
    int32_t codes = Excel()(DefineBinaryName, 2, operands, NULL) + Excel()(GetBinaryName, 1, operands, &kept);
    if (codes != 0 || kept.type != TypeBig || kept.val.big.size != data.val.big.size ||
        kept.val.big.data == data.val.big.data ||
        memcmp(kept.val.big.data, data.val.big.data, (size_t)data.val.big.size) != 0)
        return -1;
    codes += Excel()(Free, 1, freed, NULL) + Excel()(DefineBinaryName, 1, operands, NULL);
    return codes + Excel()(GetBinaryName, 1, operands, NULL);
}
F(int32_t) Unlisted(int32_t a) {
    return a + 1;
}
F(int32_t) Sets(Record* a) {
    return Excel()(Set, 1, &a, NULL);
}
/* "Late" has an id of nothing, "Unlisted" is registered, all else is unknown. */
F(Record*) xlAutoRegister12(Record* procedure) {
    static Record id;
    Record *found, module, name, type, *operands[] = {&module, &name, &type, &name};
    Unit buffers[2][16];
    id.type = TypeErr;
    id.val.err = 42;
    if (procedure->val.str[0] == 4) {
        id.type = TypeNum;
        id.val.num = 77;
    } else if (procedure->val.str[0] == 8) {
        name = Text("Unlisted", buffers[0]);
        type = Text("JJ", buffers[1]);
        Excel()(GetName, 0, NULL, &module);
        found = Given(Register, 4, operands);
        Excel()(Free, 1, operands, NULL);
        if (found != NULL) id = *found;
    }
    return &id;
}
F(double)
Mixed(double a, int32_t b, double c, const Unit* d, int16_t e, double f, double g, const double* h, double i,
      double j, double k, double l, int32_t m) {
    return a + b * 10 + c * 100 + d[0] + e * 1e4 + f * 1e5 + g * 1e6 + *h * 1e7 + i * 1e8 + j * 1e9 +
           k * 1e10 + l * 1e11 + m * 1e12;
}

/* 255 arguments. */
#define FOUR(m, n) m(n##0) m(n##1) m(n##2) m(n##3)
#define SIXTEEN(m, n) FOUR(m, n##0) FOUR(m, n##1) FOUR(m, n##2) FOUR(m, n##3)
#define LAST(m, n) FOUR(m, n##0) FOUR(m, n##1) FOUR(m, n##2) m(n##30) m(n##31)
#define SIXTYFOUR(m, n) SIXTEEN(m, n##0) SIXTEEN(m, n##1) SIXTEEN(m, n##2) SIXTEEN(m, n##3)
#define ALL(m) \
    SIXTYFOUR(m, a) SIXTYFOUR(m, b) SIXTYFOUR(m, c) SIXTEEN(m, d0) SIXTEEN(m, d1) SIXTEEN(m, d2) LAST(m, d3)
#define PARAMETER(n) double n,
#define TERM(n) +n
F(double) Most(ALL(PARAMETER) int32_t last) {
    return last ALL(TERM);
}

F(int) xlAutoOpen(void) {
    static const char* const functions[][2] = {
        {"TypeA", "AA"},      {"TypeB", "BBB"},      {"TypeC", "CC"},      {"TypeCWide", "C%C%"},
        {"TypeD", "DD"},      {"TypeDWide", "D%D%"}, {"TypeE", "EE"},      {"TypeF", "1F"},
        {"TypeFWide", ">F%"}, {"TypeG", "1G"},       {"TypeGWide", "1G%"}, {"TypeH", "HH"},
        {"TypeI", "II"},      {"TypeJ", "JJ"},       {"TypeK", "BK"},      {"TypeKWide", "K%K%"},
        {"ShrinksK", "1K%"},  {"TypeL", "LL"},       {"TypeM", "MM"},      {"TypeN", "NN"},
        {"TypeO", "BOB"},     {"TypeOWide", "1O%"},  {"TypeP", "PP"},      {"TypeQ", "QQ$"},
        {"TypeU", "BU"},      {"CoercesU", "JU#!"},  {"TypeX", ">QX"},     {"Mixed", "BBJBC%IBBEBBBBJ"},
        {"Evaluates", "QQ#"}, {"Unregisters", "QQ"}, {"Sets", "JU#"},      {"RegistersLater", "QQ"},
        {"ByNumber", "QBUU"}, {"Calls", "QQQQ"},     {"KeepsName", "JQ"},
    };
    for (size_t i = 0; i < sizeof functions / sizeof *functions; ++i)
        RegisterAs(functions[i][0], functions[i][1]);
    char most[257] = "B";
    memset(most + 1, 'B', 254);
    most[255] = 'J';
    RegisterAs("Most", most);
    return 1;
}
