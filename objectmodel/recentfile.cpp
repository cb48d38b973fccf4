#include "objectmodel/recentfile.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::RecentFile;

class XRecentFile14 final : public RecentFile {
  public:
    explicit XRecentFile14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    CStringW GetName() const override { return getS(dispatch, Id::Name); }
    void Delete() override { doN(dispatch, Id::Delete); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<RecentFile> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XRecentFile14>(source);
}
