// Range, Areas and Interior: reading and writing of cells.
#include "excelhost/automation/block.h"
#include "excelhost/automation/calculation.h"
#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"

#include <algorithm>
#include <cmath>

namespace excelhost::automation {
namespace {

constexpr IID iidRange{0x00020846, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// The numbers of Excel's enumerations that are answered to.
constexpr LONG styleR1C1 = -4150;
constexpr LONG lookWhole = 1;
constexpr LONG kindConstants = 2, kindBlanks = 4, kindLastCell = 11, kindFormulas = -4123,
               kindComments = -4144;

constexpr DISPID dispidFormula = 261;

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

// Values and formulas.

void WriteCell(SheetNode& sheet, LONG row, LONG column, const VARIANT& value) {
    Cell& cell = sheet.At(row, column);
    const bool formula = value.vt == VT_BSTR && BstrText(value).starts_with(TEXT('='));
    cell.formula = formula ? Text(BstrText(value)) : Text();
    cell.value = formula ? Variant() : Variant(value);
}

void WriteCells(const RangeNode& range, const VARIANT& value) {
    SheetNode& sheet = range.sheet;
    for (const Rect& area : range.areas) CheckWritable(sheet, area);
    const std::size_t limit = sheet.workbook.compatible ? 1024 : 8192;
    if (value.vt == VT_BSTR) CheckFormula(BstrText(value), limit);
    for (const Rect& area : range.areas) {
        std::erase_if(sheet.arrays, [&](const Rect& array) { return array.Meets(area); });
        std::erase_if(sheet.spills, [&](const Rect& spill) { return spill.Meets(area); });
    }
    WriteBlock(range, value,
               [&](LONG row, LONG column, const VARIANT& each) { WriteCell(sheet, row, column, each); });
}

void ValueProperty(Call& call) {
    if (call.IsPut()) return WriteCells(Self(call), call.Value());
    call.Return(ReadBlock(Self(call), [&](LONG row, LONG column) { return Sheet(call).Value(row, column); }));
}

Variant FormulaOf(const SheetNode& sheet, LONG row, LONG column) {
    const Cell& cell = sheet.Look(row, column);
    return Variant(cell.formula.empty() ? ShownText(cell.value) : cell.formula);
}

// A protected sheet gives away no formula of a hidden cell.
void CheckReadable(const Call& call) {
    const Variant hidden = Uniform(Self(call), [](const Cell& cell) { return cell.hidden; });
    const bool none = hidden.Type() == VT_BOOL && hidden.Get().boolVal == VARIANT_FALSE;
    if (Sheet(call).protectedContents && !none) throw UnableToGet(call);
}

void FormulaProperty(Call& call) {
    if (call.IsPut()) return WriteCells(Self(call), call.Value());
    CheckReadable(call);
    call.Return(
        ReadBlock(Self(call), [&](LONG row, LONG column) { return FormulaOf(Sheet(call), row, column); }));
}

void FormulaArrayProperty(Call& call) {
    const Rect& rect = Self(call).First();
    SheetNode& sheet = Sheet(call);
    if (!call.IsPut()) {
        CheckReadable(call);
        const Rect* array = Covering(Self(call), sheet.arrays);
        const bool whole =
            rect.Cells() == 1 || (array != nullptr && array->Contains(rect.row2, rect.column2));
        return call.Return(whole ? FormulaOf(sheet, rect.row1, rect.column1) : Variant::Null());
    }
    const Text formula = call.ValueAs(VT_BSTR).AsText();
    CheckWritable(sheet, rect);
    CheckFormula(formula, 255);
    if (!formula.starts_with(TEXT('='))) return WriteCells(Self(call), Variant(formula).Get());
    std::erase_if(sheet.arrays, [&](const Rect& each) { return each.Meets(rect); });
    sheet.PutArray(rect, formula);
}

void ReturnText(Call& call) {
    const RangeNode& range = Self(call);
    const Text first = ShownText(Sheet(call).Value(range.First().row1, range.First().column1));
    const bool same =
        range.Count() == 1 || std::ranges::all_of(Sheet(call).cells, [&](const auto& entry) {
            const auto [row, column] = entry.first;
            return !range.First().Contains(row, column) || ShownText(Sheet(call).Value(row, column)) == first;
        });
    call.Return(same ? Variant(first) : Variant::Null());
}

// A property of cells that is put for all of them and told as Uniform does.
template <bool Cell::*Property>
void FlagProperty(Call& call) {
    if (!call.IsPut())
        return call.Return(Uniform(Self(call), [](const Cell& cell) { return cell.*Property; }));
    const bool flag = call.ValueAs(VT_BOOL).Get().boolVal != VARIANT_FALSE;
    WriteBlock(Self(call), call.Value(),
               [&](LONG row, LONG column, const VARIANT&) { Sheet(call).At(row, column).*Property = flag; });
}

void NumberFormat(Call& call) {
    if (!call.IsPut()) {
        const Text first = Sheet(call).Look(Self(call).First().row1, Self(call).First().column1).format;
        const Variant same = Uniform(Self(call), [&](const Cell& cell) { return cell.format == first; });
        return call.Return(same.Type() == VT_NULL ? same : Variant(first));
    }
    const Text format = call.ValueAs(VT_BSTR).AsText();
    WriteBlock(Self(call), call.Value(),
               [&](LONG row, LONG column, const VARIANT&) { Sheet(call).At(row, column).format = format; });
}

void ClearCells(Call& call, bool all) {
    SheetNode& sheet = Sheet(call);
    for (const Rect& area : Self(call).areas) {
        CheckWritable(sheet, area);
        std::erase_if(sheet.arrays, [&](const Rect& array) { return array.Meets(area); });
        std::erase_if(sheet.spills, [&](const Rect& spill) { return spill.Meets(area); });
        for (auto& [place, cell] : sheet.cells) {
            if (!area.Contains(place.first, place.second)) continue;
            cell.formula.clear();
            cell.value = Variant();
            if (all) cell = Cell{};
        }
    }
    call.Return(true);
}

// The cells below move up.
void DeleteCells(Call& call) {
    SheetNode& sheet = Sheet(call);
    const Rect rect = Self(call).First();
    CheckWritable(sheet, rect);
    std::map<std::pair<LONG, LONG>, Cell> kept;
    for (auto& [place, cell] : sheet.cells) {
        const auto [row, column] = place;
        if (rect.Contains(row, column)) continue;
        const bool below = row > rect.row2 && column >= rect.column1 && column <= rect.column2;
        kept.emplace(std::pair{below ? row - rect.Rows() : row, column}, std::move(cell));
    }
    sheet.cells = std::move(kept);
    call.Return(true);
}

// Searching.

bool Matches(const Text& shown, const Text& what, bool whole) {
    if (whole) return SameName(shown, what);
    const auto same = [](WCHAR a, WCHAR b) { return SameName(TextView(&a, 1), TextView(&b, 1)); };
    return std::search(shown.begin(), shown.end(), what.begin(), what.end(), same) != shown.end();
}

// Row by row from behind the cell `after`, and from the start again; the null object when nothing matches.
void ReturnNextMatch(Call& call, std::pair<LONG, LONG> after) {
    const auto& search = Application(call).search;
    const RangeNode& range = Self(call);
    const auto match = [&](const auto& entry) {
        const auto [row, column] = entry.first;
        return range.First().Contains(row, column) && !entry.second.IsEmpty() &&
               Matches(ShownText(Sheet(call).Value(row, column)), search.what, search.whole);
    };
    const auto& cells = Sheet(call).cells;
    const auto start = cells.upper_bound(after);
    auto found = std::find_if(start, cells.end(), match);
    if (found == cells.end()) {
        found = std::find_if(cells.begin(), start, match);
        if (found == start) return call.ReturnObject(nullptr);
    }
    const auto [row, column] = found->first;
    ReturnRect(call, {row, column, row, column});
}

std::pair<LONG, LONG> StartOfSearch(const Call& call, unsigned index) {
    const Rect& from = call.Has(index) ? RangeOf(call, call.Argument(index)).First() : Self(call).First();
    return {from.row1, from.column1};
}

void FindText(Call& call) {
    Application(call).search = {call.Words(0), call.Number(3, 2) == lookWhole};
    ReturnNextMatch(call, StartOfSearch(call, 1));
}

void FindNextText(Call& call) {
    ReturnNextMatch(call, StartOfSearch(call, 0));
}

Text Replaced(Text text, const Text& what, const Text& by, bool whole) {
    if (whole) return text == what ? by : text;
    for (auto at = text.find(what); at != Text::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

void ReplaceText(Call& call) {
    const Text what = call.Words(0);
    const Text by = call.Words(1);
    const bool whole = call.Number(2, 2) == lookWhole;
    if (what.empty()) return call.Return(false);
    for (const Rect& area : Self(call).areas) CheckWritable(Sheet(call), area);
    for (auto& [place, cell] : Sheet(call).cells) {
        if (!Self(call).First().Contains(place.first, place.second)) continue;
        if (!cell.formula.empty()) {
            cell.formula = Replaced(cell.formula, what, by, whole);
        } else if (cell.value.Type() == VT_BSTR) {
            cell.value = Variant(Replaced(cell.value.AsText(), what, by, whole));
        }
    }
    call.Return(true);
}

void SpecialCells(Call& call) {
    const LONG kind = call.Number(0);
    SheetNode& sheet = Sheet(call);
    if (kind == kindLastCell) {
        const Rect used = sheet.Used();
        return ReturnRect(call, {used.row2, used.column2, used.row2, used.column2});
    }
    const auto fits = [kind](const Cell& cell) {
        switch (kind) {
            case kindConstants:
                return cell.formula.empty() && !cell.IsEmpty();
            case kindFormulas:
                return !cell.formula.empty();
            case kindComments:
                return cell.comment != nullptr;
            case kindBlanks:
                return cell.IsEmpty();
            default:
                throw Refusal::Exception(TEXT("Unable to get the SpecialCells property of the Range class"));
        }
    };
    std::vector<Rect> areas;
    for (const auto& [place, cell] : sheet.cells) {
        const auto [row, column] = place;
        if (Self(call).First().Contains(row, column) && fits(cell))
            areas.push_back({row, column, row, column});
    }
    if (areas.empty()) throw Refusal::Exception(TEXT("No cells were found."));
    call.ReturnObject(MakeRangeNode(sheet, std::move(areas)));
}

// The secant method on the changing cell, up to Excel's hundred steps.
void GoalSeek(Call& call) {
    const double goal = Variant(call.Argument(0)).AsNumber();
    RangeNode& changing = RangeOf(call, call.Argument(1));
    CheckWritable(changing.sheet, changing.First());
    Cell& input = changing.sheet.At(changing.First().row1, changing.First().column1);
    if (FirstCell(call).formula.empty() || !input.formula.empty()) {
        throw Refusal::Exception(TEXT("Reference isn't valid."));
    }
    const auto miss = [&](double value) {
        input.value = Variant(value);
        return Sheet(call).Value(Self(call).First().row1, Self(call).First().column1).AsNumber() - goal;
    };
    const Variant before = input.value;
    double last = before.Type() == VT_EMPTY ? 0 : before.AsNumber();
    double next = last + 1;
    double lastMiss = miss(last);
    for (int step = 0; step < 100; ++step) {
        const double nextMiss = miss(next);
        if (std::abs(nextMiss) < 1e-9) return call.Return(true);
        if (nextMiss == lastMiss) break;
        const double slope = (nextMiss - lastMiss) / (next - last);
        last = std::exchange(next, next - nextMiss / slope);
        lastMiss = nextMiss;
    }
    input.value = before;
    call.Return(false);
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
    {262, "FormulaHidden", getPut, FlagProperty<&Cell::hidden>},
    {263, "FormulaLocal", getPut, FormulaProperty},
    {266, "HasArray", getOnly, [](Call& call) { call.Return(Covered(Self(call), Sheet(call).arrays)); }},
    {267, "HasFormula", getOnly,
     [](Call& call) {
         call.Return(Uniform(Self(call), [](const Cell& cell) { return !cell.formula.empty(); }));
     }},
    {269, "Locked", getPut, FlagProperty<&Cell::locked>},
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

void CheckWritable(const SheetNode& sheet, const Rect& rect) {
    for (const Rect& array : sheet.arrays) {
        const bool inside =
            rect.Contains(array.row1, array.column1) && rect.Contains(array.row2, array.column2);
        if (array.Meets(rect) && !inside)
            throw Refusal::Exception(TEXT("You can't change part of an array."));
    }
    if (!sheet.protectedContents) return;
    std::int64_t unlocked = 0;
    for (const auto& [place, cell] : sheet.cells) {
        if (!cell.locked && rect.Contains(place.first, place.second)) ++unlocked;
    }
    if (unlocked < rect.Cells()) {
        throw Refusal::Exception(TEXT("The cell or chart you're trying to change is on a protected sheet."));
    }
}

}  // namespace excelhost::automation
