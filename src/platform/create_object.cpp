#include "platform/create_object.h"

#include <objbase.h>

#include "common/system_message.h"
#include "common/wide_text.h"

namespace corvan {
namespace {

constexpr int32_t kCannotCreateObject = 429;
constexpr int32_t kNoAutomation = 430;

bool IsCannotCreate(HRESULT hr) {
    return hr == CO_E_CLASSSTRING || hr == REGDB_E_CLASSNOTREG || hr == CO_E_DLLNOTFOUND ||
           hr == CO_E_ERRORINDLL || hr == CLASS_E_CLASSNOTAVAILABLE || hr == HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND) ||
           hr == HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT) || hr == REGDB_E_READREGDB;
}

ObjectCreation Failed(HRESULT hr) {
    ObjectCreation result;
    if (IsCannotCreate(hr)) {
        result.number = kCannotCreateObject;
        result.description = "ActiveX component can't create object";
    } else if (hr == E_NOINTERFACE) {
        result.number = kNoAutomation;
        result.description = "Class does not support Automation or does not support expected interface";
    } else {
        result.number = static_cast<int32_t>(hr);
        const std::string message = SystemMessage(static_cast<DWORD>(hr));
        result.description = message.empty() ? "Automation error" : "Automation error\r\n" + message;
    }
    return result;
}

}  // namespace

ObjectCreation CreateAutomationObject(const std::string& progId) {
    CLSID clsid{};
    HRESULT hr = CLSIDFromProgID(WideText(progId).c_str(), &clsid);
    if (FAILED(hr)) return Failed(hr);
    IUnknown* created = nullptr;
    hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IUnknown,
                          reinterpret_cast<void**>(&created));
    if (FAILED(hr)) return Failed(hr);
    const std::unique_ptr<IUnknown, ReleaseInterface> unknown(created);
    IDispatch* dispatch = nullptr;
    hr = unknown->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch));
    if (FAILED(hr)) return Failed(hr);
    ObjectCreation result;
    result.object.reset(dispatch);
    return result;
}

}  // namespace corvan
