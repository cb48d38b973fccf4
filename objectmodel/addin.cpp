#include "objectmodel/addin.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::AddIn;

class XAddIn14 final : public AddIn {
  public:
    explicit XAddIn14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool IsNull() const noexcept override { return !dispatch; }
    bool GetInstalled() const override { return getB(dispatch, Id::Installed); }
    void PutInstalled(bool installed) override { putB(dispatch, Id::Installed, installed); }
    CStringW GetName() const override { return getS(dispatch, Id::Name); }
    CStringW GetFullName() const override { return getS(dispatch, Id::FullName); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<AddIn> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XAddIn14>(source);
}
