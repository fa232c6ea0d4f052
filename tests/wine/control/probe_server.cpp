#include "probe_server.h"

namespace control_tests {

FARPROC ProbeExport(const char* name) { return GetProcAddress(GetModuleHandleA("CorvanControlProbe.ocx"), name); }

bool Regsvr32(const std::string& path, bool unregister) {
    return winbench::RunAndWait(std::string("regsvr32.exe /s ") + (unregister ? "/u " : "") + "\"" + path + "\"")
               .exitCode == 0;
}

ComPtr<IDispatch> CreateControl(const std::string& file) {
    ComPtr<IDispatch> object;
    CLSID clsid;
    if (file.empty()) {
        if (SUCCEEDED(CLSIDFromProgID(L"CorvanInstaller.ManageClient", &clsid)))
            CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.PutVoid());
        return object;
    }
    HMODULE module = LoadLibraryA(winbench::BesideThisProgram(file).c_str());
    auto getClassObject = reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(module ? GetProcAddress(module, "DllGetClassObject") : nullptr));
    ComPtr<IClassFactory> factory;
    if (getClassObject && SUCCEEDED(getClassObject(CLSID_ManageClient, IID_IClassFactory, factory.PutVoid())))
        factory->CreateInstance(nullptr, IID_IDispatch, object.PutVoid());
    return object;
}

void SetScript(const char* script) {
    auto set = reinterpret_cast<void (*)(const char*)>(reinterpret_cast<void*>(ProbeExport("RecordingEngineSetScript")));
    ASSERT_TRUE(set);
    set(script);
}

std::string Journal() {
    auto get = reinterpret_cast<const char* (*)()>(reinterpret_cast<void*>(ProbeExport("RecordingEngineJournal")));
    return get ? get() : "(probe not loaded)";
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

static DISPID DispidOf(IDispatch* object, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[1] = {const_cast<LPOLESTR>(name)};
    object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

VARIANT Call(IDispatch* object, const wchar_t* name, WORD flags, VARIANT* argument) {
    DISPID put = DISPID_PROPERTYPUT;
    const bool putting = flags & DISPATCH_PROPERTYPUT;
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

void Page::SetUp() {
    ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
    winbench::RemoveTree("C:\\TALO");
    control = CreateControl("CorvanControlProbe.ocx");
    ASSERT_TRUE(control);
    SetScript("");
    point = Advise(control.Get(), sink, cookie);
    ASSERT_TRUE(point);
}

void Page::TearDown() {
    if (point) point->Unadvise(cookie);
    point = nullptr;
    control = nullptr;
    winbench::RemoveTree("C:\\TALO");
    OleUninitialize();
}

STDMETHODIMP Site::QueryInterface(REFIID riid, void** out) {
    *out = nullptr;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IOleClientSite)) *out = static_cast<IOleClientSite*>(this);
    if (IsEqualIID(riid, IID_IOleWindow) || IsEqualIID(riid, IID_IOleInPlaceSite)) *out = static_cast<IOleInPlaceSite*>(this);
    if (!*out) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

}  // namespace control_tests
