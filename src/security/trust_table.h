#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The browser trust settings as lines of "hive,key,value name,data".
namespace corvan::security {

// One extranet host mapped into the Trusted sites zone: the key
// ...\ZoneMap\Domains\<domain>\<hostPrefix> gets the value <scheme> = 2.
struct TrustedHost {
    std::string_view domain;
    std::string_view hostPrefix;
    std::string_view scheme;  // "http" or "https"
};

// The host rows this build was configured with (the CORVAN_TRUSTED_HOSTS_*
// cache variables), for each hive.
std::span<const TrustedHost> ConfiguredHostsCurrentUser();
std::span<const TrustedHost> ConfiguredHostsLocalMachine();

// The whole table, in the order it is applied: installer policy, Internet
// settings, the Trusted sites zone, the domain map and the host rows for
// the current user, then policy, zone, domain map and host rows for the
// machine. Built afresh at each call.
std::vector<std::string> BuildTrustTable(std::span<const TrustedHost> currentUserHosts,
                                         std::span<const TrustedHost> localMachineHosts);
std::vector<std::string> BuildTrustTable();  // with the configured host rows

}  // namespace corvan::security
