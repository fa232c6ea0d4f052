#include "security/trust_table.h"

#include "security/trusted_hosts.h"

namespace corvan::security {
namespace {

constexpr std::string_view kInstallerPolicy = "Software\\Policies\\Microsoft\\Windows\\Installer";
constexpr std::string_view kInternetSettings = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr std::string_view kTrustedZone =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\2";
constexpr std::string_view kDomainMap =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap\\Domains";

// Internet Explorer's URL actions for the Trusted sites zone: 0 allow,
// 1 prompt, 3 disallow. 1C00 = 0x300 (Java permissions), 1E05 = 0x30000
// (software channel), MinLevel = 0x10000, Flags = 0x47.
constexpr std::string_view kTrustedZoneActions[][2] = {
    {"CurrentLevel", "0"}, {"MinLevel", "65536"}, {"Flags", "71"}, {"1001", "0"}, {"1004", "0"},
    {"1200", "0"},         {"1201", "0"},         {"1206", "0"},   {"1400", "0"}, {"1402", "0"},
    {"1405", "0"},         {"1406", "0"},         {"1407", "0"},   {"1601", "0"}, {"1604", "0"},
    {"1605", "0"},         {"1606", "0"},         {"1607", "0"},   {"1608", "0"}, {"1609", "0"},
    {"1800", "0"},         {"1802", "0"},         {"1803", "0"},   {"1804", "0"}, {"1805", "0"},
    {"1806", "1"},         {"1809", "3"},         {"180B", "0"},   {"1A00", "0"}, {"1A02", "0"},
    {"1A03", "0"},         {"1A04", "0"},         {"1A05", "0"},   {"1A06", "0"}, {"1A10", "0"},
    {"1C00", "768"},       {"1E05", "196608"},    {"2000", "0"},   {"2001", "0"}, {"2004", "0"},
    {"2100", "0"},         {"2101", "1"},         {"2102", "0"},   {"2200", "0"}, {"2201", "0"},
    {"2300", "0"},         {"1807", "0"},         {"1808", "0"},   {"1207", "0"}, {"1208", "0"},
    {"1209", "0"},         {"120A", "0"},         {"1408", "0"},   {"160A", "0"}, {"180A", "3"},
    {"180C", "0"},         {"180D", "0"},         {"2301", "0"},   {"2103", "0"}, {"2104", "0"},
    {"2105", "0"},         {"2400", "0"},         {"2401", "0"},   {"2402", "0"}, {"2600", "0"},
};

void Add(std::vector<std::string>& table, std::string_view hive, std::string_view key, std::string_view name,
         std::string_view data) {
    std::string line;
    line.reserve(hive.size() + key.size() + name.size() + data.size() + 3);
    line.append(hive).append(",").append(key).append(",").append(name).append(",").append(data);
    table.push_back(std::move(line));
}

// Zone list, domain map marker and host rows: the part both hives share.
void AddZoneAndHosts(std::vector<std::string>& table, std::string_view hive, std::span<const TrustedHost> hosts) {
    for (const auto& [name, data] : kTrustedZoneActions) Add(table, hive, kTrustedZone, name, data);
    // A value literally named "@=" with empty text: the key's default value
    // is not touched.
    Add(table, hive, kDomainMap, "@=", "");
    for (const TrustedHost& host : hosts) {
        std::string key(kDomainMap);
        key.append("\\").append(host.domain).append("\\").append(host.hostPrefix);
        Add(table, hive, key, host.scheme, "2");
    }
}

}  // namespace

std::span<const TrustedHost> ConfiguredHostsCurrentUser() { return kConfiguredHostsCurrentUser; }
std::span<const TrustedHost> ConfiguredHostsLocalMachine() { return kConfiguredHostsLocalMachine; }

std::vector<std::string> BuildTrustTable(std::span<const TrustedHost> currentUserHosts,
                                         std::span<const TrustedHost> localMachineHosts) {
    std::vector<std::string> table;
    table.reserve(2 * (std::size(kTrustedZoneActions) + 2) + 3 + currentUserHosts.size() + localMachineHosts.size());

    // The current user's policy value has always carried a leading blank in
    // its name; Windows Installer reads the machine's one.
    Add(table, "HKEY_CURRENT_USER", kInstallerPolicy, " AlwaysInstallElevated", " 1");
    Add(table, "HKEY_CURRENT_USER", kInternetSettings, "DisableCachingOfSSLPages", "0");
    Add(table, "HKEY_CURRENT_USER", kInternetSettings, "WarnonBadCertRecving", "0");
    Add(table, "HKEY_CURRENT_USER", kInternetSettings, "WarnonZoneCrossing", "0");
    AddZoneAndHosts(table, "HKEY_CURRENT_USER", currentUserHosts);

    Add(table, "HKEY_LOCAL_MACHINE", kInstallerPolicy, "AlwaysInstallElevated", " 1");
    AddZoneAndHosts(table, "HKEY_LOCAL_MACHINE", localMachineHosts);
    return table;
}

std::vector<std::string> BuildTrustTable() {
    return BuildTrustTable(ConfiguredHostsCurrentUser(), ConfiguredHostsLocalMachine());
}

}  // namespace corvan::security
