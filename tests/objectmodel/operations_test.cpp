// Every operation of the object model: the member that it calls, with which flags and arguments, and what it
// gives. A row is an operation, the calls as they arrive (class, DISPID, way, arguments in the published order, "="
// and the value of a put; a "do" asks for no result), the result, and the operation's own arguments; or a property,
// as Table::Row tells.
#include "operations.h"

namespace world {
namespace {

using namespace MsExcel;

using FindMethod = std::shared_ptr<Range> (Range::*)(const VARIANT&, const VARIANT&, const VARIANT&,
                                                     const VARIANT&, const VARIANT&, LONG, const VARIANT&,
                                                     const VARIANT&);

// clang-format off

const Table<Application> applicationTable{[](World& world) { return world.application; }, {
    {&Application::IsHasSpillAvailable, "", "true"},
    {&Application::GetHwnd, "Application 1950 get", "65536"},
    {&Application::GetRange, "Application 197 get (BSTR B2)", "Range $B$2", TEXT("B2")},
    {&Application::GetWorkbooks, "Application 572 get", "Workbooks "},
    {&Application::GetWindows, "Application 430 get", "Windows "},
    {&Application::GetShowWindowsInTaskbar, &Application::PutShowWindowsInTaskbar, "Application 1807", "true", "BOOL false", false},
    {&Application::GetCursor, &Application::PutCursor, "Application 1161", "-4143", "I4 2", 2},
    {&Application::GetActiveWorkbook, "Application 308 get", "Workbook Book1"},
    {&Application::GetNames, "Application 442 get", "Names "},
    {&Application::GetDisplayAlerts, &Application::PutDisplayAlerts, "Application 343", "true", "BOOL true", true},
    {&Application::GetInteractive, &Application::PutInteractive, "Application 361", "true", "BOOL false", false},
    {&Application::GetVisible, &Application::PutVisible, "Application 558", "true", "BOOL false", false},
    {&Application::GetWindowState, &Application::PutWindowState, "Application 396", "-4143", "I4 -4140", -4140},
    {&Application::GetTop, &Application::PutTop, "Application 126", "R8 0", "R8 1.5", 1.5},
    {&Application::GetLeft, &Application::PutLeft, "Application 127", "R8 0", "R8 2.5", 2.5},
    {&Application::GetHeight, &Application::PutHeight, "Application 123", "R8 768", "R8 3.5", 3.5},
    {&Application::GetWidth, &Application::PutWidth, "Application 122", "R8 1024", "R8 4.5", 4.5},
    {&Application::Quit, "Application 302 do", ""},
    {&Application::GetDispatch, "", "raw Application"},
    {&Application::GetCalculation, &Application::PutCalculation, "Application 316", "-4105", "I4 -4135", -4135},
    {Lending<VARIANT, Application, 31>(&Application::Run), "Application 259 call (BSTR Twice, R8 4)", "R8 8", Omitted<29>(), LentWords{TEXT("Twice")}, Number(4)},
    {Lending<VARIANT, Application, 31>(&Application::Run), "Application 259 call (BSTR Twice, missing, R8 4)", "R8 0", Omitted<28>(), LentWords{TEXT("Twice")}, MissingArgument, Number(4)},
    {Lending<VARIANT, Application, 31>(&Application::Run), "Application 259 call (BSTR Twice, R8 1, R8 2, R8 3, R8 4, R8 5, R8 6, R8 7, R8 8, R8 9, R8 10, R8 11, R8 12, R8 13, R8 14, R8 15, R8 16, R8 17, R8 18, R8 19, R8 20, R8 21, R8 22, R8 23, R8 24, R8 25, R8 26, R8 27, R8 28, R8 29, R8 30)", "R8 2", Numbers<30>(), LentWords{TEXT("Twice")}},
    {&Application::Union, "Application 779 call (DISPATCH Range $A$1, DISPATCH Range $B$2:$C$3)", "Range $A$1,$B$2:$C$3", Cells{TEXT("A1")}, Cells{TEXT("B2:C3")}},
    {&Application::GetAddIns, "Application 549 get", "AddIns "},
    {&Application::Undo, "Application 303 do", ""},
    {&Application::Evaluate, "Application 1 call (BSTR 2*3)", "R8 6", TEXT("2*3")},
    {&Application::GetCaller, "Application 317 get", "null"},
    {&Application::GetActiveWindow, "Application 759 get", "Window Book1"},
    {&Application::GetCalculateBeforeSave, &Application::PutCalculateBeforeSave, "Application 315", "true", "BOOL false", false},
    {&Application::GetDisplayFormulaBar, &Application::PutDisplayFormulaBar, "Application 344", "true", "BOOL false", false},
    {&Application::GetScreenUpdating, &Application::PutScreenUpdating, "Application 382", "true", "BOOL false", false},
    {&Application::PutStatusBar, "Application 386 put = BSTR busy", "", Words{TEXT("busy")}},
    {&Application::GetStatusBar, "Application 386 get", "EMPTY"},
    {&Application::GetMultiThreadedCalculation, "Application 2391 get", "MultiThreadedCalculation "},
    {&Application::GetEnableEvents, &Application::PutEnableEvents, "Application 1212", "true", "BOOL false", false},
    {&Application::Calculate, "Application 279 do", ""},
    {&Application::CalculateFull, "Application 1805 do", ""},
    {&Application::CalculateFullRebuild, "Application 1945 do", ""},
    {&Application::GetVersion, "Application 392 get", "16.0"},
    {&Application::GetBuild, "Application 314 get", "16327"},
    {&Application::RegisterXLL, "Application 30 call (BSTR tool.xll)", "true", TEXT("tool.xll")},
    {&Application::ConvertFormula, "Application 325 call (BSTR =$A1, I4 1, I4 -4150)", "BSTR =RC1", Words{TEXT("=$A1")}, 1, Whole(-4150), MissingArgument, MissingArgument},
    {&Application::ConvertFormula, "Application 325 call (BSTR =$A1, I4 1, I4 -4150, missing, I4 7)", "com 80020005", Words{TEXT("=$A1")}, 1, Whole(-4150), MissingArgument, Whole(7)},
    {&Application::GetSelection, "Application 147 get", "Range $A$1"},
    {&Application::GetActiveCell, "Application 305 get", "Range $A$1"},
    {&Application::GetReferenceStyle, &Application::PutReferenceStyle, "Application 380", "1", "I4 -4150", -4150},
    {&Application::GetReady, "Application 1932 get", "true"},
    {&Application::GetIteration, &Application::PutIteration, "Application 363", "false", "BOOL true", true},
    {&Application::GetMaxIterations, &Application::PutMaxIterations, "Application 369", "100", "I4 50", 50},
    {&Application::GetMaxChange, &Application::PutMaxChange, "Application 368", "R8 0.001", "R8 0.5", 0.5},
    {&Application::GetCaption, "Application 139 get", "Excel"},
    {&Application::GetUserControl, &Application::PutUserControl, "Application 1210", "false", "BOOL true", true},
    {&Application::GetDisplayStatusBar, &Application::PutDisplayStatusBar, "Application 347", "true", "BOOL false", false},
    {&Application::GetRecentFiles, "Application 1202 get", "RecentFiles "},
    {&Application::GetAltStartupPath, &Application::PutAltStartupPath, "Application 313", "", "BSTR C:\\Alt", TEXT("C:\\Alt")},
    {&Application::GetStartupPath, "Application 385 get", "C:\\Startup"},
    {&Application::GetAutoCorrect, "Application 1145 get", "AutoCorrect "},
}};

const Table<MultiThreadedCalculationClass> multiThreadedCalculationTable{[](World& world) { return world.application->GetMultiThreadedCalculation(); }, {
    {&MultiThreadedCalculationClass::GetEnabled, &MultiThreadedCalculationClass::PutEnabled, "MultiThreadedCalculation 600", "true", "BOOL false", false},
    {&MultiThreadedCalculationClass::GetThreadCount, &MultiThreadedCalculationClass::PutThreadCount, "MultiThreadedCalculation 2767", "4", "I4 8", 8},
    {&MultiThreadedCalculationClass::GetThreadMode, &MultiThreadedCalculationClass::PutThreadMode, "MultiThreadedCalculation 2766", "0", "I4 1", 1},
}};

const Table<AutoCorrect> autoCorrectTable{[](World& world) { return world.application->GetAutoCorrect(); }, {
    {&AutoCorrect::GetAutoExpandListRange, &AutoCorrect::PutAutoExpandListRange, "AutoCorrect 2294", "true", "BOOL false", false},
    {&AutoCorrect::GetAutoFillFormulasInLists, &AutoCorrect::PutAutoFillFormulasInLists, "AutoCorrect 2642", "true", "BOOL false", false},
}};

const Table<Range> rangeTable{[](World& world) { return world.Range(TEXT("B3")); }, {
    {&Range::IsNull, "", "false"},
    {&Range::GetCount, "Range 118 get", "1"},
    {&Range::GetRows, "Range 258 get", "Range $B$3"},
    {&Range::GetColumns, "Range 241 get", "Range $B$3"},
    {&Range::GetWorkbookName, "Range 348 get; Worksheet 150 get; Workbook 110 get", "Book1"},
    {&Range::GetWorksheetName, "Range 348 get; Worksheet 110 get", "Sheet1"},
    {&Range::GetRow, "Range 257 get", "3"},
    {&Range::GetColumn, "Range 240 get", "2"},
    {&Range::GetAddressLocal, "Range 437 get (BOOL true, BOOL false, I4 1, BOOL true)", "[Book1]Sheet1!B$3", true, false, true},
    {&Range::GetAddress, "Range 236 get (BOOL false, BOOL true, I4 1, BOOL false)", "$B3", false, true, false},
    {&Range::PutFormula2, "Range 1580 put = BSTR =B1", "", Words{TEXT("=B1")}},
    {&Range::GetFormula2, "Range 1580 get", "BSTR =SUM(B1:B2)"},
    {&Range::PutFormula2Local, "Range 3300 put = R8 7", "", Number(7)},
    {&Range::GetFormula2Local, "Range 3300 get", "BSTR =SUM(B1:B2)"},
    {&Range::GetAreas, "Range 568 get", "Areas "},
    {&Range::GetValue, "Range 6 get", "R8 30"},
    {Lending<void, Range, 1>(&Range::PutValue), "Range 6 put (INT 10) = R8 7", "", Number(7)},
    {&Range::GetValue2, Lending<void, Range, 1>(&Range::PutValue2), "Range 1388", "R8 30", "BOOL true", Flag(true)},
    {&Range::Resize, "Range 256 get (I4 2, I4 3)", "Range $B$3:$D$4", 2, 3},
    {&Range::Offset, "Range 254 get (I4 -1, I4 2)", "Range $D$2", -1, 2},
    {FindMethod(&Range::Find), "Range 398 call (I4 30, missing, I4 -4163, I4 1, I4 1, I4 1, BOOL false)", "Range $B$3", Whole(30), MissingArgument, Whole(-4163), Whole(1), Whole(1), 1, Flag(false), MissingArgument},
    {FindMethod(&Range::Find), "Range 398 call (I4 31, missing, I4 -4163, I4 1, I4 1, I4 2, missing, BOOL true)", "null", Whole(31), MissingArgument, Whole(-4163), Whole(1), Whole(1), 2, MissingArgument, Flag(true)},
    {Lending<std::shared_ptr<Range>, Range, 1>(&Range::FindNext), "Range 399 call", "Range $B$3", MissingArgument},
    {&Range::GetDispatch, "", "raw Range"},
    {&Range::GetHasFormula, "Range 267 get", "BOOL true"},
    {&Range::Select, "Range 235 call", "BOOL true"},
    {taking<LONG, LONG>(&Range::GetItem), "Range 170 get (I4 2, I4 3)", "Range $D$4", 2, 3},
    {taking<LONG>(&Range::GetItem), "Range 170 get (I4 2)", "Range $B$4", 2},
    {&Range::Delete, "Range 117 call", "-1"},
    {&Range::GetInterior, "Range 129 get", "Interior $B$3"},
    {&Range::GetFormulaArray, &Range::PutFormulaArray, "Range 586", "BSTR =SUM(B1:B2)", "BSTR =B1", Words{TEXT("=B1")}},
    {&Range::GetWorksheet, "Range 348 get", "Worksheet Sheet1"},
    {&Range::GetMergeCells, "Range 208 get", "false"},
    {&Range::GetMergeArea, "Range 1385 get", "Range $B$3"},
    {&Range::GetText, "Range 138 get", "30"},
    {&Range::GetName, "Range 110 get", "Name Total"},
    {&Range::GetCells, "Range 238 get", "Range $B$3"},
    {&Range::GetHasArray, "Range 266 get", "BOOL false"},
    {&Range::GetCurrentArray, "Range 501 get; Range 348 get; Worksheet 292 get; Range 348 get; Worksheet 292 get", "empty"},
    {&Range::GetParent, "Range 150 get", "Worksheet Sheet1"},
    {&Range::GetNumberFormat, &Range::PutNumberFormat, "Range 193", "General", "BSTR 0.00", TEXT("0.00")},
    {&Range::Clear, "Range 111 call", ""},
    {&Range::ClearContents, "Range 113 call", ""},
    {&Range::Activate, "Range 304 call", "BOOL true"},
    {&Range::Copy, "Range 551 call", ""},
    {&Range::SpecialCells, "Range 410 call (I4 -4123)", "Range $B$3", -4123},
    {&Range::GetFormulaHidden, "Range 262 get", "BOOL false"},
    {&Range::GetComment, "Range 910 get", "null"},
    {&Range::AddComment, "Range 1389 call (BSTR new)", "", TEXT("new")},
    {&Range::GetListObject, "Range 2257 get", "null"},
    {&Range::GetLocked, "Range 269 get", "true"},
    {&Range::GetHyperlinks, "Range 1393 get", "Hyperlinks "},
    {&Range::Replace, "Range 226 call (BSTR B1, BSTR B2, INT 2, INT 1, BOOL true, BOOL false)", "true", TEXT("B1"), TEXT("B2")},
    {&Range::GoalSeek, "Range 472 call (R8 50, DISPATCH Range $B$1)", "true", 50.0, Cells{TEXT("B1")}},
    {&Range::GetHasSpill, "Range 3295 get", "BOOL false"},
    {&Range::GetSpillParent, "Range 3296 get", "com 800A03EC"},
    {&Range::GetSpillingToRange, "Range 3297 get", "com 800A03EC"},
    {&Range::GetID, &Range::PutID, "Range 1813", "", "BSTR x", TEXT("x")},
}};

const Table<Workbooks> workbooksTable{[](World& world) { return world.application->GetWorkbooks(); }, {
    {&Workbooks::Add, "Workbooks 181 call", "Workbook Book3"},
    {&Workbooks::GetCount, "Workbooks 118 get", "2"},
    {taking<const CStringW&>(&Workbooks::GetItem), "Workbooks 170 get (BSTR other.xlsx)", "Workbook Other.xlsx", TEXT("other.xlsx")},
    {taking<LONG>(&Workbooks::GetItem), "Workbooks 170 get (I4 1)", "Workbook Book1", 1},
    {&Workbooks::Open, "Workbooks 1923 call (BSTR C:\\Books\\New.xlsx, I4 0, BOOL true)", "Workbook New.xlsx", TEXT("C:\\Books\\New.xlsx"), Whole(0), Flag(true), MissingArgument, MissingArgument},
    {&Workbooks::Open, "Workbooks 1923 call (BSTR C:\\Books\\New.xlsx, missing, missing, I4 2, BSTR pw)", "Workbook New.xlsx", TEXT("C:\\Books\\New.xlsx"), MissingArgument, MissingArgument, Whole(2), Words{TEXT("pw")}},
}};

const Table<Workbook> workbookTable{[](World& world) { return world.Workbook(); }, {
    {&Workbook::GetDispatch, "", "raw Workbook"},
    {&Workbook::Save, "Workbook 283 do", ""},
    {&Workbook::SaveAs, "Workbook 1925 do (BSTR C:\\a.xlsx, missing, missing, missing, missing, missing, I4 3)", "", TEXT("C:\\a.xlsx")},
    {&Workbook::GetIsAddin, &Workbook::PutIsAddin, "Workbook 1445", "false", "BOOL true", true},
    {&Workbook::GetExcel4IntlMacroSheets, "Workbook 581 get", "Sheets "},
    {&Workbook::GetName, "Workbook 110 get", "Book1"},
    {&Workbook::GetFullName, "Workbook 289 get", "Book1"},
    {&Workbook::Activate, "Workbook 304 do", ""},
    {&Workbook::NewWindow, "Workbook 280 call", "Window Book1:2"},
    {&Workbook::GetWorksheets, "Workbook 494 get", "Sheets "},
    {&Workbook::GetWindows, "Workbook 430 get", "Windows "},
    {&Workbook::RunAutoMacros, "Workbook 634 do (I4 1)", "", 1},
    {&Workbook::Close, "Workbook 277 do (BOOL false)", "", Flag(false), MissingArgument},
    {&Workbook::Close, "Workbook 277 do (missing, BSTR C:\\b.xlsx)", "", MissingArgument, Words{TEXT("C:\\b.xlsx")}},
    {&Workbook::GetNames, "Workbook 442 get", "Names "},
    {&Workbook::SaveCopyAs, "Workbook 175 do (BSTR C:\\c.xlsx)", "", TEXT("C:\\c.xlsx")},
    {&Workbook::GetHasPassword, "Workbook 290 get", "false"},
    {&Workbook::GetFileFormat, "Workbook 288 get", "51"},
    {&Workbook::ToString, "", "*"},
    {&Workbook::GetMaxColumns, "Workbook 2535 get", "16384"},
    {&Workbook::GetMaxRows, "Workbook 2535 get", "1048576"},
    {&Workbook::GetMaxFormulaLength, "Workbook 2535 get", "8192"},
    {&Workbook::GetActiveSheet, "Workbook 307 get", "Worksheet Sheet1"},
    {&Workbook::GetParent, "Workbook 150 get", "Application "},
    {&Workbook::GetSaved, &Workbook::PutSaved, "Workbook 298", "true", "BOOL false", false},
    {&Workbook::GetPath, "Workbook 291 get", ""},
    {&Workbook::GetBuiltinDocumentProperties, "Workbook 1176 get", "DocumentProperties "},
    {&Workbook::GetExcel8CompatibilityMode, "Workbook 2535 get", "false"},
}};

const Table<Sheets> sheetsTable{[](World& world) { return world.Workbook()->GetWorksheets(); }, {
    {Lending<std::shared_ptr<Worksheet>, Sheets, 4>(&Sheets::Add), "Sheets 181 call (missing, missing, I4 2)", "Worksheet Sheet4", MissingArgument, MissingArgument, Whole(2), MissingArgument},
    {&Sheets::GetCount, "Sheets 118 get", "2"},
    {taking<const CStringW&>(&Sheets::GetItem), "Sheets 170 get (BSTR Data)", "Worksheet Data", TEXT("Data")},
    {taking<LONG>(&Sheets::GetItem), "Sheets 170 get (I4 2)", "Worksheet Data", 2},
}};

const Table<Worksheet> worksheetTable{[](World& world) { return world.Worksheet(); }, {
    {&Worksheet::GetApplication, "Worksheet 148 get", "Application "},
    {&Worksheet::Calculate, "Worksheet 279 do", ""},
    {&Worksheet::GetRange, "Worksheet 197 get (BSTR A1:B2)", "Range $A$1:$B$2", TEXT("A1:B2")},
    {&Worksheet::PutName, "Worksheet 110 put = BSTR New", "", TEXT("New")},
    {&Worksheet::GetName, "Worksheet 110 get", "Sheet1"},
    {&Worksheet::GetCell, "Worksheet 238 get; Range 170 get (I4 3, I2 2)", "Range $B$3", 3, SHORT{2}},
    {&Worksheet::GetCells, "Worksheet 238 get", "Range $1:$1048576"},
    {&Worksheet::Activate, "Worksheet 304 do", ""},
    {&Worksheet::GetUsedRange, "Worksheet 412 get", "Range $A$1:$F$3"},
    {&Worksheet::Delete, "Worksheet 117 do", ""},
    {&Worksheet::GetVisible, &Worksheet::PutVisible, "Worksheet 558", "-1", "I4 2", 2},
    {&Worksheet::Evaluate, "Worksheet 1 call (BSTR First)", "Range $A$1", TEXT("First")},
    {&Worksheet::GetParent, "Worksheet 150 get", "Workbook Book1"},
    {&Worksheet::GetNames, "Worksheet 442 get", "Names "},
    {&Worksheet::GetWorkbook, "Worksheet 150 get", "Workbook Book1"},
    {&Worksheet::GetDispatch, "", "raw Worksheet"},
    {&Worksheet::GetProtectContents, "Worksheet 292 get", "false"},
    {&Worksheet::GetIndex, "Worksheet 486 get", "1"},
    {&Worksheet::GetListObjects, "Worksheet 2259 get", "ListObjects "},
    {&Worksheet::GetPivotTables, "Worksheet 690 call", "PivotTables "},
}};

const Table<Windows> windowsTable{[](World& world) { return world.application->GetWindows(); }, {
    {&Windows::GetCount, "Windows 118 get", "2"},
    {taking<const CStringW&>(&Windows::GetItem), "Windows 170 get (BSTR Book1)", "Window Book1", TEXT("Book1")},
    {taking<LONG>(&Windows::GetItem), "Windows 170 get (I4 2)", "Window Other.xlsx", 2},
}};

const Table<Window> windowTable{[](World& world) { return world.application->GetActiveWindow(); }, {
    {&Window::IsNull, "", "false"},
    {&Window::GetApplication, "Window 148 get", "Application "},
    {&Window::Close, "Window 277 call", "true"},
    {&Window::Activate, "Window 304 call", "BOOL true"},
    {&Window::NewWindow, "Window 280 call", "Window Book1:2"},
    {&Window::GetActiveCell, "Window 305 get", "Range $A$1"},
    {&Window::GetSelection, "Window 147 get", "Range $A$1"},
    {&Window::GetCaption, "Window 139 get", "Book1"},
    {&Window::GetHwnd, "Window 148 get; Application 392 get; Window 1950 get", "65538"},
    {&Window::GetVisible, &Window::PutVisible, "Window 558", "true", "BOOL false", false},
    {&Window::GetTop, &Window::PutTop, "Window 126", "R8 0", "R8 1.5", 1.5},
    {&Window::GetLeft, &Window::PutLeft, "Window 127", "R8 0", "R8 2.5", 2.5},
    {&Window::GetHeight, &Window::PutHeight, "Window 123", "R8 600", "R8 3.5", 3.5},
    {&Window::GetWidth, &Window::PutWidth, "Window 122", "R8 800", "R8 4.5", 4.5},
}};

const Table<Name> nameTable{[](World& world) { return world.Workbook()->GetNames()->GetItem(1); }, {
    {&Name::GetName, "Name 110 get", "Total"},
    {&Name::GetNameLocal, &Name::PutNameLocal, "Name 937", "Total", "BSTR Sum", TEXT("Sum")},
    {&Name::GetRefersTo, &Name::PutRefersTo, "Name 938", "BSTR =Sheet1!$B$3", "BSTR =1", Words{TEXT("=1")}},
    {&Name::GetRefersToLocal, "Name 939 get", "BSTR =Sheet1!$B$3"},
    {&Name::GetRefersToR1C1Local, "Name 941 get", "BSTR =Sheet1!R3C2"},
    {&Name::GetWorksheet, "Name 150 get", "empty"},
    {&Name::GetWorkbook, "Name 150 get", "Workbook Book1"},
    {&Name::Delete, "Name 117 do", ""},
    {&Name::GetVisible, &Name::PutVisible, "Name 558", "true", "BOOL false", false},
}};

const Table<Names> namesTable{[](World& world) { return world.Workbook()->GetNames(); }, {
    {&Names::GetCount, "Names 118 get", "2"},
    {taking<const CStringW&>(&Names::GetItem), "Names 170 call (BSTR total)", "Name Total", TEXT("total")},
    {taking<LONG>(&Names::GetItem), "Names 170 call (I4 2)", "Name First", 2},
    {&Names::Add, "Names 181 call (BSTR New, BSTR =1)", "Name New", Words{TEXT("New")}, TEXT("=1")},
}};

const Table<ListObject> listObjectTable{[](World& world) { return world.Range(TEXT("K2"))->GetListObject(); }, {
    {&ListObject::IsNull, "", "false"},
    {&ListObject::GetName, "ListObject 110 get", "Table1"},
    {&ListObject::GetDisplayName, "ListObject 2677 get", "Table1"},
    {&ListObject::GetDataBodyRange, "ListObject 705 get", "Range $K$2:$L$2"},
    {&ListObject::GetHeaderRowRange, "ListObject 2313 get", "Range $K$1:$L$1"},
    {&ListObject::GetListColumns, "ListObject 2315 get", "ListColumns "},
}};

const Table<ListObjects> listObjectsTable{[](World& world) { return world.Worksheet()->GetListObjects(); }, {
    {&ListObjects::GetCount, "ListObjects 118 get", "1"},
    {&ListObjects::GetItem, "ListObjects 170 get (I4 1)", "ListObject Table1", 1},
}};

const Table<ListColumn> listColumnTable{[](World& world) { return world.Range(TEXT("K2"))->GetListObject()->GetListColumns()->GetItem(2); }, {
    {&ListColumn::GetName, "ListColumn 110 get", "price"},
}};

const Table<ListColumns> listColumnsTable{[](World& world) { return world.Range(TEXT("K2"))->GetListObject()->GetListColumns(); }, {
    {&ListColumns::GetCount, "ListColumns 118 get", "2"},
    {&ListColumns::GetItem, "ListColumns 170 get (I4 2)", "ListColumn price", 2},
}};

const Table<AddIn> addInTable{[](World& world) { return world.application->GetAddIns()->GetItem(1); }, {
    {&AddIn::IsNull, "", "false"},
    {&AddIn::GetInstalled, &AddIn::PutInstalled, "AddIn 550", "false", "BOOL true", true},
    {&AddIn::GetName, "AddIn 110 get", "Tool.xla"},
    {&AddIn::GetFullName, "AddIn 289 get", "C:\\AddIns\\Tool.xla"},
}};

const Table<AddIns> addInsTable{[](World& world) { return world.application->GetAddIns(); }, {
    {&AddIns::GetCount, "AddIns 118 get", "1"},
    {&AddIns::GetItem, "AddIns 170 get (I4 1)", "AddIn C:\\AddIns\\Tool.xla", 1},
    {&AddIns::Add, "AddIns 181 call (BSTR C:\\x.xll, BOOL false)", "AddIn C:\\x.xll", TEXT("C:\\x.xll")},
}};

const Table<Areas> areasTable{[](World& world) { return world.Range(TEXT("A1:A2,C1"))->GetAreas(); }, {
    {&Areas::GetCount, "Areas 118 get", "2"},
    {&Areas::GetItem, "Areas 170 get (I4 2)", "Range $C$1", 2},
}};

const Table<Hyperlink> hyperlinkTable{[](World& world) { return world.Range(TEXT("A2"))->GetHyperlinks()->GetItem(1); }, {
    {&Hyperlink::GetAddress, "Hyperlink 236 get", "https://example.org/"},
}};

const Table<Hyperlinks> hyperlinksTable{[](World& world) { return world.Range(TEXT("A2"))->GetHyperlinks(); }, {
    {&Hyperlinks::GetCount, "Hyperlinks 118 get", "1"},
    {&Hyperlinks::GetItem, "Hyperlinks 170 get (I4 1)", "Hyperlink https://example.org/", 1},
}};

const Table<PivotTable> pivotTableTable{[](World& world) { return world.Worksheet()->GetPivotTables()->GetItem(1); }, {
    {&PivotTable::RefreshTable, "PivotTable 717 call", "true"},
}};

const Table<PivotTables> pivotTablesTable{[](World& world) { return world.Worksheet()->GetPivotTables(); }, {
    {&PivotTables::GetCount, "PivotTables 118 get", "1"},
    {&PivotTables::GetItem, "PivotTables 170 call (I4 1)", "PivotTable Pivot1", 1},
}};

// Through the interfaces' own virtual tables, which have DISPID 0 for both Item and Value.
const Table<DocumentProperty> documentPropertyTable{[](World& world) { return world.Workbook()->GetBuiltinDocumentProperties()->GetItem(TEXT("Title")); }, {
    {&DocumentProperty::GetValue, &DocumentProperty::PutValue, "DocumentProperty 0", "BSTR Prices", "BSTR Costs", Words{TEXT("Costs")}},
}};

const Table<MsExcel::DocumentProperties> documentPropertiesTable{[](World& world) { return world.Workbook()->GetBuiltinDocumentProperties(); }, {
    {&MsExcel::DocumentProperties::GetItem, "DocumentProperties 0 get (BSTR Title)", "DocumentProperty Title", TEXT("Title")},
}};

const Table<Interior> interiorTable{[](World& world) { return world.Range(TEXT("A1"))->GetInterior(); }, {
    {&Interior::PutColorIndex, "Interior 97 put = I4 3", "", Whole(3)},
}};

const Table<Comment> commentTable{[](World& world) { return world.Range(TEXT("A1"))->GetComment(); }, {
    {&Comment::IsNull, "", "false"},
    {&Comment::Delete, "Comment 117 do", ""},
    {&Comment::Text, "Comment 138 call", "note", MissingArgument, MissingArgument, MissingArgument},
    {&Comment::Text, "Comment 138 call (BSTR foot, I4 1, BOOL false)", "footnote", Words{TEXT("foot")}, Whole(1), Flag(false)},
    {&Comment::GetVisible, &Comment::PutVisible, "Comment 558", "false", "BOOL true", true},
    {&Comment::GetWidth, "Comment 1582 get; Shape 122 get", "R4 108"},
    {&Comment::PutWidth, "Comment 1582 get; Shape 122 put = R8 90.5", "", 90.5F},
}};

const Table<RecentFile> recentFileTable{[](World& world) { return world.application->GetRecentFiles()->GetItem(1); }, {
    {&RecentFile::GetName, "RecentFile 110 get", "C:\\Books\\Old.xlsx"},
    {&RecentFile::Delete, "RecentFile 117 do", ""},
}};

const Table<RecentFiles> recentFilesTable{[](World& world) { return world.application->GetRecentFiles(); }, {
    {&RecentFiles::GetCount, "RecentFiles 118 get", "1"},
    {&RecentFiles::GetItem, "RecentFiles 170 get (I4 1)", "RecentFile C:\\Books\\Old.xlsx", 1},
    {&RecentFiles::Add, "RecentFiles 181 call (BSTR C:\\New.xlsx)", "RecentFile C:\\New.xlsx", TEXT("C:\\New.xlsx")},
}};
// clang-format on

const AnyTable* const tables[] = {
    &applicationTable,
    &multiThreadedCalculationTable,
    &autoCorrectTable,
    &rangeTable,
    &workbooksTable,
    &workbookTable,
    &sheetsTable,
    &worksheetTable,
    &windowsTable,
    &windowTable,
    &nameTable,
    &namesTable,
    &listObjectTable,
    &listObjectsTable,
    &listColumnTable,
    &listColumnsTable,
    &addInTable,
    &addInsTable,
    &areasTable,
    &hyperlinkTable,
    &hyperlinksTable,
    &pivotTableTable,
    &pivotTablesTable,
    &documentPropertyTable,
    &documentPropertiesTable,
    &interiorTable,
    &commentTable,
    &recentFileTable,
    &recentFilesTable,
};

// Each row on a world of its own. The rows go through the virtual table in its order, behind the destructor's two
// slots, and leave none out.
void Check(const AnyTable& table) {
    std::size_t slot = 1;
    for (const auto& row : table.operations) {
        SCOPED_TRACE(row->sent + " -> " + row->given);
        World world;
        {
            const auto object = table.reach(world);
            world.server.ClearRecord();
            const std::string before = world.Counts();
            const std::string given = Outcome([&] { return row->Run(world, object.get()); });
            EXPECT_TRUE(row->given == anything || row->given == given) << given;
            EXPECT_EQ(world.Calls(), row->sent);
            EXPECT_EQ(world.Counts(), before);
            for (const auto& call : world.server.Record()) EXPECT_EQ(call.lcid, 0U);
        }
        EXPECT_TRUE(row->slot == slot || row->slot == slot + 1) << "slot " << row->slot << " after " << slot;
        slot = row->slot;
        EXPECT_EQ(world.Live(), "Application  1; ");
        EXPECT_TRUE(world.server.Faults().empty());
    }
}

TEST(Operations, SendAndGiveWhatTheirRowSays) {
    for (const AnyTable* table : tables) Check(*table);
}

}  // namespace

std::vector<AnyOperation> AllOperations() {
    std::vector<AnyOperation> operations;
    for (const AnyTable* table : tables) {
        for (const auto& row : table->operations) {
            operations.push_back([table, row](World& world) { row->Run(world, table->reach(world).get()); });
        }
    }
    return operations;
}

}  // namespace world
