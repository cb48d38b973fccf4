// The exception family: which handler catches which record, and what a record holds.
#include "errors/vex.h"

#include <gmock/gmock.h>

#include <type_traits>
#include <vector>

namespace {

const WCHAR* const a = TEXT("first");
const WCHAR* const b = TEXT("");
const WCHAR* const c = TEXT("\x4e00\xd83d\xde00");

// Raises a Class, which a handler of its Category takes, by value and whole.
template <typename Class, typename Category, typename... Texts>
void Raise(const char* name, Texts... texts) {
    SCOPED_TRACE(name);
    try {
        throw Class("Caf\xE9::Raised", 4711, CStringW(texts)...);
    } catch (Category record) {
        EXPECT_EQ(record.key, CStringW(name));
        EXPECT_EQ(record.function, TEXT("Caf\x00e9::Raised")) << "widened by the ANSI rule";
        EXPECT_EQ(record.code, 4711);
        EXPECT_THAT(record.args, testing::ElementsAreArray(std::vector<CStringW>{CStringW(texts)...}));
    }
    static_assert(std::is_base_of_v<VexException, Category>);
    static_assert(sizeof(Class) == sizeof(VexException));
}

TEST(Vex, EachClassIsCaughtByItsCategoryWithItsRaiserCodeAndTexts) {
    Raise<VexExcelWorksheetProtected, VexExcelError>("VexExcelWorksheetProtected", a);
    Raise<VexExcelWorksheetProtectedCellLocked, VexExcelWorksheetProtected>(
        "VexExcelWorksheetProtectedCellLocked", b);
    Raise<VexExcelWorksheetProtectedCellHidden, VexExcelWorksheetProtected>(
        "VexExcelWorksheetProtectedCellHidden", a);
    Raise<VexCellPartOfArrayFormula, VexExcelError>("VexCellPartOfArrayFormula", a);
    Raise<VexExcelCellFormulaReadError, VexExcelError>("VexExcelCellFormulaReadError", c);
    Raise<VexExcelCellFormulaWriteError, VexExcelError>("VexExcelCellFormulaWriteError", a, c);
    Raise<VexExcelUnsupportedMethodCall, VexExcelError>("VexExcelUnsupportedMethodCall", a);
    Raise<VexInvalidDirectory, VexDiskError>("VexInvalidDirectory", a);
    Raise<VexErrorOpeningFile, VexDiskError>("VexErrorOpeningFile", a);
    Raise<VexErrorReadingFile, VexDiskError>("VexErrorReadingFile", a);
    Raise<VexErrorWritingFile, VexDiskError>("VexErrorWritingFile", a);
    Raise<VexErrorSeekingFile, VexDiskError>("VexErrorSeekingFile", a);
    Raise<VexArraySizeError, VexSafeArrayError>("VexArraySizeError");
    Raise<VexArraySizeError, VexSafeArrayError>("VexArraySizeError", a);
    Raise<VexExpectedString, VexSafeArrayError>("VexExpectedString", a);
    Raise<VexSecurityFunctionError, VexWindowsError>("VexSecurityFunctionError", a);
    Raise<VexRegKeyOpenFailed, VexRegKeyError>("VexRegKeyOpenFailed", a, b);
    Raise<VexRegKeyCreateFailed, VexRegKeyError>("VexRegKeyCreateFailed", a, b);
    Raise<VexRegKeyEnumFailed, VexRegKeyError>("VexRegKeyEnumFailed", a, b);
    Raise<VexRegValueReadFailed, VexRegKeyError>("VexRegValueReadFailed", a, b);
    Raise<VexRegValueReadFailed, VexRegKeyError>("VexRegValueReadFailed", a, b, c);
    Raise<VexRegValueWriteFailed, VexRegKeyError>("VexRegValueWriteFailed", a, b, c);
    Raise<VexRegValueDeleteFailed, VexRegKeyError>("VexRegValueDeleteFailed", a, b, c);
    Raise<VexKernelObjectError, VexException>("VexKernelObjectError", a, b);
    Raise<VexOutOfMemory, VexException>("VexOutOfMemory");
    Raise<VexParameterError, VexException>("VexParameterError", b);
    EXPECT_FALSE(std::is_polymorphic_v<VexException>);
    EXPECT_FALSE((std::is_base_of_v<std::exception, VexException>));
    EXPECT_FALSE((std::is_constructible_v<VexExcelError, const char*, int, CStringW>)) << "a mere category";
}

// Programs word a record by its number: none may ever move.
TEST(Vex, TheNumbersOfTheErrorsStayAsTheyWerePublished) {
    using namespace VexCode;
    const int published[] = {2602, 2603, 2604, 2605, 2606, 2607, 2608, 2609, 2610, 2611,
                             2616, 2619, 2631, 2632, 2633, 2634, 2635, 2636, 2637, 2639,
                             2696, 2697, 2698, 2714, 2843, 2845, 2851, 2859, 2871};
    EXPECT_THAT(published,
                testing::ElementsAre(
                    RegKeyOpen, RegKeyCreate, RegValueRead, RegValueWrite, RegValueDelete, RegKeyEnum,
                    RegValueNotDword, RegValueNotString, RegValueNotMultiString, NoLongPathName, FileOpen,
                    MutexCreate, FixedArrayDimensions, FixedArraySize, FixedArrayElementSize, ArrayAllocation,
                    BstrAllocation, ArrayElementFetch, ArrayElementNotString, CellLockedOnWrite,
                    FormulaWriteOutOfMemory, FormulaWrite, FormulaRead, CellPartOfArray, CellHiddenOnRead,
                    Sentence, ProtectedOnRead, RegValueNotBinary, RegValueNotQword));
}

}  // namespace
