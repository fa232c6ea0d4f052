#pragma once
#include <string>
#include <vector>

#include <windows.h>
#include <ole2.h>

namespace corvan::com {

// What the control's container says about the page the control is on.
// `inBrowser` is false for script hosts and programs, which run with the
// user's own rights and are not locked; `url` is empty when a browser did not
// give its page's address (the lock then refuses).
struct BrowserPage {
    bool inBrowser = false;
    std::string url;
};
BrowserPage FindBrowserPage(IOleClientSite* site);

// The approved hosts on this machine: the build's installer and extranet
// hosts and the administrator's policy list, read afresh at every call so a
// changed policy needs no new browser.
std::vector<std::string> ApprovedHosts();

inline constexpr char kApprovedHostsPolicyKey[] = "SOFTWARE\\Policies\\Talo\\Installer";
inline constexpr char kApprovedHostsPolicyValue[] = "ApprovedHosts";

}  // namespace corvan::com
