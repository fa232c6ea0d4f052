#include <windows.h>

#include "control/DialogMonitor.h"
#include "control/OleControl.h"
#include "control/modIObjectSafety.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
        corvan::modIObjectSafety::InitialiseSafety();
    } else if (reason == DLL_PROCESS_DETACH) {
        // A later load of the module may sit at another address; a class
        // left behind would still point into this one.
        corvan::com::OleControl::UnregisterWindowClass();
        corvan::DialogMonitor::UnregisterWindowClass();
    }
    return TRUE;
}
