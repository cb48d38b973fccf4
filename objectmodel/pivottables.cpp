#include "objectmodel/pivottables.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::PivotTables;

class XPivotTables14 final : public PivotTables {
  public:
    explicit XPivotTables14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<PivotTable> GetItem(LONG index) override {
        return doO<PivotTable>(dispatch, Id::Item, Variant(index));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<PivotTables> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XPivotTables14>(source);
}
