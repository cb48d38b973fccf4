// What the simulated application holds: workbooks, sheets, cells and the small things around them. Plain
// data, which a test arranges directly and the automation objects read and change.
#pragma once

#include "excelhost/automation/address.h"
#include "excelhost/automation/object.h"

#include <functional>
#include <optional>
#include <vector>

namespace excelhost::automation {

struct SheetNode;
struct WorkbookNode;

// A thing with a name and stored properties: a window, an add-in, a list column, a recent file.
struct NamedNode : Node {
    NamedNode(const ObjectClass& itsClass, Text itsName) : Node(itsClass), name(std::move(itsName)) {}
    [[nodiscard]] Text Name() const override { return name; }
    Text name;
};

// A defined name. It belongs to its sheet where it has one, else to its workbook.
struct NameNode : NamedNode {
    using NamedNode::NamedNode;
    [[nodiscard]] bool Gone() const noexcept override;
    Text refersTo;  // with the "="
    WorkbookNode* workbook = nullptr;
    SheetNode* sheet = nullptr;
};

struct CommentNode : Node {
    explicit CommentNode(Text words);
    Text text;
    std::shared_ptr<Node> shape;
};

struct HyperlinkNode : NamedNode {
    HyperlinkNode(Text address, const Rect& cells);
    Rect rect;
};

// A table: its rectangle has the header in the first row.
struct ListObjectNode : NamedNode {
    ListObjectNode(Text itsName, SheetNode& itsSheet, const Rect& cells,
                   const std::vector<Text>& columnNames);
    SheetNode& sheet;
    Rect rect;
    std::vector<std::shared_ptr<Node>> columns;
};

struct Cell {
    Variant value;  // a constant; what a formula gives is calculated when asked for
    Text formula;   // with the "="; empty for a constant
    Text format = TEXT("General");
    Text id;
    Variant colorIndex = Variant(-4142);  // none
    bool locked = true;
    bool hidden = false;
    std::shared_ptr<CommentNode> comment;

    [[nodiscard]] bool IsEmpty() const noexcept { return formula.empty() && value.Type() == VT_EMPTY; }
};

struct SheetNode : NamedNode {
    SheetNode(const ObjectClass& itsClass, WorkbookNode& itsWorkbook, Text itsName);
    [[nodiscard]] bool Gone() const noexcept override;

    [[nodiscard]] SheetLimits Limits() const noexcept;
    [[nodiscard]] Rect Whole() const noexcept;
    [[nodiscard]] Cell& At(LONG row, LONG column) { return cells[{row, column}]; }
    // The cell as stored, or an empty one.
    [[nodiscard]] const Cell& Look(LONG row, LONG column) const noexcept;
    // The value that the cell shows: its constant, or its formula's result.
    [[nodiscard]] Variant Value(LONG row, LONG column) const;
    // The bounds of all cells that hold something; A1 for an empty sheet.
    [[nodiscard]] Rect Used() const noexcept;

    // One formula over a rectangle, as an array formula.
    void PutArray(const Rect& rect, const Text& formula);
    // Marks a rectangle as the spill of the formula in its first cell.
    void PutSpill(const Rect& rect) { spills.push_back(rect); }

    WorkbookNode& workbook;
    std::map<std::pair<LONG, LONG>, Cell> cells;
    bool protectedContents = false;
    std::vector<Rect> arrays, spills, merged;
    std::vector<std::shared_ptr<Node>> listObjects, pivotTables, hyperlinks;

  private:
    mutable int depth_ = 0;  // of formulas that are being calculated
};

struct WindowNode : NamedNode {
    WindowNode(WorkbookNode& itsWorkbook, Text caption, LONG itsHandle);
    [[nodiscard]] bool Gone() const noexcept override;
    WorkbookNode& workbook;
    LONG handle;
};

struct DocumentPropertyNode : NamedNode {
    using NamedNode::NamedNode;
    Variant value;
};

struct WorkbookNode : NamedNode {
    explicit WorkbookNode(Text itsName);

    SheetNode& AddSheet(Text sheetName);
    SheetNode& AddMacroSheet(Text sheetName);
    WindowNode& AddWindow(LONG handle);
    NameNode& AddName(Text itsName, Text refersTo, SheetNode* sheet = nullptr);
    void PutProperty(const WCHAR* property, Variant value);

    [[nodiscard]] SheetNode* FindSheet(TextView sheetName) const noexcept;
    [[nodiscard]] Text FullName() const;

    Text path;
    bool compatible = false;  // the size limits of Excel 97 to 2003
    LONG activeSheet = 0;
    std::vector<std::shared_ptr<Node>> sheets, macroSheets, windows, names, properties;
    std::vector<std::shared_ptr<Node>> deletedSheets;  // ranges that clients hold still point into them
};

// Cells of one sheet. Counting and indexing go by cells, or by rows or columns as wholes.
struct RangeNode : Node {
    enum class Unit { cells, rows, columns };
    RangeNode(SheetNode& itsSheet, std::vector<Rect> itsAreas, Unit itsUnit = Unit::cells);
    [[nodiscard]] Text Name() const override;
    [[nodiscard]] bool Gone() const noexcept override { return sheet.Gone(); }
    [[nodiscard]] const Rect& First() const noexcept { return areas.front(); }
    [[nodiscard]] std::int64_t Count() const noexcept;

    SheetNode& sheet;
    std::vector<Rect> areas;
    Unit unit;
};

// A collection over a list in the model, read anew at each call.
struct CollectionNode : Node {
    using Items = std::vector<std::shared_ptr<Node>>;
    CollectionNode(const ObjectClass& itsClass, std::function<Items()> list,
                   std::shared_ptr<Node> itsOwner = {})
        : Node(itsClass), items(std::move(list)), owner(std::move(itsOwner)) {}
    [[nodiscard]] bool Gone() const noexcept override { return owner != nullptr && owner->Gone(); }
    std::function<Items()> items;
    std::shared_ptr<Node> owner;
};

struct ApplicationNode : Node {
    ApplicationNode();

    // Opens a new workbook with one sheet and one window, and makes it the active one.
    WorkbookNode& AddWorkbook(Text name);
    [[nodiscard]] WorkbookNode* FindWorkbook(TextView name) const noexcept;
    [[nodiscard]] LONG NewHandle() noexcept;
    // Takes it out; objects that clients still hold on it and its parts are gone.
    void CloseWorkbook(WorkbookNode& workbook);

    using Macro = std::function<Variant(std::span<const Variant>)>;

    Text version = TEXT("16.0");
    LONG build = 16327;
    std::vector<std::shared_ptr<Node>> workbooks, closed, addIns, recentFiles;
    WorkbookNode* active = nullptr;
    std::shared_ptr<RangeNode> selection;  // the active sheet's A1 when empty
    std::shared_ptr<Node> caller;          // what Caller gives; #REF! when empty
    std::shared_ptr<Node> autoCorrect, multiThreadedCalculation;
    std::map<Text, Macro> macros;             // what Run finds
    std::map<Text, std::vector<Text>> files;  // what Open finds: path and sheet names
    Text startupPath = TEXT("C:\\Startup"), altStartupPath;
    struct Search {
        Text what;
        bool whole = false;
    } search;               // what FindNext goes on with
    LONG calculations = 0;  // how often calculation was asked for

  private:
    LONG nextHandle_ = 0x10000;
};

}  // namespace excelhost::automation
