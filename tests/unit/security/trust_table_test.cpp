// The trust table and the rules that turn its lines into registry values.

#include "../harness.h"
#include "security/registry_line.h"
#include "security/trust_table.h"

using namespace corvan::security;

TEST(RegistryLine, HiveRoots) {
    for (const auto& c : Table("security/security.txt", "hives"))
        EXPECT_EQ(HiveRootKey(c[0]), static_cast<int32_t>(std::stoul(c[1], nullptr, 16))) << c.where;
}

// The policy, Internet Settings and Trusted-sites lines of each hive, then
// its host rows: the defaults line by line, or each hive's own.
TEST(TrustTable, HoldsTheBlocksInOrderWithEachHivesHosts) {
    std::vector<std::string> expected;
    for (const auto& row : Table("security/security.txt", "trust table")) expected.push_back(row[0]);
    EXPECT_EQ(BuildTrustTable(), expected);

    const TrustedHost user[] = {{"example.org", "www", "https"}};
    const TrustedHost machine[] = {{"example.net", "Portal", "http"}, {"example.net", "portal", "https"}};
    std::vector<std::string> own(expected.begin(), expected.begin() + 70), hosts;
    for (const auto& row : Table("security/security.txt", "own hosts")) hosts.push_back(row[0]);
    own.push_back(hosts[0]);
    own.insert(own.end(), expected.begin() + 78, expected.begin() + 145);
    own.insert(own.end(), hosts.begin() + 1, hosts.end());
    EXPECT_EQ(BuildTrustTable(user, machine), own);
}
