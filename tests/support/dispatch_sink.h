#pragma once
#include <cstdio>
#include <string>
#include <vector>

#include <windows.h>
#include <oleauto.h>

namespace testing_support {

// An event sink for one dispinterface that keeps each call it hears as
// "<dispid>" followed by " <type>:<value>" per argument, first argument
// first: " R4:<%g>", " BSTR:<text>" (by value), " BSTR&:<text>" (by
// reference), " VT<n>" for anything else. It lives on the test's stack and
// must outlive the object it is advised to.
class DispatchSink : public IDispatch {
public:
    explicit DispatchSink(REFIID events) : events_(events) {}

    std::vector<std::string> calls;

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        const bool known = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, events_);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override {
        std::string call = std::to_string(id);
        for (UINT i = params->cArgs; i-- > 0;) {
            const VARIANT& arg = params->rgvarg[i];
            char number[32];
            switch (V_VT(&arg)) {
            case VT_R4:
                snprintf(number, sizeof number, "%g", V_R4(&arg));
                call += std::string(" R4:") + number;
                break;
            case VT_BSTR: call += " BSTR:" + Text(V_BSTR(&arg)); break;
            case VT_BSTR | VT_BYREF: call += " BSTR&:" + Text(*V_BSTRREF(&arg)); break;
            default: call += " VT" + std::to_string(V_VT(&arg));
            }
        }
        calls.push_back(call);
        return S_OK;
    }

private:
    static std::string Text(BSTR text) {
        const int length = static_cast<int>(SysStringLen(text));
        std::string ansi(WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr), '\0');
        WideCharToMultiByte(CP_ACP, 0, text, length, ansi.data(), static_cast<int>(ansi.size()), nullptr, nullptr);
        return ansi;
    }

    IID events_;
};

}  // namespace testing_support
