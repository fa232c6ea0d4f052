#include "control/modIObjectSafety.h"

#include <ocidl.h>

#include "control/CorvanInstaller_h.h"

namespace corvan::modIObjectSafety {

bool m_fSafeForScripting = false;
bool m_fSafeForInitializing = false;

void InitialiseSafety() {
    m_fSafeForScripting = true;
    m_fSafeForInitializing = true;
}

namespace {

// The options the control can honour for an interface; false when refused.
bool Safe(REFIID riid, DWORD& options) {
    options = 0;
    if (IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, IID__ManageClient)) {
        if (m_fSafeForScripting) options |= INTERFACESAFE_FOR_UNTRUSTED_CALLER;
        if (m_fSafeForInitializing) options |= INTERFACESAFE_FOR_UNTRUSTED_DATA;
        return true;
    }
    if (IsEqualIID(riid, IID_IPersistPropertyBag) || IsEqualIID(riid, IID_IPersistStreamInit)) {
        if (m_fSafeForInitializing) options |= INTERFACESAFE_FOR_UNTRUSTED_DATA;
        return true;
    }
    return false;
}

}  // namespace

HRESULT GetInterfaceSafetyOptions(REFIID riid, DWORD* supported, DWORD* enabled) {
    if (!supported || !enabled) return E_POINTER;
    DWORD options = 0;
    if (!Safe(riid, options)) {
        *supported = *enabled = 0;
        return E_NOINTERFACE;
    }
    *supported = options;
    *enabled = options;
    return S_OK;
}

HRESULT SetInterfaceSafetyOptions(REFIID riid, DWORD mask, DWORD enabled) {
    DWORD options = 0;
    if (!Safe(riid, options)) return E_NOINTERFACE;
    // Asking to be safe in a way the control is not must fail, so the caller
    // does not trust it.
    if ((mask & enabled) & ~options) return E_FAIL;
    return S_OK;
}

}  // namespace corvan::modIObjectSafety
