#include "objectmodel/range.h"

#include "errors/vex.h"
#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/formula.h"
#include "objectmodel/detail/forms.h"
#include "objectmodel/detail/latches.h"
#include "objectmodel/msexcel.h"
#include "objectmodel/detail/probes.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Range;

constexpr LONG StyleA1 = 1;               // XlReferenceStyle
constexpr IntValue DefaultValueType{10};  // XlRangeValueDataType
constexpr IntValue LookAtPart{2};         // XlLookAt
constexpr IntValue SearchByRows{1};       // XlSearchOrder

constexpr FormulaProperty Formula{Id::Formula, "XRange14::GetFormula", "XRange14::PutFormula"};
constexpr FormulaProperty FormulaLocal{Id::FormulaLocal, "XRange14::GetFormulaLocal",
                                       "XRange14::PutFormulaLocal"};
constexpr FormulaProperty Formula2{Id::Formula2, "XRange14::GetFormula2", "XRange14::PutFormula2"};
constexpr FormulaProperty Formula2Local{Id::Formula2Local, "XRange14::GetFormula2Local",
                                        "XRange14::PutFormula2Local"};
constexpr FormulaProperty FormulaArray{Id::FormulaArray, "XRange14::GetFormulaArray",
                                       "XRange14::PutFormulaArray", true};

class XRange14 final : public Range {
  public:
    explicit XRange14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool IsNull() const noexcept override { return !dispatch; }
    LONG GetCount() const override { return getL(dispatch, Id::Count); }
    std::shared_ptr<Range> GetRows() const override { return getO<Range>(dispatch, Id::Rows); }
    std::shared_ptr<Range> GetColumns() const override { return getO<Range>(dispatch, Id::Columns); }
    CStringW GetWorkbookName() const override {
        const ComPtr<IDispatch> parent = getI(getI(dispatch, Id::Worksheet).get(), Dispid::Worksheet::Parent);
        return getS(QueryFor(parent, IidWorkbook).get(), Dispid::Workbook::Name);
    }
    CStringW GetWorksheetName() const override {
        return getS(getI(dispatch, Id::Worksheet).get(), Dispid::Worksheet::Name);
    }
    LONG GetRow() const override { return getL(dispatch, Id::Row); }
    LONG GetColumn() const override { return getL(dispatch, Id::Column); }
    CStringW GetAddressLocal(bool rowAbsolute, bool columnAbsolute, bool external) const override {
        return AddressAs(Id::AddressLocal, rowAbsolute, columnAbsolute, external);
    }
    CStringW GetAddress(bool rowAbsolute, bool columnAbsolute, bool external) const override {
        try {
            return AddressAs(Id::Address, rowAbsolute, columnAbsolute, external);
        } catch (const _com_error&) {
            if (!IsProtectedAndLocked(*this)) return {};
            throw VexExcelWorksheetProtectedCellLocked("XRange14::GetAddress", VexCode::ProtectedOnRead,
                                                       CStringW());
        }
    }
    void PutFormula2(VARIANT formula) override {
        HasFormula2() ? WriteFormula(*this, Formula2, Take(formula)) : PutFormula(formula);
    }
    VARIANT GetFormula2() const override {
        return HasFormula2() ? ReadFormula(*this, Formula2) : GetFormula();
    }
    void PutFormula2Local(VARIANT formula) override {
        HasFormula2() ? WriteFormula(*this, Formula2Local, Take(formula)) : PutFormulaLocal(formula);
    }
    VARIANT GetFormula2Local() const override {
        return HasFormula2() ? ReadFormula(*this, Formula2Local) : GetFormulaLocal();
    }
    std::shared_ptr<Areas> GetAreas() const override { return getO<Areas>(dispatch, Id::Areas); }
    VARIANT GetValue() const override { return getV(dispatch, Id::Value, Missing<>); }
    void PutValue(const VARIANT& value) override {
        putV(dispatch, Id::Value, Variant(DefaultValueType), Optional(value));
    }
    VARIANT GetValue2() const override { return getV(dispatch, Id::Value2); }
    void PutValue2(const VARIANT& value) override { putV(dispatch, Id::Value2, Variant(value)); }
    std::shared_ptr<Range> Resize(LONG rows, LONG columns) const override {
        return getO<Range>(dispatch, Id::Resize, Optional(rows), Optional(columns));
    }
    std::shared_ptr<Range> Offset(LONG rows, LONG columns) const override {
        return getO<Range>(dispatch, Id::Offset, Optional(rows), Optional(columns));
    }
    std::shared_ptr<Range> Find(const VARIANT& what, const VARIANT& after, const VARIANT& lookIn,
                                const VARIANT& lookAt, const VARIANT& searchOrder, LONG searchDirection,
                                const VARIANT& matchCase, const VARIANT& matchByte) override {
        return doO<Range>(dispatch, Id::Find, Variant(what), Variant(after), Variant(lookIn), Variant(lookAt),
                          Variant(searchOrder), searchDirection, Optional(matchCase), Optional(matchByte),
                          Missing<>);
    }
    std::shared_ptr<Range> FindNext(const VARIANT& after) override {
        return doO<Range>(dispatch, Id::FindNext, Optional(after));
    }
    IDispatch* GetDispatch() const noexcept override { return dispatch; }
    VARIANT GetHasFormula() const override { return getV(dispatch, Id::HasFormula); }
    VARIANT Select() override { return doVR(dispatch, Id::Select); }
    std::shared_ptr<Range> GetItem(LONG row, LONG column) const override {
        return Item(Variant(row), Optional(column));
    }
    std::shared_ptr<Range> GetItem(LONG index) const override { return Item(Variant(index), Missing<>); }
    LONG Delete() override { return doVL(dispatch, Id::Delete, Missing<>); }
    std::shared_ptr<Interior> GetInterior() const override { return getO<Interior>(dispatch, Id::Interior); }
    VARIANT GetFormulaArray() const override { return ReadFormula(*this, FormulaArray); }
    void PutFormulaArray(VARIANT formula) override { WriteFormula(*this, FormulaArray, Take(formula)); }
    std::shared_ptr<Worksheet> GetWorksheet() const override {
        return getO<Worksheet>(dispatch, Id::Worksheet);
    }
    bool GetMergeCells() const override { return getVB(dispatch, Id::MergeCells); }
    std::shared_ptr<Range> GetMergeArea() const override { return getO<Range>(dispatch, Id::MergeArea); }
    CStringW GetText() const override { return getVS(dispatch, Id::Text); }
    std::shared_ptr<Name> GetName() const override {
        return Wrap<Name>([&] { return InterfaceFromVariant(getV(dispatch, Id::Name), IidName); });
    }
    std::shared_ptr<Range> GetCells() const override { return getO<Range>(dispatch, Id::Cells); }
    VARIANT GetHasArray() const override { return getV(dispatch, Id::HasArray); }
    std::shared_ptr<Range> GetCurrentArray() const override;
    std::shared_ptr<Worksheet> GetParent() const override { return getO<Worksheet>(dispatch, Id::Parent); }
    CStringW GetNumberFormat() const override { return getVS(dispatch, Id::NumberFormat); }
    void PutNumberFormat(const CStringW& format) override { putVS(dispatch, Id::NumberFormat, format); }
    void Clear() override { doV(dispatch, Id::Clear); }
    void ClearContents() override { doV(dispatch, Id::ClearContents); }
    VARIANT Activate() override { return doVR(dispatch, Id::Activate); }
    void Copy() override { doV(dispatch, Id::Copy, Missing<>); }
    std::shared_ptr<Range> SpecialCells(LONG type) override {
        return doO<Range>(dispatch, Id::SpecialCells, type, Missing<>);
    }
    VARIANT GetFormulaHidden() const override { return getV(dispatch, Id::FormulaHidden); }
    std::shared_ptr<Comment> GetComment() const override { return getO<Comment>(dispatch, Id::Comment); }
    void AddComment(const CStringW& text) override {
        const ComPtr<IDispatch> added = doI(dispatch, Id::AddComment, Optional(text));
    }
    std::shared_ptr<ListObject> GetListObject() const override {
        return getO<ListObject>(dispatch, Id::ListObject);
    }
    bool GetLocked() const override { return getVB(dispatch, Id::Locked); }
    std::shared_ptr<Hyperlinks> GetHyperlinks() const override {
        return getO<Hyperlinks>(dispatch, Id::Hyperlinks);
    }
    bool Replace(const CStringW& what, const CStringW& replacement) override {
        return doB(dispatch, Id::Replace, Variant(what), Variant(replacement), Optional(LookAtPart),
                   Optional(SearchByRows), Optional(true), Optional(false), Missing<2>);
    }
    bool GoalSeek(double goal, std::shared_ptr<Range> changingCell) override {
        return doB(dispatch, Id::GoalSeek, Variant(goal), changingCell);
    }
    VARIANT GetHasSpill() const override {
        if (!dispatch) IssueError(E_POINTER);
        ProbeHasSpill(dispatch);
        return HasSpillAvailable == 1 ? getV(dispatch, Id::HasSpill) : VariantOf(false);
    }
    std::shared_ptr<Range> GetSpillParent() const override { return getO<Range>(dispatch, Id::SpillParent); }
    std::shared_ptr<Range> GetSpillingToRange() const override {
        return getO<Range>(dispatch, Id::SpillingToRange);
    }
    CStringW GetID() const override { return getS(dispatch, Id::ID); }
    void PutID(const CStringW& id) override { putS(dispatch, Id::ID, id); }

    // What stands in for Formula2 and Formula2Local on a host that lacks them.
    VARIANT GetFormula() const { return ReadFormula(*this, Formula); }
    void PutFormula(VARIANT formula) { WriteFormula(*this, Formula, Take(formula)); }
    VARIANT GetFormulaLocal() const { return ReadFormula(*this, FormulaLocal); }
    void PutFormulaLocal(VARIANT formula) { WriteFormula(*this, FormulaLocal, Take(formula)); }

  private:
    // A range that holds null tells nothing about the host.
    bool HasFormula2() const noexcept {
        if (dispatch) ProbeFormula2(dispatch);
        return Formula2Available == 1;
    }

    CStringW AddressAs(DISPID property, bool rowAbsolute, bool columnAbsolute, bool external) const {
        return getS(dispatch, property, Variant(rowAbsolute), Variant(columnAbsolute), StyleA1,
                    Optional(external), Missing<>);
    }

    std::shared_ptr<Range> Item(const auto& row, const auto& column) const {
        return Wrap<Range>(
            [&] { return InterfaceFromVariant(getV(dispatch, Id::Item, row, column), IidRange); });
    }

    ComPtr<IDispatch> dispatch;
};

std::shared_ptr<Range> XRange14::GetCurrentArray() const {
    if (!dispatch) IssueError(E_POINTER);
    try {
        return getO<Range>(dispatch, Id::CurrentArray);
    } catch (const _com_error&) {
        constexpr auto function = "XRange14::GetCurrentArray";
        if (IsProtectedAndLocked(*this)) {
            throw VexExcelWorksheetProtectedCellLocked(function, VexCode::ProtectedOnRead,
                                                       AddressForMessage(*this));
        }
        if (IsProtected(*this)) {
            throw VexExcelWorksheetProtected(function, VexCode::ProtectedOnRead, AddressForMessage(*this));
        }
        return nullptr;
    }
}

}  // namespace

template <>
std::shared_ptr<Range> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XRange14>(source);
}

std::shared_ptr<Range> MakeRange(IUnknown* source) {
    return Wrap<Range>([&] { return QueryFor(source, IidRange); });
}
