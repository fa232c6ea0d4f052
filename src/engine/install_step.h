#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "items/ItemRecord.h"

namespace corvan {

// What the install pass does with one item of colItems, decided on the
// item's row, its two flags and the machine's facts alone (the pass itself
// then runs the item's Uninstall and Install).
enum class InstallStep {
    Clean,         // not dirty: nothing to do
    OtherMachine,  // its OS does not apply to this machine
    NeverRemoved,  // to remove, but the browser and the reader are never removed
    Remove,        // the server no longer lists it: uninstalled
    SkipProduct,   // Internet Explorer 6 or later, or a suitable Acrobat, is present
    SkipGroup,     // the user's groups do not hold its InstallGroup
    Install,
};

struct InstallStepFacts {
    std::string versionName;     // the machine's Windows version name
    std::string usersGroups;     // the control's UsersGroups
    int32_t ieMajorVersion = 0;  // Internet Explorer's major version
    int32_t installComplete = 0; // the registry's "InstallComplete"
    // Whether a suitable Acrobat is present; asked only for an item whose
    // Productname is "Adobe Acrobat".
    std::function<bool()> acrobatPresent;
};

InstallStep DecideInstallStep(const ItemRecord& item, const InstallStepFacts& facts);

// An item that is not removed and not skipped for its product has its old
// version uninstalled before the group rule is applied and before it is
// installed, unless its Flag is 1 or the machine is not installed yet: an
// item skipped for its group on an installed machine is thereby removed.
bool UninstallsOldVersionFirst(const ItemRecord& item, const InstallStepFacts& facts);

// The name the pass shows for an item: its Productname, else its FileName.
std::string DisplayName(const ItemRecord& item);

}  // namespace corvan
