// Workbooks, Workbook, Windows and Window.
#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

constexpr IID iidWorkbook{0x000208DA, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID iidWindow{0x00020893, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

constexpr LONG formatOpenXml = 51;  // XlFileFormat: a workbook without macros
constexpr LONG formatExcel8 = 56;   // XlFileFormat: Excel 97 to 2003
constexpr DISPID dispidSaved = 298;

WorkbookNode& Self(const Call& call) noexcept {
    return call.As<WorkbookNode>();
}

void AddWorkbook(Call& call) {
    ApplicationNode& application = Application(call);
    std::size_t number = application.workbooks.size();
    Text name;
    do {
        name = TEXT("Book") + Decimal(static_cast<LONG>(++number));
    } while (application.FindWorkbook(name) != nullptr);
    call.ReturnObject(application.AddWorkbook(name).shared_from_this());
}

std::pair<Text, Text> SplitAtBackslash(const Text& path) {
    const auto end = path.rfind(TEXT('\\'));
    return end == Text::npos ? std::pair{Text(), path} : std::pair{path.substr(0, end), path.substr(end + 1)};
}

void OpenWorkbook(Call& call) {
    ApplicationNode& application = Application(call);
    const Text file = call.Words(0);
    const auto found = application.files.find(file);
    if (found == application.files.end()) {
        throw Refusal::Exception((TEXT("Sorry, we couldn't find ") + file + TEXT(".")).c_str());
    }
    const auto [path, name] = SplitAtBackslash(file);
    if (application.FindWorkbook(name) != nullptr) {
        throw Refusal::Exception(TEXT("A workbook with that name is open already."));
    }
    WorkbookNode& workbook = application.AddWorkbook(name);
    workbook.path = path;
    workbook.sheets.clear();
    for (const Text& sheet : found->second) workbook.AddSheet(sheet);
    call.ReturnObject(workbook.shared_from_this());
}

std::vector<Text> SheetNames(const WorkbookNode& workbook) {
    std::vector<Text> names;
    for (const auto& sheet : workbook.sheets) names.push_back(sheet->Name());
    return names;
}

void SaveWorkbook(Call& call) {
    WorkbookNode& workbook = Self(call);
    Application(call).files[workbook.FullName()] = SheetNames(workbook);
    workbook.stored[dispidSaved] = Variant(true);
}

void SaveWorkbookAs(Call& call) {
    std::tie(Self(call).path, Self(call).name) = SplitAtBackslash(call.Words(0));
    SaveWorkbook(call);
}

void CloseWorkbook(Call& call) {
    if (call.Has(1)) Application(call).files[call.Words(1)] = SheetNames(Self(call));
    Application(call).CloseWorkbook(Self(call));
}

WindowNode& OpenWindow(Call& call, WorkbookNode& workbook) {
    WindowNode& window = workbook.AddWindow(Application(call).NewHandle());
    window.name += TEXT(":") + Decimal(static_cast<LONG>(workbook.windows.size()));
    return window;
}

void ActivateSheet(Call& call, WorkbookNode& workbook) {
    Application(call).active = &workbook;
    Application(call).selection = nullptr;
}

const Member workbooksMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
    {181, "Add", callOnly, AddWorkbook, 1},
    {1923, "Open", callOnly, OpenWorkbook, 15},
};

const Member workbookMembers[] = {
    {110, "Name", getOnly, ReturnName},
    {148, "Application", getOnly, ReturnApplication},
    {150, "Parent", getOnly, ReturnApplication},
    {175, "SaveCopyAs", callOnly,
     [](Call& call) { Application(call).files[call.Words(0)] = SheetNames(Self(call)); }, 1},
    {277, "Close", callOnly, CloseWorkbook, 3},
    {280, "NewWindow", callOnly,
     [](Call& call) { call.ReturnObject(OpenWindow(call, Self(call)).shared_from_this()); }},
    {283, "Save", callOnly, SaveWorkbook},
    {288, "FileFormat", getOnly,
     [](Call& call) { call.Return(Self(call).compatible ? formatExcel8 : formatOpenXml); }},
    {289, "FullName", getOnly, [](Call& call) { call.Return(Self(call).FullName()); }},
    {290, "HasPassword", getOnly, VT_BOOL},
    {291, "Path", getOnly, [](Call& call) { call.Return(Self(call).path); }},
    {dispidSaved, "Saved", getPut, VT_BOOL, 1},
    {304, "Activate", callOnly, [](Call& call) { ActivateSheet(call, Self(call)); }},
    {307, "ActiveSheet", getOnly,
     [](Call& call) {
         call.ReturnObject(Self(call).sheets[static_cast<std::size_t>(Self(call).activeSheet)]);
     }},
    {430, "Windows", getOnly,
     [](Call& call) { call.ReturnObject(Collect(windowsClass, Self(call).windows, Self(call))); }},
    {442, "Names", getOnly,
     [](Call& call) { call.ReturnObject(Collect(namesClass, Self(call).names, Self(call))); }},
    {494, "Worksheets", getOnly,
     [](Call& call) { call.ReturnObject(Collect(sheetsClass, Self(call).sheets, Self(call))); }},
    {581, "Excel4IntlMacroSheets", getOnly,
     [](Call& call) { call.ReturnObject(Collect(sheetsClass, Self(call).macroSheets, Self(call))); }},
    {634, "RunAutoMacros", callOnly, [](Call& call) { (void)call.Number(0); }, 1},
    {1176, "BuiltinDocumentProperties", getOnly,
     [](Call& call) {
         call.ReturnObject(Collect(documentPropertiesClass, Self(call).properties, Self(call)));
     }},
    {1445, "IsAddin", getPut, VT_BOOL},
    {1925, "SaveAs", callOnly, SaveWorkbookAs, 12},
    {2535, "Excel8CompatibilityMode", getOnly, [](Call& call) { call.Return(Self(call).compatible); }},
};

const Member windowsMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
};

WindowNode& Pane(const Call& call) noexcept {
    return call.As<WindowNode>();
}

std::shared_ptr<Node> TopCell(const Call& call) {
    const WorkbookNode& workbook = Pane(call).workbook;
    auto& sheet = static_cast<SheetNode&>(*workbook.sheets[static_cast<std::size_t>(workbook.activeSheet)]);
    return MakeRangeNode(sheet, {Rect{}});
}

// The last window takes the workbook with it.
void CloseWindow(Call& call) {
    WorkbookNode& workbook = Pane(call).workbook;
    if (workbook.windows.size() == 1) {
        Application(call).CloseWorkbook(workbook);
    } else {
        Remove(workbook.windows, Pane(call));
    }
    call.Return(true);
}

// Windows have handles of their own since Excel 2013, version 15.
void ReturnHandle(Call& call) {
    if (Application(call).version < TEXT("15")) throw Refusal::Result(DISP_E_MEMBERNOTFOUND);
    call.Return(Pane(call).handle);
}

const Member windowMembers[] = {
    {122, "Width", getPut, VT_R8, 800},
    {123, "Height", getPut, VT_R8, 600},
    {126, "Top", getPut, VT_R8},
    {127, "Left", getPut, VT_R8},
    {139, "Caption", getOnly, ReturnName},
    {147, "Selection", getOnly, [](Call& call) { call.ReturnObject(TopCell(call)); }},
    {148, "Application", getOnly, ReturnApplication},
    {277, "Close", callOnly, CloseWindow, 3},
    {280, "NewWindow", callOnly,
     [](Call& call) { call.ReturnObject(OpenWindow(call, Pane(call).workbook).shared_from_this()); }},
    {304, "Activate", callOnly,
     [](Call& call) {
         ActivateSheet(call, Pane(call).workbook);
         call.Return(true);
     }},
    {305, "ActiveCell", getOnly, [](Call& call) { call.ReturnObject(TopCell(call)); }},
    {558, "Visible", getPut, VT_BOOL, 1},
    {1950, "Hwnd", getOnly, ReturnHandle},
};

}  // namespace

const ObjectClass workbooksClass{"Workbooks", nullptr, workbooksMembers};
const ObjectClass workbookClass{"Workbook", &iidWorkbook, workbookMembers};
const ObjectClass windowsClass{"Windows", nullptr, windowsMembers};
const ObjectClass windowClass{"Window", &iidWindow, windowMembers};

}  // namespace excelhost::automation
