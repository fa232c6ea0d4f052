#pragma once
// scl plan beside the engine: before each install run the scenario asks the
// shipped scl.exe what the run will do with the lists as they stand, and
// after it compares that with what the run's install log says was done.
#include <string>
#include <vector>

namespace e2e {

// One run in the terms the install log shows them.
struct RunSteps {
    bool passRuns = false;
    std::vector<std::string> checked;   // "Checking versions of " + name: installs, updates, group skips
    std::vector<std::string> removed;   // "Removing: " + name
    std::vector<std::string> groupSkipped;  // file names skipped for their group
    std::string text;                   // scl's own output, for the failure message

    bool operator==(const RunSteps& other) const {
        return passRuns == other.passRuns && checked == other.checked && removed == other.removed &&
               groupSkipped == other.groupSkipped;
    }
};

// What scl plan says a run with this server list, the local list in
// C:\TALO\ and the machine's state now will do.
RunSteps PlannedSteps(const std::string& serverList, const std::string& groups, const std::string& scratchName);

// What the run's install log says it did.
RunSteps LoggedSteps(const std::vector<std::string>& log);

}  // namespace e2e
