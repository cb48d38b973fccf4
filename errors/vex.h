// The exceptions that the library raises for its own failures.
//
// A record says what went wrong as data, not as a sentence: which error (`key`, `code`), who raised it
// (`function`) and the texts that belong to it (`args`). The library formats, shows and logs none of them;
// whoever reads a record words it by its key or its code. Records are thrown by value:
//
//     throw VexErrorOpeningFile("WinFile::WinFile", VexCode::FileOpen, path);
//
// A handler chooses how coarse a cause it wants by the class that it names:
//
//     VexException
//       VexExcelError
//         VexExcelWorksheetProtected
//           VexExcelWorksheetProtectedCellLocked
//           VexExcelWorksheetProtectedCellHidden
//         VexCellPartOfArrayFormula
//         VexExcelCellFormulaReadError
//         VexExcelCellFormulaWriteError
//         VexExcelUnsupportedMethodCall
//       VexDiskError
//         VexInvalidDirectory
//         VexErrorOpeningFile
//         VexErrorReadingFile
//         VexErrorWritingFile
//         VexErrorSeekingFile
//       VexSafeArrayError
//         VexArraySizeError
//         VexExpectedString
//       VexWindowsError
//         VexSecurityFunctionError
//       VexRegKeyError
//         VexRegKeyOpenFailed
//         VexRegKeyCreateFailed
//         VexRegKeyEnumFailed
//         VexRegValueReadFailed
//         VexRegValueWriteFailed
//         VexRegValueDeleteFailed
//       VexKernelObjectError
//       VexOutOfMemory
//       VexParameterError
//
// VexException and the five classes that begin a branch (VexExcelError, VexDiskError, VexSafeArrayError,
// VexWindowsError, VexRegKeyError) are there to be caught, not to be raised. No derived class adds a member,
// so a handler that takes a category by value loses nothing but the class, and that survives in `key`.
#pragma once

#include <atlstr.h>

#include <concepts>
#include <cstdint>
#include <utility>
#include <vector>

// The errors of the library, one number each, the same at every place that raises the error. Beside each
// stand the class that carries it and what `args` holds. "result" is the text "(rc=%d, err=%d)", filled with
// the call's result and the thread's last error.
namespace VexCode {
enum : std::int32_t {
    RegKeyOpen = 2602,              // VexRegKeyOpenFailed: result, key's path
    RegKeyCreate = 2603,            // VexRegKeyCreateFailed: result, key's path
    RegValueRead = 2604,            // VexRegValueReadFailed: result, value's name, key's path
    RegValueWrite = 2605,           // VexRegValueWriteFailed: result, value's name, key's path
    RegValueDelete = 2606,          // VexRegValueDeleteFailed: result, value's name, key's path
    RegKeyEnum = 2607,              // VexRegKeyEnumFailed: result, key's path
    RegValueNotDword = 2608,        // VexRegValueReadFailed: value's name, key's path
    RegValueNotString = 2609,       // VexRegValueReadFailed: value's name, key's path
    RegValueNotMultiString = 2610,  // VexRegValueReadFailed: value's name, key's path
    NoLongPathName = 2611,          // VexInvalidDirectory: path
    FileOpen = 2616,                // VexErrorOpeningFile: path
    MutexCreate = 2619,             // VexKernelObjectError: last error in decimal, name as the caller gave it
    FixedArrayDimensions = 2631,    // VexArraySizeError: none
    FixedArraySize = 2632,          // VexArraySizeError: none
    FixedArrayElementSize = 2633,   // VexArraySizeError: none
    ArrayAllocation = 2634,         // VexOutOfMemory: none
    BstrAllocation = 2635,          // VexOutOfMemory: none
    ArrayElementFetch = 2636,       // VexOutOfMemory: none
    ArrayElementNotString = 2637,   // VexExpectedString: the element's VARTYPE by "%8.8lX."
    CellLockedOnWrite = 2639,       // VexExcelWorksheetProtectedCellLocked: cell's address
    FormulaWriteOutOfMemory = 2696,  // VexExcelCellFormulaWriteError: cell's address, formula
    FormulaWrite = 2697,             // VexExcelCellFormulaWriteError: cell's address, formula
    FormulaRead = 2698,              // VexExcelCellFormulaReadError: cell's address
    CellPartOfArray = 2714,          // VexCellPartOfArrayFormula: cell's address
    CellHiddenOnRead = 2843,         // VexExcelWorksheetProtectedCellHidden: cell's address
    Sentence = 2845,                 // several classes: one finished English sentence, or an empty text
    ProtectedOnRead = 2851,          // VexExcelWorksheetProtectedCellLocked, VexExcelWorksheetProtected:
                                     // cell's address, or an empty text where it could not be had
    RegValueNotBinary = 2859,        // VexRegValueReadFailed: value's name, key's path
    RegValueNotQword = 2871,         // VexRegValueReadFailed: value's name, key's path
};
}  // namespace VexCode

// The record. A plain value with no base class and no virtual operation; copies are independent of each
// other.
class VexException {
  public:
    CStringW key;                // name of the class that was constructed, such as "VexErrorOpeningFile"
    CStringW function;           // operation that raised it, such as "RegistryKey::ValueRead"
    std::int32_t code;           // one of VexCode
    std::vector<CStringW> args;  // in the order of the constructor's arguments; may be empty

  protected:
    // The name of a class, for `key`.
    struct Key {
        const WCHAR* text;
    };

    // The road of every class below, each with its own name for a key. `raiser` is ANSI text and not null;
    // `number` is one of VexCode. What the allocator throws passes on.
    template <std::same_as<CStringW>... Texts>
    VexException(Key ownKey, const char* raiser, std::int32_t number, Texts... texts)
        : VexException(ownKey, raiser, number) {
        args.reserve(sizeof...(texts));
        (args.push_back(std::move(texts)), ...);
    }

    VexException(Key ownKey, const char* raiser, std::int32_t number);
};

// Excel refused something that was asked of a cell or of its automation interface.
class VexExcelError : public VexException {
  protected:
    using VexException::VexException;
};

// The sheet is protected. `args`: the address of the cell.
class VexExcelWorksheetProtected : public VexExcelError {
  public:
    VexExcelWorksheetProtected(const char* raiser, std::int32_t number, CStringW address)
        : VexExcelError(Key{TEXT("VexExcelWorksheetProtected")}, raiser, number, std::move(address)) {}

  protected:
    using VexExcelError::VexExcelError;
};

// The sheet is protected and the cell locked. `args`: its address.
class VexExcelWorksheetProtectedCellLocked : public VexExcelWorksheetProtected {
  public:
    VexExcelWorksheetProtectedCellLocked(const char* raiser, std::int32_t number, CStringW address)
        : VexExcelWorksheetProtected(Key{TEXT("VexExcelWorksheetProtectedCellLocked")}, raiser, number,
                                     std::move(address)) {}
};

// The sheet is protected and hides the cell's formula. `args`: its address.
class VexExcelWorksheetProtectedCellHidden : public VexExcelWorksheetProtected {
  public:
    VexExcelWorksheetProtectedCellHidden(const char* raiser, std::int32_t number, CStringW address)
        : VexExcelWorksheetProtected(Key{TEXT("VexExcelWorksheetProtectedCellHidden")}, raiser, number,
                                     std::move(address)) {}
};

// The cell is a part of an array formula, which changes as a whole only. `args`: its address.
class VexCellPartOfArrayFormula : public VexExcelError {
  public:
    VexCellPartOfArrayFormula(const char* raiser, std::int32_t number, CStringW address)
        : VexExcelError(Key{TEXT("VexCellPartOfArrayFormula")}, raiser, number, std::move(address)) {}
};

// Excel doesn't tell the formula, for no reason that is known. `args`: the address of the cell.
class VexExcelCellFormulaReadError : public VexExcelError {
  public:
    VexExcelCellFormulaReadError(const char* raiser, std::int32_t number, CStringW address)
        : VexExcelError(Key{TEXT("VexExcelCellFormulaReadError")}, raiser, number, std::move(address)) {}
};

// Excel doesn't take the formula. `args`: the address of the cell, the formula.
class VexExcelCellFormulaWriteError : public VexExcelError {
  public:
    VexExcelCellFormulaWriteError(const char* raiser, std::int32_t number, CStringW address, CStringW formula)
        : VexExcelError(Key{TEXT("VexExcelCellFormulaWriteError")}, raiser, number, std::move(address),
                        std::move(formula)) {}
};

// This Excel is too old for the operation. `args`: a sentence that says so.
class VexExcelUnsupportedMethodCall : public VexExcelError {
  public:
    VexExcelUnsupportedMethodCall(const char* raiser, std::int32_t number, CStringW sentence)
        : VexExcelError(Key{TEXT("VexExcelUnsupportedMethodCall")}, raiser, number, std::move(sentence)) {}
};

// Files and directories.
class VexDiskError : public VexException {
  protected:
    using VexException::VexException;
};

// A path that leads nowhere. `args`: the path.
class VexInvalidDirectory : public VexDiskError {
  public:
    VexInvalidDirectory(const char* raiser, std::int32_t number, CStringW path)
        : VexDiskError(Key{TEXT("VexInvalidDirectory")}, raiser, number, std::move(path)) {}
};

// A file that can't be opened or made. `args`: its path as it was given.
class VexErrorOpeningFile : public VexDiskError {
  public:
    VexErrorOpeningFile(const char* raiser, std::int32_t number, CStringW path)
        : VexDiskError(Key{TEXT("VexErrorOpeningFile")}, raiser, number, std::move(path)) {}
};

// A file that gives fewer bytes than were asked for. `args`: a sentence with its name.
class VexErrorReadingFile : public VexDiskError {
  public:
    VexErrorReadingFile(const char* raiser, std::int32_t number, CStringW sentence)
        : VexDiskError(Key{TEXT("VexErrorReadingFile")}, raiser, number, std::move(sentence)) {}
};

// A file that takes fewer bytes than were given. `args`: a sentence with its name.
class VexErrorWritingFile : public VexDiskError {
  public:
    VexErrorWritingFile(const char* raiser, std::int32_t number, CStringW sentence)
        : VexDiskError(Key{TEXT("VexErrorWritingFile")}, raiser, number, std::move(sentence)) {}
};

// A position that a file can't be brought to. `args`: a sentence with its name.
class VexErrorSeekingFile : public VexDiskError {
  public:
    VexErrorSeekingFile(const char* raiser, std::int32_t number, CStringW sentence)
        : VexDiskError(Key{TEXT("VexErrorSeekingFile")}, raiser, number, std::move(sentence)) {}
};

// The shape or the content of a Visual Basic array. One that can't be allocated is a VexOutOfMemory.
class VexSafeArrayError : public VexException {
  protected:
    using VexException::VexException;
};

// An array whose shape an operation can't use. `args`: nothing, or a sentence.
class VexArraySizeError : public VexSafeArrayError {
  public:
    VexArraySizeError(const char* raiser, std::int32_t number)
        : VexSafeArrayError(Key{TEXT("VexArraySizeError")}, raiser, number) {}
    VexArraySizeError(const char* raiser, std::int32_t number, CStringW sentence)
        : VexSafeArrayError(Key{TEXT("VexArraySizeError")}, raiser, number, std::move(sentence)) {}
};

// An element that is no string. `args`: its type.
class VexExpectedString : public VexSafeArrayError {
  public:
    VexExpectedString(const char* raiser, std::int32_t number, CStringW type)
        : VexSafeArrayError(Key{TEXT("VexExpectedString")}, raiser, number, std::move(type)) {}
};

// Calls of the system.
class VexWindowsError : public VexException {
  protected:
    using VexException::VexException;
};

// A call about accounts or rights that failed. `args`: a sentence with the call and its error.
class VexSecurityFunctionError : public VexWindowsError {
  public:
    VexSecurityFunctionError(const char* raiser, std::int32_t number, CStringW sentence)
        : VexWindowsError(Key{TEXT("VexSecurityFunctionError")}, raiser, number, std::move(sentence)) {}
};

// Registry keys and values.
class VexRegKeyError : public VexException {
  protected:
    using VexException::VexException;
};

// A key that can't be opened. `args`: the result, the key's path.
class VexRegKeyOpenFailed : public VexRegKeyError {
  public:
    VexRegKeyOpenFailed(const char* raiser, std::int32_t number, CStringW result, CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegKeyOpenFailed")}, raiser, number, std::move(result),
                         std::move(path)) {}
};

// A key that can't be made. `args`: the result, the key's path.
class VexRegKeyCreateFailed : public VexRegKeyError {
  public:
    VexRegKeyCreateFailed(const char* raiser, std::int32_t number, CStringW result, CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegKeyCreateFailed")}, raiser, number, std::move(result),
                         std::move(path)) {}
};

// A key that doesn't tell what is in it. `args`: the result, the key's path.
class VexRegKeyEnumFailed : public VexRegKeyError {
  public:
    VexRegKeyEnumFailed(const char* raiser, std::int32_t number, CStringW result, CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegKeyEnumFailed")}, raiser, number, std::move(result),
                         std::move(path)) {}
};

// A value that can't be read, or is of another kind. `args`: the result of the system's call if one failed, the
// value's name, the key's path.
class VexRegValueReadFailed : public VexRegKeyError {
  public:
    VexRegValueReadFailed(const char* raiser, std::int32_t number, CStringW name, CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegValueReadFailed")}, raiser, number, std::move(name),
                         std::move(path)) {}
    VexRegValueReadFailed(const char* raiser, std::int32_t number, CStringW result, CStringW name,
                          CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegValueReadFailed")}, raiser, number, std::move(result),
                         std::move(name), std::move(path)) {}
};

// A value that can't be written. `args`: the result, the value's name, the key's path.
class VexRegValueWriteFailed : public VexRegKeyError {
  public:
    VexRegValueWriteFailed(const char* raiser, std::int32_t number, CStringW result, CStringW name,
                           CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegValueWriteFailed")}, raiser, number, std::move(result),
                         std::move(name), std::move(path)) {}
};

// A value that can't be deleted. `args`: the result, the value's name, the key's path.
class VexRegValueDeleteFailed : public VexRegKeyError {
  public:
    VexRegValueDeleteFailed(const char* raiser, std::int32_t number, CStringW result, CStringW name,
                            CStringW path)
        : VexRegKeyError(Key{TEXT("VexRegValueDeleteFailed")}, raiser, number, std::move(result),
                         std::move(name), std::move(path)) {}
};

// A mutex, told by its name.
class VexKernelObjectError : public VexException {
  public:
    VexKernelObjectError(const char* raiser, std::int32_t number, CStringW lastError, CStringW name)
        : VexException(Key{TEXT("VexKernelObjectError")}, raiser, number, std::move(lastError),
                       std::move(name)) {}
};

// An array or a string of automation that can't be had. `args`: nothing.
class VexOutOfMemory : public VexException {
  public:
    VexOutOfMemory(const char* raiser, std::int32_t number)
        : VexException(Key{TEXT("VexOutOfMemory")}, raiser, number) {}
};

// A caller's argument that an operation can't take.
class VexParameterError : public VexException {
  public:
    VexParameterError(const char* raiser, std::int32_t number, CStringW sentence)
        : VexException(Key{TEXT("VexParameterError")}, raiser, number, std::move(sentence)) {}
};
