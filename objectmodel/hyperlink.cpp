#include "objectmodel/hyperlink.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Hyperlink;

class XHyperlink14 final : public Hyperlink {
  public:
    explicit XHyperlink14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    CStringW GetAddress() const override { return getS(dispatch, Id::Address); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Hyperlink> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XHyperlink14>(source);
}
