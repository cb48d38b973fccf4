#include "objectmodel/documentproperty.h"

#include "objectmodel/detail/wrap.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;

// Calls Office's interface by its virtual table.
class XDocumentProperty14 final : public DocumentProperty {
  public:
    explicit XDocumentProperty14(ComPtr<IDocumentProperty> source) noexcept : dispatch(std::move(source)) {}

    VARIANT GetValue() const override {
        if (!dispatch) IssueError(E_POINTER);
        OwnedVariant value;
        Check(dispatch->get_Value(0, value.receive()));
        return value.release();
    }
    void PutValue(VARIANT value) override {
        const OwnedVariant taken = std::move(value);
        if (!dispatch) IssueError(E_POINTER);
        Check(dispatch->put_Value(0, taken.borrow()));
    }

  private:
    void Check(HRESULT hresult) const {
        if (FAILED(hresult)) IssueErrorEx(hresult, dispatch, IidDocumentProperty);
    }

    ComPtr<IDocumentProperty> dispatch;
};

}  // namespace

std::shared_ptr<DocumentProperty> kestrolumen::detail::WrapDocumentProperty(
    InterfaceSource<IDocumentProperty> source) {
    return MakePooled<XDocumentProperty14>(source);
}
