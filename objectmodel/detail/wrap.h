// From an interface to a shared object of the object model.
#pragma once

#include "objectmodel/dispatch.h"
#include "objectmodel/detail/interfaces.h"
#include "objectmodel/types.h"
#include "platform/detail/blockpool.h"

namespace kestrolumen::detail {

using kestrolumen::ComPtr;  // for those who use this namespace

// The interface `iid` of `source`, in a pointer type that begins as that interface does. Null when the source
// is null or has no such interface; any other failure raises _com_error.
template <class Interface = IDispatch>
[[nodiscard]] ComPtr<Interface> QueryFor(IUnknown* source, REFIID iid) {
    void* result = nullptr;
    const HRESULT hresult = source ? source->QueryInterface(iid, &result) : E_NOINTERFACE;
    if (hresult == E_NOINTERFACE) return nullptr;
    if (FAILED(hresult)) IssueError(hresult);
    return ComPtr<Interface>::Adopt(static_cast<Interface*>(result));
}

// The interface `iid` of the object that a VARIANT holds or can be turned into, by VariantChangeType to
// VT_DISPATCH and then to VT_UNKNOWN. Null when it holds no object or one without the interface; any other
// failure raises _com_error.
[[nodiscard]] ComPtr<IDispatch> InterfaceFromVariant(const OwnedVariant& value, REFIID iid);

// A call that will give an interface, borrowed and not yet made. It stands in for the interface where an
// object is constructed: the object's memory is there before the call goes out, so that no call to Excel is
// made in vain, and a call that fails gives the memory back.
template <class Interface>
class InterfaceSource {
  public:
    template <class Call>
    InterfaceSource(const Call& made) noexcept
        : call(&made),
          run([](const void* it) { return ComPtr<Interface>((*static_cast<const Call*>(it))()); }) {}

    operator ComPtr<Interface>() const { return run(call); }

  private:
    const void* call;
    ComPtr<Interface> (*run)(const void*);
};

// A new object of the class that implements `Object`, on the interface that `source` gives.
template <class Object>
[[nodiscard]] std::shared_ptr<Object> Wrap(InterfaceSource<IDispatch> source);
std::shared_ptr<MsExcel::DocumentProperty> WrapDocumentProperty(InterfaceSource<IDocumentProperty> source);

// clang-format off
template <> std::shared_ptr<MsExcel::AddIn> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::AddIns> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Application> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Areas> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::AutoCorrect> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Comment> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::DocumentProperties> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Hyperlink> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Hyperlinks> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Interior> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::ListColumn> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::ListColumns> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::ListObject> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::ListObjects> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::MultiThreadedCalculationClass> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Name> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Names> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::PivotTable> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::PivotTables> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Range> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::RecentFile> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::RecentFiles> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Sheets> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Window> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Windows> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Workbook> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Workbooks> Wrap(InterfaceSource<IDispatch> source);
template <> std::shared_ptr<MsExcel::Worksheet> Wrap(InterfaceSource<IDispatch> source);
// clang-format on

}  // namespace kestrolumen::detail
