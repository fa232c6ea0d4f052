#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvan::scl {

// The PC a plan is made for.
struct PlanMachine {
    std::string versionName;      // its Windows version name ("Windows XP")
    std::string usersGroups;      // the page's UsersGroups; empty lets every group through
    bool installed = true;        // "InstallComplete" is 1
    int32_t ieMajorVersion = 6;   // Internet Explorer's major version
    bool acrobatPresent = false;  // a suitable Adobe Acrobat is installed
};

struct PlanItem {
    std::string action;  // install, update, remove, keep or skip
    std::string key;     // InstallFolder + FileName
    std::string reason;
};

struct Plan {
    // Every PC refuses the server list (empty, or a short first row): the run
    // stops and nothing changes. `refusal` says why.
    bool refused = false;
    std::string refusal;
    // What the run does before the pass, worth telling (a list fetched
    // again, a pass that does not run).
    std::vector<std::string> notes;
    // colItems in the engine's order, then the server's rows for other
    // machines.
    std::vector<PlanItem> items;
};

// What an install run (mode 1) does on a PC holding the local list `local`
// when the server publishes `server`: the engine's own comparison and
// install-pass decisions, without downloading or installing anything.
Plan MakePlan(std::string_view local, std::string_view server, const PlanMachine& machine);

}  // namespace corvan::scl
