#include "objectmodel/multithreadedcalculation.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::MultiThreadedCalculation;

class XMultiThreadedCalculation14 final : public MultiThreadedCalculationClass {
  public:
    explicit XMultiThreadedCalculation14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool GetEnabled() const override { return getB(dispatch, Id::Enabled); }
    void PutEnabled(bool enabled) override { putB(dispatch, Id::Enabled, enabled); }
    LONG GetThreadCount() const override { return getL(dispatch, Id::ThreadCount); }
    void PutThreadCount(LONG count) override { putL(dispatch, Id::ThreadCount, count); }
    LONG GetThreadMode() const override { return getL(dispatch, Id::ThreadMode); }
    void PutThreadMode(LONG mode) override { putL(dispatch, Id::ThreadMode, mode); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<MultiThreadedCalculationClass> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XMultiThreadedCalculation14>(source);
}
