#pragma once
#include <string>
#include <vector>

namespace corvan {

// The parts of an address the site lock looks at. `host` is lower-cased,
// without brackets, user information or port; empty when the text is not an
// absolute address with a host.
struct UrlParts {
    std::string scheme;
    std::string host;
};
UrlParts SplitUrl(const std::string& url);

// Only the extranet's own pages may script the control inside a browser. The
// approved hosts are the installer hosts of the build, the build's further
// extranet hosts, and the machine policy's list. An entry matches its host
// exactly; an entry written with a leading dot (".dealer.example") matches
// that domain and every host below it.
class SiteLock {
public:
    explicit SiteLock(std::vector<std::string> approved);

    // Entries from a list separated by semicolons, commas or blanks.
    static std::vector<std::string> SplitHostList(const std::string& list);

    bool Approved(const std::string& host) const;

    // Empty when a page at `pageUrl` may run the control, else the sentence
    // that tells the page (and the log) why not.
    std::string RefusePage(const std::string& pageUrl) const;
    // The same for an installer base URL a page hands the control.
    std::string RefuseInstallerUrl(const std::string& url) const;

private:
    std::string Refuse(const std::string& url, const char* what) const;
    std::vector<std::string> approved_;
};

}  // namespace corvan
