// The DISPIDs of Excel's dispinterfaces, as its type library publishes them.
#pragma once

#include <windows.h>
#include <oleauto.h>

// A structure a class; its constants are used as DISPIDs.
namespace Dispid {

struct AddIn {
    enum : DISPID { FullName = 289, Installed = 550, Name = 110 };
};

struct AddIns {
    enum : DISPID { Add = 181, Count = 118, Item = 170 };
};

struct Application {
    enum : DISPID {
        ActiveCell = 305,
        ActiveWindow = 759,
        ActiveWorkbook = 308,
        AddIns = 549,
        AltStartupPath = 313,
        AutoCorrect = 1145,
        Build = 314,
        Calculate = 279,
        CalculateBeforeSave = 315,
        CalculateFull = 1805,
        CalculateFullRebuild = 1945,
        Calculation = 316,
        Caller = 317,
        Caption = 139,
        ConvertFormula = 325,
        Cursor = 1161,
        DisplayAlerts = 343,
        DisplayFormulaBar = 344,
        DisplayStatusBar = 347,
        EnableEvents = 1212,
        Evaluate = 1,
        Height = 123,
        Hwnd = 1950,
        Interactive = 361,
        Iteration = 363,
        Left = 127,
        MaxChange = 368,
        MaxIterations = 369,
        MultiThreadedCalculation = 2391,
        Names = 442,
        Quit = 302,
        Range = 197,
        Ready = 1932,
        RecentFiles = 1202,
        ReferenceStyle = 380,
        RegisterXLL = 30,
        Run = 259,
        ScreenUpdating = 382,
        Selection = 147,
        ShowWindowsInTaskbar = 1807,
        StartupPath = 385,
        StatusBar = 386,
        Top = 126,
        Undo = 303,
        Union = 779,
        UserControl = 1210,
        Version = 392,
        Visible = 558,
        Width = 122,
        Windows = 430,
        WindowState = 396,
        Workbooks = 572,
    };
};

struct Areas {
    enum : DISPID { Count = 118, Item = 170 };
};

struct AutoCorrect {
    enum : DISPID { AutoExpandListRange = 2294, AutoFillFormulasInLists = 2642 };
};

struct Comment {
    enum : DISPID { Delete = 117, Shape = 1582, Text = 138, Visible = 558 };
};

struct Hyperlink {
    enum : DISPID { Address = 236 };
};

struct Hyperlinks {
    enum : DISPID { Count = 118, Item = 170 };
};

struct Interior {
    enum : DISPID { ColorIndex = 97 };
};

struct ListColumn {
    enum : DISPID { Name = 110 };
};

struct ListColumns {
    enum : DISPID { Count = 118, Item = 170 };
};

struct ListObject {
    enum : DISPID {
        DataBodyRange = 705,
        DisplayName = 2677,
        HeaderRowRange = 2313,
        ListColumns = 2315,
        Name = 110,
    };
};

struct ListObjects {
    enum : DISPID { Count = 118, Item = 170 };
};

struct MultiThreadedCalculation {
    enum : DISPID { Enabled = 600, ThreadCount = 2767, ThreadMode = 2766 };
};

struct Name {
    enum : DISPID {
        Delete = 117,
        Name_ = 110,
        NameLocal = 937,
        Parent = 150,
        RefersTo = 938,
        RefersToLocal = 939,
        RefersToR1C1Local = 941,
        Visible = 558,
    };
};

struct Names {
    enum : DISPID { Add = 181, Count = 118, Item = 170 };
};

struct PivotTable {
    enum : DISPID { RefreshTable = 717 };
};

struct PivotTables {
    enum : DISPID { Count = 118, Item = 170 };
};

struct Range {
    enum : DISPID {
        Activate = 304,
        AddComment = 1389,
        Address = 236,
        AddressLocal = 437,
        Areas = 568,
        Cells = 238,
        Clear = 111,
        ClearContents = 113,
        Column = 240,
        Columns = 241,
        Comment = 910,
        Copy = 551,
        Count = 118,
        CurrentArray = 501,
        Delete = 117,
        Find = 398,
        FindNext = 399,
        Formula = 261,
        Formula2 = 1580,
        Formula2Local = 3300,
        FormulaArray = 586,
        FormulaHidden = 262,
        FormulaLocal = 263,
        GoalSeek = 472,
        HasArray = 266,
        HasFormula = 267,
        HasSpill = 3295,
        Hyperlinks = 1393,
        ID = 1813,
        Interior = 129,
        Item = 170,
        ListObject = 2257,
        Locked = 269,
        MergeArea = 1385,
        MergeCells = 208,
        Name = 110,
        NumberFormat = 193,
        Offset = 254,
        Parent = 150,
        Replace = 226,
        Resize = 256,
        Row = 257,
        Rows = 258,
        Select = 235,
        SpecialCells = 410,
        SpillingToRange = 3297,
        SpillParent = 3296,
        Text = 138,
        Value = 6,
        Value2 = 1388,
        Worksheet = 348,
    };
};

struct RecentFile {
    enum : DISPID { Delete = 117, Name = 110 };
};

struct RecentFiles {
    enum : DISPID { Add = 181, Count = 118, Item = 170 };
};

struct Shape {
    enum : DISPID { Width = 122 };
};

struct Sheets {
    enum : DISPID { Add = 181, Count = 118, Item = 170 };
};

struct Window {
    enum : DISPID {
        Activate = 304,
        ActiveCell = 305,
        Application = 148,
        Caption = 139,
        Close = 277,
        Height = 123,
        Hwnd = 1950,
        Left = 127,
        NewWindow = 280,
        Selection = 147,
        Top = 126,
        Visible = 558,
        Width = 122,
    };
};

struct Windows {
    enum : DISPID { Count = 118, Item = 170 };
};

struct Workbook {
    enum : DISPID {
        Activate = 304,
        ActiveSheet = 307,
        BuiltinDocumentProperties = 1176,
        Close = 277,
        Excel4IntlMacroSheets = 581,
        Excel8CompatibilityMode = 2535,
        FileFormat = 288,
        FullName = 289,
        HasPassword = 290,
        IsAddin = 1445,
        Name = 110,
        Names = 442,
        NewWindow = 280,
        Parent = 150,
        Path = 291,
        RunAutoMacros = 634,
        Save = 283,
        SaveAs = 1925,
        SaveCopyAs = 175,
        Saved = 298,
        Windows = 430,
        Worksheets = 494,
    };
};

struct Workbooks {
    enum : DISPID { Add = 181, Count = 118, Item = 170, Open = 1923 };
};

struct Worksheet {
    enum : DISPID {
        Activate = 304,
        Application = 148,
        Calculate = 279,
        Cells = 238,
        Delete = 117,
        Evaluate = 1,
        Index = 486,
        ListObjects = 2259,
        Name = 110,
        Names = 442,
        Parent = 150,
        PivotTables = 690,
        ProtectContents = 292,
        Range = 197,
        UsedRange = 412,
        Visible = 558,
    };
};

}  // namespace Dispid
