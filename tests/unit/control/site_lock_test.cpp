// Which pages may script the control inside a browser.
#include <gtest/gtest.h>

#include "control/site_lock.h"

using corvan::SiteLock;
using corvan::SplitUrl;

TEST(SiteLock, AddressesNameTheHostABrowserWouldConnectTo) {
    struct Case {
        const char* url;
        const char* scheme;
        const char* host;
    } cases[] = {
        {"https://Extranet.Dealer.Example/installer/page.asp", "https", "extranet.dealer.example"},
        {"HTTPS://h.example:8443/x", "https", "h.example"},
        {"https://extranet.dealer.example@evil.test/x", "https", "evil.test"},
        {"https://user:pw@h.example/", "https", "h.example"},
        {"https://h.example\\@evil.test/", "https", "h.example"},
        {"https://h.example./x", "https", "h.example"},
        {"https://[::1]:443/x", "https", "::1"},
        {"http://h.example", "http", "h.example"},
        {"file:///C:/page.htm", "file", ""},
        {"about:blank", "", ""},
        {"h.example/installer/", "", ""},
        {"", "", ""},
    };
    for (const Case& c : cases) {
        auto parts = SplitUrl(c.url);
        EXPECT_EQ(parts.host, c.host) << c.url;
        if (*c.host) {
            EXPECT_EQ(parts.scheme, c.scheme) << c.url;
        }
    }
}

TEST(SiteLock, HostsMatchExactlyOrBelowADottedDomain) {
    SiteLock lock(SiteLock::SplitHostList("Extranet.Dealer.Example; .partner.test,  other.test"));
    struct Case {
        const char* host;
        bool approved;
    } cases[] = {
        {"extranet.dealer.example", true},  {"EXTRANET.dealer.example", true},
        {"dealer.example", false},          {"www.extranet.dealer.example", false},
        {"extranet.dealer.example.evil.test", false},
        {"partner.test", true},             {"a.b.partner.test", true},
        {"evilpartner.test", false},        {"other.test", true},
        {"", false},
    };
    for (const Case& c : cases) EXPECT_EQ(lock.Approved(c.host), c.approved) << c.host;
}

TEST(SiteLock, RefusalsNameTheHostAndTheReason) {
    SiteLock lock({"extranet.dealer.example"});
    EXPECT_EQ(lock.RefusePage("https://extranet.dealer.example/installer/default.asp"), "");
    EXPECT_EQ(lock.RefusePage("https://evil.test/page.htm"),
              "The Corvan Connect client manager refused to run for the page on host 'evil.test': the host is not "
              "an approved extranet host.");
    EXPECT_EQ(lock.RefusePage("http://extranet.dealer.example/installer/default.asp"),
              "The Corvan Connect client manager refused to run for the page on host 'extranet.dealer.example': only "
              "https pages of the extranet may use it, and this address is http.");
    EXPECT_EQ(lock.RefusePage(""),
              "The Corvan Connect client manager refused to run for the page '': it is not an https address of an "
              "approved extranet host.");
    EXPECT_NE(lock.RefuseInstallerUrl("https://evil.test/installer/x.asp").find("installer address on host 'evil.test'"),
              std::string::npos);
}
