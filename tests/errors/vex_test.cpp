// The exception family: which handler catches which record, and what a record holds.
#include "errors/vex.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace {

// Names of the classes whose handler would take what `raise` throws, among all of the family.
std::string HandlersOf(const std::function<void()>& raise) {
    std::string names;
    const auto tryOne = [&]<typename Class>(const char* name, std::type_identity<Class>) {
        try {
            raise();
        } catch (Class record) {
            names += std::string(names.empty() ? "" : " ") + name;
        } catch (...) {
        }
    };
#define TRY(Class) tryOne(#Class, std::type_identity<Class>{})
    TRY(VexExcelWorksheetProtectedCellLocked);
    TRY(VexExcelWorksheetProtectedCellHidden);
    TRY(VexExcelWorksheetProtected);
    TRY(VexCellPartOfArrayFormula);
    TRY(VexExcelCellFormulaReadError);
    TRY(VexExcelCellFormulaWriteError);
    TRY(VexExcelUnsupportedMethodCall);
    TRY(VexExcelError);
    TRY(VexInvalidDirectory);
    TRY(VexErrorOpeningFile);
    TRY(VexErrorReadingFile);
    TRY(VexErrorWritingFile);
    TRY(VexErrorSeekingFile);
    TRY(VexDiskError);
    TRY(VexArraySizeError);
    TRY(VexExpectedString);
    TRY(VexSafeArrayError);
    TRY(VexSecurityFunctionError);
    TRY(VexWindowsError);
    TRY(VexRegKeyOpenFailed);
    TRY(VexRegKeyCreateFailed);
    TRY(VexRegKeyEnumFailed);
    TRY(VexRegValueReadFailed);
    TRY(VexRegValueWriteFailed);
    TRY(VexRegValueDeleteFailed);
    TRY(VexRegKeyError);
    TRY(VexKernelObjectError);
    TRY(VexOutOfMemory);
    TRY(VexParameterError);
    TRY(VexException);
#undef TRY
    return names;
}

struct Row {
    const char* handlers;  // from the class itself outwards
    std::vector<const WCHAR*> args;
    std::function<void()> raise;
};

template <typename Class, typename... Texts>
Row Raised(const char* handlers, Texts... texts) {
    return {handlers, {texts...}, [texts...] { throw Class("Somewhere::Raised", 4711, CStringW(texts)...); }};
}

const WCHAR* const a = TEXT("first");
const WCHAR* const b = TEXT("");
const WCHAR* const c = TEXT("\x4e00\xd83d\xde00");

std::vector<Row> Rows() {
    return {
        Raised<VexExcelWorksheetProtected>("VexExcelWorksheetProtected VexExcelError VexException", a),
        Raised<VexExcelWorksheetProtectedCellLocked>(
            "VexExcelWorksheetProtectedCellLocked VexExcelWorksheetProtected VexExcelError VexException", b),
        Raised<VexExcelWorksheetProtectedCellHidden>(
            "VexExcelWorksheetProtectedCellHidden VexExcelWorksheetProtected VexExcelError VexException", a),
        Raised<VexCellPartOfArrayFormula>("VexCellPartOfArrayFormula VexExcelError VexException", a),
        Raised<VexExcelCellFormulaReadError>("VexExcelCellFormulaReadError VexExcelError VexException", c),
        Raised<VexExcelCellFormulaWriteError>("VexExcelCellFormulaWriteError VexExcelError VexException", a,
                                              c),
        Raised<VexExcelUnsupportedMethodCall>("VexExcelUnsupportedMethodCall VexExcelError VexException", a),
        Raised<VexInvalidDirectory>("VexInvalidDirectory VexDiskError VexException", a),
        Raised<VexErrorOpeningFile>("VexErrorOpeningFile VexDiskError VexException", a),
        Raised<VexErrorReadingFile>("VexErrorReadingFile VexDiskError VexException", a),
        Raised<VexErrorWritingFile>("VexErrorWritingFile VexDiskError VexException", a),
        Raised<VexErrorSeekingFile>("VexErrorSeekingFile VexDiskError VexException", a),
        Raised<VexArraySizeError>("VexArraySizeError VexSafeArrayError VexException"),
        Raised<VexArraySizeError>("VexArraySizeError VexSafeArrayError VexException", a),
        Raised<VexExpectedString>("VexExpectedString VexSafeArrayError VexException", a),
        Raised<VexSecurityFunctionError>("VexSecurityFunctionError VexWindowsError VexException", a),
        Raised<VexRegKeyOpenFailed>("VexRegKeyOpenFailed VexRegKeyError VexException", a, b),
        Raised<VexRegKeyCreateFailed>("VexRegKeyCreateFailed VexRegKeyError VexException", a, b),
        Raised<VexRegKeyEnumFailed>("VexRegKeyEnumFailed VexRegKeyError VexException", a, b),
        Raised<VexRegValueReadFailed>("VexRegValueReadFailed VexRegKeyError VexException", a, b),
        Raised<VexRegValueReadFailed>("VexRegValueReadFailed VexRegKeyError VexException", a, b, c),
        Raised<VexRegValueWriteFailed>("VexRegValueWriteFailed VexRegKeyError VexException", a, b, c),
        Raised<VexRegValueDeleteFailed>("VexRegValueDeleteFailed VexRegKeyError VexException", a, b, c),
        Raised<VexKernelObjectError>("VexKernelObjectError VexException", a, b),
        Raised<VexOutOfMemory>("VexOutOfMemory VexException"),
        Raised<VexParameterError>("VexParameterError VexException", b),
    };
}

TEST(Vex, EachClassIsCaughtByItselfAndItsCategoriesAlone) {
    for (const Row& row : Rows()) EXPECT_EQ(HandlersOf(row.raise), row.handlers);
}

TEST(Vex, ARecordHoldsItsClassRaiserCodeAndArgumentsInOrder) {
    for (const Row& row : Rows()) {
        const std::string handlers = row.handlers;
        const std::string className = handlers.substr(0, handlers.find(' '));
        SCOPED_TRACE(className);
        try {
            row.raise();
            ADD_FAILURE() << "nothing was raised";
        } catch (VexException record) {
            EXPECT_EQ(record.key, CStringW(className.c_str()));
            EXPECT_EQ(record.function, TEXT("Somewhere::Raised"));
            EXPECT_EQ(record.code, 4711);
            ASSERT_EQ(record.args.size(), row.args.size());
            for (std::size_t i = 0; i < row.args.size(); ++i) EXPECT_EQ(record.args[i], row.args[i]);
        }
    }
}

TEST(Vex, CopiesAreIndependent) {
    const VexRegValueWriteFailed original("RegistryKey::ValueWrite", VexCode::RegValueWrite,
                                          TEXT("(rc=5, err=0)"), TEXT("value"), TEXT("Software\\Quillmar"));
    VexException copy = original;
    copy.key += TEXT("!");
    copy.function = TEXT("");
    copy.args[1].SetAt(0, 'V');
    copy.args.pop_back();
    EXPECT_EQ(original.key, TEXT("VexRegValueWriteFailed"));
    EXPECT_EQ(original.function, TEXT("RegistryKey::ValueWrite"));
    ASSERT_EQ(original.args.size(), 3u);
    EXPECT_EQ(original.args[1], TEXT("value"));
}

TEST(Vex, TheRaiserIsWidenedByTheAnsiRule) {
    const VexOutOfMemory record("Caf\xE9::Op", VexCode::BstrAllocation);
    EXPECT_EQ(record.function, TEXT("Caf\x00e9::Op"));
    EXPECT_TRUE(record.args.empty());
}

TEST(Vex, IsAPlainRecordOutsideTheStandardFamily) {
    EXPECT_FALSE(std::is_polymorphic_v<VexException>);
    EXPECT_FALSE((std::is_base_of_v<std::exception, VexException>));
    EXPECT_EQ(sizeof(VexExcelWorksheetProtectedCellHidden), sizeof(VexException));
    EXPECT_FALSE((std::is_constructible_v<VexExcelError, const char*, int, CStringW>));
    EXPECT_FALSE((std::is_constructible_v<VexExcelCellFormulaWriteError, const char*, int, CStringW>));
    EXPECT_FALSE((std::is_constructible_v<VexOutOfMemory, const char*, int, CStringW>));
}

}  // namespace
