// Excel itself, the root of the object model (Excel VBA reference: Application object).
#pragma once

#include "objectmodel/types.h"

// Numbers that stand for one of Excel's enumerations (XlCalculation, XlWindowState, XlMousePointer,
// XlReferenceStyle) pass through unchanged. Sizes and places of windows are in points.
class MsExcel::Application {
  public:
    virtual ~Application() = default;

    // Whether this Excel knows Range.HasSpill. The answer is found out once a process, on the first cell of
    // the first worksheet that has cells; with no workbook or no worksheet open it is false, and a later call
    // tries again.
    virtual bool IsHasSpillAvailable() = 0;

    // The main window's handle, its low 32 bits.
    virtual LONG GetHwnd() const = 0;

    // The cells at an address: on the active sheet, or anywhere by "[Book.xlsx]Sheet!A1" or by
    // "'[My Book.xlsx]My Sheet'!A1". When Excel refuses the address, whatever the failure, one of these two
    // forms is walked as workbook, worksheet and cells instead, and a failure on that way goes up; an address
    // of any other form raises Excel's first failure again.
    virtual std::shared_ptr<Range> GetRange(const CStringW& address) const = 0;
    virtual std::shared_ptr<Workbooks> GetWorkbooks() const = 0;
    virtual std::shared_ptr<Windows> GetWindows() const = 0;
    virtual bool GetShowWindowsInTaskbar() const = 0;
    virtual void PutShowWindowsInTaskbar(bool show) = 0;
    virtual LONG GetCursor() const = 0;
    virtual void PutCursor(LONG cursor) = 0;
    virtual std::shared_ptr<Workbook> GetActiveWorkbook() const = 0;
    virtual std::shared_ptr<Names> GetNames() const = 0;
    virtual bool GetDisplayAlerts() const = 0;
    virtual void PutDisplayAlerts(bool display) = 0;
    virtual bool GetInteractive() const = 0;
    virtual void PutInteractive(bool interactive) = 0;
    virtual bool GetVisible() const = 0;
    virtual void PutVisible(bool visible) = 0;
    virtual LONG GetWindowState() const = 0;
    virtual void PutWindowState(LONG state) = 0;
    virtual double GetTop() const = 0;
    virtual void PutTop(double top) = 0;
    virtual double GetLeft() const = 0;
    virtual void PutLeft(double left) = 0;
    virtual double GetHeight() const = 0;
    virtual void PutHeight(double height) = 0;
    virtual double GetWidth() const = 0;
    virtual void PutWidth(double width) = 0;
    virtual void Quit() = 0;
    // The interface that the object holds, no reference added; null when it holds none.
    virtual IDispatch* GetDispatch() const noexcept = 0;
    virtual LONG GetCalculation() const = 0;
    virtual void PutCalculation(LONG calculation) = 0;

    // Runs a macro, by its name or its register number, with up to 30 arguments. Those left out at the end
    // aren't sent. The caller lends all arguments and owns the result; temporaries are cleared after the
    // call.
    [[nodiscard]] virtual VARIANT Run(
        const VARIANT& macro, const VARIANT& argument1 = MissingArgument,
        const VARIANT& argument2 = MissingArgument, const VARIANT& argument3 = MissingArgument,
        const VARIANT& argument4 = MissingArgument, const VARIANT& argument5 = MissingArgument,
        const VARIANT& argument6 = MissingArgument, const VARIANT& argument7 = MissingArgument,
        const VARIANT& argument8 = MissingArgument, const VARIANT& argument9 = MissingArgument,
        const VARIANT& argument10 = MissingArgument, const VARIANT& argument11 = MissingArgument,
        const VARIANT& argument12 = MissingArgument, const VARIANT& argument13 = MissingArgument,
        const VARIANT& argument14 = MissingArgument, const VARIANT& argument15 = MissingArgument,
        const VARIANT& argument16 = MissingArgument, const VARIANT& argument17 = MissingArgument,
        const VARIANT& argument18 = MissingArgument, const VARIANT& argument19 = MissingArgument,
        const VARIANT& argument20 = MissingArgument, const VARIANT& argument21 = MissingArgument,
        const VARIANT& argument22 = MissingArgument, const VARIANT& argument23 = MissingArgument,
        const VARIANT& argument24 = MissingArgument, const VARIANT& argument25 = MissingArgument,
        const VARIANT& argument26 = MissingArgument, const VARIANT& argument27 = MissingArgument,
        const VARIANT& argument28 = MissingArgument, const VARIANT& argument29 = MissingArgument,
        const VARIANT& argument30 = MissingArgument) = 0;
    template <class... Arguments>
    requires kestrolumen::detail::HandsOver<Arguments...>
    [[nodiscard]] VARIANT Run(Arguments&&... arguments) {
        return Run(kestrolumen::detail::ForTheCall(std::forward<Arguments>(arguments))...);
    }

    virtual std::shared_ptr<Range> Union(std::shared_ptr<Range> first, std::shared_ptr<Range> second) = 0;
    virtual std::shared_ptr<AddIns> GetAddIns() const = 0;
    // Takes back the user's last action.
    virtual void Undo() = 0;
    // What a name, an address or a formula stands for; the caller owns it.
    [[nodiscard]] virtual VARIANT Evaluate(const CStringW& expression) = 0;
    // The cell whose formula is running the caller's code; an object whose IsNull is true when it's no cell.
    virtual std::shared_ptr<Range> GetCaller() const = 0;
    virtual std::shared_ptr<Window> GetActiveWindow() const = 0;
    virtual bool GetCalculateBeforeSave() const = 0;
    virtual void PutCalculateBeforeSave(bool calculate) = 0;
    virtual bool GetDisplayFormulaBar() const = 0;
    virtual void PutDisplayFormulaBar(bool display) = 0;
    virtual bool GetScreenUpdating() const = 0;
    virtual void PutScreenUpdating(bool update) = 0;
    // The status bar's text, or VT_BOOL false while the bar is Excel's own. The caller gives away
    // the VARIANT it puts, which is cleared, also when the call fails, and owns the one it gets.
    virtual void PutStatusBar(VARIANT text) = 0;
    [[nodiscard]] virtual VARIANT GetStatusBar() const = 0;
    virtual std::shared_ptr<MultiThreadedCalculationClass> GetMultiThreadedCalculation() const = 0;
    virtual bool GetEnableEvents() const = 0;
    virtual void PutEnableEvents(bool enable) = 0;
    // Calculate: what has changed; CalculateFull: all open workbooks; CalculateFullRebuild: all of them,
    // their dependencies found anew.
    virtual void Calculate() = 0;
    virtual void CalculateFull() = 0;
    virtual void CalculateFullRebuild() = 0;
    // Excel's version, such as "16.0", and the number of its build.
    virtual CStringW GetVersion() const = 0;
    virtual LONG GetBuild() const = 0;
    // Loads an XLL and registers its functions; true when that worked.
    virtual bool RegisterXLL(const CStringW& fileName) = 0;
    // A formula in another reference style. MissingArgument may stand for the last three. The caller gives
    // away all VARIANTs, which are cleared, also when the call fails, and owns the result.
    [[nodiscard]] virtual VARIANT ConvertFormula(VARIANT formula, LONG fromReferenceStyle,
                                                 VARIANT toReferenceStyle, VARIANT toAbsolute,
                                                 VARIANT relativeTo) = 0;
    // Whatever is selected, often but not always a range; null when nothing is.
    virtual kestrolumen::ComPtr<IDispatch> GetSelection() const = 0;
    virtual std::shared_ptr<Range> GetActiveCell() const = 0;
    virtual LONG GetReferenceStyle() const = 0;
    virtual void PutReferenceStyle(LONG style) = 0;
    // Whether Excel is ready to take calls.
    virtual bool GetReady() const = 0;
    // Iterative calculation of circular references: whether it is on, how many rounds at most, and below
    // which change it ends.
    virtual bool GetIteration() const = 0;
    virtual void PutIteration(bool iterate) = 0;
    virtual LONG GetMaxIterations() const = 0;
    virtual void PutMaxIterations(LONG iterations) = 0;
    virtual double GetMaxChange() const = 0;
    virtual void PutMaxChange(double change) = 0;
    virtual CStringW GetCaption() const = 0;
    virtual bool GetUserControl() const = 0;
    virtual void PutUserControl(bool control) = 0;
    virtual bool GetDisplayStatusBar() const = 0;
    virtual void PutDisplayStatusBar(bool display) = 0;
    virtual std::shared_ptr<RecentFiles> GetRecentFiles() const = 0;
    // Folders whose workbooks Excel opens at its start.
    virtual CStringW GetAltStartupPath() const = 0;
    virtual void PutAltStartupPath(const CStringW& path) = 0;
    virtual CStringW GetStartupPath() const = 0;
    virtual std::shared_ptr<AutoCorrect> GetAutoCorrect() const = 0;
};
