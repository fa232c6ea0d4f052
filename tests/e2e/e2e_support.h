#pragma once
// What the scenario harness stands on: the scenario file, the page that
// holds the control, the person who answers its questions, and the machine's
// state that scenarios set up and read back.
#include <deque>
#include <string>
#include <vector>

#include "probe_server.h"

namespace e2e {

struct Line {
    int number;
    std::string keyword, text;
};

struct ScenarioText {
    std::string name;
    std::vector<Line> lines;
};

// A scenario file of this folder (scenarios.txt, faults.txt), from the
// source tree (CORVAN_ROOT).
std::vector<ScenarioText> LoadScenarios(const std::string& file = "scenarios.txt");

// The CRC-32 text of some bytes, as a packing list writes it; worked out
// here bit by bit, apart from the code under test.
std::string Crc32Text(const std::string& bytes);

// "a b c\": the names in a folder, sorted, folders ending in "\"; "-" when
// the folder is missing.
std::string FolderEntries(const std::string& folder);

// A page holding the registered control, or the one in the server file
// `server` when one is named: its event sink advised, its URL and the
// user's groups set.
class Page {
public:
    Page(const std::string& installerUrl, const std::string& groups, const std::string& server = "");
    ~Page();
    bool Ready() const { return static_cast<bool>(point); }

    control_tests::ComPtr<IDispatch> control;
    control_tests::ComPtr<IConnectionPoint> point;
    control_tests::EventSink sink;
    DWORD cookie = 0;
};

// The person at the screen while it lives: answers each message box the
// thread shows with the next answer ("Yes", "No", "OK"; OK or No when none
// is left) and notes its title.
class QuestionAnswerer {
public:
    QuestionAnswerer(std::deque<std::string>& answers, std::vector<std::string>& titles);
    ~QuestionAnswerer();

private:
    HHOOK hook_;
};

// The machine's state around a scenario.
class Machine {
public:
    // No C:\TALO, no C:\Temp, no InstallComplete, no marks of the test
    // packages, the test msi not installed, Windows and Internet Explorer
    // as the prefix had them.
    void Clean();
    void ProductName(const std::string& name);
    void ExplorerVersionVector(const std::string& vector);
    void TempIsAFile();
    void TaloIsAFile();
    void ReadOnly(const std::string& path);
    // Another process holds the file open, sharing nothing, until Clean.
    void HoldOpen(const std::string& path);
    // InstallComplete, msi, cab, dll: the value, "registered", or "-".
    std::string Mark(const std::string& name) const;

private:
    bool productChanged_ = false;
    std::string oldProduct_;
    std::vector<HANDLE> holders_;
};

// An installer address that fails the way `kind` says: "refused" (a port
// nobody listens on), "unresolved" (a host no name server knows),
// "untrusted" (the test server with a certificate from an unknown
// authority); the folder `name` under it.
std::string FailingInstallerUrl(const std::string& kind, const std::string& name);

// NeedToInstall then NeedToDo of an engine made in this process.
std::string EngineNeedToDo(const std::string& installerUrl);

}  // namespace e2e
