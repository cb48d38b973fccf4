// Excel's own worksheet functions, which an add-in calls by their published numbers.
#include "excelhost/functions/functions.h"
#include "excelhost/served/table.h"
#include "excelhost/state.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace excelhost {
namespace {

struct NumberedFunction {
    int number;
    std::string_view traceName;
    std::string_view name;  // of the built-in function
};

constexpr NumberedFunction kFunctions[] = {
    {0, "xlfCount", "COUNT"},
    {1, "xlfIf", "IF"},
    {2, "xlfIsna", "ISNA"},
    {3, "xlfIserror", "ISERROR"},
    {4, "xlfSum", "SUM"},
    {5, "xlfAverage", "AVERAGE"},
    {6, "xlfMin", "MIN"},
    {7, "xlfMax", "MAX"},
    {8, "xlfRow", "ROW"},
    {9, "xlfColumn", "COLUMN"},
    {10, "xlfNa", "NA"},
    {11, "xlfNpv", "NPV"},
    {12, "xlfStdev", "STDEV"},
    {15, "xlfSin", "SIN"},
    {16, "xlfCos", "COS"},
    {17, "xlfTan", "TAN"},
    {18, "xlfAtan", "ATAN"},
    {19, "xlfPi", "PI"},
    {20, "xlfSqrt", "SQRT"},
    {21, "xlfExp", "EXP"},
    {22, "xlfLn", "LN"},
    {23, "xlfLog10", "LOG10"},
    {24, "xlfAbs", "ABS"},
    {25, "xlfInt", "INT"},
    {26, "xlfSign", "SIGN"},
    {27, "xlfRound", "ROUND"},
    {28, "xlfLookup", "LOOKUP"},
    {29, "xlfIndex", "INDEX"},
    {30, "xlfRept", "REPT"},
    {31, "xlfMid", "MID"},
    {32, "xlfLen", "LEN"},
    {33, "xlfValue", "VALUE"},
    {34, "xlfTrue", "TRUE"},
    {35, "xlfFalse", "FALSE"},
    {36, "xlfAnd", "AND"},
    {37, "xlfOr", "OR"},
    {38, "xlfNot", "NOT"},
    {39, "xlfMod", "MOD"},
    {46, "xlfVar", "VAR"},
    {48, "xlfText", "TEXT"},
    {56, "xlfPv", "PV"},
    {57, "xlfFv", "FV"},
    {59, "xlfPmt", "PMT"},
    {60, "xlfRate", "RATE"},
    {62, "xlfIrr", "IRR"},
    {64, "xlfMatch", "MATCH"},
    {65, "xlfDate", "DATE"},
    {66, "xlfTime", "TIME"},
    {67, "xlfDay", "DAY"},
    {68, "xlfMonth", "MONTH"},
    {69, "xlfYear", "YEAR"},
    {70, "xlfWeekday", "WEEKDAY"},
    {71, "xlfHour", "HOUR"},
    {72, "xlfMinute", "MINUTE"},
    {73, "xlfSecond", "SECOND"},
    {74, "xlfNow", "NOW"},
    {76, "xlfRows", "ROWS"},
    {77, "xlfColumns", "COLUMNS"},
    {82, "xlfSearch", "SEARCH"},
    {83, "xlfTranspose", "TRANSPOSE"},
    {97, "xlfAtan2", "ATAN2"},
    {98, "xlfAsin", "ASIN"},
    {99, "xlfAcos", "ACOS"},
    {100, "xlfChoose", "CHOOSE"},
    {101, "xlfHlookup", "HLOOKUP"},
    {102, "xlfVlookup", "VLOOKUP"},
    {109, "xlfLog", "LOG"},
    {111, "xlfChar", "CHAR"},
    {112, "xlfLower", "LOWER"},
    {113, "xlfUpper", "UPPER"},
    {114, "xlfProper", "PROPER"},
    {115, "xlfLeft", "LEFT"},
    {116, "xlfRight", "RIGHT"},
    {117, "xlfExact", "EXACT"},
    {118, "xlfTrim", "TRIM"},
    {119, "xlfReplace", "REPLACE"},
    {120, "xlfSubstitute", "SUBSTITUTE"},
    {121, "xlfCode", "CODE"},
    {124, "xlfFind", "FIND"},
    {126, "xlfIserr", "ISERR"},
    {127, "xlfIstext", "ISTEXT"},
    {128, "xlfIsnumber", "ISNUMBER"},
    {129, "xlfIsblank", "ISBLANK"},
    {130, "xlfT", "T"},
    {131, "xlfN", "N"},
    {140, "xlfDatevalue", "DATEVALUE"},
    {141, "xlfTimevalue", "TIMEVALUE"},
    {162, "xlfClean", "CLEAN"},
    {169, "xlfCounta", "COUNTA"},
    {183, "xlfProduct", "PRODUCT"},
    {184, "xlfFact", "FACT"},
    {193, "xlfStdevp", "STDEV.P"},
    {194, "xlfVarp", "VAR.P"},
    {197, "xlfTrunc", "TRUNC"},
    {198, "xlfIslogical", "ISLOGICAL"},
    {212, "xlfRoundup", "ROUNDUP"},
    {213, "xlfRounddown", "ROUNDDOWN"},
    {216, "xlfRank", "RANK"},
    {221, "xlfToday", "TODAY"},
    {227, "xlfMedian", "MEDIAN"},
    {228, "xlfSumproduct", "SUMPRODUCT"},
    {276, "xlfCombin", "COMBIN"},
    {279, "xlfEven", "EVEN"},
    {285, "xlfFloor", "FLOOR"},
    {288, "xlfCeiling", "CEILING"},
    {298, "xlfOdd", "ODD"},
    {307, "xlfCorrel", "CORREL"},
    {311, "xlfIntercept", "INTERCEPT"},
    {315, "xlfSlope", "SLOPE"},
    {321, "xlfSumsq", "SUMSQ"},
    {325, "xlfLarge", "LARGE"},
    {326, "xlfSmall", "SMALL"},
    {327, "xlfQuartile", "QUARTILE"},
    {328, "xlfPercentile", "PERCENTILE"},
    {330, "xlfMode", "MODE"},
    {336, "xlfConcatenate", "CONCATENATE"},
    {337, "xlfPower", "POWER"},
    {342, "xlfRadians", "RADIANS"},
    {343, "xlfDegrees", "DEGREES"},
    {345, "xlfSumif", "SUMIF"},
    {346, "xlfCountif", "COUNTIF"},
    {347, "xlfCountblank", "COUNTBLANK"},
    {351, "xlfDatedif", "DATEDIF"},
    {480, "xlfIferror", "IFERROR"},
    {481, "xlfCountifs", "COUNTIFS"},
    {482, "xlfSumifs", "SUMIFS"},
    {483, "xlfAverageif", "AVERAGEIF"},
    {484, "xlfAverageifs", "AVERAGEIFS"},
};
constexpr std::size_t kCount = std::size(kFunctions);

// IF, whose branches are already calculated here.
const Builtin kIf = {"IF", 2, 3, [](const Given& given) {
                         const std::size_t branch = given.Truth(0) ? 1 : 2;
                         return given.Has(branch) ? given.Raw(branch) : Value(false);
                     }};

const Builtin& BuiltinNamed(std::string_view name) {
    return name == kIf.name ? kIf : *FindBuiltin(Wide(name));
}

// Without sheets there is nothing behind a reference but what the host reads there.
Value CallWithoutSheets(const HostState& state, const Builtin& builtin, std::vector<Value> arguments) {
    for (Value& argument : arguments) argument = Dereference(state, argument);
    return CallBuiltin(builtin, arguments, Cells({}, 0, {}));
}

Outcome Call(HostState& state, const Builtin& builtin, Operands operands) {
    std::vector<Value> arguments;
    for (const XLOPER12* operand : operands) arguments.push_back(ValueFrom(*operand));
    SheetEvaluator evaluator;
    {
        const std::lock_guard lock(state.mutex);
        evaluator = state.evaluator;
    }
    Value value = evaluator.call ? evaluator.call(builtin, arguments)
                                 : CallWithoutSheets(state, builtin, std::move(arguments));
    if (const int* whole = value.If<int>()) return Outcome::Of(static_cast<double>(*whole));
    if (value.Is<Missing>() || value.Is<Empty>()) return Outcome::Of(0.0);
    return Outcome::Of(std::move(value));
}

template <std::size_t Row>
ServedFunction RowOf() {
    static const Builtin& builtin = BuiltinNamed(kFunctions[Row].name);
    return {kFunctions[Row].number,
            kFunctions[Row].traceName,
            static_cast<unsigned char>(builtin.fewest),
            static_cast<unsigned char>(std::min<std::size_t>(builtin.most, 255)),
            From::Anywhere,
            [](HostState& state, Operands operands) { return Call(state, builtin, operands); }};
}

template <std::size_t... Rows>
std::array<ServedFunction, kCount> TableOf(std::index_sequence<Rows...>) {
    return {RowOf<Rows>()...};
}

}  // namespace

std::span<const ServedFunction> ServedWorksheetFunctions() {
    static const auto table = TableOf(std::make_index_sequence<kCount>());
    return table;
}

}  // namespace excelhost
