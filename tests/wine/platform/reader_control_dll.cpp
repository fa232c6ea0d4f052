// A stand-in reader control for the detection tests: an in-process COM
// server that self-registers under the ProgID "PDF.PdfCtrl.6" and whose
// object answers IDispatch, as the real reader's control does.
#include <windows.h>
#include <oaidl.h>

#include <atomic>
#include <string>

namespace {

// {DE63131E-5ECC-478B-B285-AAC173613E86}
const CLSID kClsid = {0xDE63131E, 0x5ECC, 0x478B, {0xB2, 0x85, 0xAA, 0xC1, 0x73, 0x61, 0x3E, 0x86}};
const char kClsidText[] = "{DE63131E-5ECC-478B-B285-AAC173613E86}";
const char kProgId[] = "PDF.PdfCtrl.6";

HMODULE g_module = nullptr;
std::atomic<long> g_objects{0};

class ReaderControl : public IDispatch {
public:
    ReaderControl() { ++g_objects; }
    virtual ~ReaderControl() { --g_objects; }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (riid == IID_IUnknown || riid == IID_IDispatch) {
            *out = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --refs_;
        if (!left) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    std::atomic<ULONG> refs_{1};
};

class Factory : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (riid == IID_IUnknown || riid == IID_IClassFactory) {
            *out = static_cast<IClassFactory*>(this);
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override {
        if (outer) return CLASS_E_NOAGGREGATION;
        ReaderControl* object = new ReaderControl;
        const HRESULT hr = object->QueryInterface(riid, out);
        object->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

Factory g_factory;

bool SetKey(const std::string& path, const char* name, const std::string& value) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr))
        return false;
    const LONG status = RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                       static_cast<DWORD>(value.size() + 1));
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) g_module = instance;
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** out) {
    if (clsid != kClsid) return CLASS_E_CLASSNOTAVAILABLE;
    return g_factory.QueryInterface(riid, out);
}

STDAPI DllCanUnloadNow() { return g_objects == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() {
    char path[MAX_PATH];
    GetModuleFileNameA(g_module, path, sizeof path);
    const std::string clsidKey = std::string("CLSID\\") + kClsidText;
    const bool ok = SetKey(clsidKey, nullptr, "Reader control for tests") &&
                    SetKey(clsidKey + "\\InprocServer32", nullptr, path) &&
                    SetKey(clsidKey + "\\InprocServer32", "ThreadingModel", "Apartment") &&
                    SetKey(clsidKey + "\\ProgID", nullptr, kProgId) &&
                    SetKey(std::string(kProgId) + "\\CLSID", nullptr, kClsidText);
    return ok ? S_OK : E_FAIL;
}

STDAPI DllUnregisterServer() {
    RegDeleteTreeA(HKEY_CLASSES_ROOT, kProgId);
    RegDeleteTreeA(HKEY_CLASSES_ROOT, (std::string("CLSID\\") + kClsidText).c_str());
    return S_OK;
}
