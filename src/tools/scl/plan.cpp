#include "tools/scl/plan.h"

#include "common/keyed_collection.h"
#include "engine/install_step.h"
#include "engine/packing_list_comparison.h"

namespace corvan::scl {
namespace {

// Rows without a LocalSource get the system root + "Talo"; a plan never
// shows it.
const char kSystemRoot[] = "C:\\WINDOWS\\";

std::string Quoted(const std::string& text) { return std::string(1, '"').append(text).append(1, '"'); }

std::string InstallReason(ItemRecord& item, const std::string* localCrc, bool uninstallFirst, bool fetched) {
    std::string reason;
    if (fetched)
        reason = "every item is installed";
    else if (localCrc == nullptr)
        reason = "new on the server";
    else
        reason = "CRC " + *localCrc + " -> " + item.CRC();
    if (localCrc != nullptr && uninstallFirst) reason += "; the old version is uninstalled first";
    return reason;
}

}  // namespace

Plan MakePlan(std::string_view local, std::string_view server, const PlanMachine& machine) {
    Plan plan;
    const TextRows serverRows{std::string(server)};
    switch (CheckListForm(serverRows)) {
        case ListForm::Empty:
            plan.refused = true;
            plan.refusal = "the server list is empty: every PC refuses it, and nothing is installed or removed";
            return plan;
        case ListForm::TooFewFields:
            plan.refused = true;
            plan.refusal = "the server list's first row has fewer than eleven fields: every PC refuses it, and nothing "
                           "is installed or removed";
            return plan;
        case ListForm::Valid: break;
    }

    PackingListComparison comparison(machine.versionName, kSystemRoot);
    TextRows localRows{std::string(local)};
    if (!machine.installed) {
        comparison.blnForceInstall(true);
        comparison.blnMustInstall(true);
        plan.notes.push_back("the PC is not installed: its local list is fetched from the server and every item is "
                             "installed");
    }
    const bool fetched = comparison.blnForceInstall() || localRows.RowCount() == 0;
    if (fetched) {
        if (machine.installed) plan.notes.push_back("the local list is empty: it is fetched from the server and every "
                                                    "item is installed");
        localRows = serverRows;
        comparison.blnForceInstall(true);
        comparison.blnMustInstall(true);
    }

    comparison.Reset();
    comparison.LoadFileIntoCollection(localRows, true);
    // What the PC held before the run, keyed as colItems is; nothing when
    // its list was replaced by the server's.
    KeyedCollection<std::string> localCrcs;
    if (!fetched)
        for (const auto& [key, item] : comparison.colItems()) localCrcs.Add(key, item.CRC());
    if (!comparison.LoadFileIntoCollection(serverRows, comparison.blnForceInstall())) comparison.blnMustInstall(true);

    bool runsPass = comparison.blnMustInstall();
    if (!IsWholeList(localRows)) {
        plan.notes.push_back("the local list's first row has fewer than eleven fields: the PC fetches the list again "
                             "and the install pass runs");
        runsPass = true;
    }
    if (!runsPass)
        plan.notes.push_back("nothing the server lists is new or changed: no install pass runs (\"No Install "
                             "Required\"), so nothing is installed or removed");

    InstallStepFacts facts;
    facts.versionName = machine.versionName;
    facts.usersGroups = machine.usersGroups;
    facts.ieMajorVersion = machine.ieMajorVersion;
    facts.installComplete = machine.installed ? 1 : 0;
    facts.acrobatPresent = [&machine] { return machine.acrobatPresent; };

    for (auto& [key, item] : comparison.colItems()) {
        const std::string* localCrc = localCrcs.Find(key);
        if (!runsPass) {
            plan.items.push_back({"keep", key, item.Removed() ? "no longer on the server, but no pass runs"
                                                              : "unchanged (CRC " + item.CRC() + ")"});
            continue;
        }
        const bool uninstallFirst = UninstallsOldVersionFirst(item, facts);
        switch (DecideInstallStep(item, facts)) {
            case InstallStep::Clean:
                plan.items.push_back({"keep", key, "unchanged (CRC " + item.CRC() + ")"});
                break;
            case InstallStep::OtherMachine:
                plan.items.push_back({"skip", key, "its OS " + Quoted(item.OS()) + " does not name " +
                                                       Quoted(machine.versionName)});
                break;
            case InstallStep::NeverRemoved:
                plan.items.push_back({"keep", key, "no longer on the server, but " + DisplayName(item) +
                                                       " is never removed"});
                break;
            case InstallStep::Remove:
                plan.items.push_back({"remove", key, "no longer on the server"});
                break;
            case InstallStep::SkipProduct:
                plan.items.push_back({"skip", key, item.Productname() == "Internet Explorer"
                                                       ? "Internet Explorer " + std::to_string(machine.ieMajorVersion) +
                                                             " is present"
                                                       : std::string("a suitable Adobe Acrobat is present")});
                break;
            case InstallStep::SkipGroup:
                plan.items.push_back(
                    {"skip", key,
                     "its group " + Quoted(item.InstallGroup()) + " is not among the user's groups " +
                         Quoted(machine.usersGroups) +
                         (uninstallFirst && localCrc != nullptr ? "; the old version is uninstalled first, so it "
                                                                  "ends up removed"
                                                                : "")});
                break;
            case InstallStep::Install:
                plan.items.push_back({localCrc ? "update" : "install", key, InstallReason(item, localCrc, uninstallFirst, fetched)});
                break;
        }
    }

    // Rows for other machines never reach colItems.
    for (int32_t index = 1; index <= serverRows.RowCount(); ++index) {
        const std::string row = serverRows.GetRow(index);
        if (row.empty()) continue;
        ItemRecord item;
        item.UniformString(row);
        if (!AppliesToMachine(item.OS(), machine.versionName))
            plan.items.push_back({"skip", ItemKey(item), "its OS " + Quoted(item.OS()) + " does not name " +
                                                             Quoted(machine.versionName)});
    }
    return plan;
}

}  // namespace corvan::scl
