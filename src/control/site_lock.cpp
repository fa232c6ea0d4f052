#include "control/site_lock.h"

#include <algorithm>
#include <cctype>

namespace corvan {

namespace {

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

UrlParts SplitUrl(const std::string& url) {
    UrlParts parts;
    size_t colon = url.find(':');
    if (colon == std::string::npos || colon == 0) return parts;
    std::string scheme = Lower(url.substr(0, colon));
    if (!std::all_of(scheme.begin(), scheme.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '-' || c == '.'; }))
        return parts;
    if (url.compare(colon + 1, 2, "//") != 0) return parts;
    size_t start = colon + 3;
    // The authority ends at the first "/", "?", "#" or (as browsers read it)
    // backslash.
    size_t end = url.find_first_of("/?#\\", start);
    std::string authority = url.substr(start, end == std::string::npos ? std::string::npos : end - start);
    // "https://extranet.example@evil.test/" names evil.test.
    size_t at = authority.rfind('@');
    if (at != std::string::npos) authority.erase(0, at + 1);
    std::string host;
    if (!authority.empty() && authority[0] == '[') {
        size_t close = authority.find(']');
        if (close == std::string::npos) return parts;
        host = authority.substr(1, close - 1);
    } else {
        host = authority.substr(0, authority.find(':'));
    }
    // A trailing dot names the same host.
    if (!host.empty() && host.back() == '.') host.pop_back();
    parts.scheme = scheme;
    parts.host = Lower(host);
    return parts;
}

SiteLock::SiteLock(std::vector<std::string> approved) {
    for (std::string& entry : approved) {
        entry = Lower(entry);
        if (!entry.empty() && entry != ".") approved_.push_back(std::move(entry));
    }
}

std::vector<std::string> SiteLock::SplitHostList(const std::string& list) {
    std::vector<std::string> entries;
    std::string current;
    for (char c : list + ";") {
        if (c == ';' || c == ',' || std::isspace(static_cast<unsigned char>(c))) {
            if (!current.empty()) entries.push_back(current);
            current.clear();
        } else {
            current += c;
        }
    }
    return entries;
}

bool SiteLock::Approved(const std::string& host) const {
    if (host.empty()) return false;
    std::string name = Lower(host);
    for (const std::string& entry : approved_) {
        if (entry[0] != '.') {
            if (name == entry) return true;
            continue;
        }
        // ".dealer.example" takes dealer.example and anything.dealer.example.
        if (name == entry.substr(1)) return true;
        if (name.size() > entry.size() && name.compare(name.size() - entry.size(), entry.size(), entry) == 0)
            return true;
    }
    return false;
}

std::string SiteLock::Refuse(const std::string& url, const char* what) const {
    UrlParts parts = SplitUrl(url);
    if (parts.host.empty())
        return std::string("The Corvan Connect client manager refused ") + what + " '" + url +
               "': it is not an https address of an approved extranet host.";
    if (!Approved(parts.host))
        return std::string("The Corvan Connect client manager refused ") + what + " on host '" + parts.host +
               "': the host is not an approved extranet host.";
    if (parts.scheme != "https")
        return std::string("The Corvan Connect client manager refused ") + what + " on host '" + parts.host +
               "': only https pages of the extranet may use it, and this address is " + parts.scheme + ".";
    return {};
}

std::string SiteLock::RefusePage(const std::string& pageUrl) const { return Refuse(pageUrl, "to run for the page"); }

std::string SiteLock::RefuseInstallerUrl(const std::string& url) const {
    return Refuse(url, "the installer address");
}

}  // namespace corvan
