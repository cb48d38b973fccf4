#include "objectmodel/window.h"

#include "errors/vex.h"
#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"
#include "objectmodel/msexcel.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Window;

constexpr LONG FirstVersionWithHwnd = 15;  // one window a workbook, since Excel 2013

// The decimal digits that the text begins with, as a number: 16 of "16.0", 0 where there are none.
LONG MajorVersion(const CStringW& version) {
    constexpr LONG enough = 100000;
    LONG number = 0;
    for (int i = 0; i < version.GetLength() && number < enough; ++i) {
        const WCHAR unit = version[i];
        if (unit < TEXT('0') || unit > TEXT('9')) break;
        number = number * 10 + (unit - TEXT('0'));
    }
    return number;
}

class XWindow14 final : public Window {
  public:
    explicit XWindow14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool IsNull() const noexcept override { return !dispatch; }
    std::shared_ptr<Application> GetApplication() const override {
        return getO<Application>(dispatch, Id::Application);
    }
    bool Close() override { return doB(dispatch, Id::Close, Missing<3>); }
    VARIANT Activate() override { return doVR(dispatch, Id::Activate); }
    std::shared_ptr<Window> NewWindow() override { return doO<Window>(dispatch, Id::NewWindow); }
    std::shared_ptr<Range> GetActiveCell() const override { return getO<Range>(dispatch, Id::ActiveCell); }
    ComPtr<IDispatch> GetSelection() const override { return getI(dispatch, Id::Selection); }
    CStringW GetCaption() const override { return getVS(dispatch, Id::Caption); }
    LONG GetHwnd() const override {
        if (MajorVersion(GetApplication()->GetVersion()) < FirstVersionWithHwnd) {
            throw VexExcelUnsupportedMethodCall("XWindow14::GetHwnd", VexCode::Sentence,
                                                TEXT("This version of Excel does not support Window.Hwnd."));
        }
        return getL(dispatch, Id::Hwnd);
    }
    bool GetVisible() const override { return getB(dispatch, Id::Visible); }
    void PutVisible(bool visible) override { putB(dispatch, Id::Visible, visible); }
    double GetTop() const override { return getD(dispatch, Id::Top); }
    void PutTop(double top) override { putD(dispatch, Id::Top, top); }
    double GetLeft() const override { return getD(dispatch, Id::Left); }
    void PutLeft(double left) override { putD(dispatch, Id::Left, left); }
    double GetHeight() const override { return getD(dispatch, Id::Height); }
    void PutHeight(double height) override { putD(dispatch, Id::Height, height); }
    double GetWidth() const override { return getD(dispatch, Id::Width); }
    void PutWidth(double width) override { putD(dispatch, Id::Width, width); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Window> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XWindow14>(source);
}

std::shared_ptr<Window> MakeWindow(IUnknown* source) {
    return Wrap<Window>([&] { return QueryFor(source, IidWindow); });
}
