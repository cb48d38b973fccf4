// One window on a workbook (Excel VBA reference: Window object).
#pragma once

#include "objectmodel/types.h"

// Sizes and places are in points.
class MsExcel::Window {
  public:
    virtual ~Window() = default;

    // True when the object holds no interface.
    virtual bool IsNull() const noexcept = 0;
    virtual std::shared_ptr<Application> GetApplication() const = 0;
    // Closes the window, and its workbook with the last one; Excel asks the user what to do with changes.
    // The answer is Excel's.
    virtual bool Close() = 0;
    [[nodiscard]] virtual VARIANT Activate() = 0;
    virtual std::shared_ptr<Window> NewWindow() = 0;
    virtual std::shared_ptr<Range> GetActiveCell() const = 0;
    // Whatever is selected, often but not always a range; null when nothing is.
    virtual kestrolumen::ComPtr<IDispatch> GetSelection() const = 0;
    virtual CStringW GetCaption() const = 0;
    // The window's handle, its low 32 bits. Excel before version 15 has one window for all workbooks: there
    // it raises VexExcelUnsupportedMethodCall 2845 and asks Excel for no handle.
    virtual LONG GetHwnd() const = 0;
    virtual bool GetVisible() const = 0;
    virtual void PutVisible(bool visible) = 0;
    virtual double GetTop() const = 0;
    virtual void PutTop(double top) = 0;
    virtual double GetLeft() const = 0;
    virtual void PutLeft(double left) = 0;
    virtual double GetHeight() const = 0;
    virtual void PutHeight(double height) = 0;
    virtual double GetWidth() const = 0;
    virtual void PutWidth(double width) = 0;
};
