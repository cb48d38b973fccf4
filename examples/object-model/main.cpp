// From an application to a cell and back: a formula is written and read, and each refusal becomes a message.
//
// Excel's part is played by the automation server in memory. With a real Excel only the first interface would
// come from elsewhere: everything behind MakeApplication stays as it is.

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include <comdef.h>

#include "errors/vex.h"
#include "excelhost/automation/server.h"
#include "objectmodel/msexcel.h"
#include "text/text.h"

namespace {

using excelhost::automation::AutomationServer;
using excelhost::automation::Refusal;
using excelhost::automation::SheetNode;

// Excel's own: it is in a state in which it takes no calls from outside, such as a cell being edited.
constexpr auto VBA_E_IGNORE = static_cast<HRESULT>(0x800AC472);

std::string Utf8(const CStringW& text) {
    return Utf8FromCStringW(text);
}

void Say(const char* topic, const std::string& message) {
    std::printf("%-26s %s\n", topic, message.c_str());
}

// A text as the VARIANT that the writing operations take over.
VARIANT NewText(const WCHAR* text) {
    VARIANT result;
    VariantInit(&result);
    result.vt = VT_BSTR;
    result.bstrVal = SysAllocString(text);
    return result;
}

std::string Shown(const OwnedVariant& value) {
    VARIANT source = value.borrow();
    OwnedVariant text;
    if (FAILED(VariantChangeType(text.receive(), &source, 0, VT_BSTR))) return "(no text)";
    return Utf8(CStringW(text->bstrVal));
}

// A record of the library says what happened as data. The words are the caller's: here they are English.
std::string Message(const VexException& raised) {
    std::string cell = raised.args.empty() ? "" : Utf8(raised.args[0]);
    switch (raised.code) {
        case VexCode::CellLockedOnWrite:
            return "Cell " + cell + " is locked, and its sheet is protected.";
        case VexCode::CellPartOfArray:
            return "Cell " + cell + " is part of an array formula, which can only be changed as a whole.";
        case VexCode::CellHiddenOnRead:
            return "The formula of cell " + cell + " is hidden by its sheet's protection.";
        case VexCode::FormulaRead:
            return "Excel doesn't tell the formula of cell " + cell + ".";
        case VexCode::FormulaWrite:
            return "Excel doesn't take \"" + Utf8(raised.args[1]) + "\" as a formula for cell " + cell + ".";
        case VexCode::FormulaWriteOutOfMemory:
            return "Memory ran out while \"" + Utf8(raised.args[1]) + "\" was written to cell " + cell + ".";
        case VexCode::Sentence:
            return cell;
        default:
            return Utf8(raised.key) + ", error " + std::to_string(raised.code);
    }
}

// A failure that Excel itself describes, or a bare number.
std::string Message(const _com_error& raised) {
    const std::string number = StdStringFormat("error %08X", raised.Error());
    BSTR description = nullptr;
    if (const auto info = kestrolumen::ComPtr<IErrorInfo>::Adopt(raised.ErrorInfo()))
        info->GetDescription(&description);
    const OwnedBstr owned(description);
    return owned.get() ? Utf8(CStringW(owned.get())) + " (" + number + ")" : number;
}

// Runs what is going to be refused.
template <class Operation>
void Refused(const char* topic, Operation operation) {
    try {
        operation();
        Say(topic, "nothing was refused");
    } catch (const VexException& raised) {
        Say(topic, Message(raised));
    } catch (const _com_error& raised) {
        Say(topic, Message(raised));
    }
}

void Walk(const std::shared_ptr<MsExcel::Application>& excel) {
    const auto workbook = excel->GetWorkbooks()->GetItem(1);
    const auto sheet = workbook->GetWorksheets()->GetItem(1);
    Say("Excel", "version " + Utf8(excel->GetVersion()));
    Say("Workbook, sheet", Utf8(workbook->GetName()) + ", " + Utf8(sheet->GetName()) + ", " +
                               std::to_string(workbook->GetMaxRows()) + " rows");

    const auto cell = sheet->GetCell(2, 2);
    cell->PutFormula2(NewText(TEXT("=SUM(A1:A3)*2")));
    Say("Cell", Utf8(cell->GetAddress(true, true, true)));
    Say("Its formula", Shown(cell->GetFormula2()));
    Say("Its value", Shown(cell->GetValue2()));
    Say("The same from outside", Utf8(excel->GetRange(TEXT("[Book1]Sheet1!B2"))->GetText()));
}

// Whether Excel turned the call away before it did anything: it computes, shows a dialog, or a cell is edited.
bool IsBusy(HRESULT result) {
    return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER || result == VBA_E_IGNORE;
}

// Runs an operation, and again while Excel is busy. Any other failure passes on.
template <class Operation>
auto Patiently(Operation operation) {
    for (int tries = 1;; ++tries) {
        try {
            return operation();
        } catch (const _com_error& raised) {
            if (!IsBusy(raised.Error()) || tries == 10) throw;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

void ShowPatience(const std::shared_ptr<MsExcel::Application>& excel, AutomationServer& server) {
    server.Refuse("Application", 392, Refusal::Result(RPC_E_SERVERCALL_RETRYLATER), 2);
    Say("A busy Excel, patiently", "version " + Utf8(Patiently([&] { return excel->GetVersion(); })));
}

void ShowRefusals(const std::shared_ptr<MsExcel::Application>& excel, AutomationServer& server) {
    const auto range = [&](const WCHAR* address) { return excel->GetRange(CStringW(address)); };
    SheetNode& sheet = server.FirstSheet();

    Refused("A formula that is none", [&] { range(TEXT("B2"))->PutFormula2(NewText(TEXT("=SUM("))); });
    Refused("A cell of an array", [&] { range(TEXT("D2"))->PutFormula2(NewText(TEXT("=1"))); });
    sheet.protectedContents = true;
    Refused("A locked cell", [&] { range(TEXT("B2"))->PutFormula2(NewText(TEXT("=1"))); });
    sheet.At(2, 2).hidden = true;
    Refused("A hidden formula", [&] { static_cast<void>(OwnedVariant(range(TEXT("B2"))->GetFormula2())); });
    sheet.protectedContents = false;
    server.Refuse("Range", 1580, Refusal::Result(E_OUTOFMEMORY), 1);
    Refused("No memory", [&] { range(TEXT("B2"))->PutFormula2(NewText(TEXT("=1"))); });

    Refused("No such workbook", [&] { excel->GetWorkbooks()->GetItem(TEXT("Nowhere.xlsx")); });
    Refused("No such address", [&] { range(TEXT("A1:")); });
    server.busy = true;
    Refused("A busy Excel", [&] { excel->GetVersion(); });
    server.busy = false;
    const OwnedVariant what = NewText(TEXT("nowhere to be found"));
    const VARIANT& any = MissingArgument;
    const auto nothing = range(TEXT("A1"))->Find(what, any, any, any, any, 1, any, any);
    Refused("A cell that isn't there", [&] { nothing->GetRow(); });
}

}  // namespace

int main() {
    AutomationServer server;
    SheetNode& sheet = server.FirstSheet();
    for (LONG row = 1; row <= 3; ++row) sheet.At(row, 1).value = 10.0 * row;
    sheet.PutArray({1, 4, 3, 4}, TEXT("=A1*A1"));
    {
        const auto excel =
            MakeApplication(kestrolumen::ComPtr<IDispatch>::Adopt(server.NewApplication()).get());
        Walk(excel);
        ShowRefusals(excel, server);
        ShowPatience(excel, server);
    }
    const std::size_t held = server.Live().size();
    Say("", held == 0 ? "All objects are given back." : std::to_string(held) + " objects are still held.");
    return held == 0 ? 0 : 1;
}
