#include "objectmodel/workbooks.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Workbooks;

class XWorkbooks14 final : public Workbooks {
  public:
    explicit XWorkbooks14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    std::shared_ptr<Workbook> Add() override { return doO<Workbook>(dispatch, Id::Add, Missing<>); }
    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Workbook> GetItem(const CStringW& name) const override {
        return getO<Workbook>(dispatch, Id::Item, Variant(name));
    }
    std::shared_ptr<Workbook> GetItem(LONG index) const override {
        return getO<Workbook>(dispatch, Id::Item, Variant(index));
    }
    std::shared_ptr<Workbook> Open(const CStringW& fileName, VARIANT updateLinks, VARIANT readOnly,
                                   VARIANT format, VARIANT password) override {
        return doO<Workbook>(dispatch, Id::Open, fileName, Optional(Take(updateLinks)),
                             Optional(Take(readOnly)), Optional(Take(format)), Optional(Take(password)),
                             Missing<10>);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Workbooks> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XWorkbooks14>(source);
}
