// A C++ client acting as the page: creates the registered control by ProgID,
// asks what a browser asks, listens to its events and calls it by name.
#include <gtest/gtest.h>

#include <objsafe.h>
#include <ocidl.h>
#include <olectl.h>

#include "control/bstr_text.h"
#include "probe_server.h"
#include "session_log.h"

using namespace control_tests;
using corvan::com::Bstr;

namespace {

class Page : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        ASSERT_TRUE(ProbeServer::Register());
        winbench::RemoveTree("C:\\TALO");
        control = ProbeServer::CreateByProgId();
        ASSERT_TRUE(control);
        ProbeServer::SetScript("");
    }
    void TearDown() override {
        if (cookie) point->Unadvise(cookie);
        point = nullptr;
        control = nullptr;
        winbench::RemoveTree("C:\\TALO");
        OleUninitialize();
    }

    void Listen() {
        auto container = control.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
        ASSERT_TRUE(container);
        ASSERT_EQ(container->FindConnectionPoint(DIID___ManageClient, point.Put()), S_OK);
        ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);
    }

    VARIANT Run(VARIANT mode) {
        VARIANT result;
        VariantInit(&result);
        EXPECT_EQ(CallByName(control.Get(), L"Run", DISPATCH_METHOD, &mode, 1, &result), S_OK);
        return result;
    }

    void PutText(const wchar_t* name, const char* text) {
        Bstr value(text);
        VARIANT argument;
        V_VT(&argument) = VT_BSTR;
        V_BSTR(&argument) = value.Get();
        EXPECT_EQ(CallByName(control.Get(), name, DISPATCH_PROPERTYPUT, &argument, 1, nullptr), S_OK) << text;
    }

    std::string GetText(const wchar_t* name) {
        VARIANT result;
        VariantInit(&result);
        EXPECT_EQ(CallByName(control.Get(), name, DISPATCH_PROPERTYGET, nullptr, 0, &result), S_OK);
        EXPECT_EQ(V_VT(&result), VT_BSTR);
        std::string text = V_VT(&result) == VT_BSTR ? corvan::com::FromBstr(V_BSTR(&result)) : "";
        VariantClear(&result);
        return text;
    }

    ComPtr<IDispatch> control;
    ComPtr<IConnectionPoint> point;
    EventSink sink;
    DWORD cookie = 0;
};

VARIANT Long(LONG value) {
    VARIANT v;
    V_VT(&v) = VT_I4;
    V_I4(&v) = value;
    return v;
}

TEST_F(Page, MembersAndEventsKeepTheirNamesAndDispatchIdentifiers) {
    EXPECT_EQ(DispidOf(control.Get(), L"Status"), 0x68030001);
    EXPECT_EQ(DispidOf(control.Get(), L"URL"), 0x68030000);
    EXPECT_EQ(DispidOf(control.Get(), L"Run"), 0x60030002);
    EXPECT_EQ(DispidOf(control.Get(), L"NeedToInstall"), 0x60030011);
    EXPECT_EQ(DispidOf(control.Get(), L"hwnd"), 0x68030013);
    EXPECT_EQ(DispidOf(control.Get(), L"ShowUpdates"), 0x60030024);
    EXPECT_EQ(DispidOf(control.Get(), L"usersgroups"), 0x68030012);

    // Early-bound pages call through the vtable: the order is part of the
    // interface.
    ComPtr<ITypeInfo> dual;
    ASSERT_EQ(control->GetTypeInfo(0, LOCALE_USER_DEFAULT, dual.Put()), S_OK);
    std::vector<std::string> order;
    for (UINT index = 0;; ++index) {
        FUNCDESC* function = nullptr;
        if (FAILED(dual->GetFuncDesc(index, &function))) break;
        BSTR name = nullptr;
        UINT count = 0;
        dual->GetNames(function->memid, &name, 1, &count);
        if (function->oVft >= 7 * static_cast<SHORT>(sizeof(void*)))
            order.push_back(corvan::com::FromBstr(name) + "/" + std::to_string(function->invkind));
        SysFreeString(name);
        dual->ReleaseFuncDesc(function);
    }
    EXPECT_EQ(order, (std::vector<std::string>{"Status/2", "URL/4", "Run/1", "NeedToInstall/1", "hwnd/2",
                                               "ShowUpdates/1", "UsersGroups/2", "UsersGroups/4"}));

    // Script hosts find the event interface through the class information.
    auto classInfo = control.As<IProvideClassInfo2>(IID_IProvideClassInfo2);
    ASSERT_TRUE(classInfo);
    GUID events = GUID_NULL;
    ASSERT_EQ(classInfo->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
    EXPECT_TRUE(IsEqualGUID(events, DIID___ManageClient));
    ComPtr<ITypeInfo> coclass;
    ASSERT_EQ(classInfo->GetClassInfo(coclass.Put()), S_OK);
    BSTR name = nullptr;
    coclass->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
    EXPECT_EQ(corvan::com::FromBstr(name), "ManageClient");
    SysFreeString(name);

    ComPtr<ITypeInfo> source;
    HREFTYPE reference;
    ASSERT_EQ(coclass->GetRefTypeOfImplType(1, &reference), S_OK);
    ASSERT_EQ(coclass->GetRefTypeInfo(reference, source.Put()), S_OK);
    LPOLESTR eventNames[] = {const_cast<LPOLESTR>(L"InstallError"), const_cast<LPOLESTR>(L"InstallStatus")};
    MEMBERID ids[2] = {};
    ASSERT_EQ(source->GetIDsOfNames(&eventNames[0], 1, &ids[0]), S_OK);
    ASSERT_EQ(source->GetIDsOfNames(&eventNames[1], 1, &ids[1]), S_OK);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(ids[1], 2);
}

TEST_F(Page, ObjectSafetyAnswersAsABrowserExpects) {
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
}

TEST_F(Page, RunWithoutAnEngineModeReturnsEmptyAndRaisesComplete) {
    Listen();
    PutText(L"UsersGroups", "Dealers");
    EXPECT_EQ(GetText(L"UsersGroups"), "Dealers");
    for (LONG mode : {0, 6}) {
        VARIANT result = Run(Long(mode));
        EXPECT_EQ(V_VT(&result), VT_EMPTY) << mode;
    }
    EXPECT_EQ(sink.heard, (std::vector<std::string>{"2:Complete", "2:Complete"}));
    EXPECT_EQ(ProbeServer::Journal().find("PrepInstaller"), std::string::npos);
    std::vector<std::string> log = LogMessages();
    ASSERT_EQ(log.size(), 2u * 16u);
    EXPECT_EQ(log[11], "Groups: Dealers");
    EXPECT_EQ(log[13].rfind("----------------------------END OF ", 0), 0u);
}

TEST_F(Page, Mode5DrivesTheEngineAsMode1AndEventsReachThePage) {
    Listen();
    PutText(L"URL", "https://h/a/b/page.asp");
    PutText(L"URL", "no slash here");
    ProbeServer::SetScript("status|INSTALL\nInstallationStatus|Preparing\nStatusMsgChange|Opening FTP Server...\n"
                           "InstallerError|something broke\nresult|True\n");
    for (LONG mode : {1, 5}) {
        VARIANT result = Run(Long(mode));
        EXPECT_EQ(V_VT(&result), VT_BOOL) << mode;
        EXPECT_EQ(V_BOOL(&result), VARIANT_TRUE) << mode;
    }
    EXPECT_EQ(ProbeServer::Journal(), "PrepInstaller(1,False) url=https://h/a/b/\n"
                                      "PrepInstaller(1,False) url=https://h/a/b/\n");
    std::vector<std::string> once = {"2:Preparing", "1:something broke", "2:Complete"};
    std::vector<std::string> twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(sink.heard, twice);
    EXPECT_EQ(GetText(L"Status"), "INSTALL");
    std::vector<std::string> log = LogMessages();
    ASSERT_GE(log.size(), 16u);
    EXPECT_EQ(log[0], "----------------------------START OF INSTALL -----------------------------------");
    EXPECT_EQ(log[13], "Opening FTP Server...");
    EXPECT_EQ(log[14], "something broke");

    // A by-reference Integer from a VB page works as well as a script's Long.
    SHORT mode = 3;
    VARIANT byReference;
    V_VT(&byReference) = VT_I2 | VT_BYREF;
    V_I2REF(&byReference) = &mode;
    VARIANT result = Run(byReference);
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_NE(ProbeServer::Journal().find("PrepInstaller(3,False)"), std::string::npos);
}

TEST_F(Page, NeedToInstallAndTheWindowHandleOfAControlNeverActivated) {
    ProbeServer::SetScript("need|True\n");
    VARIANT result;
    VariantInit(&result);
    ASSERT_EQ(CallByName(control.Get(), L"NeedToInstall", DISPATCH_METHOD, nullptr, 0, &result), S_OK);
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_EQ(V_BOOL(&result), VARIANT_TRUE);
    ASSERT_EQ(CallByName(control.Get(), L"hwnd", DISPATCH_PROPERTYGET, nullptr, 0, &result), S_OK);
    EXPECT_EQ(V_VT(&result), VT_I4);
    EXPECT_EQ(V_I4(&result), 0);
    EXPECT_EQ(CallByName(control.Get(), L"ShowUpdates", DISPATCH_METHOD, nullptr, 0, nullptr), S_OK);
}

TEST_F(Page, AnySinkCountAndUnadviseStopsEvents) {
    Listen();
    auto container = control.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    EventSink second;
    DWORD secondCookie = 0;
    ASSERT_EQ(point->Advise(&second, &secondCookie), S_OK);
    EXPECT_NE(secondCookie, cookie);
    Run(Long(0));
    ASSERT_EQ(point->Unadvise(secondCookie), S_OK);
    EXPECT_EQ(point->Unadvise(secondCookie), CONNECT_E_NOCONNECTION);
    Run(Long(0));
    EXPECT_EQ(sink.heard.size(), 2u);
    EXPECT_EQ(second.heard.size(), 1u);
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

TEST_F(Page, TheServerCanUnloadOnceThePageLetsGo) {
    auto canUnload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        GetProcAddress(GetModuleHandleA("CorvanControlProbe.ocx"), "DllCanUnloadNow"));
    ASSERT_TRUE(canUnload);
    Listen();
    Run(Long(1));
    EXPECT_EQ(canUnload(), S_FALSE);
    point->Unadvise(cookie);
    cookie = 0;
    point = nullptr;
    control = nullptr;
    EXPECT_EQ(canUnload(), S_OK);
    EXPECT_EQ(sink.references, 1u);
}

}  // namespace
