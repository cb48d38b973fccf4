#include "objectmodel/listobject.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::ListObject;

class XListObject14 final : public ListObject {
  public:
    explicit XListObject14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool IsNull() const noexcept override { return !dispatch; }
    CStringW GetName() const override { return getS(dispatch, Id::Name); }
    CStringW GetDisplayName() const override { return getS(dispatch, Id::DisplayName); }
    std::shared_ptr<Range> GetDataBodyRange() const override {
        return getO<Range>(dispatch, Id::DataBodyRange);
    }
    std::shared_ptr<Range> GetHeaderRowRange() const override {
        return getO<Range>(dispatch, Id::HeaderRowRange);
    }
    std::shared_ptr<ListColumns> GetListColumns() const override {
        return getO<ListColumns>(dispatch, Id::ListColumns);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<ListObject> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XListObject14>(source);
}
