// The control inside a browser: only https pages of the approved extranet
// hosts may run it. The site answers as a browser's does: through
// IServiceProvider to the browser object, whose LocationURL is the page.
#include <gtest/gtest.h>

#include <servprov.h>
#include <shlguid.h>

#include "container_site.h"
#include "control/bstr_text.h"
#include "probe_server.h"

using namespace control_tests;

namespace {

class Browser : public IDispatch {
public:
    std::string location;
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        *out = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) ? this : nullptr;
        return *out ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { *count = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override {
        if (id != 211 || !(flags & DISPATCH_PROPERTYGET) || !result) return DISP_E_MEMBERNOTFOUND;  // LocationURL
        V_VT(result) = VT_BSTR;
        V_BSTR(result) = corvan::com::ToBstr(location);
        return S_OK;
    }
};

// A browser's site: the container's, plus the browser object behind it.
class BrowserSite : public Site, public IServiceProvider {
public:
    BrowserSite() : Site(nullptr) {}
    Browser browser;
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        if (!IsEqualIID(riid, IID_IServiceProvider)) return Site::QueryInterface(riid, out);
        *out = static_cast<IServiceProvider*>(this);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return Site::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return Site::Release(); }
    STDMETHODIMP QueryService(REFGUID service, REFIID riid, void** out) override {
        if (!IsEqualGUID(service, SID_SWebBrowserApp)) return E_NOINTERFACE;
        return browser.QueryInterface(riid, out);
    }
};

constexpr char kPolicyKey[] = "SOFTWARE\\Policies\\Talo\\Installer";

void SetPolicy(const char* hosts) {
    if (!hosts) {
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, kPolicyKey);
        return;
    }
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kPolicyKey, "ApprovedHosts", REG_SZ, hosts,
                              static_cast<DWORD>(strlen(hosts) + 1)),
              ERROR_SUCCESS);
}

TEST_F(Page, InsideABrowserOnlyHttpsPagesOfApprovedHostsRunTheControl) {
    struct Case {
        const char* page;
        const char* policy;     // the machine's ApprovedHosts, or none
        const char* installer;  // what the page sets URL to, or nothing
        const char* refusal;    // what InstallError names, or nothing: the run goes ahead
    } cases[] = {
        {"https://extranet.corvan-connect.example/installer/default.asp", nullptr, nullptr, nullptr},
        {"https://evil.test/page.htm", nullptr, nullptr, "host 'evil.test': the host is not an approved"},
        {"http://extranet.corvan-connect.example/installer/default.asp", nullptr, nullptr, "this address is http."},
        {"https://extranet.corvan-connect.example.evil.test/installer/x.asp", nullptr, nullptr,
         "host 'extranet.corvan-connect.example.evil.test'"},
        {"https://extranet.corvan-connect.example/installer/default.asp", nullptr, "https://evil.test/installer/x.asp",
         "installer address on host 'evil.test'"},
        {"https://www.partner.test/p.asp", nullptr, nullptr, "host 'www.partner.test'"},
        {"https://www.partner.test/p.asp", "dealer.test; .partner.test", nullptr, nullptr},
    };
    auto ole = control.As<IOleObject>(IID_IOleObject);
    ASSERT_TRUE(ole);
    BrowserSite site;
    ASSERT_EQ(ole->SetClientSite(static_cast<IOleClientSite*>(&site)), S_OK);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.page);
        SetPolicy(c.policy);
        winbench::RemoveTree("C:\\TALO");
        SetScript("");
        sink.heard.clear();
        site.browser.location = c.page;
        if (c.installer) Put(L"URL", c.installer);
        VARIANT result = Run(Long(1));
        std::string journal = Journal();
        if (!c.refusal) {
            EXPECT_NE(journal.find("PrepInstaller(1,False)"), std::string::npos) << journal;
            continue;
        }
        ASSERT_FALSE(sink.heard.empty());
        EXPECT_EQ(sink.heard[0].rfind("1:The Corvan Connect client manager refused ", 0), 0u) << sink.heard[0];
        EXPECT_NE(sink.heard[0].find(c.refusal), std::string::npos) << sink.heard[0];
        if (c.installer) {
            // The refused address is never used; the run goes to the installer it had.
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
    SetPolicy(nullptr);
    ole->SetClientSite(nullptr);
}

}  // namespace
