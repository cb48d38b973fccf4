#include "objectmodel/hyperlinks.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Hyperlinks;

class XHyperlinks14 final : public Hyperlinks {
  public:
    explicit XHyperlinks14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Hyperlink> GetItem(LONG index) const override {
        return getO<Hyperlink>(dispatch, Id::Item, Variant(index));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Hyperlinks> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XHyperlinks14>(source);
}
