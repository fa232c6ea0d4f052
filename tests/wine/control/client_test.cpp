// A C++ client acting as the page: creates the registered control by ProgID,
// asks what a browser asks, listens to its events and calls it by name.
#include <gtest/gtest.h>

#include <objsafe.h>
#include <olectl.h>

#include <cstdio>

#include "control/bstr_text.h"
#include "probe_server.h"
#include "session_log.h"

using namespace control_tests;

namespace {

using Texts = std::vector<std::string>;

// What an interface adds to IUnknown and IDispatch, in vtable order, as
// "name/invoke kind/dispid".
Texts Members(ITypeInfo* info) {
    Texts members;
    FUNCDESC* function = nullptr;
    for (UINT index = 0; SUCCEEDED(info->GetFuncDesc(index, &function)); ++index) {
        corvan::com::Bstr name;
        UINT count = 0;
        info->GetNames(function->memid, name.Put(), 1, &count);
        char id[16];
        std::snprintf(id, sizeof id, "%lX", static_cast<unsigned long>(function->memid));
        if (HIWORD(function->memid) != 0x6000 && HIWORD(function->memid) != 0x6001)
            members.push_back(name.Text() + "/" + std::to_string(function->invkind) + "/" + id);
        info->ReleaseFuncDesc(function);
    }
    return members;
}

TEST_F(Page, MembersAndEventsKeepTheirOrderAndDispatchIdentifiers) {
    // Early-bound pages call through the vtable: the order is part of the
    // interface.
    ComPtr<ITypeInfo> dual, coclass, source;
    ASSERT_EQ(control->GetTypeInfo(0, LOCALE_USER_DEFAULT, dual.Put()), S_OK);
    EXPECT_EQ(Members(dual.Get()),
              (Texts{"Status/2/68030001", "URL/4/68030000", "Run/1/60030002", "NeedToInstall/1/60030011",
                     "hwnd/2/68030013", "ShowUpdates/1/60030024", "UsersGroups/2/68030012", "UsersGroups/4/68030012"}));
    EXPECT_EQ(DispidOf(control.Get(), L"usersgroups"), 0x68030012);

    // Script hosts find the event interface through the class information.
    auto classInfo = control.As<IProvideClassInfo2>(IID_IProvideClassInfo2);
    ASSERT_TRUE(classInfo);
    GUID events = GUID_NULL;
    ASSERT_EQ(classInfo->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
    EXPECT_TRUE(IsEqualGUID(events, DIID___ManageClient));
    ASSERT_EQ(classInfo->GetClassInfo(coclass.Put()), S_OK);
    corvan::com::Bstr name;
    coclass->GetDocumentation(MEMBERID_NIL, name.Put(), nullptr, nullptr, nullptr);
    EXPECT_EQ(name.Text(), "ManageClient");
    HREFTYPE reference;
    ASSERT_EQ(coclass->GetRefTypeOfImplType(1, &reference), S_OK);
    ASSERT_EQ(coclass->GetRefTypeInfo(reference, source.Put()), S_OK);
    EXPECT_EQ(Members(source.Get()), (Texts{"InstallError/1/1", "InstallStatus/1/2"}));
}

TEST_F(Page, ObjectSafetyAndConnectionPointsAnswerAsABrowserExpects) {
    auto safety = control.As<IObjectSafety>(IID_IObjectSafety);
    ASSERT_TRUE(safety);
    const DWORD both = INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;
    DWORD supported = 0, enabled = 0;
    ASSERT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled), S_OK);
    EXPECT_EQ(supported, both);
    EXPECT_EQ(enabled, both);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, both, both), S_OK);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID__ManageClient, both, both), S_OK);
    ASSERT_EQ(safety->GetInterfaceSafetyOptions(IID_IPersistPropertyBag, &supported, &enabled), S_OK);
    EXPECT_EQ(enabled, DWORD(INTERFACESAFE_FOR_UNTRUSTED_DATA));
    EXPECT_NE(safety->SetInterfaceSafetyOptions(IID_IPersistPropertyBag, both, both), S_OK);
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IOleObject, &supported, &enabled), E_NOINTERFACE);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IOleObject, both, both), E_NOINTERFACE);

    // One connection point, the events'.
    auto container = control.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> other;
    EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, other.Put()), CONNECT_E_NOCONNECTION);
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(container->EnumConnectionPoints(points.Put()), S_OK);
    IConnectionPoint* listed[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(points->Next(2, listed, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1u);
    IID iid;
    listed[0]->GetConnectionInterface(&iid);
    EXPECT_TRUE(IsEqualIID(iid, DIID___ManageClient));
    listed[0]->Release();
}

TEST_F(Page, ModesWithoutEngineReturnEmptyAndRaiseCompleteToEverySinkAdvised) {
    EventSink second;
    DWORD secondCookie = 0;
    ASSERT_EQ(point->Advise(&second, &secondCookie), S_OK);
    EXPECT_NE(secondCookie, cookie);
    Put(L"UsersGroups", "Dealers");
    EXPECT_EQ(Get(L"UsersGroups"), "Dealers");
    VARIANT result = Run(Long(0));
    EXPECT_EQ(V_VT(&result), VT_EMPTY);
    ASSERT_EQ(point->Unadvise(secondCookie), S_OK);
    EXPECT_EQ(point->Unadvise(secondCookie), CONNECT_E_NOCONNECTION);
    result = Run(Long(6));
    EXPECT_EQ(V_VT(&result), VT_EMPTY);
    EXPECT_EQ(sink.heard, (Texts{"2:Complete", "2:Complete"}));
    EXPECT_EQ(second.heard, Texts{"2:Complete"});
    EXPECT_EQ(second.references, 1u);
    EXPECT_EQ(Journal().find("PrepInstaller"), std::string::npos);
    std::vector<std::string> log = LogMessages();
    ASSERT_EQ(log.size(), 2u * 16u);
    EXPECT_EQ(log[11], "Groups: Dealers");
    EXPECT_EQ(log[13].rfind("----------------------------END OF ", 0), 0u);
}

TEST_F(Page, CallsByNameDriveTheEngineAndTheServerUnloadsOnceThePageLetsGo) {
    Put(L"URL", "https://h/a/b/page.asp");
    Put(L"URL", "no slash here");
    SetScript("status|INSTALL\nInstallationStatus|Preparing\nStatusMsgChange|Opening FTP Server...\n"
              "InstallerError|something broke\nresult|True\nneed|True\n");
    VARIANT result = Run(Long(5));
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_EQ(V_BOOL(&result), VARIANT_TRUE);
    EXPECT_EQ(Journal(), "PrepInstaller(1,False) url=https://h/a/b/\n");
    EXPECT_EQ(sink.heard, (Texts{"2:Preparing", "1:something broke", "2:Complete"}));
    EXPECT_EQ(Get(L"Status"), "INSTALL");

    // A by-reference Integer from a VB page works as well as a script's Long.
    SHORT mode = 3;
    VARIANT byReference;
    V_VT(&byReference) = VT_I2 | VT_BYREF;
    V_I2REF(&byReference) = &mode;
    result = Run(byReference);
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_NE(Journal().find("PrepInstaller(3,False)"), std::string::npos);
    VARIANT need = Call(control.Get(), L"NeedToInstall");
    EXPECT_EQ(V_VT(&need), VT_BOOL);
    EXPECT_EQ(V_BOOL(&need), VARIANT_TRUE);
    Call(control.Get(), L"ShowUpdates");

    auto canUnload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        GetProcAddress(GetModuleHandleA("CorvanControlProbe.ocx"), "DllCanUnloadNow"));
    ASSERT_TRUE(canUnload);
    EXPECT_EQ(canUnload(), S_FALSE);
    point->Unadvise(cookie);
    point = nullptr;
    control = nullptr;
    EXPECT_EQ(canUnload(), S_OK);
    EXPECT_EQ(sink.references, 1u);
}

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

// The type library is registered per platform under one key that both
// architectures share: unregistering one control leaves the other's entry.
const std::string kTypeLibPlatform = std::string("TypeLib\\{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}\\1.0\\0\\") +
                                     (sizeof(void*) == 8 ? "win64" : "win32");

TEST_F(Page, Regsvr32RegistersAndUnregistersTheShippedControl) {
    const std::string ocx = winbench::OutDir() + "\\CorvanInstaller.ocx";
    ASSERT_TRUE(winbench::FileExists(ocx)) << ocx;
    ASSERT_TRUE(Regsvr32(ocx));

    const std::string clsid = "CLSID\\{96764B85-C202-4377-A836-2C40554474D9}";
    std::string server = Value(clsid + "\\InprocServer32");
    EXPECT_TRUE(_stricmp(server.c_str(), ocx.c_str()) == 0 || server.find("CorvanInstaller.ocx") != std::string::npos)
        << server;
    EXPECT_EQ(Value(clsid + "\\InprocServer32", "ThreadingModel"), "Apartment");
    EXPECT_EQ(Value(clsid + "\\ProgID"), "CorvanInstaller.ManageClient.1");
    EXPECT_EQ(Value(clsid + "\\VersionIndependentProgID"), "CorvanInstaller.ManageClient");
    EXPECT_EQ(Value(clsid + "\\TypeLib"), "{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}");
    // Site first, inside-out, active when visible: what a browser reads
    // before it creates the control.
    EXPECT_EQ(Value(clsid + "\\MiscStatus\\1"), "131473");
    EXPECT_EQ(Value("CorvanInstaller.ManageClient\\CLSID"), "{96764B85-C202-4377-A836-2C40554474D9}");
    EXPECT_EQ(Value("CorvanInstaller.ManageClient\\CurVer"), "CorvanInstaller.ManageClient.1");
    EXPECT_EQ(Value("CorvanInstaller.ManageClient.1\\CLSID"), "{96764B85-C202-4377-A836-2C40554474D9}");
    // The last key comes with the typelib: it makes the dual interface known
    // for marshalling.
    const std::string categories = clsid + "\\Implemented Categories\\";
    for (const std::string& key : {clsid + "\\Control", categories + "{7DD95801-9882-11CF-9FA9-00AA006C42C4}",
                                   categories + "{7DD95802-9882-11CF-9FA9-00AA006C42C4}",
                                   kTypeLibPlatform,
                                   std::string("Interface\\{CF3D629D-1B7D-49FD-96DA-8F3B48662F46}")})
        EXPECT_TRUE(KeyExists(key)) << key;

    ASSERT_TRUE(Regsvr32(ocx, true));
    for (const std::string& key : {clsid, std::string("CorvanInstaller.ManageClient"),
                                   std::string("CorvanInstaller.ManageClient.1"),
                                   kTypeLibPlatform})
        EXPECT_FALSE(KeyExists(key)) << key;
}

}  // namespace
