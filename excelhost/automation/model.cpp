#include "excelhost/automation/model.h"

#include "excelhost/automation/calculation.h"
#include "excelhost/automation/classes.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

constexpr SheetLimits oldLimits{65536, 256};
constexpr int calculationDepth = 64;  // a circle of references ends here, with 0

template <class Kind, class... Arguments>
Kind& Append(CollectionNode::Items& list, Arguments&&... arguments) {
    auto node = std::make_shared<Kind>(std::forward<Arguments>(arguments)...);
    Kind& reference = *node;
    list.push_back(std::move(node));
    return reference;
}

}  // namespace

bool NameNode::Gone() const noexcept {
    return gone || workbook->Gone() || (sheet != nullptr && sheet->Gone());
}

CommentNode::CommentNode(Text words)
    : Node(commentClass), text(std::move(words)), shape(std::make_shared<NamedNode>(shapeClass, Text())) {}

HyperlinkNode::HyperlinkNode(Text address, const Rect& cells)
    : NamedNode(hyperlinkClass, std::move(address)), rect(cells) {}

ListObjectNode::ListObjectNode(Text itsName, SheetNode& itsSheet, const Rect& cells,
                               const std::vector<Text>& columnNames)
    : NamedNode(listObjectClass, std::move(itsName)), sheet(itsSheet), rect(cells) {
    for (const Text& column : columnNames) Append<NamedNode>(columns, listColumnClass, column);
}

SheetNode::SheetNode(const ObjectClass& itsClass, WorkbookNode& itsWorkbook, Text itsName)
    : NamedNode(itsClass, std::move(itsName)), workbook(itsWorkbook) {}

bool SheetNode::Gone() const noexcept {
    return gone || workbook.Gone();
}

SheetLimits SheetNode::Limits() const noexcept {
    return workbook.compatible ? oldLimits : SheetLimits{};
}

Rect SheetNode::Whole() const noexcept {
    const SheetLimits limits = Limits();
    return {1, 1, limits.rows, limits.columns};
}

const Cell& SheetNode::Look(LONG row, LONG column) const noexcept {
    static const Cell empty;
    const auto found = cells.find({row, column});
    return found == cells.end() ? empty : found->second;
}

Variant SheetNode::Value(LONG row, LONG column) const {
    const Cell& cell = Look(row, column);
    if (cell.formula.empty()) return cell.value;
    if (depth_ == calculationDepth) return Variant(0.0);
    ++depth_;
    const auto leave = std::unique_ptr<int, void (*)(int*)>(&depth_, [](int* depth) { --*depth; });
    return CalculateText(*this, row, column, cell.formula);
}

Rect SheetNode::Used() const noexcept {
    Rect used{0, 0, 0, 0};
    for (const auto& [place, cell] : cells) {
        if (cell.IsEmpty()) continue;
        const auto [row, column] = place;
        if (used.row1 == 0) used = {row, column, row, column};
        used = {std::min(used.row1, row), std::min(used.column1, column), std::max(used.row2, row),
                std::max(used.column2, column)};
    }
    return used.row1 == 0 ? Rect{} : used;
}

void SheetNode::PutArray(const Rect& rect, const Text& formula) {
    arrays.push_back(rect);
    for (LONG row = rect.row1; row <= rect.row2; ++row) {
        for (LONG column = rect.column1; column <= rect.column2; ++column) {
            At(row, column).formula = formula;
            At(row, column).value = Variant();
        }
    }
}

WindowNode::WindowNode(WorkbookNode& itsWorkbook, Text caption, LONG itsHandle)
    : NamedNode(windowClass, std::move(caption)), workbook(itsWorkbook), handle(itsHandle) {}

bool WindowNode::Gone() const noexcept {
    return gone || workbook.Gone();
}

WorkbookNode::WorkbookNode(Text itsName) : NamedNode(workbookClass, std::move(itsName)) {}

SheetNode& WorkbookNode::AddSheet(Text sheetName) {
    return Append<SheetNode>(sheets, worksheetClass, *this, std::move(sheetName));
}

SheetNode& WorkbookNode::AddMacroSheet(Text sheetName) {
    return Append<SheetNode>(macroSheets, macroSheetClass, *this, std::move(sheetName));
}

WindowNode& WorkbookNode::AddWindow(LONG handle) {
    return Append<WindowNode>(windows, *this, name, handle);
}

NameNode& WorkbookNode::AddName(Text itsName, Text refersTo, SheetNode* sheet) {
    auto& node = Append<NameNode>(names, nameClass, std::move(itsName));
    node.refersTo = std::move(refersTo);
    node.workbook = this;
    node.sheet = sheet;
    return node;
}

void WorkbookNode::PutProperty(const WCHAR* property, Variant value) {
    Append<DocumentPropertyNode>(properties, documentPropertyClass, property).value = std::move(value);
}

SheetNode* WorkbookNode::FindSheet(TextView sheetName) const noexcept {
    const auto found = std::ranges::find_if(
        sheets, [&](const auto& sheet) { return SameName(static_cast<SheetNode&>(*sheet).name, sheetName); });
    return found == sheets.end() ? nullptr : static_cast<SheetNode*>(found->get());
}

Text WorkbookNode::FullName() const {
    return path.empty() ? name : path + TEXT("\\") + name;
}

RangeNode::RangeNode(SheetNode& itsSheet, std::vector<Rect> itsAreas, Unit itsUnit)
    : Node(rangeClass), sheet(itsSheet), areas(std::move(itsAreas)), unit(itsUnit) {}

Text RangeNode::Name() const {
    Text text;
    for (const Rect& area : areas) {
        if (!text.empty()) text += TEXT(',');
        text += FormatA1(area, true, true, sheet.Limits());
    }
    return text;
}

std::int64_t RangeNode::Count() const noexcept {
    if (unit == Unit::rows) return First().Rows();
    if (unit == Unit::columns) return First().Columns();
    std::int64_t count = 0;
    for (const Rect& area : areas) count += area.Cells();
    return count;
}

ApplicationNode::ApplicationNode()
    : Node(applicationClass),
      autoCorrect(std::make_shared<NamedNode>(autoCorrectClass, Text())),
      multiThreadedCalculation(std::make_shared<NamedNode>(multiThreadedCalculationClass, Text())) {}

WorkbookNode& ApplicationNode::AddWorkbook(Text name) {
    auto& workbook = Append<WorkbookNode>(workbooks, std::move(name));
    workbook.AddSheet(TEXT("Sheet1"));
    workbook.AddWindow(nextHandle_ += 2);
    active = &workbook;
    return workbook;
}

WorkbookNode* ApplicationNode::FindWorkbook(TextView name) const noexcept {
    const auto found = std::ranges::find_if(
        workbooks, [&](const auto& book) { return SameName(static_cast<WorkbookNode&>(*book).name, name); });
    return found == workbooks.end() ? nullptr : static_cast<WorkbookNode*>(found->get());
}

LONG ApplicationNode::NewHandle() noexcept {
    return nextHandle_ += 2;
}

void ApplicationNode::CloseWorkbook(WorkbookNode& workbook) {
    closed.push_back(workbook.shared_from_this());
    Remove(workbooks, workbook);
    selection = nullptr;
    active = workbooks.empty() ? nullptr : static_cast<WorkbookNode*>(workbooks.back().get());
}

}  // namespace excelhost::automation
