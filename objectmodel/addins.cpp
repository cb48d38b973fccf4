#include "objectmodel/addins.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::AddIns;

class XAddIns14 final : public AddIns {
  public:
    explicit XAddIns14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<AddIn> GetItem(LONG index) const override {
        return getO<AddIn>(dispatch, Id::Item, Variant(index));
    }
    std::shared_ptr<AddIn> Add(const CStringW& fileName) override {
        return doO<AddIn>(dispatch, Id::Add, fileName, Optional(false));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<AddIns> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XAddIns14>(source);
}
