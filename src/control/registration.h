#pragma once
#include <string>

#include <windows.h>

namespace corvan::com {

// Writes everything a browser and a script host need to find and trust the
// public classes of the module at `modulePath`: CLSID with InprocServer32,
// ProgIDs, the type library, and for the control its Control key and the
// safe-for-scripting and safe-for-initialising categories.
HRESULT RegisterServer(const std::string& modulePath);

// Removes what RegisterServer wrote. ProgIDs that now name another class are
// left alone.
HRESULT UnregisterServer();

}  // namespace corvan::com
