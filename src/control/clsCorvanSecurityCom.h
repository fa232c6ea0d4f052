#pragma once
#include <string>

#include <windows.h>
#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/WindowsDesktop.h"
#include "control/com_object.h"
#include "control/connection_point.h"
#include "control/type_library.h"
#include "security/clsCorvanSecurity.h"

namespace corvan::com {

// The COM object setup scripts create as CorvanInstaller.clsCorvanSecurity.
// It offers no IObjectSafety and is not registered as safe for scripting,
// so a browser refuses it to every page.
class clsCorvanSecurityCom
    : public ComObject<clsCorvanSecurityCom, TypeInfoDispatch<_clsCorvanSecurity, &IID__clsCorvanSecurity>,
                       IProvideClassInfo2, IConnectionPointContainer>,
      private clsCorvanSecurityEvents {
public:
    clsCorvanSecurityCom();

    void* FindInterface(REFIID riid);

    // _clsCorvanSecurity
    STDMETHODIMP SetXPSP2SecurityConfig() override;
    STDMETHODIMP SetRegistryTrustConfig() override;

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;

    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID riid, IConnectionPoint** point) override;

private:
    void StatusMessageChange(const std::string& Message) override;

    WindowsDesktop desktop_;
    ConnectionPoint events_;
    corvan::clsCorvanSecurity security_;
};

HRESULT CreateclsCorvanSecurity(REFIID riid, void** out);

}  // namespace corvan::com
