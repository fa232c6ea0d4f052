#include <windows.h>

#include "control/modIObjectSafety.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
        corvan::modIObjectSafety::InitialiseSafety();
    }
    return TRUE;
}
