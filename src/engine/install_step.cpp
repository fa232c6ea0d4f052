#include "engine/install_step.h"

#include "engine/packing_list_comparison.h"

namespace corvan {

std::string DisplayName(const ItemRecord& item) {
    return item.Productname().empty() ? item.FileName() : item.Productname();
}

InstallStep DecideInstallStep(const ItemRecord& item, const InstallStepFacts& facts) {
    if (!item.IsDirty()) return InstallStep::Clean;
    if (!AppliesToMachine(item.OS(), facts.versionName)) return InstallStep::OtherMachine;
    if (item.Removed()) {
        const std::string display = DisplayName(item);
        return display == "Adobe Acrobat" || display == "Internet Explorer" ? InstallStep::NeverRemoved
                                                                            : InstallStep::Remove;
    }
    // The skip rule reads the product name itself, not the display name.
    if (item.Productname() == "Internet Explorer" && facts.ieMajorVersion >= 6) return InstallStep::SkipProduct;
    if (item.Productname() == "Adobe Acrobat" && facts.acrobatPresent && facts.acrobatPresent())
        return InstallStep::SkipProduct;
    if (!InstallGroupAllows(facts.usersGroups, item.InstallGroup())) return InstallStep::SkipGroup;
    return InstallStep::Install;
}

bool UninstallsOldVersionFirst(const ItemRecord& item, const InstallStepFacts& facts) {
    return item.Flag() != 1 && facts.installComplete > 0;
}

}  // namespace corvan
