// The object classes of the simulated application, each a table of members in the file of its subject.
#pragma once

#include "excelhost/automation/model.h"

namespace excelhost::automation {

// application.cpp
extern const ObjectClass applicationClass, autoCorrectClass, multiThreadedCalculationClass;
// workbook.cpp
extern const ObjectClass workbooksClass, workbookClass, windowsClass, windowClass;
// worksheet.cpp
extern const ObjectClass sheetsClass, worksheetClass, macroSheetClass;
// range.cpp
extern const ObjectClass rangeClass, areasClass, interiorClass;
// lists.cpp
extern const ObjectClass namesClass, nameClass, listObjectsClass, listObjectClass, listColumnsClass,
    listColumnClass, addInsClass, addInClass, hyperlinksClass, hyperlinkClass, pivotTablesClass,
    pivotTableClass, commentClass, shapeClass, recentFilesClass, recentFileClass;
// documentproperties.cpp
extern const ObjectClass documentPropertiesClass, documentPropertyClass;

// Handlers and steps that several classes share.

[[nodiscard]] ApplicationNode& Application(const Call& call) noexcept;
void ReturnApplication(Call& call);
// Count and Item of collections; Item by name or by position from 1.
void CountItems(Call& call);
void TakeItem(Call& call);
// Name of a NamedNode, to be read.
void ReturnName(Call& call);
// A new collection over a list in the model, which must live as long as the owner.
[[nodiscard]] std::shared_ptr<Node> Collect(const ObjectClass& itsClass, const CollectionNode::Items& list,
                                            Node& owner);
// A range on the sheet. With no areas it is nothing, and the object a null one.
[[nodiscard]] std::shared_ptr<Node> MakeRangeNode(SheetNode& sheet, std::vector<Rect> areas,
                                                  RangeNode::Unit unit = RangeNode::Unit::cells);
// What an address, or a defined name, stands for on the sheet or on the one that it says; null for text that
// is neither. The address may say a sheet of the same workbook, and the workbook itself.
[[nodiscard]] std::shared_ptr<Node> ResolveRange(SheetNode& sheet, TextView text);
// The range's node behind a VARIANT with one of this server's ranges; refused for anything else.
[[nodiscard]] RangeNode& RangeOf(const Call& call, const VARIANT& argument);
// Evaluate, on a sheet.
void Evaluate(Call& call, SheetNode& sheet);
// Refuses a sheet that is protected where one of the cells is locked, and the parts of an array formula.
void CheckWritable(const SheetNode& sheet, const Rect& rect);
// Takes it off the list and declares it gone.
void Remove(CollectionNode::Items& list, Node& node);

}  // namespace excelhost::automation
