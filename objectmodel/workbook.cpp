#include "objectmodel/workbook.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"
#include "objectmodel/msexcel.h"
#include "text/text.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Workbook;

constexpr LONG AccessExclusive = 3;  // XlSaveAsAccessMode

class XWorkbook14 final : public Workbook {
  public:
    explicit XWorkbook14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    IDispatch* GetDispatch() const noexcept override { return dispatch; }
    void Save() override { doN(dispatch, Id::Save); }
    void SaveAs(const CStringW& fileName) override {
        doN(dispatch, Id::SaveAs, Variant(fileName), MissingSent<5>, AccessExclusive, Missing<5>);
    }
    bool GetIsAddin() const override { return getB(dispatch, Id::IsAddin); }
    void PutIsAddin(bool isAddin) override { putB(dispatch, Id::IsAddin, isAddin); }
    std::shared_ptr<Sheets> GetExcel4IntlMacroSheets() const override {
        return getO<Sheets>(dispatch, Id::Excel4IntlMacroSheets);
    }
    CStringW GetName() const override { return getS(dispatch, Id::Name); }
    CStringW GetFullName() const override { return getS(dispatch, Id::FullName); }
    void Activate() override { doN(dispatch, Id::Activate); }
    std::shared_ptr<Window> NewWindow() override { return doO<Window>(dispatch, Id::NewWindow); }
    std::shared_ptr<Sheets> GetWorksheets() const override { return getO<Sheets>(dispatch, Id::Worksheets); }
    std::shared_ptr<Windows> GetWindows() const override { return getO<Windows>(dispatch, Id::Windows); }
    void RunAutoMacros(LONG which) override { doN(dispatch, Id::RunAutoMacros, which); }
    void Close(VARIANT saveChanges, VARIANT fileName) override {
        doN(dispatch, Id::Close, Optional(Take(saveChanges)), Optional(Take(fileName)), Missing<>);
    }
    std::shared_ptr<Names> GetNames() const override { return getO<Names>(dispatch, Id::Names); }
    void SaveCopyAs(const CStringW& fileName) override { doN(dispatch, Id::SaveCopyAs, Optional(fileName)); }
    bool GetHasPassword() const override { return getB(dispatch, Id::HasPassword); }
    LONG GetFileFormat() const override { return getL(dispatch, Id::FileFormat); }
    CStringA ToString() const override {
        return CStringAFormat("Workbook14: this=%p, wb=%p\n", static_cast<const void*>(this),
                              static_cast<const void*>(dispatch.get()));
    }
    LONG GetMaxColumns() const override { return GetExcel8CompatibilityMode() ? 256 : 16384; }
    LONG GetMaxRows() const override { return GetExcel8CompatibilityMode() ? 65536 : 1048576; }
    LONG GetMaxFormulaLength() const override { return GetExcel8CompatibilityMode() ? 1024 : 8192; }
    std::shared_ptr<Worksheet> GetActiveSheet() const override {
        return getO<Worksheet>(dispatch, Id::ActiveSheet);
    }
    std::shared_ptr<Application> GetParent() const override {
        return getO<Application>(dispatch, Id::Parent);
    }
    bool GetSaved() const override { return getB(dispatch, Id::Saved); }
    void PutSaved(bool saved) override { putB(dispatch, Id::Saved, saved); }
    CStringW GetPath() const override { return getS(dispatch, Id::Path); }
    std::shared_ptr<MsExcel::DocumentProperties> GetBuiltinDocumentProperties() const override {
        return getO<MsExcel::DocumentProperties>(dispatch, Id::BuiltinDocumentProperties);
    }
    bool GetExcel8CompatibilityMode() const override { return getB(dispatch, Id::Excel8CompatibilityMode); }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Workbook> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XWorkbook14>(source);
}

std::shared_ptr<Workbook> MakeWorkbook(IUnknown* source) {
    return Wrap<Workbook>([&] { return QueryFor(source, IidWorkbook); });
}
