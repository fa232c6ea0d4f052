#include "control/clsFTPCom.h"

#include <new>
#include <vector>

#include <olectl.h>

#include "control/bstr_text.h"
#include "control/com_guard.h"

namespace corvan::com {

namespace {

HRESULT PutText(BSTR* out, const std::string& text) {
    if (!out) return E_POINTER;
    *out = ToBstr(text);
    return *out ? S_OK : E_OUTOFMEMORY;
}

template <typename T>
HRESULT PutValue(T* out, T value) {
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
}

}  // namespace

void clsFTPEventPoint::FireFileProgress(float percent, const std::string& status) {
    Bstr text(status);
    VARIANT arguments[2];  // last argument first
    VariantInit(&arguments[0]);
    V_VT(&arguments[0]) = VT_BSTR;
    V_BSTR(&arguments[0]) = text.Get();
    VariantInit(&arguments[1]);
    V_VT(&arguments[1]) = VT_R4;
    V_R4(&arguments[1]) = percent;
    DISPPARAMS params = {arguments, nullptr, 2, 0};
    Invoke(1, params);
}

std::string clsFTPEventPoint::FireStatusChange(const std::string& status, int32_t code) {
    Bstr text(status);
    BSTR shared = text.Get();
    VARIANT arguments[2];
    VariantInit(&arguments[0]);
    V_VT(&arguments[0]) = VT_I4;
    V_I4(&arguments[0]) = code;
    VariantInit(&arguments[1]);
    V_VT(&arguments[1]) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&arguments[1]) = &shared;
    DISPPARAMS params = {arguments, nullptr, 2, 0};
    Invoke(2, params);
    // A sink that changed the text freed the old one and left a new one.
    std::string result = FromBstr(shared);
    if (shared != text.Get()) {
        SysFreeString(shared);
        text.Detach();
    }
    return result;
}

clsFTPCom::clsFTPCom() : events_(*this, DIID___clsFTP), ftp_(&desktop_, this) {}

void* clsFTPCom::FindInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, IID__clsFTP))
        return static_cast<_clsFTP*>(this);
    if (IsEqualIID(riid, IID_IProvideClassInfo) || IsEqualIID(riid, IID_IProvideClassInfo2))
        return static_cast<IProvideClassInfo2*>(this);
    if (IsEqualIID(riid, IID_IConnectionPointContainer)) return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

void clsFTPCom::FileProgress(float Percent, const std::string& status) { events_.FireFileProgress(Percent, status); }

void clsFTPCom::StatusChange(std::string& status, int32_t code) { status = events_.FireStatusChange(status, code); }

STDMETHODIMP clsFTPCom::get_Port(LONG* value) { return PutValue<LONG>(value, ftp_.Port()); }
STDMETHODIMP clsFTPCom::put_Port(LONG value) { ftp_.Port(value); return S_OK; }
STDMETHODIMP clsFTPCom::get_protocal(LONG* value) { return PutValue<LONG>(value, ftp_.protocal()); }
STDMETHODIMP clsFTPCom::put_protocal(LONG value) { ftp_.protocal(value); return S_OK; }
STDMETHODIMP clsFTPCom::get_Login(BSTR* value) { return Guarded([&] { return PutText(value, ftp_.Login()); }); }
STDMETHODIMP clsFTPCom::put_Login(BSTR value) {
    return Guarded([&] { ftp_.Login(FromBstr(value)); return S_OK; });
}
STDMETHODIMP clsFTPCom::get_Password(BSTR* value) { return Guarded([&] { return PutText(value, ftp_.Password()); }); }
STDMETHODIMP clsFTPCom::put_Password(BSTR value) {
    return Guarded([&] { ftp_.Password(FromBstr(value)); return S_OK; });
}
STDMETHODIMP clsFTPCom::get_InternetHandle(LONG* value) { return PutValue<LONG>(value, ftp_.InternetHandle()); }
STDMETHODIMP clsFTPCom::get_StillExecuting(VARIANT_BOOL* value) {
    return PutValue<VARIANT_BOOL>(value, ftp_.StillExecuting() ? VARIANT_TRUE : VARIANT_FALSE);
}
STDMETHODIMP clsFTPCom::get_dwCurrentFileSize(double* value) { return PutValue(value, ftp_.dwCurrentFileSize()); }
STDMETHODIMP clsFTPCom::put_dwCurrentFileSize(double value) { ftp_.dwCurrentFileSize(value); return S_OK; }
STDMETHODIMP clsFTPCom::get_pub_BytesSent(double* value) { return PutValue(value, ftp_.pub_BytesSent()); }
STDMETHODIMP clsFTPCom::put_pub_BytesSent(double value) { ftp_.pub_BytesSent(value); return S_OK; }
STDMETHODIMP clsFTPCom::get_pub_BytesRecieved(double* value) { return PutValue(value, ftp_.pub_BytesRecieved()); }
STDMETHODIMP clsFTPCom::put_pub_BytesRecieved(double value) { ftp_.pub_BytesRecieved(value); return S_OK; }

STDMETHODIMP clsFTPCom::OpenFTP(BSTR target, BSTR login, BSTR password, VARIANT_BOOL* result) {
    if (!result) return E_POINTER;
    return Guarded([&] {
        *result = ftp_.OpenFTP(FromBstr(target), FromBstr(login), FromBstr(password)) ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

STDMETHODIMP clsFTPCom::DownloadFile(BSTR url, BSTR destination, VARIANT_BOOL* result) {
    if (!result) return E_POINTER;
    // The page may let go of the object from an event handler.
    AddRef();
    HRESULT hr = Guarded([&] {
        *result = ftp_.DownloadFile(FromBstr(url), FromBstr(destination)) ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
    Release();
    return hr;
}

STDMETHODIMP clsFTPCom::OpenURL(BSTR url, BSTR* result) {
    if (!result) return E_POINTER;
    AddRef();
    HRESULT hr = Guarded([&] { return PutText(result, ftp_.OpenURL(FromBstr(url))); });
    Release();
    return hr;
}

STDMETHODIMP clsFTPCom::GetErr(VARIANT* code, BSTR* result) {
    if (!code || !result) return E_POINTER;
    VARIANT* target = V_VT(code) == (VT_VARIANT | VT_BYREF) ? V_VARIANTREF(code) : code;
    VARIANT number;
    VariantInit(&number);
    if (FAILED(VariantChangeType(&number, target, 0, VT_I4))) return DISP_E_TYPEMISMATCH;
    return Guarded([&] {
        int32_t value = V_I4(&number);
        std::string text = ftp_.GetErr(value);
        // The caller's variable is cleared in its own type where it is one.
        switch (V_VT(target)) {
        case VT_I2 | VT_BYREF: *V_I2REF(target) = static_cast<SHORT>(value); break;
        case VT_I4 | VT_BYREF: *V_I4REF(target) = value; break;
        default:
            VariantClear(target);
            V_VT(target) = VT_I4;
            V_I4(target) = value;
        }
        return PutText(result, text);
    });
}

STDMETHODIMP clsFTPCom::StripNull(BSTR item, BSTR* result) {
    return Guarded([&] { return PutText(result, corvan::clsFTP::StripNull(FromBstr(item))); });
}

STDMETHODIMP clsFTPCom::GetClassInfo(ITypeInfo** info) {
    if (!info) return E_POINTER;
    return OwnTypeInfo(CLSID_clsFTP, info);
}

STDMETHODIMP clsFTPCom::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) return E_POINTER;
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
        *guid = GUID_NULL;
        return E_INVALIDARG;
    }
    *guid = DIID___clsFTP;
    return S_OK;
}

STDMETHODIMP clsFTPCom::EnumConnectionPoints(IEnumConnectionPoints** points) {
    return events_.EnumerateAsOnlyPoint(points);
}

STDMETHODIMP clsFTPCom::FindConnectionPoint(REFIID riid, IConnectionPoint** point) {
    return events_.FindAsOnlyPoint(riid, point);
}

HRESULT CreateclsFTP(REFIID riid, void** out) { return CreateComInstance<clsFTPCom>(riid, out); }

}  // namespace corvan::com
