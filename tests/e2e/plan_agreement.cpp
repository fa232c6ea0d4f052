#include "plan_agreement.h"

#include <algorithm>
#include <sstream>

#include <windows.h>

#include "common/keyed_collection.h"
#include "engine/install_step.h"
#include "engine/packing_list_comparison.h"
#include "platform/clsWindowTools.h"
#include "platform/modPDFVer.h"
#include "wine_bench.h"

namespace e2e {
namespace {

constexpr char kLocalList[] = "C:\\TALO\\SC_Install.scl";

std::string RegistryText(HKEY root, const char* key, const char* name) {
    char value[256] = {};
    DWORD size = sizeof value;
    if (RegGetValueA(root, key, name, RRF_RT_REG_SZ, nullptr, value, &size) != ERROR_SUCCESS) return "";
    return value;
}

// Display names by item key, from the rows of both lists (the server's last).
corvan::KeyedCollection<std::string> DisplayNames(const std::vector<std::string>& lists) {
    corvan::KeyedCollection<std::string> names;
    for (const std::string& list : lists) {
        const corvan::TextRows rows(list);
        for (int32_t i = 1; i <= rows.RowCount(); ++i) {
            corvan::ItemRecord item;
            item.UniformString(rows.GetRow(i));
            const std::string key = corvan::ItemKey(item);
            if (names.Contains(key)) names.Remove(key);
            names.Add(key, corvan::DisplayName(item));
        }
    }
    return names;
}

void Sort(RunSteps& steps) {
    std::sort(steps.checked.begin(), steps.checked.end());
    std::sort(steps.removed.begin(), steps.removed.end());
    std::sort(steps.groupSkipped.begin(), steps.groupSkipped.end());
}

}  // namespace

RunSteps PlannedSteps(const std::string& serverList, const std::string& groups, const std::string& scratchName) {
    const std::string local = winbench::FileExists(kLocalList) ? winbench::ReadFileBytes(kLocalList) : "";
    const std::string localCopy = "C:\\corvan-tests\\e2e-" + scratchName + "-plan-local.scl";
    const std::string serverCopy = "C:\\corvan-tests\\e2e-" + scratchName + "-plan-server.scl";
    winbench::WriteFileBytes(localCopy, local);
    winbench::WriteFileBytes(serverCopy, serverList);

    // The machine as the control will see it.
    DWORD complete = 0, size = sizeof complete;
    const bool isInstalled = RegGetValueA(HKEY_LOCAL_MACHINE, "Software\\Talo\\Settings", "InstallComplete",
                                          RRF_RT_REG_DWORD, nullptr, &complete, &size) == ERROR_SUCCESS &&
                             complete == 1;
    const std::string vector =
        RegistryText(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Internet Explorer\\Version Vector", "IE");
    const int ie = !vector.empty() && vector[0] >= '0' && vector[0] <= '9' ? vector[0] - '0' : 0;

    const std::string command = "\"" + winbench::OutDir() + "\\scl.exe\" plan \"" + localCopy + "\" \"" +
                                serverCopy + "\" \"--os=" + corvan::clsWindowTools().VersionName() +
                                "\" \"--groups=" + groups + "\" --installed " + (isInstalled ? "1" : "0") +
                                " --ie " + std::to_string(ie) + " --acrobat " +
                                (corvan::AcrobatIsInstalled() ? "1" : "0");
    const winbench::ChildResult result = winbench::RunAndWait(command);

    RunSteps steps;
    steps.text = command + "\n" + result.output;
    if (result.exitCode == 1) return steps;  // every PC refuses the server list
    if (result.exitCode != 0) {
        steps.checked.push_back("(scl plan failed)");
        return steps;
    }
    const corvan::KeyedCollection<std::string> names = DisplayNames({local, serverList});
    steps.passRuns = result.output.find("no install pass runs") == std::string::npos;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const size_t tab = line.find('\t'), second = line.find('\t', tab + 1);
        if (tab == std::string::npos || second == std::string::npos) continue;  // scl's notes and count
        const std::string action = line.substr(0, tab), key = line.substr(tab + 1, second - tab - 1);
        const std::string* name = names.Find(key);
        const std::string display = name ? *name : key;
        if (action == "install" || action == "update") {
            steps.checked.push_back(display);
        } else if (action == "remove") {
            steps.removed.push_back(display);
        } else if (action == "skip" && line.find("its group", second) != std::string::npos) {
            steps.checked.push_back(display);
            steps.groupSkipped.push_back(key.substr(key.rfind('\\') + 1));
        }
    }
    Sort(steps);
    return steps;
}

RunSteps LoggedSteps(const std::vector<std::string>& log) {
    RunSteps steps;
    const std::string checking = "Checking versions of ", removing = "Removing: ", file = "File: ",
                      skipped = " skipped...Group not set for this user";
    for (const std::string& line : log) {
        if (line == "Running Install Routines") steps.passRuns = true;
        if (line.rfind(checking, 0) == 0) steps.checked.push_back(line.substr(checking.size()));
        if (line.rfind(removing, 0) == 0) steps.removed.push_back(line.substr(removing.size()));
        if (line.rfind(file, 0) == 0 && line.size() > skipped.size() &&
            line.compare(line.size() - skipped.size(), skipped.size(), skipped) == 0)
            steps.groupSkipped.push_back(line.substr(file.size(), line.size() - file.size() - skipped.size()));
    }
    Sort(steps);
    return steps;
}

}  // namespace e2e
