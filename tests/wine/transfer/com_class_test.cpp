// CorvanInstaller.clsFTP as pages and scripts see it: registered by
// regsvr32, created by ProgID, driven by Wine's script host and by a client
// with an event sink of its own.
#include <gtest/gtest.h>

#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "test_server.h"
#include "wine_bench.h"

using namespace transfer_tests;

namespace {

bool RegisterServer() {
    static int exitCode = winbench::RunAndWait("regsvr32 /s \"" + winbench::OutDir() + "\\CorvanInstaller.ocx\"").exitCode;
    return exitCode == 0;
}

// Records the events of one object as "<dispid> <arguments>".
class Sink : public IDispatch {
public:
    std::vector<std::string> calls;

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, DIID___clsFTP)) {
            *out = this;
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override {
        std::string call = std::to_string(id);
        for (UINT i = params->cArgs; i-- > 0;) {
            VARIANT& arg = params->rgvarg[i];
            char text[512];
            if (V_VT(&arg) == VT_R4) {
                snprintf(text, sizeof text, " R4:%g", V_R4(&arg));
            } else if (V_VT(&arg) == VT_BSTR) {
                snprintf(text, sizeof text, " BSTR:%ls", V_BSTR(&arg));
            } else if (V_VT(&arg) == (VT_BSTR | VT_BYREF)) {
                snprintf(text, sizeof text, " BSTR&:%ls", *V_BSTRREF(&arg));
            } else if (V_VT(&arg) == VT_I4) {
                snprintf(text, sizeof text, " I4:%ld", static_cast<long>(V_I4(&arg)));
            } else {
                snprintf(text, sizeof text, " VT%d", V_VT(&arg));
            }
            call += text;
        }
        calls.push_back(call);
        return S_OK;
    }
};

}  // namespace

TEST(FtpComClass, ScriptHostCreatesItAndDownloads) {
    std::string base = ServerUrl();
    if (base.empty()) GTEST_SKIP() << "CORVAN_HTTP_URL not set";
    ASSERT_TRUE(RegisterServer());
    winbench::ScratchFolder scratch("transfer-script");
    const std::string script = scratch.Path() + "fetch.vbs";
    winbench::WriteFileBytes(script,
                             "Set ftp = CreateObject(\"CorvanInstaller.clsFTP\")\r\n"
                             "WScript.Echo \"port=\" & ftp.Port\r\n"
                             "ok = ftp.DownloadFile(\"" + base + "size/2048\", \"" + scratch.Path() + "got.bin\")\r\n"
                             "WScript.Echo \"ok=\" & ok & \" size=\" & ftp.dwCurrentFileSize & \" busy=\" & ftp.StillExecuting\r\n"
                             "WScript.Echo \"missing=\" & ftp.DownloadFile(\"" + base + "status/404\", \"" + scratch.Path() + "no.bin\")\r\n"
                             "WScript.Echo \"text=\" & Len(ftp.OpenURL(\"" + base + "size/300\"))\r\n"
                             "code = 12002\r\n"
                             "WScript.Echo \"err=\" & ftp.GetErr(code) & \"|\" & code\r\n");
    winbench::ChildResult run = winbench::RunAndWait("cscript.exe //nologo \"" + script + "\"");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("port=21"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("ok=True size=2048 busy=False"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("missing=False"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("text=1024"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("err=The request has timed out.|0"), std::string::npos) << run.output;
    EXPECT_EQ(winbench::ReadFileBytes(scratch.Path() + "got.bin"), PatternBytes(2048));
    EXPECT_FALSE(winbench::FileExists(scratch.Path() + "no.bin"));
}

TEST(FtpComClass, EventsReachAConnectedSink) {
    std::string base = ServerUrl();
    if (base.empty()) GTEST_SKIP() << "CORVAN_HTTP_URL not set";
    ASSERT_TRUE(RegisterServer());
    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    {
        CLSID clsid;
        ASSERT_EQ(CLSIDFromProgID(L"CorvanInstaller.clsFTP", &clsid), S_OK);
        IDispatch* ftp = nullptr;
        ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&ftp)), S_OK);
        IConnectionPointContainer* container = nullptr;
        ASSERT_EQ(ftp->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container)), S_OK);
        IEnumConnectionPoints* points = nullptr;
        ASSERT_EQ(container->EnumConnectionPoints(&points), S_OK);
        IConnectionPoint* listed = nullptr;
        ASSERT_EQ(points->Next(1, &listed, nullptr), S_OK);
        IID listedIid{};
        EXPECT_EQ(listed->GetConnectionInterface(&listedIid), S_OK);
        EXPECT_TRUE(IsEqualIID(listedIid, DIID___clsFTP));
        listed->Release();
        points->Release();
        IConnectionPoint* point = nullptr;
        ASSERT_EQ(container->FindConnectionPoint(DIID___clsFTP, &point), S_OK);
        Sink sink;
        DWORD cookie = 0;
        ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);

        winbench::ScratchFolder scratch("transfer-sink");
        _clsFTP* typed = nullptr;
        ASSERT_EQ(ftp->QueryInterface(IID__clsFTP, reinterpret_cast<void**>(&typed)), S_OK);
        BSTR url = SysAllocString(std::wstring(base.begin(), base.end()).append(L"size/300").c_str());
        std::string target = scratch.Path() + "sink.bin";
        BSTR destination = SysAllocString(std::wstring(target.begin(), target.end()).c_str());
        VARIANT_BOOL ok = VARIANT_FALSE;
        EXPECT_EQ(typed->DownloadFile(url, destination, &ok), S_OK);
        EXPECT_EQ(ok, VARIANT_TRUE);
        const std::string progress = "1 R4:3.41333 BSTR:1024 bytes of 300 bytes read ";
        EXPECT_EQ(sink.calls, (std::vector<std::string>{progress, progress, "1 R4:1 BSTR:1024 bytes of 300 bytes read "}));

        EXPECT_EQ(point->Unadvise(cookie), S_OK);
        sink.calls.clear();
        EXPECT_EQ(typed->DownloadFile(url, destination, &ok), S_OK);
        EXPECT_TRUE(sink.calls.empty());
        SysFreeString(url);
        SysFreeString(destination);
        typed->Release();
        point->Release();
        container->Release();
        ftp->Release();
    }
    CoUninitialize();
}
