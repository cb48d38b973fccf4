#include "objectmodel/listcolumns.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::ListColumns;

class XListColumns14 final : public ListColumns {
  public:
    explicit XListColumns14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<ListColumn> GetItem(LONG index) const override {
        return getO<ListColumn>(dispatch, Id::Item, Variant(index));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<ListColumns> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XListColumns14>(source);
}
