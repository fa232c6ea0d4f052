#pragma once
#include <windows.h>
#include <oaidl.h>

namespace corvan::com {

// The type library embedded in our own module file, loaded once. Scripting
// goes through it rather than through the registry, so a damaged or foreign
// registration never breaks IDispatch.
ITypeLib* OwnTypeLibrary();  // not AddRef'd; lives as long as the process

// The type information of one interface, dispinterface or coclass of the
// library; the caller gets a reference.
HRESULT OwnTypeInfo(REFGUID guid, ITypeInfo** info);

// IDispatch through the type information of `iid`, for the object `self`
// that implements that dual interface.
HRESULT DispatchGetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, DISPID* ids);
HRESULT DispatchInvoke(REFIID iid, void* self, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                       EXCEPINFO* exception, UINT* argumentError);

// The IDispatch part of the dual interface I whose IID is *Iid.
template <typename I, const IID* Iid>
class TypeInfoDispatch : public I {
public:

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        return OwnTypeInfo(iid_, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        return DispatchGetIDsOfNames(iid_, names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                        EXCEPINFO* exception, UINT* argumentError) override {
        if (!IsEqualIID(riid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        return DispatchInvoke(iid_, static_cast<I*>(this), id, flags, params, result, exception, argumentError);
    }

private:
    static constexpr const IID& iid_ = *Iid;
};

}  // namespace corvan::com
