// Sheets and Worksheet.
#include "excelhost/automation/calculation.h"
#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

constexpr IID iidWorksheet{0x000208D8, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

constexpr std::size_t longestSheetName = 31;

SheetNode& Self(const Call& call) noexcept {
    return call.As<SheetNode>();
}

void CheckSheetName(const SheetNode& sheet, const Text& name) {
    if (name.empty() || name.size() > longestSheetName ||
        name.find_first_of(TEXT("[]:?*/\\")) != Text::npos) {
        throw Refusal::Exception(TEXT("You typed an invalid name for a sheet."));
    }
    const SheetNode* other = sheet.workbook.FindSheet(name);
    if (other != nullptr && other != &sheet) {
        throw Refusal::Exception(TEXT("That name is already taken. Try a different one."));
    }
}

void SheetName(Call& call) {
    if (!call.IsPut()) return ReturnName(call);
    const Text name = call.ValueAs(VT_BSTR).AsText();
    CheckSheetName(Self(call), name);
    Self(call).name = name;
}

void TakeRange(Call& call) {
    auto range = ResolveRange(Self(call), call.Words(0));
    if (range == nullptr || &static_cast<RangeNode&>(*range).sheet != &Self(call)) {
        throw Refusal::Exception(TEXT("Method 'Range' of object '_Worksheet' failed"));
    }
    call.ReturnObject(std::move(range));
}

std::ptrdiff_t Position(const SheetNode& sheet) {
    const auto& sheets = sheet.workbook.sheets;
    return std::ranges::find_if(sheets, [&](const auto& each) { return each.get() == &sheet; }) -
           sheets.begin();
}

void DeleteSheet(Call& call) {
    WorkbookNode& workbook = Self(call).workbook;
    if (workbook.sheets.size() == 1) {
        throw Refusal::Exception(TEXT("A workbook must contain at least one visible worksheet."));
    }
    workbook.deletedSheets.push_back(Self(call).shared_from_this());
    Remove(workbook.sheets, Self(call));
    workbook.activeSheet = std::min(workbook.activeSheet, static_cast<LONG>(workbook.sheets.size()) - 1);
}

// The names of this sheet alone.
void ReturnNames(Call& call) {
    SheetNode& sheet = Self(call);
    const auto list = [&sheet] {
        CollectionNode::Items names;
        for (const auto& name : sheet.workbook.names) {
            if (static_cast<NameNode&>(*name).sheet == &sheet) names.push_back(name);
        }
        return names;
    };
    call.ReturnObject(std::make_shared<CollectionNode>(namesClass, list, sheet.shared_from_this()));
}

const SheetNode* SheetBehind(const Call& call, unsigned index) {
    if (!call.Has(index)) return nullptr;
    const VARIANT& argument = call.Argument(index);
    const Object* object = argument.vt == VT_DISPATCH ? call.Server().Find(argument.pdispVal) : nullptr;
    if (object == nullptr || &object->Class() != &worksheetClass) throw Refusal::Result(DISP_E_TYPEMISMATCH);
    return static_cast<const SheetNode*>(object->Model());
}

// Ahead of the active sheet where neither before nor after is told; the new one becomes the active one.
void AddSheets(Call& call) {
    auto& workbook = static_cast<WorkbookNode&>(*call.As<CollectionNode>().owner);
    std::ptrdiff_t place = workbook.activeSheet;
    if (const SheetNode* before = SheetBehind(call, 0)) place = Position(*before);
    if (const SheetNode* after = SheetBehind(call, 1)) place = Position(*after) + 1;
    for (LONG count = call.Number(2, 1); count > 0; --count) {
        std::size_t number = workbook.sheets.size();
        Text name;
        do {
            name = TEXT("Sheet") + Decimal(static_cast<LONG>(++number));
        } while (workbook.FindSheet(name) != nullptr);
        workbook.AddSheet(name);
        std::rotate(workbook.sheets.begin() + place, workbook.sheets.end() - 1, workbook.sheets.end());
    }
    workbook.activeSheet = static_cast<LONG>(place);
    call.ReturnObject(workbook.sheets[static_cast<std::size_t>(place)]);
}

void ActivateSheet(Call& call) {
    Self(call).workbook.activeSheet = static_cast<LONG>(Position(Self(call)));
    Application(call).active = &Self(call).workbook;
    Application(call).selection = nullptr;
}

const Member sheetsMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
    {181, "Add", callOnly, AddSheets, 4},
};

const Member worksheetMembers[] = {
    {1, "Evaluate", callOnly, [](Call& call) { Evaluate(call, Self(call)); }, 1},
    {110, "Name", getPut, SheetName},
    {117, "Delete", callOnly, DeleteSheet},
    {148, "Application", getOnly, ReturnApplication},
    {150, "Parent", getOnly, [](Call& call) { call.ReturnObject(Self(call).workbook.shared_from_this()); }},
    {197, "Range", getOnly, TakeRange, 2},
    {238, "Cells", getOnly,
     [](Call& call) { call.ReturnObject(MakeRangeNode(Self(call), {Self(call).Whole()})); }},
    {279, "Calculate", callOnly, [](Call& call) { ++Application(call).calculations; }},
    {292, "ProtectContents", getOnly, [](Call& call) { call.Return(Self(call).protectedContents); }},
    {304, "Activate", callOnly, ActivateSheet},
    {412, "UsedRange", getOnly,
     [](Call& call) { call.ReturnObject(MakeRangeNode(Self(call), {Self(call).Used()})); }},
    {442, "Names", getOnly, ReturnNames},
    {486, "Index", getOnly, [](Call& call) { call.Return(Position(Self(call)) + 1); }},
    {558, "Visible", getPut, VT_I4, -1},
    {690, "PivotTables", callOnly,
     [](Call& call) { call.ReturnObject(Collect(pivotTablesClass, Self(call).pivotTables, Self(call))); }, 1},
    {2259, "ListObjects", getOnly,
     [](Call& call) { call.ReturnObject(Collect(listObjectsClass, Self(call).listObjects, Self(call))); }},
};

const Member macroSheetMembers[] = {
    {110, "Name", getOnly, ReturnName},
};

}  // namespace

const ObjectClass sheetsClass{"Sheets", nullptr, sheetsMembers};
const ObjectClass worksheetClass{"Worksheet", &iidWorksheet, worksheetMembers};
// A sheet of macros isn't a worksheet: it has no such interface.
const ObjectClass macroSheetClass{"MacroSheet", nullptr, macroSheetMembers};

void Evaluate(Call& call, SheetNode& sheet) {
    const Text expression = call.Words(0);
    if (auto range = ResolveRange(sheet, expression)) return call.ReturnObject(std::move(range));
    const Text formula = expression.starts_with(TEXT('=')) ? expression : TEXT("=") + expression;
    call.Return(CalculateText(sheet, 1, 1, formula));
}

}  // namespace excelhost::automation
