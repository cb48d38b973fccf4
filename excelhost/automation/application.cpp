// Application, AutoCorrect and MultiThreadedCalculation.
#include "excelhost/automation/calculation.h"
#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

constexpr IID iidApplication{0x000208D5, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// The numbers of XlReferenceStyle.
constexpr LONG styleA1 = 1;
constexpr LONG styleR1C1 = -4150;

WorkbookNode& ActiveWorkbook(const Call& call) {
    WorkbookNode* active = Application(call).active;
    if (active == nullptr) throw Refusal::Exception(TEXT("No workbook is active."));
    return *active;
}

SheetNode& ActiveSheet(const Call& call) {
    WorkbookNode& workbook = ActiveWorkbook(call);
    return static_cast<SheetNode&>(*workbook.sheets[static_cast<std::size_t>(workbook.activeSheet)]);
}

std::shared_ptr<Node> Selection(const Call& call) {
    const auto& selection = Application(call).selection;
    if (selection != nullptr && !selection->Gone()) return selection;
    return MakeRangeNode(ActiveSheet(call), {Rect{}});
}

// An address of the active workbook; one in another workbook isn't to be had from here.
void TakeRange(Call& call) {
    auto range = ResolveRange(ActiveSheet(call), call.Words(0));
    if (range == nullptr) throw Refusal::Exception(TEXT("Method 'Range' of object '_Global' failed"));
    call.ReturnObject(std::move(range));
}

void UniteRanges(Call& call) {
    std::vector<Rect> areas;
    SheetNode* sheet = nullptr;
    for (unsigned i = 0; i < 2 || call.Has(i); ++i) {
        RangeNode& range = RangeOf(call, call.Argument(i));
        if (sheet != nullptr && sheet != &range.sheet) {
            throw Refusal::Exception(TEXT("Method 'Union' of object '_Global' failed"));
        }
        sheet = &range.sheet;
        areas.insert(areas.end(), range.areas.begin(), range.areas.end());
    }
    call.ReturnObject(MakeRangeNode(*sheet, std::move(areas)));
}

void RunMacro(Call& call) {
    const auto& macros = Application(call).macros;
    const auto macro = macros.find(call.Words(0));
    if (macro == macros.end())
        throw Refusal::Exception(TEXT("Cannot run the macro. It may not be available."));
    std::vector<Variant> arguments;
    for (unsigned i = 1; call.Has(i); ++i) arguments.emplace_back(call.Argument(i));
    call.Return(macro->second(arguments));
}

// From A1 to R1C1 style, reference by reference; any other request gives the formula as it is.
Text ConvertToR1C1(TextView text, const CellReference& base, bool absolute) {
    const SheetLimits limits;
    Text converted;
    bool inText = false;
    bool inName = false;
    while (!text.empty()) {
        if (!inText && !inName) {
            if (auto cell = TakeCell(text, limits)) {
                if (absolute) cell->rowAbsolute = cell->columnAbsolute = true;
                converted += FormatR1C1(*cell, base);
                continue;
            }
        }
        const WCHAR unit = text.front();
        inText ^= unit == TEXT('"');
        inName = (unit >= TEXT('A') && unit <= TEXT('z')) || (unit >= TEXT('0') && unit <= TEXT('9'));
        converted += unit;
        text.remove_prefix(1);
    }
    return converted;
}

void ConvertFormula(Call& call) {
    const Text formula = call.Words(0);
    const bool toR1C1 = call.Number(1) == styleA1 && call.Number(2, styleA1) == styleR1C1;
    if (!toR1C1) return call.Return(Variant(formula));
    CellReference base{1, 1, true, true};
    if (call.Has(4)) {
        const Rect& first = RangeOf(call, call.Argument(4)).First();
        base.row = first.row1, base.column = first.column1;
    }
    call.Return(Variant(ConvertToR1C1(formula, base, call.Number(3, 0) == 1)));
}

void Quit(Call& call) {
    ApplicationNode& application = Application(call);
    while (!application.workbooks.empty()) {
        application.CloseWorkbook(static_cast<WorkbookNode&>(*application.workbooks.back()));
    }
}

CollectionNode::Items AllWindows(const ApplicationNode& application) {
    CollectionNode::Items windows;
    for (const auto& workbook : application.workbooks) {
        const auto& list = static_cast<WorkbookNode&>(*workbook).windows;
        windows.insert(windows.end(), list.begin(), list.end());
    }
    return windows;
}

void ReturnAllWindows(Call& call) {
    const auto list = [&application = Application(call)] { return AllWindows(application); };
    call.ReturnObject(std::make_shared<CollectionNode>(windowsClass, list));
}

void ReturnActiveWindow(Call& call) {
    const auto& windows = ActiveWorkbook(call).windows;
    call.ReturnObject(windows.empty() ? nullptr : windows.front());
}

void CountCalculation(Call& call) {
    ++Application(call).calculations;
}

void ReturnCaller(Call& call) {
    const auto& caller = Application(call).caller;
    if (caller == nullptr) return call.Return(ErrorVariant(xlerrRef));
    call.ReturnObject(caller);
}

const Member applicationMembers[] = {
    {1, "Evaluate", callOnly, [](Call& call) { Evaluate(call, ActiveSheet(call)); }, 1},
    {30, "RegisterXLL", callOnly, [](Call& call) { call.Return(!call.Words(0).empty()); }, 1},
    {122, "Width", getPut, VT_R8, 1024},
    {123, "Height", getPut, VT_R8, 768},
    {126, "Top", getPut, VT_R8},
    {127, "Left", getPut, VT_R8},
    {139, "Caption", getOnly, [](Call& call) { call.Return(TEXT("Excel")); }},
    {147, "Selection", getOnly, [](Call& call) { call.ReturnObject(Selection(call)); }},
    {148, "Application", getOnly, ReturnApplication},
    {197, "Range", getOnly, TakeRange, 2},
    {259, "Run", callOnly, RunMacro, 31},
    {279, "Calculate", callOnly, CountCalculation},
    {302, "Quit", callOnly, Quit},
    {303, "Undo", callOnly, [](Call&) {}},
    {305, "ActiveCell", getOnly,
     [](Call& call) {
         const auto selection = Selection(call);
         const auto& range = static_cast<RangeNode&>(*selection);
         const Rect& first = range.First();
         call.ReturnObject(
             MakeRangeNode(range.sheet, {Rect{first.row1, first.column1, first.row1, first.column1}}));
     }},
    {308, "ActiveWorkbook", getOnly,
     [](Call& call) {
         WorkbookNode* active = Application(call).active;
         call.ReturnObject(active == nullptr ? nullptr : active->shared_from_this());
     }},
    {313, "AltStartupPath", getPut, VT_BSTR},
    {314, "Build", getOnly, [](Call& call) { call.Return(Application(call).build); }},
    {315, "CalculateBeforeSave", getPut, VT_BOOL, 1},
    {316, "Calculation", getPut, VT_I4, -4105},
    {317, "Caller", getOnly, ReturnCaller, 1},
    {325, "ConvertFormula", callOnly, ConvertFormula, 5},
    {343, "DisplayAlerts", getPut, VT_BOOL, 1},
    {344, "DisplayFormulaBar", getPut, VT_BOOL, 1},
    {347, "DisplayStatusBar", getPut, VT_BOOL, 1},
    {361, "Interactive", getPut, VT_BOOL, 1},
    {363, "Iteration", getPut, VT_BOOL},
    {368, "MaxChange", getPut, VT_R8, 0.001},
    {369, "MaxIterations", getPut, VT_I4, 100},
    {380, "ReferenceStyle", getPut, VT_I4, styleA1},
    {382, "ScreenUpdating", getPut, VT_BOOL, 1},
    {385, "StartupPath", getOnly, [](Call& call) { call.Return(Application(call).startupPath); }},
    {386, "StatusBar", getPut, VT_VARIANT},
    {392, "Version", getOnly, [](Call& call) { call.Return(Application(call).version); }},
    {396, "WindowState", getPut, VT_I4, -4143},
    {430, "Windows", getOnly, ReturnAllWindows},
    {442, "Names", getOnly,
     [](Call& call) {
         WorkbookNode& workbook = ActiveWorkbook(call);
         call.ReturnObject(Collect(namesClass, workbook.names, workbook));
     }},
    {549, "AddIns", getOnly,
     [](Call& call) { call.ReturnObject(Collect(addInsClass, Application(call).addIns, call.Self())); }},
    {558, "Visible", getPut, VT_BOOL, 1},
    {572, "Workbooks", getOnly,
     [](Call& call) {
         call.ReturnObject(Collect(workbooksClass, Application(call).workbooks, call.Self()));
     }},
    {759, "ActiveWindow", getOnly, ReturnActiveWindow},
    {779, "Union", callOnly, UniteRanges, 30},
    {1145, "AutoCorrect", getOnly, [](Call& call) { call.ReturnObject(Application(call).autoCorrect); }},
    {1161, "Cursor", getPut, VT_I4, -4143},
    {1202, "RecentFiles", getOnly,
     [](Call& call) {
         call.ReturnObject(Collect(recentFilesClass, Application(call).recentFiles, call.Self()));
     }},
    {1210, "UserControl", getPut, VT_BOOL},
    {1212, "EnableEvents", getPut, VT_BOOL, 1},
    {1805, "CalculateFull", callOnly, CountCalculation},
    {1807, "ShowWindowsInTaskbar", getPut, VT_BOOL, 1},
    {1932, "Ready", getOnly, [](Call& call) { call.Return(true); }},
    {1945, "CalculateFullRebuild", callOnly, CountCalculation},
    {1950, "Hwnd", getOnly, VT_I4, 0x10000},
    {2391, "MultiThreadedCalculation", getOnly,
     [](Call& call) { call.ReturnObject(Application(call).multiThreadedCalculation); }},
};

const Member autoCorrectMembers[] = {
    {2294, "AutoExpandListRange", getPut, VT_BOOL, 1},
    {2642, "AutoFillFormulasInLists", getPut, VT_BOOL, 1},
};

const Member multiThreadedCalculationMembers[] = {
    {600, "Enabled", getPut, VT_BOOL, 1},
    {2766, "ThreadMode", getPut, VT_I4},
    {2767, "ThreadCount", getPut, VT_I4, 4},
};

}  // namespace

const ObjectClass applicationClass{"Application", &iidApplication, applicationMembers};
const ObjectClass autoCorrectClass{"AutoCorrect", nullptr, autoCorrectMembers};
const ObjectClass multiThreadedCalculationClass{"MultiThreadedCalculation", nullptr,
                                                multiThreadedCalculationMembers};

ApplicationNode& Application(const Call& call) noexcept {
    return call.Server().Model();
}

void ReturnApplication(Call& call) {
    call.ReturnObject(Application(call).shared_from_this());
}

void CountItems(Call& call) {
    call.Return(call.As<CollectionNode>().items().size());
}

void TakeItem(Call& call) {
    const auto items = call.As<CollectionNode>().items();
    const VARIANT& index = call.Argument(0);
    auto found = items.end();
    if (index.vt == VT_BSTR) {
        found = std::ranges::find_if(
            items, [&](const auto& item) { return SameName(item->Name(), BstrText(index)); });
    } else if (const LONG position = call.Number(0);
               position >= 1 && static_cast<std::size_t>(position) <= items.size()) {
        found = items.begin() + (position - 1);
    }
    if (found == items.end()) throw Refusal::Exception(TEXT("Invalid index."), DISP_E_BADINDEX);
    call.ReturnObject(*found);
}

void ReturnName(Call& call) {
    call.Return(call.Self().Name());
}

std::shared_ptr<Node> Collect(const ObjectClass& itsClass, const CollectionNode::Items& list, Node& owner) {
    return std::make_shared<CollectionNode>(
        itsClass, [&list] { return list; }, owner.shared_from_this());
}

void Remove(CollectionNode::Items& list, Node& node) {
    node.gone = true;
    std::erase_if(list, [&](const auto& each) { return each.get() == &node; });
}

std::unique_ptr<Object> MakeObject(AutomationServer& server, std::shared_ptr<Node> node) {
    return std::make_unique<ComObject<IDispatch>>(server, std::move(node));
}

}  // namespace excelhost::automation
