#pragma once
#include <string>
#include <vector>

namespace corvan {

class Desktop;

// Tells whether releases of the earlier dealer application are installed
// through the Windows Installer.
class clsTalo {
public:
    // `desktop` lets pending window messages run during the scan; may be null.
    explicit clsTalo(Desktop* desktop = nullptr) : desktop_(desktop) {}

    // True when the Windows Installer knows any release of the earlier
    // application (see legacy_products.h for the rule). False when the
    // Windows Installer itself is missing: then nothing can have been
    // installed through it. A failure while listing the products is raised.
    bool LegacyTaloIsInstalled();

    // The six result entries of the last call (empty where nothing was found).
    const std::vector<std::string>& FoundProducts() const { return found_; }

private:
    Desktop* desktop_;
    std::vector<std::string> found_;
};

}  // namespace corvan
