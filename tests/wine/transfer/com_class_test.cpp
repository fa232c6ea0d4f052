// CorvanInstaller.clsFTP as pages and scripts see it: registered by
// regsvr32, created by ProgID, driven by Wine's script host and by a client
// with an event sink of its own.
#include <gtest/gtest.h>

#include <ocidl.h>

#include "control/CorvanInstaller_h.h"
#include "control/bstr_text.h"
#include "control/com_ptr.h"
#include "dispatch_sink.h"
#include "test_server.h"
#include "wine_bench.h"

using namespace transfer_tests;
using corvan::com::Bstr;
using corvan::com::ComPtr;

namespace {

class FtpComClass : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
        base = ServerUrl();
        if (base.empty()) GTEST_SKIP() << "CORVAN_HTTP_URL not set";
        static const int registered =
            winbench::RunAndWait("regsvr32 /s \"" + winbench::OutDir() + "\\CorvanInstaller.ocx\"").exitCode;
        ASSERT_EQ(registered, 0);
    }
    void TearDown() override { CoUninitialize(); }

    std::string base;
    winbench::ScratchFolder scratch{"transfer-com"};
};

}  // namespace

TEST_F(FtpComClass, ScriptHostCreatesItAndDownloads) {
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
    EXPECT_EQ(run.output, "port=21\r\nok=True size=2048 busy=False\r\nmissing=False\r\ntext=1024\r\n"
                          "err=The request has timed out.|0\r\n");
    EXPECT_EQ(winbench::ReadFileBytes(scratch.Path() + "got.bin"), PatternBytes(2048));
    EXPECT_FALSE(winbench::FileExists(scratch.Path() + "no.bin"));
}

TEST_F(FtpComClass, EventsReachAConnectedSinkUntilUnadvised) {
    testing_support::DispatchSink sink(DIID___clsFTP);  // outlives every reference the object may hold to it
    CLSID clsid;
    ASSERT_EQ(CLSIDFromProgID(L"CorvanInstaller.clsFTP", &clsid), S_OK);
    ComPtr<_clsFTP> ftp;
    ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID__clsFTP, ftp.PutVoid()), S_OK);
    auto container = ftp.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ASSERT_TRUE(container);
    ComPtr<IConnectionPoint> point;
    ASSERT_EQ(container->FindConnectionPoint(DIID___clsFTP, point.Put()), S_OK);
    DWORD cookie = 0;
    ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);

    Bstr url(base + "size/300"), destination(scratch.Path() + "sink.bin");
    VARIANT_BOOL ok = VARIANT_FALSE;
    EXPECT_EQ(ftp->DownloadFile(url.Get(), destination.Get(), &ok), S_OK);
    EXPECT_EQ(ok, VARIANT_TRUE);
    const std::string progress = "1 R4:3.41333 BSTR:1024 bytes of 300 bytes read ";
    EXPECT_EQ(sink.calls, (std::vector<std::string>{progress, progress, "1 R4:1 BSTR:1024 bytes of 300 bytes read "}));

    EXPECT_EQ(point->Unadvise(cookie), S_OK);
    sink.calls.clear();
    EXPECT_EQ(ftp->DownloadFile(url.Get(), destination.Get(), &ok), S_OK);
    EXPECT_TRUE(sink.calls.empty());
}
