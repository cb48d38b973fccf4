#include "objectmodel/names.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Names;

class XNames14 final : public Names {
  public:
    explicit XNames14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Name> GetItem(const CStringW& name) override {
        return doO<Name>(dispatch, Id::Item, Optional(name), Missing<2>);
    }
    std::shared_ptr<Name> GetItem(LONG index) override {
        return doO<Name>(dispatch, Id::Item, Optional(index), Missing<2>);
    }
    std::shared_ptr<Name> Add(VARIANT name, const CStringW& refersTo) override {
        return doO<Name>(dispatch, Id::Add, Optional(Take(name)), Optional(refersTo), Missing<9>);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Names> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XNames14>(source);
}
