#include "objectmodel/sheets.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Sheets;

class XSheets14 final : public Sheets {
  public:
    explicit XSheets14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    std::shared_ptr<Worksheet> Add(const VARIANT& before, const VARIANT& after, const VARIANT& count,
                                   const VARIANT& type) override {
        return doO<Worksheet>(dispatch, Id::Add, Optional(before), Optional(after), Optional(count),
                              Optional(type));
    }
    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Worksheet> GetItem(const CStringW& name) const override {
        return getO<Worksheet>(dispatch, Id::Item, Variant(name));
    }
    std::shared_ptr<Worksheet> GetItem(LONG index) const override {
        return getO<Worksheet>(dispatch, Id::Item, Variant(index));
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Sheets> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XSheets14>(source);
}
