#include "objectmodel/areas.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Areas;

class XAreas14 final : public Areas {
  public:
    explicit XAreas14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Range> GetItem(LONG index) const override {
        return getO<Range>(dispatch, Id::Item, index);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Areas> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XAreas14>(source);
}
