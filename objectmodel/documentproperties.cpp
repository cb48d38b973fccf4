#include "objectmodel/documentproperties.h"

#include "objectmodel/detail/arguments.h"
#include "objectmodel/detail/wrap.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;

// Calls Office's interface by its virtual table.
class XDocumentProperties14 final : public MsExcel::DocumentProperties {
  public:
    explicit XDocumentProperties14(const ComPtr<IDispatch>& source)
        : dispatch(QueryFor<IDocumentProperties>(source, IidDocumentProperties)) {}

    std::shared_ptr<DocumentProperty> GetItem(const CStringW& name) const override {
        return WrapDocumentProperty([&] { return Item(name); });
    }

  private:
    ComPtr<IDocumentProperty> Item(const CStringW& name) const {
        if (!dispatch) IssueError(E_POINTER);
        const OwnedVariant index = VariantOf(name);
        if (!index->bstrVal) IssueError(E_OUTOFMEMORY);
        ComPtr<IDocumentProperty> property;
        const HRESULT hresult = dispatch->get_Item(index.borrow(), 0, property.receive());
        if (FAILED(hresult)) IssueErrorEx(hresult, dispatch, IidDocumentProperties);
        return property;
    }

    ComPtr<IDocumentProperties> dispatch;
};

}  // namespace

template <>
std::shared_ptr<MsExcel::DocumentProperties> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XDocumentProperties14>(source);
}
