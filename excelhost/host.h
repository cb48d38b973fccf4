// The part of Excel that an add-in can see, played in this process: the callback with its function numbers,
// open workbooks with functions of their own, registered worksheet functions, and a strict eye on what the
// add-in does with the memory that it is lent.
//
//     Host host;                                             // from here on MdCallBack12 serves this host
//     host.AddModule(TEXT("kestrolumen.xll"), exports);      // as if Excel had loaded it
//     host.SetFunction(TEXT("Kestrolumen.XLA"), TEXT("NetOutputPredictionVBA"), function);
//     ...the add-in registers itself...
//     Value value = host.Call(TEXT("NetOutputPrediction"), arguments);
//     EXPECT_TRUE(host.GetAccount().Balanced());
//
// The function numbers served stand in the tables of served/. Any other gives xlretInvXlfn. Operands that
// are null or too many never crash the host: they give xlretInvXloper or xlretInvCount, as Microsoft's
// "Excel12, Excel12v" describes those codes.
//
// All operations may be called from any thread. Functions of workbooks run without a lock held, so they may
// call the host again.
#pragma once

#include "excelhost/findings.h"
#include "excelhost/served/table.h"
#include "excelhost/ledger.h"
#include "excelhost/registrations.h"
#include "excelhost/sheets.h"
#include "excelhost/trace.h"
#include "excelhost/value.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace excelhost {

class Host {
  public:
    // Becomes the current host of the process; the destructor makes the one before it current again. Hosts
    // are destroyed in the reverse order of their making.
    Host();
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The host that the exported MdCallBack12 serves; null when there is none.
    [[nodiscard]] static Host* Current() noexcept;

    // The callback, in the shape of EXCEL12PROC. `result` may be null; a refused call leaves it untouched.
    int CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) noexcept;

    // -- Workbooks. Names count without regard to case.

    // Puts a function into a workbook, which is opened if it isn't open.
    void SetFunction(TextView workbook, TextView function, WorkbookFunction body);
    void CloseWorkbook(TextView workbook);

    // -- Sheets, for xlSheetNm and for arguments given by value.

    // `name` is as xlSheetNm gives it: "[Book1.xlsx]Sheet1". `id` isn't 0.
    void AddSheet(IDSHEET id, TextView name, CellReader reader);
    // The sheet that a reference without a sheet means, the first one added unless told otherwise.
    void SetCurrentSheet(IDSHEET id);
    // The cells behind an Area or a Reference to one rectangle; any other value as it is. A reference to a
    // sheet that isn't there, or to several rectangles, gives #REF! or #VALUE!.
    [[nodiscard]] Value Dereference(const Value& value) const;

    // Serves xlfEvaluate, where names set through xlfSetName come first, and worksheet functions by number, which
    // otherwise see nothing but the cells that they are given.
    void SetEvaluator(SheetEvaluator evaluator);
    // Calls the procedures that add-ins have registered for this event.
    void CalculationEnded();

    // -- Modules and registered functions.

    // Makes a loaded add-in known under its path or its file name alone; xlfRegister takes either.
    void AddModule(TextView path, ModuleExports exports, HINSTANCE instance = nullptr);
    // In the order in which they were loaded.
    [[nodiscard]] std::vector<Module> Modules() const;
    // The newest registration under a function text; null when there is none.
    [[nodiscard]] std::shared_ptr<const Registration> Find(TextView functionText) const;
    // In the order in which they were made.
    [[nodiscard]] std::vector<Registration> Registrations() const;

    // A worksheet call: lends the arguments as the type text wants them (a reference becomes its cells, but
    // for R and U), fills up with missing ones, calls, and copies the result at once, as Excel does.
    //   #NAME?   no function of that name is registered
    //   #VALUE!  too many arguments, one that can't be had in its type, or an exception left the function
    //   #NUM!    the function gave a null pointer
    // A result flagged xlbitXLFree is freed here, one flagged xlbitDLLFree goes to the add-in's xlAutoFree12
    // or xlAutoFree.
    // The call comes from the cell `caller`, where one is given.
    [[nodiscard]] Value Call(TextView functionText, std::span<const Value> arguments,
                             std::optional<Reference> caller = std::nullopt);

    // -- Scripted refusals. They come before the host's own look at the call and stay until StopRefusing.

    // Every call of the function, or only the nth from now on (1 is the next one).
    void Refuse(int function, int returnCode);
    void RefuseNth(int function, std::size_t nth, int returnCode);
    // Every xlUDF with this target text, to the letter, its leading "=" included.
    void RefuseTarget(TextView target, int returnCode);
    void StopRefusing();

    // -- What was seen.

    [[nodiscard]] std::vector<Entry> Trace() const;
    // The function numbers of the trace alone, in order of entry.
    [[nodiscard]] std::vector<int> TracedFunctions() const;
    void ClearTrace();
    // A trace of every entry is kept unless switched off; the account is kept always.
    void KeepTrace(bool keep);
    // Called with each entry when it is complete, whether or not a trace is kept. Nothing stops.
    void OnEntry(std::function<void(const Entry&)> listener);

    [[nodiscard]] Account GetAccount() const;
    // The values that haven't come back so far.
    [[nodiscard]] std::vector<Leak> Leaks() const;
    // What was found wrong, in the order in which it first happened.
    [[nodiscard]] std::vector<Finding> Findings() const;
    // Whether alerts for macro errors are on, as xlfError left them; on at first.
    [[nodiscard]] bool MacroAlerts() const;
    // Alerts that a user would have had to answer: an xlUDF failed while alerts were on.
    [[nodiscard]] std::size_t AlertsShown() const;
    // Whether xlEnableXLMsgs was the last of the two switches; off at first.
    [[nodiscard]] bool Messages() const;

  private:
    std::unique_ptr<HostState> state_;
    Host* previous_;
};

}  // namespace excelhost
