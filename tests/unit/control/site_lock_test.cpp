// Which pages may script the control inside a browser (control.txt).
#include "../harness.h"
#include "control/site_lock.h"

TEST(SiteLock, AddressesNameTheHostABrowserWouldConnectTo) {
    for (const auto& c : Table("control/control.txt", "address")) {
        auto parts = SplitUrl(c[0]);
        EXPECT_EQ(parts.host, c[2]) << c.where;
        if (!c[2].empty()) {
            EXPECT_EQ(parts.scheme, c[1]) << c.where;
        }
    }
}

TEST(SiteLock, HostsMatchExactlyOrBelowADottedDomain) {
    SiteLock lock(SiteLock::SplitHostList("Extranet.Dealer.Example; .partner.test,  other.test"));
    for (const auto& c : Table("control/control.txt", "host")) EXPECT_EQ(lock.Approved(c[0]), c[1] == "yes") << c.where;
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
