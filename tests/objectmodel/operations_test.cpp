// Every operation of the object model: the member that it calls, with which flags and arguments, and what it
// gives. A row is an operation, its own arguments, the calls as they arrive (class, DISPID, way, arguments in
// the published order, "=" and the value of a put; a "do" asks for no result), and the result; or a property,
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
    {&Application::IsHasSpillAvailable, with(), "", "true"},
    {&Application::GetHwnd, with(), "Application 1950 get", "65536"},
    {&Application::GetRange, with(TEXT("B2")), "Application 197 get (BSTR B2)", "Range $B$2"},
    {&Application::GetWorkbooks, with(), "Application 572 get", "Workbooks "},
    {&Application::GetWindows, with(), "Application 430 get", "Windows "},
    {&Application::GetShowWindowsInTaskbar, &Application::PutShowWindowsInTaskbar, with(false), "Application 1807", "true", "BOOL false"},
    {&Application::GetCursor, &Application::PutCursor, with(2), "Application 1161", "-4143", "I4 2"},
    {&Application::GetActiveWorkbook, with(), "Application 308 get", "Workbook Book1"},
    {&Application::GetNames, with(), "Application 442 get", "Names "},
    {&Application::GetDisplayAlerts, &Application::PutDisplayAlerts, with(true), "Application 343", "true", "BOOL true"},
    {&Application::GetInteractive, &Application::PutInteractive, with(false), "Application 361", "true", "BOOL false"},
    {&Application::GetVisible, &Application::PutVisible, with(false), "Application 558", "true", "BOOL false"},
    {&Application::GetWindowState, &Application::PutWindowState, with(-4140), "Application 396", "-4143", "I4 -4140"},
    {&Application::GetTop, &Application::PutTop, with(1.5), "Application 126", "R8 0", "R8 1.5"},
    {&Application::GetLeft, &Application::PutLeft, with(2.5), "Application 127", "R8 0", "R8 2.5"},
    {&Application::GetHeight, &Application::PutHeight, with(3.5), "Application 123", "R8 768", "R8 3.5"},
    {&Application::GetWidth, &Application::PutWidth, with(4.5), "Application 122", "R8 1024", "R8 4.5"},
    {&Application::Quit, with(), "Application 302 do", ""},
    {&Application::GetDispatch, with(), "", "raw Application"},
    {&Application::GetCalculation, &Application::PutCalculation, with(-4135), "Application 316", "-4105", "I4 -4135"},
    {Lending<VARIANT, Application, 31>(&Application::Run), std::tuple_cat(with(LentWords{TEXT("Twice")}, Number(4)), Omitted<29>()), "Application 259 call (BSTR Twice, R8 4)", "R8 8"},
    {Lending<VARIANT, Application, 31>(&Application::Run), std::tuple_cat(with(LentWords{TEXT("Twice")}, MissingArgument, Number(4)), Omitted<28>()), "Application 259 call (BSTR Twice, missing, R8 4)", "R8 0"},
    {Lending<VARIANT, Application, 31>(&Application::Run), std::tuple_cat(with(LentWords{TEXT("Twice")}), Numbers<30>()), "Application 259 call (BSTR Twice, R8 1, R8 2, R8 3, R8 4, R8 5, R8 6, R8 7, R8 8, R8 9, R8 10, R8 11, R8 12, R8 13, R8 14, R8 15, R8 16, R8 17, R8 18, R8 19, R8 20, R8 21, R8 22, R8 23, R8 24, R8 25, R8 26, R8 27, R8 28, R8 29, R8 30)", "R8 2"},
    {&Application::Union, with(Cells{TEXT("A1")}, Cells{TEXT("B2:C3")}), "Application 779 call (DISPATCH Range $A$1, DISPATCH Range $B$2:$C$3)", "Range $A$1,$B$2:$C$3"},
    {&Application::GetAddIns, with(), "Application 549 get", "AddIns "},
    {&Application::Undo, with(), "Application 303 do", ""},
    {&Application::Evaluate, with(TEXT("2*3")), "Application 1 call (BSTR 2*3)", "R8 6"},
    {&Application::GetCaller, with(), "Application 317 get", "null"},
    {&Application::GetActiveWindow, with(), "Application 759 get", "Window Book1"},
    {&Application::GetCalculateBeforeSave, &Application::PutCalculateBeforeSave, with(false), "Application 315", "true", "BOOL false"},
    {&Application::GetDisplayFormulaBar, &Application::PutDisplayFormulaBar, with(false), "Application 344", "true", "BOOL false"},
    {&Application::GetScreenUpdating, &Application::PutScreenUpdating, with(false), "Application 382", "true", "BOOL false"},
    {&Application::PutStatusBar, with(Words{TEXT("busy")}), "Application 386 put = BSTR busy", ""},
    {&Application::GetStatusBar, with(), "Application 386 get", "EMPTY"},
    {&Application::GetMultiThreadedCalculation, with(), "Application 2391 get", "MultiThreadedCalculation "},
    {&Application::GetEnableEvents, &Application::PutEnableEvents, with(false), "Application 1212", "true", "BOOL false"},
    {&Application::Calculate, with(), "Application 279 do", ""},
    {&Application::CalculateFull, with(), "Application 1805 do", ""},
    {&Application::CalculateFullRebuild, with(), "Application 1945 do", ""},
    {&Application::GetVersion, with(), "Application 392 get", "16.0"},
    {&Application::GetBuild, with(), "Application 314 get", "16327"},
    {&Application::RegisterXLL, with(TEXT("tool.xll")), "Application 30 call (BSTR tool.xll)", "true"},
    {&Application::ConvertFormula, with(Words{TEXT("=$A1")}, 1, Whole(-4150), MissingArgument, MissingArgument), "Application 325 call (BSTR =$A1, I4 1, I4 -4150)", "BSTR =RC1"},
    {&Application::ConvertFormula, with(Words{TEXT("=$A1")}, 1, Whole(-4150), MissingArgument, Whole(7)), "Application 325 call (BSTR =$A1, I4 1, I4 -4150, missing, I4 7)", "com 80020005"},
    {&Application::GetSelection, with(), "Application 147 get", "Range $A$1"},
    {&Application::GetActiveCell, with(), "Application 305 get", "Range $A$1"},
    {&Application::GetReferenceStyle, &Application::PutReferenceStyle, with(-4150), "Application 380", "1", "I4 -4150"},
    {&Application::GetReady, with(), "Application 1932 get", "true"},
    {&Application::GetIteration, &Application::PutIteration, with(true), "Application 363", "false", "BOOL true"},
    {&Application::GetMaxIterations, &Application::PutMaxIterations, with(50), "Application 369", "100", "I4 50"},
    {&Application::GetMaxChange, &Application::PutMaxChange, with(0.5), "Application 368", "R8 0.001", "R8 0.5"},
    {&Application::GetCaption, with(), "Application 139 get", "Excel"},
    {&Application::GetUserControl, &Application::PutUserControl, with(true), "Application 1210", "false", "BOOL true"},
    {&Application::GetDisplayStatusBar, &Application::PutDisplayStatusBar, with(false), "Application 347", "true", "BOOL false"},
    {&Application::GetRecentFiles, with(), "Application 1202 get", "RecentFiles "},
    {&Application::GetAltStartupPath, &Application::PutAltStartupPath, with(TEXT("C:\\Alt")), "Application 313", "", "BSTR C:\\Alt"},
    {&Application::GetStartupPath, with(), "Application 385 get", "C:\\Startup"},
    {&Application::GetAutoCorrect, with(), "Application 1145 get", "AutoCorrect "},
}};

const Table<MultiThreadedCalculationClass> multiThreadedCalculationTable{[](World& world) { return world.application->GetMultiThreadedCalculation(); }, {
    {&MultiThreadedCalculationClass::GetEnabled, &MultiThreadedCalculationClass::PutEnabled, with(false), "MultiThreadedCalculation 600", "true", "BOOL false"},
    {&MultiThreadedCalculationClass::GetThreadCount, &MultiThreadedCalculationClass::PutThreadCount, with(8), "MultiThreadedCalculation 2767", "4", "I4 8"},
    {&MultiThreadedCalculationClass::GetThreadMode, &MultiThreadedCalculationClass::PutThreadMode, with(1), "MultiThreadedCalculation 2766", "0", "I4 1"},
}};

const Table<AutoCorrect> autoCorrectTable{[](World& world) { return world.application->GetAutoCorrect(); }, {
    {&AutoCorrect::GetAutoExpandListRange, &AutoCorrect::PutAutoExpandListRange, with(false), "AutoCorrect 2294", "true", "BOOL false"},
    {&AutoCorrect::GetAutoFillFormulasInLists, &AutoCorrect::PutAutoFillFormulasInLists, with(false), "AutoCorrect 2642", "true", "BOOL false"},
}};

const Table<Range> rangeTable{[](World& world) { return world.Range(TEXT("B3")); }, {
    {&Range::IsNull, with(), "", "false"},
    {&Range::GetCount, with(), "Range 118 get", "1"},
    {&Range::GetRows, with(), "Range 258 get", "Range $B$3"},
    {&Range::GetColumns, with(), "Range 241 get", "Range $B$3"},
    {&Range::GetWorkbookName, with(), "Range 348 get; Worksheet 150 get; Workbook 110 get", "Book1"},
    {&Range::GetWorksheetName, with(), "Range 348 get; Worksheet 110 get", "Sheet1"},
    {&Range::GetRow, with(), "Range 257 get", "3"},
    {&Range::GetColumn, with(), "Range 240 get", "2"},
    {&Range::GetAddressLocal, with(true, false, true), "Range 437 get (BOOL true, BOOL false, I4 1, BOOL true)", "[Book1]Sheet1!B$3"},
    {&Range::GetAddress, with(false, true, false), "Range 236 get (BOOL false, BOOL true, I4 1, BOOL false)", "$B3"},
    {&Range::PutFormula2, with(Words{TEXT("=B1")}), "Range 1580 put = BSTR =B1", ""},
    {&Range::GetFormula2, with(), "Range 1580 get", "BSTR =SUM(B1:B2)"},
    {&Range::PutFormula2Local, with(Number(7)), "Range 3300 put = R8 7", ""},
    {&Range::GetFormula2Local, with(), "Range 3300 get", "BSTR =SUM(B1:B2)"},
    {&Range::GetAreas, with(), "Range 568 get", "Areas "},
    {&Range::GetValue, with(), "Range 6 get", "R8 30"},
    {Lending<void, Range, 1>(&Range::PutValue), with(Number(7)), "Range 6 put (INT 10) = R8 7", ""},
    {&Range::GetValue2, Lending<void, Range, 1>(&Range::PutValue2), with(Flag(true)), "Range 1388", "R8 30", "BOOL true"},
    {&Range::Resize, with(2, 3), "Range 256 get (I4 2, I4 3)", "Range $B$3:$D$4"},
    {&Range::Offset, with(-1, 2), "Range 254 get (I4 -1, I4 2)", "Range $D$2"},
    {FindMethod(&Range::Find), with(Whole(30), MissingArgument, Whole(-4163), Whole(1), Whole(1), 1, Flag(false), MissingArgument), "Range 398 call (I4 30, missing, I4 -4163, I4 1, I4 1, I4 1, BOOL false)", "Range $B$3"},
    {FindMethod(&Range::Find), with(Whole(31), MissingArgument, Whole(-4163), Whole(1), Whole(1), 2, MissingArgument, Flag(true)), "Range 398 call (I4 31, missing, I4 -4163, I4 1, I4 1, I4 2, missing, BOOL true)", "null"},
    {Lending<std::shared_ptr<Range>, Range, 1>(&Range::FindNext), with(MissingArgument), "Range 399 call", "Range $B$3"},
    {&Range::GetDispatch, with(), "", "raw Range"},
    {&Range::GetHasFormula, with(), "Range 267 get", "BOOL true"},
    {&Range::Select, with(), "Range 235 call", "BOOL true"},
    {taking<LONG, LONG>(&Range::GetItem), with(2, 3), "Range 170 get (I4 2, I4 3)", "Range $D$4"},
    {taking<LONG>(&Range::GetItem), with(2), "Range 170 get (I4 2)", "Range $B$4"},
    {&Range::Delete, with(), "Range 117 call", "-1"},
    {&Range::GetInterior, with(), "Range 129 get", "Interior $B$3"},
    {&Range::GetFormulaArray, &Range::PutFormulaArray, with(Words{TEXT("=B1")}), "Range 586", "BSTR =SUM(B1:B2)", "BSTR =B1"},
    {&Range::GetWorksheet, with(), "Range 348 get", "Worksheet Sheet1"},
    {&Range::GetMergeCells, with(), "Range 208 get", "false"},
    {&Range::GetMergeArea, with(), "Range 1385 get", "Range $B$3"},
    {&Range::GetText, with(), "Range 138 get", "30"},
    {&Range::GetName, with(), "Range 110 get", "Name Total"},
    {&Range::GetCells, with(), "Range 238 get", "Range $B$3"},
    {&Range::GetHasArray, with(), "Range 266 get", "BOOL false"},
    {&Range::GetCurrentArray, with(), "Range 501 get; Range 348 get; Worksheet 292 get; Range 348 get; Worksheet 292 get", "empty"},
    {&Range::GetParent, with(), "Range 150 get", "Worksheet Sheet1"},
    {&Range::GetNumberFormat, &Range::PutNumberFormat, with(TEXT("0.00")), "Range 193", "General", "BSTR 0.00"},
    {&Range::Clear, with(), "Range 111 call", ""},
    {&Range::ClearContents, with(), "Range 113 call", ""},
    {&Range::Activate, with(), "Range 304 call", "BOOL true"},
    {&Range::Copy, with(), "Range 551 call", ""},
    {&Range::SpecialCells, with(-4123), "Range 410 call (I4 -4123)", "Range $B$3"},
    {&Range::GetFormulaHidden, with(), "Range 262 get", "BOOL false"},
    {&Range::GetComment, with(), "Range 910 get", "null"},
    {&Range::AddComment, with(TEXT("new")), "Range 1389 call (BSTR new)", ""},
    {&Range::GetListObject, with(), "Range 2257 get", "null"},
    {&Range::GetLocked, with(), "Range 269 get", "true"},
    {&Range::GetHyperlinks, with(), "Range 1393 get", "Hyperlinks "},
    {&Range::Replace, with(TEXT("B1"), TEXT("B2")), "Range 226 call (BSTR B1, BSTR B2, INT 2, INT 1, BOOL true, BOOL false)", "true"},
    {&Range::GoalSeek, with(50.0, Cells{TEXT("B1")}), "Range 472 call (R8 50, DISPATCH Range $B$1)", "true"},
    {&Range::GetHasSpill, with(), "Range 3295 get", "BOOL false"},
    {&Range::GetSpillParent, with(), "Range 3296 get", "com 800A03EC"},
    {&Range::GetSpillingToRange, with(), "Range 3297 get", "com 800A03EC"},
    {&Range::GetID, &Range::PutID, with(TEXT("x")), "Range 1813", "", "BSTR x"},
}};

const Table<Workbooks> workbooksTable{[](World& world) { return world.application->GetWorkbooks(); }, {
    {&Workbooks::Add, with(), "Workbooks 181 call", "Workbook Book3"},
    {&Workbooks::GetCount, with(), "Workbooks 118 get", "2"},
    {taking<const CStringW&>(&Workbooks::GetItem), with(TEXT("other.xlsx")), "Workbooks 170 get (BSTR other.xlsx)", "Workbook Other.xlsx"},
    {taking<LONG>(&Workbooks::GetItem), with(1), "Workbooks 170 get (I4 1)", "Workbook Book1"},
    {&Workbooks::Open, with(TEXT("C:\\Books\\New.xlsx"), Whole(0), Flag(true), MissingArgument, MissingArgument), "Workbooks 1923 call (BSTR C:\\Books\\New.xlsx, I4 0, BOOL true)", "Workbook New.xlsx"},
    {&Workbooks::Open, with(TEXT("C:\\Books\\New.xlsx"), MissingArgument, MissingArgument, Whole(2), Words{TEXT("pw")}), "Workbooks 1923 call (BSTR C:\\Books\\New.xlsx, missing, missing, I4 2, BSTR pw)", "Workbook New.xlsx"},
}};

const Table<Workbook> workbookTable{[](World& world) { return world.Workbook(); }, {
    {&Workbook::GetDispatch, with(), "", "raw Workbook"},
    {&Workbook::Save, with(), "Workbook 283 do", ""},
    {&Workbook::SaveAs, with(TEXT("C:\\a.xlsx")), "Workbook 1925 do (BSTR C:\\a.xlsx, missing, missing, missing, missing, missing, I4 3)", ""},
    {&Workbook::GetIsAddin, &Workbook::PutIsAddin, with(true), "Workbook 1445", "false", "BOOL true"},
    {&Workbook::GetExcel4IntlMacroSheets, with(), "Workbook 581 get", "Sheets "},
    {&Workbook::GetName, with(), "Workbook 110 get", "Book1"},
    {&Workbook::GetFullName, with(), "Workbook 289 get", "Book1"},
    {&Workbook::Activate, with(), "Workbook 304 do", ""},
    {&Workbook::NewWindow, with(), "Workbook 280 call", "Window Book1:2"},
    {&Workbook::GetWorksheets, with(), "Workbook 494 get", "Sheets "},
    {&Workbook::GetWindows, with(), "Workbook 430 get", "Windows "},
    {&Workbook::RunAutoMacros, with(1), "Workbook 634 do (I4 1)", ""},
    {&Workbook::Close, with(Flag(false), MissingArgument), "Workbook 277 do (BOOL false)", ""},
    {&Workbook::Close, with(MissingArgument, Words{TEXT("C:\\b.xlsx")}), "Workbook 277 do (missing, BSTR C:\\b.xlsx)", ""},
    {&Workbook::GetNames, with(), "Workbook 442 get", "Names "},
    {&Workbook::SaveCopyAs, with(TEXT("C:\\c.xlsx")), "Workbook 175 do (BSTR C:\\c.xlsx)", ""},
    {&Workbook::GetHasPassword, with(), "Workbook 290 get", "false"},
    {&Workbook::GetFileFormat, with(), "Workbook 288 get", "51"},
    {&Workbook::ToString, with(), "", "*"},
    {&Workbook::GetMaxColumns, with(), "Workbook 2535 get", "16384"},
    {&Workbook::GetMaxRows, with(), "Workbook 2535 get", "1048576"},
    {&Workbook::GetMaxFormulaLength, with(), "Workbook 2535 get", "8192"},
    {&Workbook::GetActiveSheet, with(), "Workbook 307 get", "Worksheet Sheet1"},
    {&Workbook::GetParent, with(), "Workbook 150 get", "Application "},
    {&Workbook::GetSaved, &Workbook::PutSaved, with(false), "Workbook 298", "true", "BOOL false"},
    {&Workbook::GetPath, with(), "Workbook 291 get", ""},
    {&Workbook::GetBuiltinDocumentProperties, with(), "Workbook 1176 get", "DocumentProperties "},
    {&Workbook::GetExcel8CompatibilityMode, with(), "Workbook 2535 get", "false"},
}};

const Table<Sheets> sheetsTable{[](World& world) { return world.Workbook()->GetWorksheets(); }, {
    {Lending<std::shared_ptr<Worksheet>, Sheets, 4>(&Sheets::Add), with(MissingArgument, MissingArgument, Whole(2), MissingArgument), "Sheets 181 call (missing, missing, I4 2)", "Worksheet Sheet4"},
    {&Sheets::GetCount, with(), "Sheets 118 get", "2"},
    {taking<const CStringW&>(&Sheets::GetItem), with(TEXT("Data")), "Sheets 170 get (BSTR Data)", "Worksheet Data"},
    {taking<LONG>(&Sheets::GetItem), with(2), "Sheets 170 get (I4 2)", "Worksheet Data"},
}};

const Table<Worksheet> worksheetTable{[](World& world) { return world.Worksheet(); }, {
    {&Worksheet::GetApplication, with(), "Worksheet 148 get", "Application "},
    {&Worksheet::Calculate, with(), "Worksheet 279 do", ""},
    {&Worksheet::GetRange, with(TEXT("A1:B2")), "Worksheet 197 get (BSTR A1:B2)", "Range $A$1:$B$2"},
    {&Worksheet::PutName, with(TEXT("New")), "Worksheet 110 put = BSTR New", ""},
    {&Worksheet::GetName, with(), "Worksheet 110 get", "Sheet1"},
    {&Worksheet::GetCell, with(3, SHORT{2}), "Worksheet 238 get; Range 170 get (I4 3, I2 2)", "Range $B$3"},
    {&Worksheet::GetCells, with(), "Worksheet 238 get", "Range $1:$1048576"},
    {&Worksheet::Activate, with(), "Worksheet 304 do", ""},
    {&Worksheet::GetUsedRange, with(), "Worksheet 412 get", "Range $A$1:$F$3"},
    {&Worksheet::Delete, with(), "Worksheet 117 do", ""},
    {&Worksheet::GetVisible, &Worksheet::PutVisible, with(2), "Worksheet 558", "-1", "I4 2"},
    {&Worksheet::Evaluate, with(TEXT("First")), "Worksheet 1 call (BSTR First)", "Range $A$1"},
    {&Worksheet::GetParent, with(), "Worksheet 150 get", "Workbook Book1"},
    {&Worksheet::GetNames, with(), "Worksheet 442 get", "Names "},
    {&Worksheet::GetWorkbook, with(), "Worksheet 150 get", "Workbook Book1"},
    {&Worksheet::GetDispatch, with(), "", "raw Worksheet"},
    {&Worksheet::GetProtectContents, with(), "Worksheet 292 get", "false"},
    {&Worksheet::GetIndex, with(), "Worksheet 486 get", "1"},
    {&Worksheet::GetListObjects, with(), "Worksheet 2259 get", "ListObjects "},
    {&Worksheet::GetPivotTables, with(), "Worksheet 690 call", "PivotTables "},
}};

const Table<Windows> windowsTable{[](World& world) { return world.application->GetWindows(); }, {
    {&Windows::GetCount, with(), "Windows 118 get", "2"},
    {taking<const CStringW&>(&Windows::GetItem), with(TEXT("Book1")), "Windows 170 get (BSTR Book1)", "Window Book1"},
    {taking<LONG>(&Windows::GetItem), with(2), "Windows 170 get (I4 2)", "Window Other.xlsx"},
}};

const Table<Window> windowTable{[](World& world) { return world.application->GetActiveWindow(); }, {
    {&Window::IsNull, with(), "", "false"},
    {&Window::GetApplication, with(), "Window 148 get", "Application "},
    {&Window::Close, with(), "Window 277 call", "true"},
    {&Window::Activate, with(), "Window 304 call", "BOOL true"},
    {&Window::NewWindow, with(), "Window 280 call", "Window Book1:2"},
    {&Window::GetActiveCell, with(), "Window 305 get", "Range $A$1"},
    {&Window::GetSelection, with(), "Window 147 get", "Range $A$1"},
    {&Window::GetCaption, with(), "Window 139 get", "Book1"},
    {&Window::GetHwnd, with(), "Window 148 get; Application 392 get; Window 1950 get", "65538"},
    {&Window::GetVisible, &Window::PutVisible, with(false), "Window 558", "true", "BOOL false"},
    {&Window::GetTop, &Window::PutTop, with(1.5), "Window 126", "R8 0", "R8 1.5"},
    {&Window::GetLeft, &Window::PutLeft, with(2.5), "Window 127", "R8 0", "R8 2.5"},
    {&Window::GetHeight, &Window::PutHeight, with(3.5), "Window 123", "R8 600", "R8 3.5"},
    {&Window::GetWidth, &Window::PutWidth, with(4.5), "Window 122", "R8 800", "R8 4.5"},
}};

const Table<Name> nameTable{[](World& world) { return world.Workbook()->GetNames()->GetItem(1); }, {
    {&Name::GetName, with(), "Name 110 get", "Total"},
    {&Name::GetNameLocal, &Name::PutNameLocal, with(TEXT("Sum")), "Name 937", "Total", "BSTR Sum"},
    {&Name::GetRefersTo, &Name::PutRefersTo, with(Words{TEXT("=1")}), "Name 938", "BSTR =Sheet1!$B$3", "BSTR =1"},
    {&Name::GetRefersToLocal, with(), "Name 939 get", "BSTR =Sheet1!$B$3"},
    {&Name::GetRefersToR1C1Local, with(), "Name 941 get", "BSTR =Sheet1!R3C2"},
    {&Name::GetWorksheet, with(), "Name 150 get", "empty"},
    {&Name::GetWorkbook, with(), "Name 150 get", "Workbook Book1"},
    {&Name::Delete, with(), "Name 117 do", ""},
    {&Name::GetVisible, &Name::PutVisible, with(false), "Name 558", "true", "BOOL false"},
}};

const Table<Names> namesTable{[](World& world) { return world.Workbook()->GetNames(); }, {
    {&Names::GetCount, with(), "Names 118 get", "2"},
    {taking<const CStringW&>(&Names::GetItem), with(TEXT("total")), "Names 170 call (BSTR total)", "Name Total"},
    {taking<LONG>(&Names::GetItem), with(2), "Names 170 call (I4 2)", "Name First"},
    {&Names::Add, with(Words{TEXT("New")}, TEXT("=1")), "Names 181 call (BSTR New, BSTR =1)", "Name New"},
}};

const Table<ListObject> listObjectTable{[](World& world) { return world.Range(TEXT("K2"))->GetListObject(); }, {
    {&ListObject::IsNull, with(), "", "false"},
    {&ListObject::GetName, with(), "ListObject 110 get", "Table1"},
    {&ListObject::GetDisplayName, with(), "ListObject 2677 get", "Table1"},
    {&ListObject::GetDataBodyRange, with(), "ListObject 705 get", "Range $K$2:$L$2"},
    {&ListObject::GetHeaderRowRange, with(), "ListObject 2313 get", "Range $K$1:$L$1"},
    {&ListObject::GetListColumns, with(), "ListObject 2315 get", "ListColumns "},
}};

const Table<ListObjects> listObjectsTable{[](World& world) { return world.Worksheet()->GetListObjects(); }, {
    {&ListObjects::GetCount, with(), "ListObjects 118 get", "1"},
    {&ListObjects::GetItem, with(1), "ListObjects 170 get (I4 1)", "ListObject Table1"},
}};

const Table<ListColumn> listColumnTable{[](World& world) { return world.Range(TEXT("K2"))->GetListObject()->GetListColumns()->GetItem(2); }, {
    {&ListColumn::GetName, with(), "ListColumn 110 get", "price"},
}};

const Table<ListColumns> listColumnsTable{[](World& world) { return world.Range(TEXT("K2"))->GetListObject()->GetListColumns(); }, {
    {&ListColumns::GetCount, with(), "ListColumns 118 get", "2"},
    {&ListColumns::GetItem, with(2), "ListColumns 170 get (I4 2)", "ListColumn price"},
}};

const Table<AddIn> addInTable{[](World& world) { return world.application->GetAddIns()->GetItem(1); }, {
    {&AddIn::IsNull, with(), "", "false"},
    {&AddIn::GetInstalled, &AddIn::PutInstalled, with(true), "AddIn 550", "false", "BOOL true"},
    {&AddIn::GetName, with(), "AddIn 110 get", "Tool.xla"},
    {&AddIn::GetFullName, with(), "AddIn 289 get", "C:\\AddIns\\Tool.xla"},
}};

const Table<AddIns> addInsTable{[](World& world) { return world.application->GetAddIns(); }, {
    {&AddIns::GetCount, with(), "AddIns 118 get", "1"},
    {&AddIns::GetItem, with(1), "AddIns 170 get (I4 1)", "AddIn C:\\AddIns\\Tool.xla"},
    {&AddIns::Add, with(TEXT("C:\\x.xll")), "AddIns 181 call (BSTR C:\\x.xll, BOOL false)", "AddIn C:\\x.xll"},
}};

const Table<Areas> areasTable{[](World& world) { return world.Range(TEXT("A1:A2,C1"))->GetAreas(); }, {
    {&Areas::GetCount, with(), "Areas 118 get", "2"},
    {&Areas::GetItem, with(2), "Areas 170 get (I4 2)", "Range $C$1"},
}};

const Table<Hyperlink> hyperlinkTable{[](World& world) { return world.Range(TEXT("A2"))->GetHyperlinks()->GetItem(1); }, {
    {&Hyperlink::GetAddress, with(), "Hyperlink 236 get", "https://example.org/"},
}};

const Table<Hyperlinks> hyperlinksTable{[](World& world) { return world.Range(TEXT("A2"))->GetHyperlinks(); }, {
    {&Hyperlinks::GetCount, with(), "Hyperlinks 118 get", "1"},
    {&Hyperlinks::GetItem, with(1), "Hyperlinks 170 get (I4 1)", "Hyperlink https://example.org/"},
}};

const Table<PivotTable> pivotTableTable{[](World& world) { return world.Worksheet()->GetPivotTables()->GetItem(1); }, {
    {&PivotTable::RefreshTable, with(), "PivotTable 717 call", "true"},
}};

const Table<PivotTables> pivotTablesTable{[](World& world) { return world.Worksheet()->GetPivotTables(); }, {
    {&PivotTables::GetCount, with(), "PivotTables 118 get", "1"},
    {&PivotTables::GetItem, with(1), "PivotTables 170 call (I4 1)", "PivotTable Pivot1"},
}};

// Through the interfaces' own virtual tables, which have DISPID 0 for both Item and Value.
const Table<DocumentProperty> documentPropertyTable{[](World& world) { return world.Workbook()->GetBuiltinDocumentProperties()->GetItem(TEXT("Title")); }, {
    {&DocumentProperty::GetValue, &DocumentProperty::PutValue, with(Words{TEXT("Costs")}), "DocumentProperty 0", "BSTR Prices", "BSTR Costs"},
}};

const Table<MsExcel::DocumentProperties> documentPropertiesTable{[](World& world) { return world.Workbook()->GetBuiltinDocumentProperties(); }, {
    {&MsExcel::DocumentProperties::GetItem, with(TEXT("Title")), "DocumentProperties 0 get (BSTR Title)", "DocumentProperty Title"},
}};

const Table<Interior> interiorTable{[](World& world) { return world.Range(TEXT("A1"))->GetInterior(); }, {
    {&Interior::PutColorIndex, with(Whole(3)), "Interior 97 put = I4 3", ""},
}};

const Table<Comment> commentTable{[](World& world) { return world.Range(TEXT("A1"))->GetComment(); }, {
    {&Comment::IsNull, with(), "", "false"},
    {&Comment::Delete, with(), "Comment 117 do", ""},
    {&Comment::Text, with(MissingArgument, MissingArgument, MissingArgument), "Comment 138 call", "note"},
    {&Comment::Text, with(Words{TEXT("foot")}, Whole(1), Flag(false)), "Comment 138 call (BSTR foot, I4 1, BOOL false)", "footnote"},
    {&Comment::GetVisible, &Comment::PutVisible, with(true), "Comment 558", "false", "BOOL true"},
    {&Comment::GetWidth, with(), "Comment 1582 get; Shape 122 get", "R4 108"},
    {&Comment::PutWidth, with(90.5F), "Comment 1582 get; Shape 122 put = R8 90.5", ""},
}};

const Table<RecentFile> recentFileTable{[](World& world) { return world.application->GetRecentFiles()->GetItem(1); }, {
    {&RecentFile::GetName, with(), "RecentFile 110 get", "C:\\Books\\Old.xlsx"},
    {&RecentFile::Delete, with(), "RecentFile 117 do", ""},
}};

const Table<RecentFiles> recentFilesTable{[](World& world) { return world.application->GetRecentFiles(); }, {
    {&RecentFiles::GetCount, with(), "RecentFiles 118 get", "1"},
    {&RecentFiles::GetItem, with(1), "RecentFiles 170 get (I4 1)", "RecentFile C:\\Books\\Old.xlsx"},
    {&RecentFiles::Add, with(TEXT("C:\\New.xlsx")), "RecentFiles 181 call (BSTR C:\\New.xlsx)", "RecentFile C:\\New.xlsx"},
}};
// clang-format on

// Does something with each table.
template <class Action>
void ForEachTable(Action action) {
    std::apply(
        [&](const auto&... table) { (action(table), ...); },
        std::tie(applicationTable, multiThreadedCalculationTable, autoCorrectTable, rangeTable,
                 workbooksTable, workbookTable, sheetsTable, worksheetTable, windowsTable, windowTable,
                 nameTable, namesTable, listObjectTable, listObjectsTable, listColumnTable, listColumnsTable,
                 addInTable, addInsTable, areasTable, hyperlinkTable, hyperlinksTable, pivotTableTable,
                 pivotTablesTable, documentPropertyTable, documentPropertiesTable, interiorTable,
                 commentTable, recentFileTable, recentFilesTable));
}

TEST(Operations, SendAndGiveWhatTheirRowSays) {
    ForEachTable([](const auto& table) { table.Check(); });
}

}  // namespace

std::vector<AnyOperation> AllOperations() {
    std::vector<AnyOperation> operations;
    ForEachTable([&](const auto& table) { table.AddTo(operations); });
    return operations;
}

}  // namespace world
