// One workbook (Excel VBA reference: Workbook object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Workbook {
  public:
    virtual ~Workbook() = default;

    // The interface that the object holds, no reference added; null when it holds none.
    virtual IDispatch* GetDispatch() const noexcept = 0;

    virtual void Save() = 0;
    // Saves under a new name in the workbook's own format and opens the file for this user alone
    // (XlSaveAsAccessMode 3, exclusive).
    virtual void SaveAs(const CStringW& fileName) = 0;
    virtual bool GetIsAddin() const = 0;
    virtual void PutIsAddin(bool isAddin) = 0;
    virtual std::shared_ptr<Sheets> GetExcel4IntlMacroSheets() const = 0;
    // Without and with the path.
    virtual CStringW GetName() const = 0;
    virtual CStringW GetFullName() const = 0;
    virtual void Activate() = 0;
    virtual std::shared_ptr<Window> NewWindow() = 0;
    virtual std::shared_ptr<Sheets> GetWorksheets() const = 0;
    virtual std::shared_ptr<Windows> GetWindows() const = 0;
    // Runs the Auto_Open, Auto_Close and like macros, chosen by a number of XlRunAutoMacro.
    virtual void RunAutoMacros(LONG which) = 0;
    // MissingArgument may stand for both VARIANTs; the caller gives them away, and they are cleared, also
    // when the call fails.
    virtual void Close(VARIANT saveChanges, VARIANT fileName) = 0;
    virtual std::shared_ptr<Names> GetNames() const = 0;
    // Saves a copy and leaves the workbook as it is.
    virtual void SaveCopyAs(const CStringW& fileName) = 0;
    virtual bool GetHasPassword() const = 0;
    // A number of XlFileFormat.
    virtual LONG GetFileFormat() const = 0;

    // For a log: "Workbook14: this=..., wb=...\n", the addresses of the object and of what it holds.
    virtual CStringA ToString() const = 0;

    // The limits of a sheet: 256 columns, 65536 rows and 1024 units of a formula in a workbook of the old
    // file format, else 16384, 1048576 and 8192. Each asks Excel for the compatibility mode.
    virtual LONG GetMaxColumns() const = 0;
    virtual LONG GetMaxRows() const = 0;
    virtual LONG GetMaxFormulaLength() const = 0;

    virtual std::shared_ptr<Worksheet> GetActiveSheet() const = 0;
    virtual std::shared_ptr<Application> GetParent() const = 0;
    // Whether nothing has changed since the last save.
    virtual bool GetSaved() const = 0;
    virtual void PutSaved(bool saved) = 0;
    // The folder, without a backslash at its end; empty before the first save.
    virtual CStringW GetPath() const = 0;
    virtual std::shared_ptr<DocumentProperties> GetBuiltinDocumentProperties() const = 0;
    virtual bool GetExcel8CompatibilityMode() const = 0;
};
