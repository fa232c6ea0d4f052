#include "control/type_library.h"

#include <mutex>
#include <string>

#include "common/this_module.h"

namespace corvan::com {

namespace {

std::wstring Wide(const std::string& text) {
    int n = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
    std::wstring result(static_cast<size_t>(n > 0 ? n - 1 : 0), L'\0');
    if (n > 1) MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, result.data(), n);
    return result;
}

}  // namespace

ITypeLib* OwnTypeLibrary() {
    static ITypeLib* library = nullptr;
    static std::once_flag once;
    std::call_once(once, [] {
        std::wstring path = Wide(ThisModulePath());
        if (FAILED(LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library))) library = nullptr;
    });
    return library;
}

HRESULT OwnTypeInfo(REFGUID guid, ITypeInfo** info) {
    if (!info) return E_POINTER;
    *info = nullptr;
    ITypeLib* library = OwnTypeLibrary();
    if (!library) return TYPE_E_CANTLOADLIBRARY;
    return library->GetTypeInfoOfGuid(guid, info);
}

HRESULT DispatchGetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) {
    ITypeInfo* info = nullptr;
    HRESULT hr = OwnTypeInfo(iid, &info);
    if (FAILED(hr)) return hr;
    hr = DispGetIDsOfNames(info, names, count, ids);
    info->Release();
    return hr;
}

HRESULT DispatchInvoke(REFIID iid, void* self, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                       EXCEPINFO* exception, UINT* argumentError) {
    ITypeInfo* info = nullptr;
    HRESULT hr = OwnTypeInfo(iid, &info);
    if (FAILED(hr)) return hr;
    hr = info->Invoke(self, id, flags, params, result, exception, argumentError);
    info->Release();
    return hr;
}

}  // namespace corvan::com
