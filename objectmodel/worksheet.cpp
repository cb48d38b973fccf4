#include "objectmodel/worksheet.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"
#include "objectmodel/msexcel.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Worksheet;

class XWorksheet14 final : public Worksheet {
  public:
    explicit XWorksheet14(IUnknown* source) : dispatch(QueryFor(source, IidWorksheet)) {}
    explicit XWorksheet14(const ComPtr<IDispatch>& source) : XWorksheet14(source.get()) {}

    std::shared_ptr<Application> GetApplication() const override {
        return getO<Application>(dispatch, Id::Application);
    }
    void Calculate() override { doN(dispatch, Id::Calculate); }
    std::shared_ptr<Range> GetRange(const CStringW& address) const override {
        return getO<Range>(dispatch, Id::Range, Variant(address), Missing<>);
    }
    void PutName(const CStringW& name) override { putS(dispatch, Id::Name, name); }
    CStringW GetName() const override { return getS(dispatch, Id::Name); }
    std::shared_ptr<Range> GetCell(LONG row, SHORT column) const override {
        return Wrap<Range>([&] {
            const ComPtr<IDispatch> cells = getI(dispatch, Id::Cells);
            return InterfaceFromVariant(getV(cells, Dispid::Range::Item, Variant(row), Optional(column)),
                                        IidRange);
        });
    }
    std::shared_ptr<Range> GetCells() const override { return getO<Range>(dispatch, Id::Cells); }
    void Activate() override { doN(dispatch, Id::Activate); }
    std::shared_ptr<Range> GetUsedRange() const override { return getO<Range>(dispatch, Id::UsedRange); }
    void Delete() override { doN(dispatch, Id::Delete); }
    LONG GetVisible() const override { return getL(dispatch, Id::Visible); }
    void PutVisible(LONG visibility) override { putL(dispatch, Id::Visible, visibility); }
    VARIANT Evaluate(const CStringW& expression) override {
        return doVR(dispatch, Id::Evaluate, Variant(expression));
    }
    std::shared_ptr<Workbook> GetParent() const override { return GetWorkbook(); }
    std::shared_ptr<Names> GetNames() const override { return getO<Names>(dispatch, Id::Names); }
    std::shared_ptr<Workbook> GetWorkbook() const override {
        return Wrap<Workbook>([&] { return QueryFor(getI(dispatch, Id::Parent).get(), IidWorkbook); });
    }
    IDispatch* GetDispatch() const noexcept override { return dispatch; }
    bool GetProtectContents() const override { return getB(dispatch, Id::ProtectContents); }
    LONG GetIndex() const override { return getL(dispatch, Id::Index); }
    std::shared_ptr<ListObjects> GetListObjects() const override {
        return getO<ListObjects>(dispatch, Id::ListObjects);
    }
    std::shared_ptr<PivotTables> GetPivotTables() override {
        return doO<PivotTables>(dispatch, Id::PivotTables, Missing<>);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Worksheet> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XWorksheet14>(source);
}

std::shared_ptr<Worksheet> MakeWorksheet(IUnknown* source) {
    return MakePooled<XWorksheet14>(source);
}
