#include "objectmodel/excelwindows.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Windows;

class XWindows14 final : public Windows {
  public:
    explicit XWindows14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Window> GetItem(const CStringW& name) const override {
        return getO<Window>(dispatch, Id::Item, Variant(name));
    }
    std::shared_ptr<Window> GetItem(LONG index) const override {
        return getO<Window>(dispatch, Id::Item, Variant(index));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Windows> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XWindows14>(source);
}
