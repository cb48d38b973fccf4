// A simulated Excel with something of each kind in it, and the typed application over it.
#pragma once

#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"
#include "objectmodel/detail/latches.h"
#include "objectmodel/msexcel.h"

#include <comdef.h>

#include <memory>
#include <string>

namespace world {

using excelhost::automation::AutomationServer;
using excelhost::automation::Refusal;
using excelhost::automation::SheetNode;
using excelhost::automation::Variant;
using excelhost::automation::WorkbookNode;

// The workbook Book1, active, with the sheets Sheet1 and Data, and Other.xlsx with Sheet2, never active.
// Sheet1:
//
//        A      B             D         F          H         K      L
//   1    apple  10            {=B1*2}   spills     merged    Table1
//   2    pear   20            {=B1*2}   spills     with I1   id 1   price 2.5
//   3           =SUM(B1:B2)             spills
class World {
  public:
    // The probes' answers are set as on a new host; a test of the probes sets them back to -1.
    World() {
        Formula2Available = 1;
        HasSpillAvailable = 1;
        auto& excel = server.Model();
        sheet.At(1, 1).value = TEXT("apple");
        sheet.At(2, 1).value = TEXT("pear");
        sheet.At(1, 2).value = 10.0;
        sheet.At(2, 2).value = 20.0;
        sheet.At(3, 2).formula = TEXT("=SUM(B1:B2)");
        sheet.At(1, 1).comment = std::make_shared<excelhost::automation::CommentNode>(TEXT("note"));
        sheet.PutArray({1, 4, 2, 4}, TEXT("=B1*2"));
        sheet.At(1, 6).formula = TEXT("=1");
        sheet.PutSpill({1, 6, 3, 6});
        sheet.merged.push_back({1, 8, 1, 9});
        sheet.listObjects.push_back(std::make_shared<excelhost::automation::ListObjectNode>(
            TEXT("Table1"), sheet, excelhost::automation::Rect{1, 11, 2, 12},
            std::vector<excelhost::Text>{TEXT("id"), TEXT("price")}));
        sheet.hyperlinks.push_back(std::make_shared<excelhost::automation::HyperlinkNode>(
            TEXT("https://example.org/"), excelhost::automation::Rect{2, 1, 2, 1}));
        sheet.pivotTables.push_back(Named(excelhost::automation::pivotTableClass, TEXT("Pivot1")));
        Book().AddSheet(TEXT("Data"));
        Book().AddMacroSheet(TEXT("Macro1"));
        Book().AddName(TEXT("Total"), TEXT("=Sheet1!$B$3"));
        Book().AddName(TEXT("First"), TEXT("=Sheet1!$A$1"), &sheet);
        Book().PutProperty(TEXT("Title"), TEXT("Prices"));
        excel.AddWorkbook(TEXT("Other.xlsx")).path = TEXT("C:\\Books");
        excel.active->sheets.clear();
        excel.active->AddSheet(TEXT("Sheet2"));
        excel.active = &Book();
        excel.files[TEXT("C:\\Books\\New.xlsx")] = {TEXT("Fresh")};
        excel.addIns.push_back(Named(excelhost::automation::addInClass, TEXT("C:\\AddIns\\Tool.xla")));
        excel.recentFiles.push_back(
            Named(excelhost::automation::recentFileClass, TEXT("C:\\Books\\Old.xlsx")));
        excel.macros[TEXT("Twice")] = [](auto arguments) {
            return Variant(arguments.empty() ? 0.0 : 2 * arguments[0].AsNumber());
        };
        application = MakeApplication(kestrolumen::ComPtr<IDispatch>::Adopt(server.NewApplication()).get());
        server.ClearRecord();
    }

    [[nodiscard]] WorkbookNode& Book() { return sheet.workbook; }
    [[nodiscard]] SheetNode& Sheet() { return sheet; }
    // Cells of Sheet1, and the parts of the application that other objects are reached through.
    [[nodiscard]] std::shared_ptr<MsExcel::Range> Range(const WCHAR* address) {
        return MakeRange(kestrolumen::ComPtr<IDispatch>::Adopt(server.NewRange(Sheet(), address)).get());
    }
    [[nodiscard]] std::shared_ptr<MsExcel::Workbook> Workbook() const {
        return application->GetActiveWorkbook();
    }
    [[nodiscard]] std::shared_ptr<MsExcel::Worksheet> Worksheet() const {
        return Workbook()->GetActiveSheet();
    }

    // The calls since the record was cleared, one after the other, and the live objects with their counts.
    [[nodiscard]] std::string Calls() const {
        std::string calls;
        for (const auto& call : server.Record()) calls += (calls.empty() ? "" : "; ") + Describe(call);
        return calls;
    }
    [[nodiscard]] std::string Live() const {
        std::string live;
        for (const auto& object : server.Live()) {
            live += std::string(object.objectClass) + ' ' + object.name + ' ' + std::to_string(object.count) +
                    "; ";
        }
        return live;
    }
    // The same without the objects' names, which operations may change.
    [[nodiscard]] std::string Counts() const {
        std::string counts;
        for (const auto& object : server.Live()) {
            counts += std::string(object.objectClass) + ' ' + std::to_string(object.count) + "; ";
        }
        return counts;
    }

    AutomationServer server;
    std::shared_ptr<MsExcel::Application> application;

  private:
    SheetNode& sheet = server.FirstSheet();

    static std::shared_ptr<excelhost::automation::Node> Named(const excelhost::automation::ObjectClass& kind,
                                                              const WCHAR* name) {
        return std::make_shared<excelhost::automation::NamedNode>(kind, name);
    }
};

}  // namespace world
