#pragma once
#include <string>

#include <windows.h>
#include <ole2.h>

#include "control/CorvanInstaller_h.h"
#include "control/com_ptr.h"
#include "wine_bench.h"

namespace control_tests {

using corvan::com::ComPtr;

// The folder of this test program, where the probe server is built.
std::string TestProgramFolder();

// Registers a server with the system's regsvr32; true when it succeeded.
bool Regsvr32(const std::string& path, bool unregister = false);

// The probe server (the control with the recording engine), registered in
// the test prefix and created by ProgID as a page would.
class ProbeServer {
public:
    static std::string Path();
    static bool Register();
    static ComPtr<IDispatch> CreateByProgId(const char* progId = "CorvanInstaller.ManageClient");
    // The recording engine inside the loaded probe server.
    static void SetScript(const char* script);
    static std::string Journal();
};

// An event sink for __ManageClient that keeps what it heard as
// "<dispid>:<text>".
class EventSink : public IDispatch {
public:
    std::vector<std::string> heard;

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override;

    ULONG references = 1;
};

// Calls a member by name through IDispatch.
HRESULT CallByName(IDispatch* object, const wchar_t* name, WORD flags, VARIANT* arguments, UINT count,
                   VARIANT* result);
DISPID DispidOf(IDispatch* object, const wchar_t* name);

}  // namespace control_tests
