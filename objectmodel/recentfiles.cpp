#include "objectmodel/recentfiles.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::RecentFiles;

class XRecentFiles14 final : public RecentFiles {
  public:
    explicit XRecentFiles14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<RecentFile> GetItem(LONG index) const override {
        return getO<RecentFile>(dispatch, Id::Item, index);
    }
    std::shared_ptr<RecentFile> Add(const CStringW& fileName) override {
        return doO<RecentFile>(dispatch, Id::Add, fileName);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<RecentFiles> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XRecentFiles14>(source);
}
