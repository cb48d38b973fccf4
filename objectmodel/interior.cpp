#include "objectmodel/interior.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Interior;

class XInterior14 final : public Interior {
  public:
    explicit XInterior14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    void PutColorIndex(VARIANT colorIndex) override {
        putV(dispatch, Id::ColorIndex, Variant(Take(colorIndex)));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Interior> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XInterior14>(source);
}
