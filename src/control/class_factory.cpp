#include "control/class_factory.h"

#include <new>

namespace corvan::com {

void* ClassFactory::FindInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory)) return static_cast<IClassFactory*>(this);
    return nullptr;
}

STDMETHODIMP ClassFactory::CreateInstance(IUnknown* outer, REFIID riid, void** out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    try {
        return create_(riid, out);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

STDMETHODIMP ClassFactory::LockServer(BOOL lock) {
    if (lock) LockModule();
    else UnlockModule();
    return S_OK;
}

}  // namespace corvan::com
