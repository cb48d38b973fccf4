// The checksum of a value against that of its fields, laid out one behind the other.
#include "excelvalues/xxloper.h"
#include "platform/checksums.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Field(std::uint64_t number, int bytes) {
    std::string field;
    for (int i = 0; i < bytes; ++i) field += static_cast<char>(number >> 8 * i & 0xFF);
    return field;
}

TEST(ValueChecksum, GoesOverTheFieldsInOrder) {
    XLOPER12 null[4] = {};  // a text, a reference, an array and a blob without memory behind them
    const DWORD types[4] = {xltypeStr, xltypeRef | xlbitXLFree, xltypeMulti, xltypeBigData};
    for (int i = 0; i < 4; ++i) null[i].xltype = types[i];
    null[2].val.array = {nullptr, 2, 0x10003};
    XLOPER12 failed{};
    SetErrorValue(failed, xlerrValue);
    failed.val.failure.returnCode = xlretFailed;
    failed.xltype |= xlbitDLLFree;
    std::string longUnits = Field(xltypeStr, 4) + Field(5000, 2);
    for (int i = 0; i < 5000; ++i) longUnits += Field(0x1234, 2);

    // Each value with its fields; behind them, arrays of all that stand before.
    std::vector<std::pair<XXloperPtr, std::string>> rows = {
        {XXloperFromNumber(-2.0), Field(xltypeNum, 4) + Field(0xC000000000000000, 8)},
        {XXloperLentByExcel(&failed), Field(0x4010, 4) + Field(15, 4) + Field(32, 4)},
        {XXloperFromString("ab"), Field(xltypeStr, 4) + Field(0x0062'0061'0002, 6)},
        {XXloperFromString(StdWString(5000, 0x1234)), longUnits},
        {XXloperFromBool(1), Field(xltypeBool, 4) + Field(1, 4)},
        {XXloperFromInt(-5), Field(xltypeInt, 4) + Field(0xFFFFFFFB, 4)},
        {XXloperFromRectangles(0x01020304, {{1, 2, 3, 4}, {5, 6, 7, -8}}),
         Field(xltypeRef, 4) + Field(0x01020304, 4) + Field(2, 2) + Field(0x2'00000001, 8) +
             Field(0x4'00000003, 8) + Field(0x6'00000005, 8) + Field(0xFFFFFFF8'00000007, 8)},
        {XXloperFromSRef(1, 2, 3, 4),
         Field(xltypeSRef, 4) + Field(1, 2) + Field(0x2'00000001, 8) + Field(0x4'00000003, 8)},
        {XXloperMissing(), Field(xltypeMissing, 4)},
        {XXloperNil(), Field(xltypeNil, 4)},
        {XXloperFlow(), Field(xltypeFlow, 4)},
        {XXloperLentByExcel(&null[0]), Field(xltypeStr, 4) + Field(0, 2)},
        {XXloperLentByExcel(&null[1]), Field(0x1008, 4) + Field(0, 6)},
        {XXloperLentByExcel(&null[2]), Field(xltypeMulti, 4) + Field(2, 4) + Field(0x10003, 4)},
        {XXloperLentByExcel(&null[3]), Field(xltypeBigData, 4)},
    };
    for (int depth = 0; depth < 4; ++depth) {
        std::vector<XXloperPtr> cells;
        std::string fields = Field(xltypeMulti, 4) + Field(1, 4) + Field(rows.size(), 4);
        for (const auto& [value, bytes] : rows) {
            cells.push_back(value);
            fields += bytes;
        }
        rows.emplace_back(XXloperFromCells(1, static_cast<std::int16_t>(rows.size()), cells), fields);
    }
    for (const auto& [value, bytes] : rows) {
        const std::uint64_t start = 0x123456789ABCDEF;
        EXPECT_EQ(value->Crc64(start), Crc64Update(&start, bytes.data(), bytes.size())) << value->xltype;
    }
}

}  // namespace
