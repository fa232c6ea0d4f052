#pragma once
// What the COM tests share: the probe server (the control with the recording
// engine, built beside the test program), an event sink, calls by name, and
// the page that creates the registered control by ProgID.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>
#include <ole2.h>
#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/com_ptr.h"
#include "wine_bench.h"

namespace control_tests {

using corvan::com::ComPtr;

// Registers, or unregisters, a server with the system's regsvr32.
bool Regsvr32(const std::string& path, bool unregister = false);
std::string ProbePath();  // beside this test program

// The registered control, created by ProgID as a page creates it.
ComPtr<IDispatch> CreateControl();

// The recording engine inside the loaded probe server.
void SetScript(const char* script);
std::string Journal();

// An event sink for __ManageClient that keeps what it heard as
// "<dispid>:<text>".
class EventSink : public IDispatch {
public:
    std::vector<std::string> heard;
    ULONG references = 1;

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override;
};

// Advises `sink` on the control's event connection point.
ComPtr<IConnectionPoint> Advise(IDispatch* control, EventSink& sink, DWORD& cookie);

DISPID DispidOf(IDispatch* object, const wchar_t* name);
// Calls a member by name with at most one argument; expects it to succeed.
VARIANT Call(IDispatch* object, const wchar_t* name, WORD flags = DISPATCH_METHOD, VARIANT* argument = nullptr);
VARIANT Long(LONG value);

// A page holding the probe control, its sink advised. The probe is registered
// anew for every test: the shipped control shares its CLSID, and a test that
// unregisters that must not leave later tests without a server.
class Page : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        ASSERT_TRUE(Regsvr32(ProbePath()));
        winbench::RemoveTree("C:\\TALO");
        control = CreateControl();
        ASSERT_TRUE(control);
        SetScript("");
        point = Advise(control.Get(), sink, cookie);
        ASSERT_TRUE(point);
    }
    void TearDown() override {
        if (point) point->Unadvise(cookie);
        point = nullptr;
        control = nullptr;
        winbench::RemoveTree("C:\\TALO");
        OleUninitialize();
    }

    void Put(const wchar_t* name, const char* text);
    std::string Get(const wchar_t* name);
    VARIANT Run(VARIANT mode) { return Call(control.Get(), L"Run", DISPATCH_METHOD, &mode); }

    ComPtr<IDispatch> control;
    ComPtr<IConnectionPoint> point;
    EventSink sink;
    DWORD cookie = 0;
};

}  // namespace control_tests
