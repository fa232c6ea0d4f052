#include "probe_server.h"

#include "control/bstr_text.h"

namespace control_tests {

namespace {
HMODULE Probe() { return GetModuleHandleA("CorvanControlProbe.ocx"); }
}  // namespace

std::string ProbePath() {
    char path[MAX_PATH];
    std::string program(path, GetModuleFileNameA(nullptr, path, MAX_PATH));
    return program.substr(0, program.rfind('\\') + 1) + "CorvanControlProbe.ocx";
}

bool Regsvr32(const std::string& path, bool unregister) {
    std::string command = std::string("regsvr32.exe /s ") + (unregister ? "/u " : "") + "\"" + path + "\"";
    return winbench::RunAndWait(command).exitCode == 0;
}

ComPtr<IDispatch> CreateControl() {
    ComPtr<IDispatch> object;
    CLSID clsid;
    if (SUCCEEDED(CLSIDFromProgID(L"CorvanInstaller.ManageClient", &clsid)))
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.PutVoid());
    return object;
}

void SetScript(const char* script) {
    auto set = reinterpret_cast<void (*)(const char*)>(GetProcAddress(Probe(), "RecordingEngineSetScript"));
    ASSERT_TRUE(set);
    set(script);
}

std::string Journal() {
    auto get = reinterpret_cast<const char* (*)()>(GetProcAddress(Probe(), "RecordingEngineJournal"));
    return get ? get() : "(probe not loaded)";
}

STDMETHODIMP EventSink::QueryInterface(REFIID riid, void** out) {
    *out = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, DIID___ManageClient)
               ? this
               : nullptr;
    if (!*out) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP EventSink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) {
    std::string text = "(no text)";
    if (params && params->cArgs == 1 && V_VT(&params->rgvarg[0]) == (VT_BSTR | VT_BYREF))
        text = corvan::com::FromBstr(*V_BSTRREF(&params->rgvarg[0]));
    heard.push_back(std::to_string(id) + ":" + text);
    return S_OK;
}

ComPtr<IConnectionPoint> Advise(IDispatch* control, EventSink& sink, DWORD& cookie) {
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> point;
    control->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
    if (container && container->FindConnectionPoint(DIID___ManageClient, point.Put()) == S_OK &&
        point->Advise(&sink, &cookie) == S_OK)
        return point;
    return nullptr;
}

DISPID DispidOf(IDispatch* object, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[1] = {const_cast<LPOLESTR>(name)};
    object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

VARIANT Call(IDispatch* object, const wchar_t* name, WORD flags, VARIANT* argument) {
    DISPID put = DISPID_PROPERTYPUT;
    bool putting = flags & DISPATCH_PROPERTYPUT;
    DISPPARAMS params = {argument, putting ? &put : nullptr, argument ? 1u : 0u, putting ? 1u : 0u};
    VARIANT result;
    VariantInit(&result);
    EXPECT_EQ(object->Invoke(DispidOf(object, name), IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                             putting ? nullptr : &result, nullptr, nullptr),
              S_OK)
        << name;
    return result;
}

VARIANT Long(LONG value) {
    VARIANT v;
    V_VT(&v) = VT_I4;
    V_I4(&v) = value;
    return v;
}

void Page::Put(const wchar_t* name, const char* text) {
    corvan::com::Bstr value(text);
    VARIANT argument;
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = value.Get();
    Call(control.Get(), name, DISPATCH_PROPERTYPUT, &argument);
}

std::string Page::Get(const wchar_t* name) {
    VARIANT result = Call(control.Get(), name, DISPATCH_PROPERTYGET);
    EXPECT_EQ(V_VT(&result), VT_BSTR) << "not a text";
    std::string text = V_VT(&result) == VT_BSTR ? corvan::com::FromBstr(V_BSTR(&result)) : "";
    VariantClear(&result);
    return text;
}

}  // namespace control_tests
