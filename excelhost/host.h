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
// Function numbers served: xlfError, xlfRegister, xlfUnregister, xlUDF, xlFree, xlSheetNm, xlEnableXLMsgs,
// xlDisableXLMsgs. Any other gives xlretInvXlfn. Operands that are null or too many never crash the host:
// they give xlretInvXloper or xlretInvCount, as Microsoft's "Excel12, Excel12v" describes those codes.
//
// All operations may be called from any thread. Functions of workbooks run without a lock held, so they may
// call the host again.
#pragma once

#include "excelhost/ledger.h"
#include "excelhost/value.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// Most arguments that a registered function can have here.
inline constexpr std::size_t kArityLimit = 30;

// A function of a workbook. It sees the very records that the add-in passed to xlUDF, in their order, without
// the target text. A standard exception that leaves it is a run-time error in the workbook's code: the result
// is #VALUE!.
using WorkbookFunction = std::function<Value(std::span<const XLOPER12* const> arguments)>;

// Gives the address of a procedure by its exported name, null when there is none.
using ModuleExports = std::function<FARPROC(const char* procedure)>;

// Gives the values of a rectangle of a sheet: one value for one cell, an Array otherwise.
using CellReader = std::function<Value(const Area& area)>;

// A registered worksheet function.
struct Registration {
    double id = 0;
    Text module;
    Text procedure;
    Text typeText;
    Text functionText;
    FARPROC entry = nullptr;
    std::vector<bool> takesReference;  // one an argument: true for U, false for Q
    bool threadSafe = false;           // "$" in the type text
    bool recalculatesAlways = false;   // "!" in the type text

    [[nodiscard]] std::size_t Arity() const noexcept { return takesReference.size(); }
};

// One operand or result as a trace keeps it.
struct TracedValue {
    const XLOPER12* record = nullptr;  // where it stood, for comparison only
    DWORD type = 0;                    // without flags; 0 for a null record
    std::string text;                  // Describe(record), "(null)" for a null record
};

// One entry into the callback.
struct Entry {
    std::size_t number = 0;  // 1 for the first entry into this host
    int function = 0;
    int count = 0;  // operands, as the caller gave it
    std::vector<TracedValue> operands;
    int returnCode = xlretSuccess;
    TracedValue result;     // as the callback left it; record is null when the caller wanted none
    bool messages = false;  // xlEnableXLMsgs was in force when the entry came
    bool alerts = true;     // alerts for macro errors were on when the entry came
    bool refused = false;   // by a script
    std::string note;       // why the host refused or what it found wrong; empty otherwise
};

// "xlUDF", "xlfError"...; the number for any other.
[[nodiscard]] std::string FunctionName(int function);

// One line for people: 12 xlUDF("=Book!Function", 0.5, 1x4 array) -> 0.25
[[nodiscard]] std::string Describe(const Entry& entry);

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

    // -- Modules and registered functions.

    // Makes a loaded add-in known under its file name, without folder, as xlfRegister names it.
    void AddModule(TextView fileName, ModuleExports exports);
    // The newest registration under a function text; nothing when there is none.
    [[nodiscard]] std::optional<Registration> Find(TextView functionText) const;
    // In the order in which they were made.
    [[nodiscard]] std::vector<Registration> Registrations() const;

    // A worksheet call: lends the arguments as the type text wants them (a reference to a Q argument becomes
    // its cells), fills up with missing ones, calls, and copies the result at once, as Excel does.
    //   #NAME?   no function of that name is registered
    //   #VALUE!  too many arguments, or an exception left the function
    //   #NUM!    the function gave a null pointer
    // A result flagged xlbitXLFree is freed here. One flagged xlbitDLLFree is left alone: this host knows no
    // xlAutoFree12.
    [[nodiscard]] Value Call(TextView functionText, std::span<const Value> arguments);
    // The same with the caller's records, as they are, and without a look at the result. The count must be
    // the registered one; std::invalid_argument otherwise.
    [[nodiscard]] static LPXLOPER12 CallRecords(const Registration& function,
                                                std::span<const LPXLOPER12> arguments);

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
    // Whether alerts for macro errors are on, as xlfError left them; on at first.
    [[nodiscard]] bool MacroAlerts() const;
    // Alerts that a user would have had to answer: an xlUDF failed while alerts were on.
    [[nodiscard]] std::size_t AlertsShown() const;
    // Whether xlEnableXLMsgs was the last of the two switches; off at first.
    [[nodiscard]] bool Messages() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
    Host* previous_;
};

}  // namespace excelhost
