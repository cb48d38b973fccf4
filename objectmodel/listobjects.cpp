#include "objectmodel/listobjects.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::ListObjects;

class XListObjects14 final : public ListObjects {
  public:
    explicit XListObjects14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<ListObject> GetItem(LONG index) const override {
        return getO<ListObject>(dispatch, Id::Item, Variant(index));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<ListObjects> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XListObjects14>(source);
}
