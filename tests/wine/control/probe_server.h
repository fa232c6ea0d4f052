#pragma once
// What the COM tests share: the probe server (the control with the recording
// engine, built beside the test program) made by its class factory, an event
// sink, calls by name and a container's site.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>
#include <ole2.h>
#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/bstr_text.h"
#include "control/com_ptr.h"
#include "wine_bench.h"

namespace control_tests {

using corvan::com::ComPtr;

bool Regsvr32(const std::string& path, bool unregister = false);  // with the system's regsvr32
// The registered control, by ProgID; or the one of `file` beside this program,
// made by its class factory as COM would (the file is kept loaded).
ComPtr<IDispatch> CreateControl(const std::string& file = "");
FARPROC ProbeExport(const char* name);  // of the loaded probe server
void SetScript(const char* script);     // of the recording engine inside it
std::string Journal();

// An event sink for __ManageClient that keeps what it heard as "<dispid>:<text>".
class EventSink : public IDispatch {
public:
    std::vector<std::string> heard;
    ULONG references = 1;

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        const bool known = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) ||
                           IsEqualIID(riid, DIID___ManageClient);
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override {
        std::string text = "(no text)";
        if (params && params->cArgs == 1 && V_VT(&params->rgvarg[0]) == (VT_BSTR | VT_BYREF))
            text = corvan::com::FromBstr(*V_BSTRREF(&params->rgvarg[0]));
        heard.push_back(std::to_string(id) + ":" + text);
        return S_OK;
    }
};

ComPtr<IConnectionPoint> Advise(IDispatch* control, EventSink& sink, DWORD& cookie);
// Calls a member by name with at most one argument; expects it to succeed.
VARIANT Call(IDispatch* object, const wchar_t* name, WORD flags = DISPATCH_METHOD, VARIANT* argument = nullptr);
VARIANT Long(LONG value);
inline void PutText(IDispatch* object, const wchar_t* name, const std::string& text) {  // a text property
    corvan::com::Bstr value(text.c_str());
    VARIANT argument;
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = value.Get();
    Call(object, name, DISPATCH_PROPERTYPUT, &argument);
}

// A page holding the probe control, its sink advised.
class Page : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    void Put(const wchar_t* name, const std::string& text) { PutText(control.Get(), name, text); }
    std::string Get(const wchar_t* name) {
        VARIANT result = Call(control.Get(), name, DISPATCH_PROPERTYGET);
        EXPECT_EQ(V_VT(&result), VT_BSTR) << "not a text";
        const std::string text = V_VT(&result) == VT_BSTR ? corvan::com::FromBstr(V_BSTR(&result)) : "";
        VariantClear(&result);
        return text;
    }
    VARIANT Run(VARIANT mode) { return Call(control.Get(), L"Run", DISPATCH_METHOD, &mode); }
    VARIANT Session(const char* script, LONG mode = 1) {  // one Run whose engine plays `script`
        SetScript(script);
        return Run(Long(mode));
    }

    ComPtr<IDispatch> control;
    ComPtr<IConnectionPoint> point;
    EventSink sink;
    DWORD cookie = 0;
};

// A container's site: the page window the control is activated in, as a
// browser gives it.
class Site : public IOleClientSite, public IOleInPlaceSite {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP SaveObject() override { return S_OK; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer** container) override { *container = nullptr; return E_NOINTERFACE; }
    STDMETHODIMP ShowObject() override { return S_OK; }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }
    STDMETHODIMP GetWindow(HWND* window) override { *window = page; return S_OK; }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP CanInPlaceActivate() override { return S_OK; }
    STDMETHODIMP OnInPlaceActivate() override { ++activations; return S_OK; }
    STDMETHODIMP OnUIActivate() override { return S_OK; }
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                  LPRECT clip, LPOLEINPLACEFRAMEINFO) override {
        *frame = nullptr;
        *document = nullptr;
        *position = *clip = kPosition;
        return S_OK;
    }
    STDMETHODIMP Scroll(SIZE) override { return E_NOTIMPL; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnInPlaceDeactivate() override { ++deactivations; return S_OK; }
    STDMETHODIMP DiscardUndoState() override { return S_OK; }
    STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
    STDMETHODIMP OnPosRectChange(LPCRECT position) override { lastPosition = *position; return S_OK; }

    static constexpr RECT kPosition = {10, 20, 610, 147};
    HWND page = nullptr;
    ULONG references = 1;
    int activations = 0, deactivations = 0;
    RECT lastPosition = {};
};

}  // namespace control_tests
