/* An add-in as it may come from elsewhere, for docs/testing-your-addin.md: PRICE.NET is right, and each of the others
   has a fault that Excel would never tell of. */
#include "xll.h"

#define F(type) XLL_EXPORT type XLL_CALL

F(double) PriceNet(double gross, double rate) {
    return gross / (1 + rate);
}

/* Forgets the values when it meets one that is no number. */
F(Record*) PriceTotal(Record* prices) {
    static Record total;
    Record values;
    Record* operands[] = {prices};
    total = (Record){.type = TypeErr, .val.err = 15};
    if (Excel()(Coerce, 1, operands, &values) != 0) return &total;
    double sum = 0;
    for (int32_t i = 0; values.type == TypeMulti && i < values.val.array.rows * values.val.array.columns;
         ++i) {
        if (values.val.array.cells[i].type != TypeNum) return &total;
        sum += values.val.array.cells[i].val.num;
    }
    operands[0] = &values;
    Excel()(Free, 1, operands, NULL);
    total = (Record){.type = TypeNum, .val.num = sum};
    return &total;
}

/* Writes the capital letter into the text that it is lent. */
F(Record*) PriceLabel(Record* text) {
    if (text->type == TypeStr && text->val.str[0] > 0 && text->val.str[1] >= 'a' && text->val.str[1] <= 'z')
        text->val.str[1] = (Unit)(text->val.str[1] - 'a' + 'A');
    return text;
}

/* Frees the file's name, and once more by a copy of it. */
F(double) PriceVersion(void) {
    Record name, copy;
    Record *first[] = {&name}, *second[] = {&copy};
    Excel()(GetName, 0, NULL, &name);
    copy = name;
    Excel()(Free, 1, first, NULL);
    Excel()(Free, 1, second, NULL);
    return 2.5;
}

F(int) xlAutoOpen(void) {
    /* Procedure, types, name, names of the arguments, and what the function wizard tells. */
    static const char* const functions[][5] = {
        {"PriceNet", "BBB", "PRICE.NET", "gross,rate", "The price without its tax."},
        {"PriceTotal", "QU", "PRICE.TOTAL", "prices", "The sum of a range of prices."},
        {"PriceLabel", "QQ", "PRICE.LABEL", "text", "The text with a capital letter."},
        {"PriceVersion", "B", "PRICE.VERSION", "", "The version of the price list."},
    };
    static Unit buffers[6][64];
    Record module, missing = {.type = TypeMissing}, kind = {.type = TypeInt, .val.w = 1};
    if (Excel()(GetName, 0, NULL, &module) != 0) return 0;
    for (size_t i = 0; i < sizeof functions / sizeof *functions; ++i) {
        Record texts[5], category = Text("Prices", buffers[5]);
        for (size_t k = 0; k < 5; ++k) texts[k] = Text(functions[i][k], buffers[k]);
        Record* operands[] = {&module, &texts[0], &texts[1], &texts[2], &texts[3],
                              &kind,   &category, &missing,  &missing,  &texts[4]};
        Excel()(Register, 10, operands, NULL);
    }
    Record* operands[] = {&module};
    Excel()(Free, 1, operands, NULL);
    return 1;
}
