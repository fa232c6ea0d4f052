#include "control/browser_page.h"

#include <exdisp.h>
#include <mshtml.h>
#include <servprov.h>
#include <shlguid.h>

#include "control/bstr_text.h"
#include "control/com_ptr.h"
#include "control/site_lock.h"
#include "corvan/build_config.h"
#include "platform/clsRegistry.h"

namespace corvan::com {

namespace {

constexpr int32_t kLocalMachine = static_cast<int32_t>(0x80000002);
constexpr DISPID kLocationUrl = 211;  // the web browser object's LocationURL

// The browser object's LocationURL, read through its dispatch interface so
// that any browser implementing the web browser automation answers.
bool LocationUrl(IDispatch* browser, std::string& url) {
    DISPPARAMS none{};
    VARIANT result;
    VariantInit(&result);
    HRESULT hr = browser->Invoke(kLocationUrl, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                 &result, nullptr, nullptr);
    bool ok = SUCCEEDED(hr) && V_VT(&result) == VT_BSTR;
    if (ok) url = FromBstr(V_BSTR(&result));
    VariantClear(&result);
    return ok;
}

}  // namespace

BrowserPage FindBrowserPage(IOleClientSite* site) {
    BrowserPage page;
    if (!site) return page;

    // A browser answers for its top-level browser object through the site.
    ComPtr<IServiceProvider> services;
    if (SUCCEEDED(site->QueryInterface(IID_IServiceProvider, services.PutVoid())) && services) {
        ComPtr<IDispatch> browser;
        if (SUCCEEDED(services->QueryService(SID_SWebBrowserApp, IID_IDispatch, browser.PutVoid())) && browser) {
            page.inBrowser = true;
            LocationUrl(browser.Get(), page.url);
            return page;
        }
    }

    // An HTML document as the container is a page too.
    ComPtr<IOleContainer> container;
    if (SUCCEEDED(site->GetContainer(container.Put())) && container) {
        ComPtr<IHTMLDocument2> document;
        if (SUCCEEDED(container->QueryInterface(IID_IHTMLDocument2, document.PutVoid())) && document) {
            page.inBrowser = true;
            BSTR url = nullptr;
            if (SUCCEEDED(document->get_URL(&url))) page.url = FromBstr(url);
            SysFreeString(url);
            return page;
        }
    }

    // A container that names its document by a URL moniker is showing a page.
    ComPtr<IMoniker> moniker;
    if (SUCCEEDED(site->GetMoniker(OLEGETMONIKER_ONLYIFTHERE, OLEWHICHMK_CONTAINER, moniker.Put())) && moniker) {
        ComPtr<IBindCtx> context;
        LPOLESTR name = nullptr;
        if (SUCCEEDED(CreateBindCtx(0, context.Put())) &&
            SUCCEEDED(moniker->GetDisplayName(context.Get(), nullptr, &name)) && name) {
            BSTR copy = SysAllocString(name);
            std::string url = FromBstr(copy);
            SysFreeString(copy);
            CoTaskMemFree(name);
            if (url.find("://") != std::string::npos) {
                page.inBrowser = true;
                page.url = url;
            }
        }
    }
    return page;
}

std::vector<std::string> ApprovedHosts() {
    std::vector<std::string> hosts;
    for (const char* url : {CORVAN_MASTER_URL_SOURCE, CORVAN_ALT_URL_SOURCE_1, CORVAN_ALT_URL_SOURCE_2})
        hosts.push_back(SplitUrl(url).host);
    for (std::string& host : SiteLock::SplitHostList(CORVAN_APPROVED_HOSTS)) hosts.push_back(std::move(host));
    try {
        clsRegistry registry;
        RegVariant policy = registry.GetRegSetting(kLocalMachine, kApprovedHostsPolicyKey, kApprovedHostsPolicyValue,
                                                   RegVariant::String(""));
        if (policy.Kind() == VariantKind::String)
            for (std::string& host : SiteLock::SplitHostList(policy.Text())) hosts.push_back(std::move(host));
    } catch (...) {
        // An unreadable policy adds nothing; the build's hosts still hold.
    }
    return hosts;
}

}  // namespace corvan::com
