#include "control/clsCorvanSecurityCom.h"

#include "control/bstr_text.h"
#include "control/com_guard.h"
#include "settings/modCorvanInstaller_Global.h"

namespace corvan::com {

clsCorvanSecurityCom::clsCorvanSecurityCom() : events_(*this, DIID___clsCorvanSecurity), security_(desktop_, this) {}

void* clsCorvanSecurityCom::FindInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, IID__clsCorvanSecurity))
        return static_cast<_clsCorvanSecurity*>(this);
    if (IsEqualIID(riid, IID_IProvideClassInfo) || IsEqualIID(riid, IID_IProvideClassInfo2))
        return static_cast<IProvideClassInfo2*>(this);
    if (IsEqualIID(riid, IID_IConnectionPointContainer)) return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

void clsCorvanSecurityCom::StatusMessageChange(const std::string& Message) {
    Bstr text(Message);
    events_.Fire(1, text.Get());
}

STDMETHODIMP clsCorvanSecurityCom::SetXPSP2SecurityConfig() {
    // The script may let go of the object from an event handler.
    AddRef();
    HRESULT hr = Guarded([&] {
        // A script that creates the class without the control still gets the
        // client's root folder; once the control has loaded the settings
        // (and the page's URL replaced one of them) they are left alone.
        InstallerSettings& settings = modCorvanInstaller_Global();
        if (settings.InstallerVersion.empty()) settings.Load();
        security_.SetXPSP2SecurityConfig();
        return S_OK;
    });
    Release();
    return hr;
}

STDMETHODIMP clsCorvanSecurityCom::SetRegistryTrustConfig() {
    AddRef();
    HRESULT hr = Guarded([&] {
        security_.SetRegistryTrustConfig();
        return S_OK;
    });
    Release();
    return hr;
}

STDMETHODIMP clsCorvanSecurityCom::GetClassInfo(ITypeInfo** info) {
    if (!info) return E_POINTER;
    return OwnTypeInfo(CLSID_clsCorvanSecurity, info);
}

STDMETHODIMP clsCorvanSecurityCom::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) return E_POINTER;
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
        *guid = GUID_NULL;
        return E_INVALIDARG;
    }
    *guid = DIID___clsCorvanSecurity;
    return S_OK;
}

STDMETHODIMP clsCorvanSecurityCom::EnumConnectionPoints(IEnumConnectionPoints** points) {
    return events_.EnumerateAsOnlyPoint(points);
}

STDMETHODIMP clsCorvanSecurityCom::FindConnectionPoint(REFIID riid, IConnectionPoint** point) {
    return events_.FindAsOnlyPoint(riid, point);
}

HRESULT CreateclsCorvanSecurity(REFIID riid, void** out) { return CreateComInstance<clsCorvanSecurityCom>(riid, out); }

}  // namespace corvan::com
