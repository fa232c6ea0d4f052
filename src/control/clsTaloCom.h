#pragma once
#include <windows.h>

#include "control/CorvanInstaller_h.h"
#include "control/WindowsDesktop.h"
#include "control/com_object.h"
#include "control/type_library.h"
#include "platform/clsTalo.h"

namespace corvan::com {

// The COM object scripts create as CorvanInstaller.clsTalo.
class clsTaloCom : public ComObject<clsTaloCom, TypeInfoDispatch<_clsTalo, &IID__clsTalo>, IProvideClassInfo> {
public:
    clsTaloCom();

    void* FindInterface(REFIID riid);

    // _clsTalo
    STDMETHODIMP LegacyTaloIsInstalled(VARIANT_BOOL* result) override;

    // IProvideClassInfo
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;

private:
    WindowsDesktop desktop_;
    clsTalo talo_;
};

HRESULT CreateclsTalo(REFIID riid, void** out);

}  // namespace corvan::com
