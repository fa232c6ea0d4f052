#pragma once
#include <windows.h>
#include <objsafe.h>

namespace corvan::modIObjectSafety {

// The two process-wide flags; the library's start routine sets both.
extern bool m_fSafeForScripting;
extern bool m_fSafeForInitializing;
void InitialiseSafety();

// IObjectSafety of the control. The dispatch interfaces are safe for
// untrusted callers and untrusted data as the flags say; the persistence
// interfaces, through which a browser hands over a page's parameters, are
// safe for untrusted data; every other interface is refused.
HRESULT GetInterfaceSafetyOptions(REFIID riid, DWORD* supported, DWORD* enabled);
HRESULT SetInterfaceSafetyOptions(REFIID riid, DWORD mask, DWORD enabled);

}  // namespace corvan::modIObjectSafety
