#include "objectmodel/name.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Name;

class XName14 final : public Name {
  public:
    explicit XName14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    CStringW GetName() const override { return getS(dispatch, Id::Name_); }
    CStringW GetNameLocal() const override { return getS(dispatch, Id::NameLocal); }
    void PutNameLocal(const CStringW& name) override { putS(dispatch, Id::NameLocal, name); }
    VARIANT GetRefersTo() const override { return getV(dispatch, Id::RefersTo); }
    void PutRefersTo(VARIANT formula) override { putV(dispatch, Id::RefersTo, Variant(Take(formula))); }
    VARIANT GetRefersToLocal() const override { return getV(dispatch, Id::RefersToLocal); }
    VARIANT GetRefersToR1C1Local() const override { return getV(dispatch, Id::RefersToR1C1Local); }
    std::shared_ptr<Worksheet> GetWorksheet() const noexcept override {
        return ParentAs<Worksheet>(IidWorksheet);
    }
    std::shared_ptr<Workbook> GetWorkbook() const noexcept override {
        return ParentAs<Workbook>(IidWorkbook);
    }
    void Delete() override { doN(dispatch, Id::Delete); }
    bool GetVisible() const override { return getB(dispatch, Id::Visible); }
    void PutVisible(bool visible) override { putB(dispatch, Id::Visible, visible); }

  private:
    // The parent, if it is of the kind; an empty pointer if it isn't or can't be had, for whatever reason.
    template <class Object>
    std::shared_ptr<Object> ParentAs(REFIID iid) const noexcept {
        try {
            ComPtr<IDispatch> parent = QueryFor(getI(dispatch, Id::Parent).get(), iid);
            return parent ? Wrap<Object>([&] { return std::move(parent); }) : nullptr;
        } catch (...) {
            return nullptr;
        }
    }

    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Name> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XName14>(source);
}
