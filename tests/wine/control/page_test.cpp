// The control as pages and browsers find it: registered by regsvr32, safe
// for scripting, driven by name with its events heard, and locked to the
// extranet's https pages inside a browser.
#include <gtest/gtest.h>

#include <objsafe.h>
#include <olectl.h>
#include <servprov.h>
#include <shlguid.h>

#include <functional>

#include "harness.h"
#include "probe_server.h"

using namespace control_tests;

namespace {

using Texts = std::vector<std::string>;

// Script hosts find the events through the class information.
TEST_F(Page, SafetyClassInformationAndConnectionPointsAnswerAsABrowserExpects) {
    auto classInfo = control.As<IProvideClassInfo2>(IID_IProvideClassInfo2);
    ASSERT_TRUE(classInfo);
    GUID events = GUID_NULL;
    ASSERT_EQ(classInfo->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
    EXPECT_TRUE(IsEqualGUID(events, DIID___ManageClient));
    auto safety = control.As<IObjectSafety>(IID_IObjectSafety);
    ASSERT_TRUE(safety);
    const DWORD both = INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;
    const struct {
        const IID* iid;
        HRESULT get;
        DWORD options;  // supported and enabled
        HRESULT setBoth;
    } cases[] = {{&IID_IDispatch, S_OK, both, S_OK},
                 {&IID__ManageClient, S_OK, both, S_OK},
                 {&IID_IPersistPropertyBag, S_OK, INTERFACESAFE_FOR_UNTRUSTED_DATA, E_FAIL},
                 {&IID_IOleObject, E_NOINTERFACE, 0, E_NOINTERFACE}};
    for (const auto& c : cases) {
        DWORD supported = 1, enabled = 1;
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(*c.iid, &supported, &enabled), c.get);
        EXPECT_EQ(supported, c.options);
        EXPECT_EQ(enabled, c.options);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(*c.iid, both, both), c.setBoth);
    }
    // One connection point, the events'.
    auto container = control.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> first, other;
    EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, other.Put()), CONNECT_E_NOCONNECTION);
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(container->EnumConnectionPoints(points.Put()), S_OK);
    ASSERT_EQ(points->Next(1, first.Put(), nullptr), S_OK);
    EXPECT_EQ(points->Next(1, other.Put(), nullptr), S_FALSE);
    IID iid;
    first->GetConnectionInterface(&iid);
    EXPECT_TRUE(IsEqualIID(iid, DIID___ManageClient));
}

auto CanUnloadNow() {
    return reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(ProbeExport("DllCanUnloadNow")));
}

TEST_F(Page, CallsByNameDriveTheEngineEveryAdvisedSinkHearsAndTheServerUnloadsOnceLetGoEvenDuringARun) {
    EventSink second;
    DWORD secondCookie = 0;
    ASSERT_EQ(point->Advise(&second, &secondCookie), S_OK);
    EXPECT_NE(secondCookie, cookie);
    Put(L"UsersGroups", "Dealers");
    EXPECT_EQ(Get(L"UsersGroups"), "Dealers");
    EXPECT_EQ(V_VT(&static_cast<const VARIANT&>(Run(Long(0)))), VT_EMPTY);
    ASSERT_EQ(point->Unadvise(secondCookie), S_OK);
    EXPECT_EQ(point->Unadvise(secondCookie), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(V_VT(&static_cast<const VARIANT&>(Run(Long(6)))), VT_EMPTY);
    EXPECT_EQ(second.heard, Texts{"2:Complete"});
    EXPECT_EQ(second.references, 1u);

    Put(L"URL", "https://h/a/b/page.asp");
    Put(L"URL", "no slash here");
    VARIANT result = Session("status|INSTALL\nInstallationStatus|Preparing\nInstallerError|something broke\nneed|True\n", 5);
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_EQ(V_BOOL(&result), VARIANT_TRUE);
    EXPECT_EQ(Journal(), "PrepInstaller(1,False) url=https://h/a/b/\n");
    EXPECT_EQ(sink.heard, (Texts{"2:Complete", "2:Complete", "2:Preparing", "1:something broke", "2:Complete"}));
    EXPECT_EQ(Get(L"Status"), "INSTALL");
    // A by-reference Integer from a VB page works as well as a script's Long.
    SHORT mode = 3;
    VARIANT byReference;
    V_VT(&byReference) = VT_I2 | VT_BYREF;
    V_I2REF(&byReference) = &mode;
    EXPECT_EQ(V_VT(&static_cast<const VARIANT&>(Run(byReference))), VT_BOOL);
    EXPECT_NE(Journal().find("PrepInstaller(3,False)"), std::string::npos);
    VARIANT need = Call(control.Get(), L"NeedToInstall");
    EXPECT_EQ(V_VT(&need), VT_BOOL);
    EXPECT_EQ(V_BOOL(&need), VARIANT_TRUE);

    ASSERT_TRUE(CanUnloadNow());
    EXPECT_EQ(CanUnloadNow()(), S_FALSE);

    // A page may let go of the control from inside one of its events: the run
    // still finishes on a live object, and the control goes once Run returns.
    struct LettingGo : EventSink {
        std::function<void()> letGo;
        STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                            EXCEPINFO* exception, UINT* argumentError) override {
            EventSink::Invoke(id, riid, locale, flags, params, result, exception, argumentError);
            if (heard.back() == "2:Preparing") letGo();
            return S_OK;
        }
    } lettingGo;
    lettingGo.letGo = [this] {
        point = nullptr;
        control = nullptr;
    };
    DWORD letCookie = 0;
    ASSERT_TRUE(Advise(control.Get(), lettingGo, letCookie));
    point->Unadvise(cookie);
    result = Session("InstallationStatus|Preparing\nStatusMsgChange|still running\n");
    EXPECT_EQ(V_VT(&result), VT_BOOL);
    EXPECT_EQ(lettingGo.heard, (Texts{"2:Preparing", "2:Complete"}));
    EXPECT_EQ(CanUnloadNow()(), S_OK);
    EXPECT_EQ(sink.references, 1u);
    EXPECT_EQ(lettingGo.references, 1u);
}

bool KeyExists(const std::string& path) {
    HKEY key;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

// What creation by the class factory does not show: how a browser finds the
// control safe, where it lives, and that unregistering takes it all away.
TEST_F(Page, Regsvr32RegistersAndUnregistersTheShippedControl) {
    const std::string ocx = winbench::OutDir() + "\\CorvanInstaller.ocx";
    ASSERT_TRUE(Regsvr32(ocx));
    const std::string clsid = "CLSID\\{96764B85-C202-4377-A836-2C40554474D9}";
    const std::string typeLib = std::string("TypeLib\\{E11AB144-7A14-4294-9F2D-2574EFBE0FC2}\\1.0\\0\\") +
                                (sizeof(void*) == 8 ? "win64" : "win32");
    const auto server = winbench::RegText(HKEY_CLASSES_ROOT, clsid + "\\InprocServer32", nullptr);
    EXPECT_NE(server.value_or("").find("CorvanInstaller.ocx"), std::string::npos);
    for (const auto& row : Table("page.txt", "registered")) {
        std::string key = row[0];
        for (const auto& [name, text] : {std::pair{"{clsid}", clsid}, std::pair{"{typelib}", typeLib}})
            if (key.rfind(name, 0) == 0) key.replace(0, strlen(name), text);
        if (row[2].empty()) {
            EXPECT_TRUE(KeyExists(key)) << row.where;
        } else {
            EXPECT_EQ(winbench::RegText(HKEY_CLASSES_ROOT, key, row[1].c_str()), row[2]) << row.where;
        }
    }
    ASSERT_TRUE(Regsvr32(ocx, true));
    for (const std::string& key : {clsid, std::string("CorvanInstaller.ManageClient"),
                                   std::string("CorvanInstaller.ManageClient.1"), typeLib})
        EXPECT_FALSE(KeyExists(key)) << key;
}

// A browser's site: a container's, with the browser object behind it whose
// LocationURL (dispid 211) is the page.
class BrowserSite : public Site, public IServiceProvider, public IDispatch {
public:
    std::string location;
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        if (IsEqualIID(riid, IID_IServiceProvider)) *out = static_cast<IServiceProvider*>(this);
        else if (IsEqualIID(riid, IID_IDispatch)) *out = static_cast<IDispatch*>(this);
        else return Site::QueryInterface(riid, out);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return Site::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return Site::Release(); }
    STDMETHODIMP QueryService(REFGUID service, REFIID riid, void** out) override {
        return IsEqualGUID(service, SID_SWebBrowserApp) ? QueryInterface(riid, out) : E_NOINTERFACE;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override {
        if (id != 211 || !(flags & DISPATCH_PROPERTYGET) || !result) return DISP_E_MEMBERNOTFOUND;
        V_VT(result) = VT_BSTR;
        V_BSTR(result) = corvan::com::ToBstr(location);
        return S_OK;
    }
};

// Inside a browser only https pages of the approved hosts (the built-in ones
// or the machine's policy in the registry) run the control.
TEST_F(Page, InsideABrowserOnlyHttpsPagesOfApprovedHostsRunTheControl) {
    const char kPolicy[] = "SOFTWARE\\Policies\\Talo\\Installer";
    auto ole = control.As<IOleObject>(IID_IOleObject);
    BrowserSite site;
    ASSERT_EQ(ole->SetClientSite(static_cast<IOleClientSite*>(&site)), S_OK);
    for (const auto& row : Table("page.txt", "browser")) {
        const std::string &page = row[0], &policy = row[1], &installer = row[2], &refusal = row[3];
        SCOPED_TRACE(row.where);
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPolicy);
        if (!policy.empty()) {
            ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kPolicy, "ApprovedHosts", REG_SZ, policy.c_str(),
                                      static_cast<DWORD>(policy.size() + 1)),
                      ERROR_SUCCESS);
        }
        winbench::RemoveTree("C:\\TALO");
        sink.heard.clear();
        site.location = page;
        if (!installer.empty()) Put(L"URL", installer.c_str());
        VARIANT result = Session("");
        const std::string journal = Journal();
        if (refusal.empty()) {
            EXPECT_NE(journal.find("PrepInstaller(1,False)"), std::string::npos) << journal;
            continue;
        }
        ASSERT_FALSE(sink.heard.empty());
        EXPECT_EQ(sink.heard[0].rfind("1:The Corvan Connect client manager refused ", 0), 0u) << sink.heard[0];
        EXPECT_NE(sink.heard[0].find(refusal), std::string::npos) << sink.heard[0];
        if (!installer.empty()) {  // the refused address is never used; the run goes to the installer it had
            EXPECT_EQ(journal.find("evil.test"), std::string::npos) << journal;
            continue;
        }
        EXPECT_EQ(V_VT(&result), VT_BOOL);
        EXPECT_EQ(V_BOOL(&result), VARIANT_FALSE);
        EXPECT_EQ(journal.find("PrepInstaller"), std::string::npos) << journal;
        EXPECT_FALSE(winbench::FileExists("C:\\TALO\\SC_Install.log"));
        VARIANT need = Call(control.Get(), L"NeedToInstall");
        EXPECT_EQ(V_BOOL(&need), VARIANT_FALSE);
        EXPECT_EQ(Journal().find("NeedToInstall()"), std::string::npos);
    }
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPolicy);
    ole->SetClientSite(nullptr);
}

}  // namespace
