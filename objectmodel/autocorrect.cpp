#include "objectmodel/autocorrect.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::AutoCorrect;

class XAutoCorrect14 final : public AutoCorrect {
  public:
    explicit XAutoCorrect14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool GetAutoExpandListRange() const override { return getB(dispatch, Id::AutoExpandListRange); }
    void PutAutoExpandListRange(bool expand) override { putB(dispatch, Id::AutoExpandListRange, expand); }
    bool GetAutoFillFormulasInLists() const override { return getB(dispatch, Id::AutoFillFormulasInLists); }
    void PutAutoFillFormulasInLists(bool fill) override { putB(dispatch, Id::AutoFillFormulasInLists, fill); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<AutoCorrect> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XAutoCorrect14>(source);
}
