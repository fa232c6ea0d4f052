// The shipped control registers and unregisters itself with regsvr32.
#include <gtest/gtest.h>

#include <ocidl.h>

#include "probe_server.h"

using namespace control_tests;

namespace {

const char kClsid[] = "CLSID\\{96764B85-C202-4377-A836-2C40554474D9}";

bool KeyExists(const std::string& path) {
    HKEY key;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

std::string Value(const std::string& path, const char* name = nullptr) {
    char data[512] = {};
    DWORD size = sizeof data;
    if (RegGetValueA(HKEY_CLASSES_ROOT, path.c_str(), name, RRF_RT_REG_SZ, nullptr, data, &size) != ERROR_SUCCESS)
        return "(missing)";
    return data;
}

TEST(Registration, Regsvr32WritesAndRemovesWhatBrowsersAndScriptHostsNeed) {
    const std::string ocx = winbench::OutDir() + "\\CorvanInstaller.ocx";
    ASSERT_TRUE(winbench::FileExists(ocx)) << ocx;
    ASSERT_TRUE(Regsvr32(ocx));

    const std::string clsid = kClsid;
    std::string server = Value(clsid + "\\InprocServer32");
    EXPECT_TRUE(_stricmp(server.c_str(), ocx.c_str()) == 0 || server.find("CorvanInstaller.ocx") != std::string::npos)
        << server;
    EXPECT_EQ(Value(clsid + "\\InprocServer32", "ThreadingModel"), "Apartment");
    EXPECT_EQ(Value(clsid + "\\ProgID"), "CorvanInstaller.ManageClient.1");
    EXPECT_EQ(Value(clsid + "\\VersionIndependentProgID"), "CorvanInstaller.ManageClient");
    EXPECT_EQ(Value(clsid + "\\TypeLib"), "{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}");
    EXPECT_TRUE(KeyExists(clsid + "\\Control"));
    // Site first, inside-out, active when visible: what a browser reads
    // before it creates the control.
    EXPECT_EQ(Value(clsid + "\\MiscStatus\\1"), "131473");
    EXPECT_TRUE(KeyExists(clsid + "\\Implemented Categories\\{7DD95801-9882-11CF-9FA9-00AA006C42C4}"));
    EXPECT_TRUE(KeyExists(clsid + "\\Implemented Categories\\{7DD95802-9882-11CF-9FA9-00AA006C42C4}"));
    EXPECT_EQ(Value("CorvanInstaller.ManageClient\\CLSID"), "{96764B85-C202-4377-A836-2C40554474D9}");
    EXPECT_EQ(Value("CorvanInstaller.ManageClient\\CurVer"), "CorvanInstaller.ManageClient.1");
    EXPECT_EQ(Value("CorvanInstaller.ManageClient.1\\CLSID"), "{96764B85-C202-4377-A836-2C40554474D9}");
    EXPECT_TRUE(KeyExists("TypeLib\\{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}\\1.0\\0\\win64"));
    // The typelib registration makes the dual interface known for marshalling.
    EXPECT_TRUE(KeyExists("Interface\\{CF3D629D-1B7D-49FD-96DA-8F3B48662F46}"));

    ASSERT_TRUE(Regsvr32(ocx, true));
    EXPECT_FALSE(KeyExists(clsid));
    EXPECT_FALSE(KeyExists("CorvanInstaller.ManageClient"));
    EXPECT_FALSE(KeyExists("CorvanInstaller.ManageClient.1"));
    EXPECT_FALSE(KeyExists("TypeLib\\{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}"));
}

TEST(ShippedControl, SaysPlainlyThatItsInstallEngineIsNotBuiltIn) {
    ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
    const std::string ocx = winbench::OutDir() + "\\CorvanInstaller.ocx";
    ASSERT_TRUE(Regsvr32(ocx));
    winbench::RemoveTree("C:\\TALO");
    {
        ComPtr<IDispatch> control = ProbeServer::CreateByProgId();
        ASSERT_TRUE(control);
        ComPtr<IConnectionPoint> point;
        control.As<IConnectionPointContainer>(IID_IConnectionPointContainer)
            ->FindConnectionPoint(DIID___ManageClient, point.Put());
        EventSink sink;
        DWORD cookie = 0;
        ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);
        VARIANT mode, result;
        V_VT(&mode) = VT_I4;
        V_I4(&mode) = 1;
        VariantInit(&result);
        ASSERT_EQ(CallByName(control.Get(), L"Run", DISPATCH_METHOD, &mode, 1, &result), S_OK);
        EXPECT_EQ(V_VT(&result), VT_BOOL);
        EXPECT_EQ(V_BOOL(&result), VARIANT_FALSE);
        ASSERT_EQ(sink.heard.size(), 2u);
        EXPECT_EQ(sink.heard[0].rfind("1:The install engine is not part of this build", 0), 0u) << sink.heard[0];
        EXPECT_EQ(sink.heard[1], "2:Complete");
        point->Unadvise(cookie);
    }
    Regsvr32(ocx, true);
    winbench::RemoveTree("C:\\TALO");
    OleUninitialize();
}

}  // namespace
