#include "control/clsTaloCom.h"

#include <new>

#include "common/failure.h"
#include "control/bstr_text.h"

namespace corvan::com {
namespace {

// A failure reaches the script as its number, with the source and
// description in the error object, as a raised error always has.
HRESULT Report(const Failure& failure) {
    ICreateErrorInfo* create = nullptr;
    if (SUCCEEDED(CreateErrorInfo(&create))) {
        create->SetGUID(IID__clsTalo);
        Bstr source(failure.Source()), description(failure.Description());
        create->SetSource(source.Get());
        create->SetDescription(description.Get());
        IErrorInfo* info = nullptr;
        if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)))) {
            SetErrorInfo(0, info);
            info->Release();
        }
        create->Release();
    }
    const int32_t number = failure.Number();
    if (number < 0) return static_cast<HRESULT>(number);
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number & 0xFFFF);
}

}  // namespace

clsTaloCom::clsTaloCom() : talo_(&desktop_) {}

void* clsTaloCom::FindInterface(REFIID riid) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, IID__clsTalo))
        return static_cast<_clsTalo*>(this);
    if (IsEqualIID(riid, IID_IProvideClassInfo)) return static_cast<IProvideClassInfo*>(this);
    return nullptr;
}

STDMETHODIMP clsTaloCom::LegacyTaloIsInstalled(VARIANT_BOOL* result) {
    if (!result) return E_POINTER;
    *result = VARIANT_FALSE;
    try {
        *result = talo_.LegacyTaloIsInstalled() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    } catch (const Failure& failure) {
        return Report(failure);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

STDMETHODIMP clsTaloCom::GetClassInfo(ITypeInfo** info) {
    if (!info) return E_POINTER;
    return OwnTypeInfo(CLSID_clsTalo, info);
}

HRESULT CreateclsTalo(REFIID riid, void** out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    clsTaloCom* object = new (std::nothrow) clsTaloCom;
    if (!object) return E_OUTOFMEMORY;
    const HRESULT hr = object->QueryInterface(riid, out);
    object->Release();
    return hr;
}

}  // namespace corvan::com
