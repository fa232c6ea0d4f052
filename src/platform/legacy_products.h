#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Which releases of the earlier dealer application the Windows Installer
// knows, decided from the list of installed product codes.
namespace corvan::legacy {

// The releases the current client replaces, in release order.
const std::vector<std::string>& FirstReleaseCodes();
// Further releases of the earlier application.
const std::vector<std::string>& SecondReleaseCodes();

// Index of the first element equal to `code`, -1 when absent.
int16_t IndexInList(const std::vector<std::string>& list, std::string_view code);

struct LegacyScan {
    // Six entries: 0 to 3 hold the first-list codes found, each at its index
    // in that list; 4 holds the second-list code the first pass stopped at
    // and 5 its index in the second list as decimal text. Empty where
    // nothing was found.
    std::vector<std::string> found;
    bool secondListFound = false;
    bool firstListFound = false;
    bool installed = false;
};

// The two passes over the installed products. `yield` runs after each
// first-list code found so that a long product list keeps the page alive.
//
// The verdict: the earlier application counts as installed when any release
// of either list is installed. A help desk asks "is any old Talo still on
// this PC?"; a release from either list answers yes, and a PC with none
// answers no. No value of the settings takes part: the only 16-bit ones,
// the retry and history counts, say nothing about installed releases, and a
// verdict that moved with them would puzzle whoever reads it. Product codes
// are compared as exact text, as the installer reports them (upper-case,
// with braces).
template <typename Yield>
LegacyScan ScanLegacyProducts(const std::vector<std::string>& products, Yield&& yield);

LegacyScan ScanLegacyProducts(const std::vector<std::string>& products);

}  // namespace corvan::legacy

#include "platform/legacy_products_scan.h"
