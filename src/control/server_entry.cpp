// The four entry points of an in-process COM server.
#include <windows.h>
#include <objbase.h>

#include "common/this_module.h"
#include "control/class_factory.h"
#include "control/registration.h"

using namespace corvan::com;

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID riid, void** out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    const PublicClass* entry = FindPublicClass(clsid);
    if (!entry) return CLASS_E_CLASSNOTAVAILABLE;
    ClassFactory* factory = new (std::nothrow) ClassFactory(entry->create);
    if (!factory) return E_OUTOFMEMORY;
    HRESULT hr = factory->QueryInterface(riid, out);
    factory->Release();
    return hr;
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() { return ModuleInUse() ? S_FALSE : S_OK; }

extern "C" HRESULT STDAPICALLTYPE DllRegisterServer() {
    try {
        return RegisterServer(corvan::ThisModulePath());
    } catch (...) {
        return E_UNEXPECTED;
    }
}

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer() {
    try {
        return UnregisterServer();
    } catch (...) {
        return E_UNEXPECTED;
    }
}
