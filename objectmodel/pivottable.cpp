#include "objectmodel/pivottable.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::PivotTable;

class XPivotTable14 final : public PivotTable {
  public:
    explicit XPivotTable14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool RefreshTable() override { return doB(dispatch, Id::RefreshTable); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<PivotTable> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XPivotTable14>(source);
}
