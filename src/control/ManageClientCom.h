#pragma once
#include <memory>

#include <windows.h>
#include <objsafe.h>
#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/ManageClient.h"
#include "control/OleControl.h"
#include "control/WindowsDesktop.h"
#include "control/com_object.h"
#include "control/connection_point.h"
#include "control/type_library.h"

namespace corvan::com {

// The COM object pages create as CorvanInstaller.ManageClient: the dual
// interface _ManageClient over the control's behaviour, its events through a
// connection point, the OLE control interfaces, and what script hosts and
// browsers ask before they trust it.
class ManageClientCom : public ComObject<ManageClientCom, TypeInfoDispatch<_ManageClient, &IID__ManageClient>, IProvideClassInfo2,
                                         IObjectSafety, IConnectionPointContainer, IManageClientProgress, OleControl>,
                        public ManageClientEvents {
public:
    ManageClientCom();
    ~ManageClientCom() override;

    void* FindInterface(REFIID riid);

    // _ManageClient
    STDMETHODIMP get_Status(BSTR* status) override;
    STDMETHODIMP put_URL(BSTR* url) override;
    STDMETHODIMP Run(short* mode, VARIANT* result) override;
    STDMETHODIMP NeedToInstall(VARIANT_BOOL* result) override;
    STDMETHODIMP get_hwnd(LONG* window) override;
    STDMETHODIMP ShowUpdates() override;
    STDMETHODIMP get_UsersGroups(BSTR* groups) override;
    STDMETHODIMP put_UsersGroups(BSTR groups) override;

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;

    // IObjectSafety
    STDMETHODIMP GetInterfaceSafetyOptions(REFIID riid, DWORD* supported, DWORD* enabled) override;
    STDMETHODIMP SetInterfaceSafetyOptions(REFIID riid, DWORD mask, DWORD enabled) override;

    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID riid, IConnectionPoint** point) override;

    // IManageClientProgress
    STDMETHODIMP GetProgress(float* fraction, BSTR* message, float* transferFraction, BSTR* transferText) override;

    // IOleObject: closing also lets go of the page's event sinks.
    STDMETHODIMP Close(DWORD saveOption) override;

protected:
    REFCLSID ControlClsid() const override { return CLSID_ManageClient; }
    ControlSurface& Surface() override { return control_->Surface(); }

private:
    // Inside a browser, only https pages of the approved hosts may act, and
    // only towards an approved installer. Empty when the call may go on;
    // otherwise the refusal has been logged and told to the page.
    bool RefusedBySiteLock(const std::string* installerUrl = nullptr);

    void InstallError(const std::string& message) override;
    void InstallStatus(const std::string& message) override;

    WindowsDesktop desktop_;
    ConnectionPoint events_;
    std::unique_ptr<ManageClient> control_;
};

HRESULT CreateManageClient(REFIID riid, void** out);

}  // namespace corvan::com
