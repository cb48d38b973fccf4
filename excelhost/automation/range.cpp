// Range, Areas and Interior: where they lie, and what hangs on their cells.
#include "excelhost/automation/block.h"
#include "excelhost/automation/calculation.h"
#include "excelhost/automation/rangecalls.h"
#include "excelhost/automation/server.h"

#include <algorithm>
#include <cmath>

namespace excelhost::automation::ranges {

RangeNode& Self(const Call& call) noexcept {
    return call.As<RangeNode>();
}
SheetNode& Sheet(const Call& call) noexcept {
    return Self(call).sheet;
}
Cell& FirstCell(const Call& call) {
    return Sheet(call).At(Self(call).First().row1, Self(call).First().column1);
}

Refusal UnableToGet(const Call& call) {
    const std::string_view member = call.CalledMember().name;
    return Refusal::Exception((TEXT("Unable to get the ") + Text(member.begin(), member.end()) +
                               TEXT(" property of the Range class"))
                                  .c_str());
}

void ReturnRect(Call& call, const Rect& rect) {
    const SheetLimits limits = Sheet(call).Limits();
    if (rect.row1 < 1 || rect.column1 < 1 || rect.row2 > limits.rows || rect.column2 > limits.columns ||
        rect.Rows() < 1 || rect.Columns() < 1) {
        throw Refusal::Exception(TEXT("Application-defined or object-defined error"));
    }
    call.ReturnObject(MakeRangeNode(Sheet(call), {rect}));
}

Text ShownText(const Variant& value) {
    return value.Type() == VT_ERROR ? Wide(ErrorName((value.Get().scode & 0xFFFF) - 2000)) : value.AsText();
}

}  // namespace excelhost::automation::ranges

namespace excelhost::automation {
namespace {

using namespace ranges;

constexpr IID iidRange{0x00020846, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

constexpr LONG styleR1C1 = -4150;  // of XlReferenceStyle

constexpr DISPID dispidFormula = 261;

// Where the range lies and what is part of it.

Text RelativeOrAbsoluteAddress(const Call& call) {
    const bool rowAbsolute = call.Flag(0, true);
    const bool columnAbsolute = call.Flag(1, true);
    const bool r1c1 = call.Number(2, 1) == styleR1C1;
    Text text;
    for (const Rect& area : Self(call).areas) {
        if (!text.empty()) text += TEXT(',');
        if (!r1c1) {
            text += FormatA1(area, rowAbsolute, columnAbsolute, Sheet(call).Limits());
            continue;
        }
        text += FormatR1C1({area.row1, area.column1, rowAbsolute, columnAbsolute}, {1, 1});
        if (area.Cells() > 1) {
            text += TEXT(':') + FormatR1C1({area.row2, area.column2, rowAbsolute, columnAbsolute}, {1, 1});
        }
    }
    return text;
}

void ReturnAddress(Call& call) {
    const bool external = call.Flag(3, false);
    const Text prefix = external ? SheetPrefix(Sheet(call).workbook.name, Sheet(call).name) : Text();
    call.Return(prefix + RelativeOrAbsoluteAddress(call));
}

void CountCells(Call& call) {
    const std::int64_t count = Self(call).Count();
    if (count > std::int64_t{0x7FFFFFFF})
        throw Refusal::Exception(TEXT("Overflow"), static_cast<SCODE>(0x800A0006));
    call.Return(static_cast<LONG>(count));
}

void TakeCellItem(Call& call) {
    const RangeNode& range = Self(call);
    const Rect& first = range.First();
    const LONG index = call.Number(0);
    if (call.Has(1)) {
        const LONG row = first.row1 + index - 1;
        const LONG column = first.column1 + call.Number(1) - 1;
        return ReturnRect(call, {row, column, row, column});
    }
    if (range.unit == RangeNode::Unit::rows) {
        return ReturnRect(call,
                          {first.row1 + index - 1, first.column1, first.row1 + index - 1, first.column2});
    }
    if (range.unit == RangeNode::Unit::columns) {
        return ReturnRect(call,
                          {first.row1, first.column1 + index - 1, first.row2, first.column1 + index - 1});
    }
    const LONG row = first.row1 + (index - 1) / first.Columns();
    const LONG column = first.column1 + (index - 1) % first.Columns();
    ReturnRect(call, {row, column, row, column});
}

void ResizeRange(Call& call) {
    Rect rect = Self(call).First();
    rect.row2 = rect.row1 + call.Number(0, rect.Rows()) - 1;
    rect.column2 = rect.column1 + call.Number(1, rect.Columns()) - 1;
    ReturnRect(call, rect);
}

void OffsetRange(Call& call) {
    const LONG rows = call.Number(0, 0);
    const LONG columns = call.Number(1, 0);
    const Rect& rect = Self(call).First();
    ReturnRect(call, {rect.row1 + rows, rect.column1 + columns, rect.row2 + rows, rect.column2 + columns});
}

void ReturnUnits(Call& call, RangeNode::Unit unit) {
    call.ReturnObject(MakeRangeNode(Sheet(call), Self(call).areas, unit));
}

void ReturnAreas(Call& call) {
    const auto range = Self(call).shared_from_this();
    const auto list = [&node = Self(call)] {
        CollectionNode::Items areas;
        for (const Rect& area : node.areas) areas.push_back(MakeRangeNode(node.sheet, {area}));
        return areas;
    };
    call.ReturnObject(std::make_shared<CollectionNode>(areasClass, list, range));
}

// What hangs on cells.

void ReturnDefinedName(Call& call) {
    for (const auto& node : Sheet(call).workbook.names) {
        const auto& name = static_cast<NameNode&>(*node);
        const auto range = ResolveRange(Sheet(call), name.name);
        if (range == nullptr) continue;
        const auto& named = static_cast<RangeNode&>(*range);
        if (&named.sheet == &Sheet(call) && named.areas == Self(call).areas) return call.ReturnObject(node);
    }
    throw UnableToGet(call);
}

void ReturnListObject(Call& call) {
    const auto& lists = Sheet(call).listObjects;
    const auto found = std::ranges::find_if(lists, [&](const auto& list) {
        return static_cast<ListObjectNode&>(*list).rect.Meets(Self(call).First());
    });
    call.ReturnObject(found == lists.end() ? nullptr : *found);
}

void ReturnHyperlinks(Call& call) {
    const auto list = [&sheet = Sheet(call), rect = Self(call).First()] {
        CollectionNode::Items links;
        for (const auto& link : sheet.hyperlinks) {
            if (static_cast<HyperlinkNode&>(*link).rect.Meets(rect)) links.push_back(link);
        }
        return links;
    };
    call.ReturnObject(
        std::make_shared<CollectionNode>(hyperlinksClass, list, Sheet(call).shared_from_this()));
}

void AddCellComment(Call& call) {
    Cell& cell = FirstCell(call);
    if (cell.comment != nullptr && !cell.comment->gone) {
        throw Refusal::Exception(TEXT("Application-defined or object-defined error"));
    }
    cell.comment = std::make_shared<CommentNode>(call.Has(0) ? call.Words(0) : Text());
    call.ReturnObject(cell.comment);
}

void ReturnComment(Call& call) {
    const Rect& first = Self(call).First();
    const auto& comment = Sheet(call).Look(first.row1, first.column1).comment;
    call.ReturnObject(comment == nullptr || comment->gone ? nullptr : comment);
}

void ReturnInterior(Call& call) {
    auto interior = std::make_shared<RangeNode>(Sheet(call), Self(call).areas);
    interior->objectClass = &interiorClass;
    call.ReturnObject(std::move(interior));
}

void CellId(Call& call) {
    if (!call.IsPut()) return call.Return(FirstCell(call).id);
    FirstCell(call).id = call.ValueAs(VT_BSTR).AsText();
}

void SelectRange(Call& call) {
    Application(call).selection = std::static_pointer_cast<RangeNode>(Self(call).shared_from_this());
    call.Return(true);
}

void ReturnCovering(Call& call, const std::vector<Rect>& rectangles, const WCHAR* refusal) {
    const Rect* rect = Covering(Self(call), rectangles);
    if (rect == nullptr) throw Refusal::Exception(refusal);
    ReturnRect(call, *rect);
}

void ReturnSpillParent(Call& call) {
    const Rect* spill = Covering(Self(call), Sheet(call).spills);
    if (spill == nullptr) throw UnableToGet(call);
    ReturnRect(call, {spill->row1, spill->column1, spill->row1, spill->column1});
}

void ReturnSpill(Call& call) {
    const Rect* spill = Covering(Self(call), Sheet(call).spills);
    const Rect& first = Self(call).First();
    if (spill == nullptr || spill->row1 != first.row1 || spill->column1 != first.column1)
        throw UnableToGet(call);
    ReturnRect(call, *spill);
}

void ReturnMergeArea(Call& call) {
    const Rect& first = Self(call).First();
    const Rect* merged = Covering(Self(call), Sheet(call).merged);
    ReturnRect(call,
               merged != nullptr ? *merged : Rect{first.row1, first.column1, first.row1, first.column1});
}

const Member rangeMembers[] = {
    {6, "Value", getPut, ValueProperty, 1},
    {110, "Name", getOnly, ReturnDefinedName},
    {111, "Clear", callOnly, [](Call& call) { ClearCells(call, true); }},
    {113, "ClearContents", callOnly, [](Call& call) { ClearCells(call, false); }},
    {117, "Delete", callOnly, DeleteCells, 1},
    {118, "Count", getOnly, CountCells},
    {129, "Interior", getOnly, ReturnInterior},
    {138, "Text", getOnly, ReturnText},
    {148, "Application", getOnly, ReturnApplication},
    {150, "Parent", getOnly, [](Call& call) { call.ReturnObject(Sheet(call).shared_from_this()); }},
    {170, "Item", getOnly, TakeCellItem, 2},
    {193, "NumberFormat", getPut, NumberFormat},
    {208, "MergeCells", getOnly, [](Call& call) { call.Return(Covered(Self(call), Sheet(call).merged)); }},
    {226, "Replace", callOnly, ReplaceText, 8},
    {235, "Select", callOnly, SelectRange},
    {236, "Address", getOnly, ReturnAddress, 5},
    {238, "Cells", getOnly, [](Call& call) { ReturnUnits(call, RangeNode::Unit::cells); }},
    {240, "Column", getOnly, [](Call& call) { call.Return(Self(call).First().column1); }},
    {241, "Columns", getOnly, [](Call& call) { ReturnUnits(call, RangeNode::Unit::columns); }},
    {254, "Offset", getOnly, OffsetRange, 2},
    {256, "Resize", getOnly, ResizeRange, 2},
    {257, "Row", getOnly, [](Call& call) { call.Return(Self(call).First().row1); }},
    {258, "Rows", getOnly, [](Call& call) { ReturnUnits(call, RangeNode::Unit::rows); }},
    {dispidFormula, "Formula", getPut, FormulaProperty},
    {262, "FormulaHidden", getPut, HiddenProperty},
    {263, "FormulaLocal", getPut, FormulaProperty},
    {266, "HasArray", getOnly, [](Call& call) { call.Return(Covered(Self(call), Sheet(call).arrays)); }},
    {267, "HasFormula", getOnly,
     [](Call& call) {
         call.Return(Uniform(Self(call), [](const Cell& cell) { return !cell.formula.empty(); }));
     }},
    {269, "Locked", getPut, LockedProperty},
    {304, "Activate", callOnly, SelectRange},
    {348, "Worksheet", getOnly, [](Call& call) { call.ReturnObject(Sheet(call).shared_from_this()); }},
    {398, "Find", callOnly, FindText, 9},
    {399, "FindNext", callOnly, FindNextText, 1},
    {410, "SpecialCells", callOnly, SpecialCells, 2},
    {437, "AddressLocal", getOnly, ReturnAddress, 5},
    {472, "GoalSeek", callOnly, GoalSeek, 2},
    {501, "CurrentArray", getOnly,
     [](Call& call) { ReturnCovering(call, Sheet(call).arrays, TEXT("No cells were found.")); }},
    {551, "Copy", callOnly, [](Call& call) { call.Return(true); }, 1},
    {568, "Areas", getOnly, ReturnAreas},
    {586, "FormulaArray", getPut, FormulaArrayProperty},
    {910, "Comment", getOnly, ReturnComment},
    {1385, "MergeArea", getOnly, ReturnMergeArea},
    {1388, "Value2", getPut, ValueProperty},
    {1389, "AddComment", callOnly, AddCellComment, 1},
    {1393, "Hyperlinks", getOnly, ReturnHyperlinks},
    {1580, "Formula2", getPut, FormulaProperty},
    {1813, "ID", getPut, CellId},
    {2257, "ListObject", getOnly, ReturnListObject},
    {3295, "HasSpill", getOnly, [](Call& call) { call.Return(Covered(Self(call), Sheet(call).spills)); }},
    {3296, "SpillParent", getOnly, ReturnSpillParent},
    {3297, "SpillingToRange", getOnly, ReturnSpill},
    {3300, "Formula2Local", getPut, FormulaProperty},
};

const Member areasMembers[] = {
    {118, "Count", getOnly, CountItems},
    {170, "Item", getOnly, TakeItem, 1},
};

void ColorIndex(Call& call) {
    if (!call.IsPut()) return call.Return(FirstCell(call).colorIndex);
    WriteBlock(Self(call), call.Value(), [&](LONG row, LONG column, const VARIANT& color) {
        Sheet(call).At(row, column).colorIndex = Variant(color);
    });
}

const Member interiorMembers[] = {
    {97, "ColorIndex", getPut, ColorIndex},
};

}  // namespace

const ObjectClass rangeClass{"Range", &iidRange, rangeMembers};
const ObjectClass areasClass{"Areas", nullptr, areasMembers};
const ObjectClass interiorClass{"Interior", nullptr, interiorMembers};

std::shared_ptr<Node> MakeRangeNode(SheetNode& sheet, std::vector<Rect> areas, RangeNode::Unit unit) {
    return std::make_shared<RangeNode>(sheet, std::move(areas), unit);
}

std::shared_ptr<Node> ResolveRange(SheetNode& sheet, TextView text) {
    const WorkbookNode& workbook = sheet.workbook;
    auto address = ParseAddress(text, sheet.Limits());
    if (!address) {
        const auto named = std::ranges::find_if(
            workbook.names, [&](const auto& name) { return SameName(name->Name(), text); });
        if (named == workbook.names.end()) return nullptr;
        const TextView target = static_cast<NameNode&>(**named).refersTo;
        if (target.starts_with(TEXT('='))) address = ParseAddress(target.substr(1), sheet.Limits());
    }
    if (!address || (!address->workbook.empty() && !SameName(address->workbook, workbook.name)))
        return nullptr;
    SheetNode* target = address->sheet.empty() ? &sheet : workbook.FindSheet(address->sheet);
    return target == nullptr ? nullptr : MakeRangeNode(*target, std::move(address->areas));
}

RangeNode& RangeOf(const Call& call, const VARIANT& argument) {
    const Object* object = argument.vt == VT_DISPATCH ? call.Server().Find(argument.pdispVal) : nullptr;
    if (object == nullptr || &object->Class() != &rangeClass) throw Refusal::Result(DISP_E_TYPEMISMATCH);
    return static_cast<RangeNode&>(*object->Model());
}

}  // namespace excelhost::automation
