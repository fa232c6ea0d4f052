// The trust table and the rules that turn its lines into registry values.
#include <gtest/gtest.h>

#include <sstream>

#include "raised.h"
#include "security/registry_line.h"
#include "security/trust_table.h"

using namespace corvan;
using namespace corvan::security;

namespace {

const std::string kPolicy = "Software\\Policies\\Microsoft\\Windows\\Installer";
const std::string kZone = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\2";
const std::string kDomains = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap\\Domains";

// Internet Explorer's Trusted sites actions in the order the table writes them.
const char kZoneActions[] =
    "CurrentLevel=0, MinLevel=65536, Flags=71, 1001=0, 1004=0, 1200=0, 1201=0, 1206=0, 1400=0, 1402=0, "
    "1405=0, 1406=0, 1407=0, 1601=0, 1604=0, 1605=0, 1606=0, 1607=0, 1608=0, 1609=0, 1800=0, 1802=0, 1803=0, "
    "1804=0, 1805=0, 1806=1, 1809=3, 180B=0, 1A00=0, 1A02=0, 1A03=0, 1A04=0, 1A05=0, 1A06=0, 1A10=0, 1C00=768, "
    "1E05=196608, 2000=0, 2001=0, 2004=0, 2100=0, 2101=1, 2102=0, 2200=0, 2201=0, 2300=0, 1807=0, 1808=0, "
    "1207=0, 1208=0, 1209=0, 120A=0, 1408=0, 160A=0, 180A=3, 180C=0, 180D=0, 2301=0, 2103=0, 2104=0, 2105=0, "
    "2400=0, 2401=0, 2402=0, 2600=0";

std::vector<std::string> ZoneLines(const std::string& hive) {
    std::vector<std::string> lines;
    std::istringstream list(kZoneActions);
    std::string item;
    while (std::getline(list, item, ',')) {
        if (item[0] == ' ') item.erase(0, 1);
        const size_t equals = item.find('=');
        lines.push_back(hive + "," + kZone + "," + item.substr(0, equals) + "," + item.substr(equals + 1));
    }
    return lines;
}

std::vector<std::string> Slice(const std::vector<std::string>& table, size_t first, size_t count) {
    return {table.begin() + first, table.begin() + first + count};
}

}  // namespace

// Fields keep their blanks, extra fields are dropped, hive names match
// exactly; the data is a number only when it passes the numeric-text test.
TEST(RegistryLine, SplitsMapsAndTypesEachField) {
    const struct {
        const char* line;
        RegistryLine fields;
        int32_t root;
    } lines[] = {
        {"HKEY_CURRENT_USER,Soft ware\\x, AlwaysInstallElevated, 1", {"HKEY_CURRENT_USER", "Soft ware\\x", " AlwaysInstallElevated", " 1", true}, int32_t(0x80000001u)},
        {"HKEY_LOCAL_MACHINE,k,v,1,extra,more", {"HKEY_LOCAL_MACHINE", "k", "v", "1", true}, int32_t(0x80000002u)},
        {"HKEY_CLASSES_ROOT,k,@=,", {"HKEY_CLASSES_ROOT", "k", "@=", "", true}, int32_t(0x80000000u)},
        {"HKEY_USERS,,,", {"HKEY_USERS", "", "", "", true}, int32_t(0x80000003u)},
        {"hkey_current_user,k,v,1", {"hkey_current_user", "k", "v", "1", true}, 0},
        {" HKEY_CURRENT_USER,k,v,1", {" HKEY_CURRENT_USER", "k", "v", "1", true}, 0},
        {"HKEY_CURRENT_USER,k,v", {"HKEY_CURRENT_USER", "k", "v", "", false}, int32_t(0x80000001u)},
    };
    for (const auto& c : lines) {
        const RegistryLine got = SplitRegistryLine(c.line);
        EXPECT_EQ(std::tie(got.hive, got.key, got.valueName, got.data, got.complete),
                  std::tie(c.fields.hive, c.fields.key, c.fields.valueName, c.fields.data, c.fields.complete))
            << c.line;
        EXPECT_EQ(HiveRootKey(got.hive), c.root) << c.line;
    }

    const struct {
        const char* data;
        RegVariant written;
    } data[] = {
        {" 1", RegVariant::Long(1)},          {"768", RegVariant::Long(768)},
        {"&H10", RegVariant::Long(16)},       {"&HFFFFFFFF", RegVariant::Long(-1)},
        {" -2.5 ", RegVariant::Long(-2)},     {"0x10", RegVariant::String("0x10")},
        {"", RegVariant::String("")},         {"1 0", RegVariant::String("1 0")},
        {"%TEMP%", RegVariant::String("%TEMP%")},
    };
    for (const auto& c : data) EXPECT_EQ(RegistryData(c.data), c.written) << "[" << c.data << "]";
    EXPECT_EQ(testing_support::Raised([] { RegistryData("4294967296"); }).Number(), 6);

    EXPECT_EQ(WithoutLineFeedReturns("a\n\rb\r\nc\n\n\r\r"), "ab\r\nc\n\r");
    RegistryLine policy = SplitRegistryLine("HKEY_CURRENT_USER,k, AlwaysInstallElevated, 1");
    EXPECT_EQ(UpdatingMessage(policy, true), "Updating:  AlwaysInstallElevated\\ 1 - Success");
    EXPECT_EQ(UpdatingMessage(policy, false), "Updating:  AlwaysInstallElevated\\ 1 - Failed");
}

TEST(TrustTable, HoldsTheBlocksInOrderWithTheConfiguredHosts) {
    const std::vector<std::string> table = BuildTrustTable();
    ASSERT_EQ(table.size(), 153u);

    EXPECT_EQ(Slice(table, 0, 4), (std::vector<std::string>{
        "HKEY_CURRENT_USER," + kPolicy + ", AlwaysInstallElevated, 1",
        "HKEY_CURRENT_USER,Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings,DisableCachingOfSSLPages,0",
        "HKEY_CURRENT_USER,Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings,WarnonBadCertRecving,0",
        "HKEY_CURRENT_USER,Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings,WarnonZoneCrossing,0"}));
    EXPECT_EQ(Slice(table, 4, 65), ZoneLines("HKEY_CURRENT_USER"));
    EXPECT_EQ(table[69], "HKEY_CURRENT_USER," + kDomains + ",@=,");
    EXPECT_EQ(table[78], "HKEY_LOCAL_MACHINE," + kPolicy + ",AlwaysInstallElevated, 1");
    EXPECT_EQ(Slice(table, 79, 65), ZoneLines("HKEY_LOCAL_MACHINE"));
    EXPECT_EQ(table[144], "HKEY_LOCAL_MACHINE," + kDomains + ",@=,");

    // The default host rows: the installer hosts and the site's own, two
    // http rows, then six https rows whose first comes again as the last.
    const std::string hosts = "," + kDomains + "\\corvan-connect.example\\";
    const std::vector<std::string> rows = {
        "www,http,2", "extranet,http,2", "extranet,https,2", "extranet2,https,2",
        "extranet3,https,2", "www,https,2", "helpdesk,https,2", "extranet,https,2"};
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(table[70 + i], "HKEY_CURRENT_USER" + hosts + rows[i]);
        EXPECT_EQ(table[145 + i], "HKEY_LOCAL_MACHINE" + hosts + rows[i]);
    }
}

TEST(TrustTable, TakesEachHiveItsOwnHostRows) {
    const TrustedHost user[] = {{"example.org", "www", "https"}};
    const TrustedHost machine[] = {{"example.net", "Portal", "http"}, {"example.net", "portal", "https"}};
    const std::vector<std::string> table = BuildTrustTable(user, machine);
    ASSERT_EQ(table.size(), 140u);
    EXPECT_EQ(table[70], "HKEY_CURRENT_USER," + kDomains + "\\example.org\\www,https,2");
    EXPECT_EQ(table[71], "HKEY_LOCAL_MACHINE," + kPolicy + ",AlwaysInstallElevated, 1");
    EXPECT_EQ(Slice(table, 138, 2), (std::vector<std::string>{
        "HKEY_LOCAL_MACHINE," + kDomains + "\\example.net\\Portal,http,2",
        "HKEY_LOCAL_MACHINE," + kDomains + "\\example.net\\portal,https,2"}));
}
