// The small classes: names, tables and their columns, add-ins, hyperlinks, pivot tables, comments and recent
// files.
#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

constexpr IID iidName{0x000208B9, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

NameNode& DefinedName(const Call& call) noexcept {
    return call.As<NameNode>();
}
ListObjectNode& List(const Call& call) noexcept {
    return call.As<ListObjectNode>();
}
CommentNode& Comment(const Call& call) noexcept {
    return call.As<CommentNode>();
}

// A collection whose items are read and no more.
const Member readOnlyMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
};

// Names.

void TakeDefinedName(Call& call) {
    TakeItem(call);
}

void AddDefinedName(Call& call) {
    auto& collection = call.As<CollectionNode>();
    Node& owner = *collection.owner;
    const bool onSheet = owner.objectClass == &worksheetClass;
    SheetNode* sheet = onSheet ? static_cast<SheetNode*>(&owner) : nullptr;
    WorkbookNode& workbook = onSheet ? sheet->workbook : static_cast<WorkbookNode&>(owner);
    const Text name = call.Words(0);
    if (name.empty() || name.find(TEXT(' ')) != Text::npos || ParseAddress(name, SheetLimits{})) {
        throw Refusal::Exception(TEXT("The syntax of this name isn't correct."));
    }
    call.ReturnObject(workbook.AddName(name, call.Words(1), sheet).shared_from_this());
}

void LocalName(Call& call) {
    if (!call.IsPut()) return ReturnName(call);
    DefinedName(call).name = call.ValueAs(VT_BSTR).AsText();
}

void RefersTo(Call& call) {
    if (!call.IsPut()) return call.Return(DefinedName(call).refersTo);
    DefinedName(call).refersTo = call.ValueAs(VT_BSTR).AsText();
}

void RefersToR1C1(Call& call) {
    const TextView text = DefinedName(call).refersTo;
    const auto address = ParseAddress(text.empty() ? text : text.substr(1), SheetLimits{});
    if (!address) return call.Return(Text(text));
    Text converted = TEXT("=");
    if (!address->sheet.empty()) converted += SheetPrefix(address->workbook, address->sheet);
    const Rect& rect = address->areas.front();
    converted += FormatR1C1({rect.row1, rect.column1, true, true}, {});
    if (rect.Cells() > 1) converted += TEXT(':') + FormatR1C1({rect.row2, rect.column2, true, true}, {});
    call.Return(converted);
}

void ReturnNameParent(Call& call) {
    const NameNode& name = DefinedName(call);
    if (name.sheet != nullptr) return call.ReturnObject(name.sheet->shared_from_this());
    call.ReturnObject(name.workbook->shared_from_this());
}

const Member namesMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", callOnly, TakeDefinedName, 3},
    {181, "Add", callOnly, AddDefinedName, 11},
};

const Member nameMembers[] = {
    {110, "Name", getOnly, ReturnName},
    {117, "Delete", callOnly, [](Call& call) { Remove(DefinedName(call).workbook->names, call.Self()); }},
    {150, "Parent", getOnly, ReturnNameParent},
    {558, "Visible", getPut, VT_BOOL, 1},
    {937, "NameLocal", getPut, LocalName},
    {938, "RefersTo", getPut, RefersTo},
    {939, "RefersToLocal", getPut, RefersTo},
    {941, "RefersToR1C1Local", getOnly, RefersToR1C1},
};

// Tables.

void ReturnBody(Call& call) {
    Rect body = List(call).rect;
    ++body.row1;
    call.ReturnObject(body.Rows() < 1 ? nullptr : MakeRangeNode(List(call).sheet, {body}));
}

void ReturnHeader(Call& call) {
    Rect header = List(call).rect;
    header.row2 = header.row1;
    call.ReturnObject(MakeRangeNode(List(call).sheet, {header}));
}

const Member listObjectMembers[] = {
    {110, "Name", getOnly, ReturnName},
    {705, "DataBodyRange", getOnly, ReturnBody},
    {2313, "HeaderRowRange", getOnly, ReturnHeader},
    {2315, "ListColumns", getOnly,
     [](Call& call) { call.ReturnObject(Collect(listColumnsClass, List(call).columns, call.Self())); }},
    {2677, "DisplayName", getOnly, ReturnName},
};

const Member listColumnMembers[] = {
    {110, "Name", getOnly, ReturnName},
};

// Add-ins.

Text FileOf(const Text& path) {
    return path.substr(path.rfind(TEXT('\\')) + 1);
}

void AddAddIn(Call& call) {
    (void)call.Flag(1, true);  // whether to copy the file
    auto addIn = std::make_shared<NamedNode>(addInClass, call.Words(0));
    Application(call).addIns.push_back(addIn);
    call.ReturnObject(std::move(addIn));
}

const Member addInsMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
    {181, "Add", callOnly, AddAddIn, 2},
};

const Member addInMembers[] = {
    {110, "Name", getOnly, [](Call& call) { call.Return(FileOf(call.Self().Name())); }},
    {289, "FullName", getOnly, ReturnName},
    {550, "Installed", getPut, VT_BOOL},
};

// Hyperlinks, pivot tables.

const Member hyperlinkMembers[] = {
    {236, "Address", getOnly, ReturnName},
};

const Member pivotTablesMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", callOnly, TakeItem, 1},
};

const Member pivotTableMembers[] = {
    {717, "RefreshTable", callOnly, [](Call& call) { call.Return(true); }},
};

// Comments.

// Writes over the text, or into it from `start` on: with overwrite over what stands there, else ahead of it.
void CommentText(Call& call) {
    Text& text = Comment(call).text;
    if (call.Has(0)) {
        const Text words = call.Words(0);
        const LONG start = call.Number(1, 1);
        if (start < 1) throw Refusal::Exception(TEXT("Unable to get the Text property of the Comment class"));
        const std::size_t at = std::min(static_cast<std::size_t>(start - 1), text.size());
        const bool overwrite = call.Flag(2, true);
        if (!call.Has(1)) {
            text = words;
        } else {
            text.replace(at, overwrite ? words.size() : 0, words);
        }
    }
    call.Return(text);
}

const Member commentMembers[] = {
    {117, "Delete", callOnly, [](Call& call) { call.Self().gone = true; }},
    {138, "Text", callOnly, CommentText, 3},
    {558, "Visible", getPut, VT_BOOL},
    {1582, "Shape", getOnly, [](Call& call) { call.ReturnObject(Comment(call).shape); }},
};

const Member shapeMembers[] = {
    {122, "Width", getPut, VT_R4, 108},
};

// Recent files.

void AddRecentFile(Call& call) {
    auto file = std::make_shared<NamedNode>(recentFileClass, call.Words(0));
    auto& files = Application(call).recentFiles;
    files.insert(files.begin(), file);
    call.ReturnObject(std::move(file));
}

const Member recentFilesMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
    {181, "Add", callOnly, AddRecentFile, 1},
};

const Member recentFileMembers[] = {
    {110, "Name", getOnly, ReturnName},
    {117, "Delete", callOnly, [](Call& call) { Remove(Application(call).recentFiles, call.Self()); }},
};

}  // namespace

const ObjectClass namesClass{"Names", nullptr, namesMembers};
const ObjectClass nameClass{"Name", &iidName, nameMembers};
const ObjectClass listObjectsClass{"ListObjects", nullptr, readOnlyMembers};
const ObjectClass listObjectClass{"ListObject", nullptr, listObjectMembers};
const ObjectClass listColumnsClass{"ListColumns", nullptr, readOnlyMembers};
const ObjectClass listColumnClass{"ListColumn", nullptr, listColumnMembers};
const ObjectClass addInsClass{"AddIns", nullptr, addInsMembers};
const ObjectClass addInClass{"AddIn", nullptr, addInMembers};
const ObjectClass hyperlinksClass{"Hyperlinks", nullptr, readOnlyMembers};
const ObjectClass hyperlinkClass{"Hyperlink", nullptr, hyperlinkMembers};
const ObjectClass pivotTablesClass{"PivotTables", nullptr, pivotTablesMembers};
const ObjectClass pivotTableClass{"PivotTable", nullptr, pivotTableMembers};
const ObjectClass commentClass{"Comment", nullptr, commentMembers};
const ObjectClass shapeClass{"Shape", nullptr, shapeMembers};
const ObjectClass recentFilesClass{"RecentFiles", nullptr, recentFilesMembers};
const ObjectClass recentFileClass{"RecentFile", nullptr, recentFileMembers};

}  // namespace excelhost::automation
