#include "probe_server.h"

#include "control/bstr_text.h"

namespace control_tests {

std::string TestProgramFolder() {
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string full(path, length);
    return full.substr(0, full.rfind('\\') + 1);
}

bool Regsvr32(const std::string& path, bool unregister) {
    std::string command = std::string("regsvr32.exe /s ") + (unregister ? "/u " : "") + "\"" + path + "\"";
    return winbench::RunAndWait(command).exitCode == 0;
}

std::string ProbeServer::Path() { return TestProgramFolder() + "CorvanControlProbe.ocx"; }

// Registered anew for every test: the shipped control shares the CLSID, and
// a test that unregisters it must not leave later tests without a server.
bool ProbeServer::Register() { return Regsvr32(Path()); }

ComPtr<IDispatch> ProbeServer::CreateByProgId(const char* progId) {
    ComPtr<IDispatch> object;
    CLSID clsid;
    wchar_t wide[128];
    MultiByteToWideChar(CP_ACP, 0, progId, -1, wide, 128);
    if (SUCCEEDED(CLSIDFromProgID(wide, &clsid)))
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.PutVoid());
    return object;
}

namespace {
HMODULE Probe() { return GetModuleHandleA("CorvanControlProbe.ocx"); }
}  // namespace

void ProbeServer::SetScript(const char* script) {
    auto set = reinterpret_cast<void (*)(const char*)>(GetProcAddress(Probe(), "RecordingEngineSetScript"));
    if (set) set(script);
}

std::string ProbeServer::Journal() {
    auto get = reinterpret_cast<int (*)(char*, int)>(GetProcAddress(Probe(), "RecordingEngineJournal"));
    if (!get) return "(probe not loaded)";
    std::string text(static_cast<size_t>(get(nullptr, 0)) + 1, '\0');
    get(text.data(), static_cast<int>(text.size()));
    text.pop_back();
    return text;
}

STDMETHODIMP EventSink::QueryInterface(REFIID riid, void** out) {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, DIID___ManageClient)) {
        *out = this;
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP EventSink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) {
    std::string text = "(no text)";
    if (params && params->cArgs == 1 && V_VT(&params->rgvarg[0]) == (VT_BSTR | VT_BYREF))
        text = corvan::com::FromBstr(*V_BSTRREF(&params->rgvarg[0]));
    heard.push_back(std::to_string(id) + ":" + text);
    return S_OK;
}

DISPID DispidOf(IDispatch* object, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[1] = {const_cast<LPOLESTR>(name)};
    object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

HRESULT CallByName(IDispatch* object, const wchar_t* name, WORD flags, VARIANT* arguments, UINT count,
                   VARIANT* result) {
    DISPID id = DispidOf(object, name);
    if (id == DISPID_UNKNOWN) return DISP_E_UNKNOWNNAME;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS params = {arguments, nullptr, count, 0};
    if (flags & DISPATCH_PROPERTYPUT) {
        params.rgdispidNamedArgs = &put;
        params.cNamedArgs = 1;
    }
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, nullptr, nullptr);
}

}  // namespace control_tests
