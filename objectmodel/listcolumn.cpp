#include "objectmodel/listcolumn.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::ListColumn;

class XListColumn14 final : public ListColumn {
  public:
    explicit XListColumn14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    CStringW GetName() const override { return getS(dispatch, Id::Name); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<ListColumn> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XListColumn14>(source);
}
