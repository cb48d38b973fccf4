#include "winapi/errorinfo.h"

#include "winapi/dispatch.h"
#include "winapi/errorcodes.h"

#include <atomic>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace {

using Text = std::optional<std::basic_string<OLECHAR>>;

HRESULT Store(Text& text, LPCOLESTR value) noexcept {
    try {
        text.reset();
        if (value) text.emplace(value);
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT Load(const Text& text, BSTR* value) noexcept {
    if (value == nullptr) return E_INVALIDARG;
    *value = text ? SysAllocStringLen(text->data(), static_cast<UINT>(text->size())) : nullptr;
    return text && *value == nullptr ? E_OUTOFMEMORY : S_OK;
}

// Its last reference destroys it, and nobody else.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class ErrorObject final : public ICreateErrorInfo, public IErrorInfo {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_INVALIDARG;
        if (iid == IID_IErrorInfo) {
            *object = static_cast<IErrorInfo*>(this);
        } else if (iid == IID_ICreateErrorInfo || iid == IID_IUnknown) {
            *object = static_cast<ICreateErrorInfo*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE SetGUID(REFGUID value) override {
        guid = value;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR value) override { return Store(source, value); }
    HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR value) override { return Store(description, value); }
    HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR value) override { return Store(helpFile, value); }
    HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD value) override {
        helpContext = value;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetGUID(GUID* value) override {
        if (value == nullptr) return E_INVALIDARG;
        *value = guid;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR* value) override { return Load(source, value); }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR* value) override { return Load(description, value); }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* value) override { return Load(helpFile, value); }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* value) override {
        if (value == nullptr) return E_INVALIDARG;
        *value = helpContext;
        return S_OK;
    }

  private:
    ~ErrorObject() = default;

    std::atomic<ULONG> references = 1;
    GUID guid{};
    Text source;
    Text description;
    Text helpFile;
    DWORD helpContext = 0;
};

// The thread's error object; given back with the thread.
struct Slot {
    IErrorInfo* info = nullptr;
    ~Slot() {
        if (info) info->Release();
    }
};
thread_local Slot slot;

}  // namespace

HRESULT WINAPI CreateErrorInfo(ICreateErrorInfo** info) noexcept {
    if (info == nullptr) return E_INVALIDARG;
    *info = new (std::nothrow) ErrorObject;
    return *info ? S_OK : E_OUTOFMEMORY;
}

HRESULT WINAPI SetErrorInfo(ULONG reserved, IErrorInfo* info) noexcept {
    if (reserved != 0) return E_INVALIDARG;
    if (info) info->AddRef();
    IErrorInfo* const old = std::exchange(slot.info, info);
    if (old) old->Release();
    return S_OK;
}

HRESULT WINAPI GetErrorInfo(ULONG reserved, IErrorInfo** info) noexcept {
    if (reserved != 0 || info == nullptr) return E_INVALIDARG;
    *info = std::exchange(slot.info, nullptr);
    return *info ? S_OK : S_FALSE;
}
