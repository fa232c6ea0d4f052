#include "control/ManageClientCom.h"

#include <olectl.h>

#include "control/bstr_text.h"
#include "control/browser_page.h"
#include "control/com_ptr.h"
#include "control/site_lock.h"
#include "logging/write_log.h"
#include "control/com_guard.h"
#include "control/modIObjectSafety.h"

namespace corvan::com {

ManageClientCom::ManageClientCom()
    : events_(*this, DIID___ManageClient) {
    control_ = std::make_unique<ManageClient>(desktop_, *this);
    control_->Surface().View(this);
}

ManageClientCom::~ManageClientCom() { events_.UnadviseAll(); }

void* ManageClientCom::FindInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, IID__ManageClient))
        return static_cast<_ManageClient*>(this);
    if (IsEqualIID(riid, IID_IProvideClassInfo) || IsEqualIID(riid, IID_IProvideClassInfo2))
        return static_cast<IProvideClassInfo2*>(this);
    if (IsEqualIID(riid, IID_IObjectSafety)) return static_cast<IObjectSafety*>(this);
    if (IsEqualIID(riid, IID_IConnectionPointContainer)) return static_cast<IConnectionPointContainer*>(this);
    if (IsEqualIID(riid, IID_IManageClientProgress)) return static_cast<IManageClientProgress*>(this);
    return FindOleInterface(riid);
}

STDMETHODIMP ManageClientCom::get_Status(BSTR* status) {
    if (!status) return E_POINTER;
    return Guarded([&] {
        *status = ToBstr(control_->Status());
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::GetProgress(float* fraction, BSTR* message, float* transferFraction, BSTR* transferText) {
    if (!fraction || !message || !transferFraction || !transferText) return E_POINTER;
    *message = *transferText = nullptr;
    return Guarded([&] {
        const ControlSurface& surface = control_->Surface();
        *fraction = surface.ProgressFraction();
        *transferFraction = surface.TransferFraction();
        *message = ToBstr(surface.LastMessage());
        *transferText = ToBstr(surface.TransferLineVisible() ? surface.TransferText() : std::string());
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::put_URL(BSTR* url) {
    if (!url) return E_POINTER;
    return Guarded([&] {
        std::string text = FromBstr(*url);
        if (RefusedBySiteLock(&text)) return S_OK;
        control_->URL(text);
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::Run(short* mode, VARIANT* result) {
    if (!mode || !result) return E_POINTER;
    VariantInit(result);
    return Guarded([&] {
        if (RefusedBySiteLock()) {
            V_VT(result) = VT_BOOL;
            V_BOOL(result) = VARIANT_FALSE;
            return S_OK;
        }
        std::optional<bool> outcome = control_->Run(*mode);
        if (outcome) {
            V_VT(result) = VT_BOOL;
            V_BOOL(result) = *outcome ? VARIANT_TRUE : VARIANT_FALSE;
        }
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::NeedToInstall(VARIANT_BOOL* result) {
    if (!result) return E_POINTER;
    *result = VARIANT_FALSE;
    return Guarded([&] {
        if (RefusedBySiteLock()) return S_OK;
        *result = control_->NeedToInstall() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::get_hwnd(LONG* window) {
    if (!window) return E_POINTER;
    // Window handles keep their meaning in 32 bits on 64-bit Windows too.
    *window = static_cast<LONG>(reinterpret_cast<LONG_PTR>(Window()));
    return S_OK;
}

STDMETHODIMP ManageClientCom::ShowUpdates() {
    return Guarded([&] {
        control_->ShowUpdates(Window());
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::get_UsersGroups(BSTR* groups) {
    if (!groups) return E_POINTER;
    return Guarded([&] {
        *groups = ToBstr(control_->UsersGroups());
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::put_UsersGroups(BSTR groups) {
    return Guarded([&] {
        control_->UsersGroups(FromBstr(groups));
        return S_OK;
    });
}

STDMETHODIMP ManageClientCom::GetClassInfo(ITypeInfo** info) { return OwnTypeInfo(CLSID_ManageClient, info); }

STDMETHODIMP ManageClientCom::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) return E_POINTER;
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
        *guid = GUID_NULL;
        return E_INVALIDARG;
    }
    *guid = DIID___ManageClient;
    return S_OK;
}

STDMETHODIMP ManageClientCom::GetInterfaceSafetyOptions(REFIID riid, DWORD* supported, DWORD* enabled) {
    return modIObjectSafety::GetInterfaceSafetyOptions(riid, supported, enabled);
}

STDMETHODIMP ManageClientCom::SetInterfaceSafetyOptions(REFIID riid, DWORD mask, DWORD enabled) {
    return modIObjectSafety::SetInterfaceSafetyOptions(riid, mask, enabled);
}

STDMETHODIMP ManageClientCom::EnumConnectionPoints(IEnumConnectionPoints** points) {
    return Guarded([&] { return events_.EnumerateAsOnlyPoint(points); });
}

STDMETHODIMP ManageClientCom::FindConnectionPoint(REFIID riid, IConnectionPoint** point) {
    return events_.FindAsOnlyPoint(riid, point);
}

STDMETHODIMP ManageClientCom::Close(DWORD saveOption) {
    HRESULT hr = OleControl::Close(saveOption);
    events_.UnadviseAll();
    return hr;
}

bool ManageClientCom::RefusedBySiteLock(const std::string* installerUrl) {
    ComPtr<IOleClientSite> site;
    GetClientSite(site.Put());
    BrowserPage page = FindBrowserPage(site.Get());
    if (!page.inBrowser) return false;
    SiteLock lock(ApprovedHosts());
    std::string refusal = lock.RefusePage(page.url);
    if (refusal.empty() && installerUrl) refusal = lock.RefuseInstallerUrl(*installerUrl);
    if (refusal.empty()) return false;
    // Told in this order so that a page that cannot be logged still hears it.
    try {
        WriteLog(refusal);
    } catch (...) {
    }
    InstallError(refusal);
    return true;
}

void ManageClientCom::InstallError(const std::string& message) {
    Bstr text(message);
    events_.Fire(1, text.Get());
}

void ManageClientCom::InstallStatus(const std::string& message) {
    Bstr text(message);
    events_.Fire(2, text.Get());
}

HRESULT CreateManageClient(REFIID riid, void** out) { return CreateComInstance<ManageClientCom>(riid, out); }

}  // namespace corvan::com
