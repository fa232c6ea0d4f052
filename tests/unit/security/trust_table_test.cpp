// The trust table and the rules that turn its lines into registry values.

#include "../harness.h"
#include "security/registry_line.h"
#include "security/trust_table.h"

using namespace corvan::security;

TEST(RegistryLine, HiveRoots) {
    for (const auto& c : unit_table::Table("security/security.txt", "hives"))
        EXPECT_EQ(HiveRootKey(c[0]), static_cast<int32_t>(std::stoul(c[1], nullptr, 16))) << c.where;
}

// The policy, Internet Settings and Trusted-sites lines of each hive, then
// its host rows: the defaults line by line, or each hive's own.
TEST(TrustTable, HoldsTheBlocksInOrderWithEachHivesHosts) {
    std::vector<std::string> expected;
    for (const auto& row : unit_table::Table("security/security.txt", "trust table")) expected.push_back(row[0]);
    EXPECT_EQ(BuildTrustTable(), expected);

    const TrustedHost user[] = {{"example.org", "www", "https"}};
    const TrustedHost machine[] = {{"example.net", "Portal", "http"}, {"example.net", "portal", "https"}};
    const std::string domains = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap\\Domains\\";
    std::vector<std::string> own(expected.begin(), expected.begin() + 70);
    own.push_back("HKEY_CURRENT_USER," + domains + "example.org\\www,https,2");
    own.insert(own.end(), expected.begin() + 78, expected.begin() + 145);
    own.push_back("HKEY_LOCAL_MACHINE," + domains + "example.net\\Portal,http,2");
    own.push_back("HKEY_LOCAL_MACHINE," + domains + "example.net\\portal,https,2");
    EXPECT_EQ(BuildTrustTable(user, machine), own);
}
