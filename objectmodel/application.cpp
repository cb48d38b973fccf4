#include "objectmodel/application.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/externalreference.h"
#include "objectmodel/detail/forms.h"
#include "objectmodel/detail/latches.h"
#include "objectmodel/msexcel.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Application;

class XApplication14 final : public Application {
  public:
    explicit XApplication14(IUnknown* source) : dispatch(QueryFor(source, IidApplication)) {}
    explicit XApplication14(const ComPtr<IDispatch>& source) : XApplication14(source.get()) {}

    bool IsHasSpillAvailable() override;
    LONG GetHwnd() const override { return getL(dispatch, Id::Hwnd); }
    std::shared_ptr<Range> GetRange(const CStringW& address) const override;
    std::shared_ptr<Workbooks> GetWorkbooks() const override {
        return getO<Workbooks>(dispatch, Id::Workbooks);
    }
    std::shared_ptr<Windows> GetWindows() const override { return getO<Windows>(dispatch, Id::Windows); }
    bool GetShowWindowsInTaskbar() const override { return getB(dispatch, Id::ShowWindowsInTaskbar); }
    void PutShowWindowsInTaskbar(bool show) override { putB(dispatch, Id::ShowWindowsInTaskbar, show); }
    LONG GetCursor() const override { return getL(dispatch, Id::Cursor); }
    void PutCursor(LONG cursor) override { putL(dispatch, Id::Cursor, cursor); }
    std::shared_ptr<Workbook> GetActiveWorkbook() const override {
        return getO<Workbook>(dispatch, Id::ActiveWorkbook);
    }
    std::shared_ptr<Names> GetNames() const override { return getO<Names>(dispatch, Id::Names); }
    bool GetDisplayAlerts() const override { return getB(dispatch, Id::DisplayAlerts); }
    void PutDisplayAlerts(bool display) override { putB(dispatch, Id::DisplayAlerts, display); }
    bool GetInteractive() const override { return getB(dispatch, Id::Interactive); }
    void PutInteractive(bool interactive) override { putB(dispatch, Id::Interactive, interactive); }
    bool GetVisible() const override { return getB(dispatch, Id::Visible); }
    void PutVisible(bool visible) override { putB(dispatch, Id::Visible, visible); }
    LONG GetWindowState() const override { return getL(dispatch, Id::WindowState); }
    void PutWindowState(LONG state) override { putL(dispatch, Id::WindowState, state); }
    double GetTop() const override { return getD(dispatch, Id::Top); }
    void PutTop(double top) override { putD(dispatch, Id::Top, top); }
    double GetLeft() const override { return getD(dispatch, Id::Left); }
    void PutLeft(double left) override { putD(dispatch, Id::Left, left); }
    double GetHeight() const override { return getD(dispatch, Id::Height); }
    void PutHeight(double height) override { putD(dispatch, Id::Height, height); }
    double GetWidth() const override { return getD(dispatch, Id::Width); }
    void PutWidth(double width) override { putD(dispatch, Id::Width, width); }
    void Quit() override { doN(dispatch, Id::Quit); }
    IDispatch* GetDispatch() const noexcept override { return dispatch; }
    LONG GetCalculation() const override { return getL(dispatch, Id::Calculation); }
    void PutCalculation(LONG calculation) override { putL(dispatch, Id::Calculation, calculation); }
    VARIANT Run(const VARIANT& macro, const VARIANT& a1, const VARIANT& a2, const VARIANT& a3,
                const VARIANT& a4, const VARIANT& a5, const VARIANT& a6, const VARIANT& a7, const VARIANT& a8,
                const VARIANT& a9, const VARIANT& a10, const VARIANT& a11, const VARIANT& a12,
                const VARIANT& a13, const VARIANT& a14, const VARIANT& a15, const VARIANT& a16,
                const VARIANT& a17, const VARIANT& a18, const VARIANT& a19, const VARIANT& a20,
                const VARIANT& a21, const VARIANT& a22, const VARIANT& a23, const VARIANT& a24,
                const VARIANT& a25, const VARIANT& a26, const VARIANT& a27, const VARIANT& a28,
                const VARIANT& a29, const VARIANT& a30) override {
        return RunWith(macro, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15, a16, a17, a18,
                       a19, a20, a21, a22, a23, a24, a25, a26, a27, a28, a29, a30);
    }
    std::shared_ptr<Range> Union(std::shared_ptr<Range> first, std::shared_ptr<Range> second) override {
        return doO<Range>(dispatch, Id::Union, first, second, Missing<28>);
    }
    std::shared_ptr<AddIns> GetAddIns() const override { return getO<AddIns>(dispatch, Id::AddIns); }
    void Undo() override { doN(dispatch, Id::Undo); }
    VARIANT Evaluate(const CStringW& expression) override {
        return doVR(dispatch, Id::Evaluate, Variant(expression));
    }
    std::shared_ptr<Range> GetCaller() const override {
        return Wrap<Range>(
            [&] { return InterfaceFromVariant(getV(dispatch, Id::Caller, Missing<>), IidRange); });
    }
    std::shared_ptr<Window> GetActiveWindow() const override {
        return getO<Window>(dispatch, Id::ActiveWindow);
    }
    bool GetCalculateBeforeSave() const override { return getB(dispatch, Id::CalculateBeforeSave); }
    void PutCalculateBeforeSave(bool calculate) override {
        putB(dispatch, Id::CalculateBeforeSave, calculate);
    }
    bool GetDisplayFormulaBar() const override { return getB(dispatch, Id::DisplayFormulaBar); }
    void PutDisplayFormulaBar(bool display) override { putB(dispatch, Id::DisplayFormulaBar, display); }
    bool GetScreenUpdating() const override { return getB(dispatch, Id::ScreenUpdating); }
    void PutScreenUpdating(bool update) override { putB(dispatch, Id::ScreenUpdating, update); }
    void PutStatusBar(VARIANT text) override { putV(dispatch, Id::StatusBar, Variant(Take(text))); }
    VARIANT GetStatusBar() const override { return getV(dispatch, Id::StatusBar); }
    std::shared_ptr<MultiThreadedCalculationClass> GetMultiThreadedCalculation() const override {
        return getO<MultiThreadedCalculationClass>(dispatch, Id::MultiThreadedCalculation);
    }
    bool GetEnableEvents() const override { return getB(dispatch, Id::EnableEvents); }
    void PutEnableEvents(bool enable) override { putB(dispatch, Id::EnableEvents, enable); }
    void Calculate() override { doN(dispatch, Id::Calculate); }
    void CalculateFull() override { doN(dispatch, Id::CalculateFull); }
    void CalculateFullRebuild() override { doN(dispatch, Id::CalculateFullRebuild); }
    CStringW GetVersion() const override { return getS(dispatch, Id::Version); }
    LONG GetBuild() const override { return getL(dispatch, Id::Build); }
    bool RegisterXLL(const CStringW& fileName) override { return doB(dispatch, Id::RegisterXLL, fileName); }
    VARIANT ConvertFormula(VARIANT formula, LONG fromReferenceStyle, VARIANT toReferenceStyle,
                           VARIANT toAbsolute, VARIANT relativeTo) override {
        return doVR(dispatch, Id::ConvertFormula, Variant(Take(formula)), fromReferenceStyle,
                    Optional(Take(toReferenceStyle)), Optional(Take(toAbsolute)), Optional(Take(relativeTo)));
    }
    ComPtr<IDispatch> GetSelection() const override { return getI(dispatch, Id::Selection); }
    std::shared_ptr<Range> GetActiveCell() const override { return getO<Range>(dispatch, Id::ActiveCell); }
    LONG GetReferenceStyle() const override { return getL(dispatch, Id::ReferenceStyle); }
    void PutReferenceStyle(LONG style) override { putL(dispatch, Id::ReferenceStyle, style); }
    bool GetReady() const override { return getB(dispatch, Id::Ready); }
    bool GetIteration() const override { return getB(dispatch, Id::Iteration); }
    void PutIteration(bool iterate) override { putB(dispatch, Id::Iteration, iterate); }
    LONG GetMaxIterations() const override { return getL(dispatch, Id::MaxIterations); }
    void PutMaxIterations(LONG iterations) override { putL(dispatch, Id::MaxIterations, iterations); }
    double GetMaxChange() const override { return getD(dispatch, Id::MaxChange); }
    void PutMaxChange(double change) override { putD(dispatch, Id::MaxChange, change); }
    CStringW GetCaption() const override { return getS(dispatch, Id::Caption); }
    bool GetUserControl() const override { return getB(dispatch, Id::UserControl); }
    void PutUserControl(bool control) override { putB(dispatch, Id::UserControl, control); }
    bool GetDisplayStatusBar() const override { return getB(dispatch, Id::DisplayStatusBar); }
    void PutDisplayStatusBar(bool display) override { putB(dispatch, Id::DisplayStatusBar, display); }
    std::shared_ptr<RecentFiles> GetRecentFiles() const override {
        return getO<RecentFiles>(dispatch, Id::RecentFiles);
    }
    CStringW GetAltStartupPath() const override { return getS(dispatch, Id::AltStartupPath); }
    void PutAltStartupPath(const CStringW& path) override { putS(dispatch, Id::AltStartupPath, path); }
    CStringW GetStartupPath() const override { return getS(dispatch, Id::StartupPath); }
    std::shared_ptr<AutoCorrect> GetAutoCorrect() const override {
        return getO<AutoCorrect>(dispatch, Id::AutoCorrect);
    }

  private:
    VARIANT RunWith(const auto&... macroAndArguments) const {
        return doVR(dispatch, Id::Run, Optional(macroAndArguments)...);
    }
    ComPtr<IDispatch> CellsIn(const ParsedExternalReference& reference) const;

    ComPtr<IDispatch> dispatch;
};

bool XApplication14::IsHasSpillAvailable() {
    const auto isUnknown = [] { return HasSpillAvailable == -1; };
    if (!isUnknown()) return HasSpillAvailable == 1;

    const std::shared_ptr<Workbooks> workbooks = GetWorkbooks();
    for (LONG book = 1; isUnknown() && book <= workbooks->GetCount(); ++book) {
        const std::shared_ptr<Sheets> sheets = workbooks->GetItem(book)->GetWorksheets();
        for (LONG sheet = 1; isUnknown() && sheet <= sheets->GetCount(); ++sheet) {
            const std::shared_ptr<Range> cells = sheets->GetItem(sheet)->GetCells();
            if (cells->GetRows()->GetCount() > 0 && cells->GetColumns()->GetCount() > 0) {
                const OwnedVariant probed = cells->GetItem(1, 1)->GetHasSpill();
            }
        }
    }
    return HasSpillAvailable == 1;
}

std::shared_ptr<Range> XApplication14::GetRange(const CStringW& address) const {
    try {
        return getO<Range>(dispatch, Id::Range, Variant(address), Missing<>);
    } catch (...) {
        const ParsedExternalReference reference(address);
        if (!reference.valid) throw;
        return Wrap<Range>([&] { return CellsIn(reference); });
    }
}

ComPtr<IDispatch> XApplication14::CellsIn(const ParsedExternalReference& reference) const {
    const ComPtr<IDispatch> workbooks = getI(dispatch, Id::Workbooks);
    const ComPtr<IDispatch> workbook = getI(workbooks, Dispid::Workbooks::Item, Variant(reference.workbook));
    const ComPtr<IDispatch> sheets = getI(workbook, Dispid::Workbook::Worksheets);
    const ComPtr<IDispatch> sheet = getI(sheets, Dispid::Sheets::Item, Variant(reference.sheet));
    return getI(QueryFor(sheet, IidWorksheet).get(), Dispid::Worksheet::Range, Variant(reference.cell),
                Missing<>);
}

}  // namespace

template <>
std::shared_ptr<Application> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XApplication14>(source);
}

std::shared_ptr<Application> MakeApplication(IUnknown* source) {
    return MakePooled<XApplication14>(source);
}
