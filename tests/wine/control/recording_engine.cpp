#include "recording_engine.h"

#include <windows.h>

#include <cstdlib>
#include <sstream>
#include <vector>

#include "common/text.h"
#include "engine/install_engine.h"
#include "settings/modCorvanInstaller_Global.h"

namespace {

using Step = std::vector<std::string>;  // the kind, then its fields
std::vector<Step> script;
std::string journal;

std::string Setting(const char* name, const char* fallback) {
    for (const Step& step : script)
        if (step[0] == name && step.size() > 1) return step[1];
    return fallback;
}

// Lets the thread's windows and timers run, as a long engine step does.
void Pump(int milliseconds) {
    for (DWORD end = GetTickCount() + milliseconds; static_cast<int>(end - GetTickCount()) > 0;) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }
}

class RecordingEngine : public corvan::InstallEngine {
public:
    explicit RecordingEngine(corvan::InstallEngineEvents& events) : events_(events) {}

    std::string InstallFile() const override { return installFile_; }
    void InstallFile(std::string path) override { journal += "InstallFile=" + (installFile_ = path) + "\n"; }
    std::string UnInstallFile() const override { return uninstallFile_; }
    void UnInstallFile(std::string path) override { journal += "UnInstallFile=" + (uninstallFile_ = path) + "\n"; }

    bool PrepInstaller(int32_t mode, bool force) override {
        journal += "PrepInstaller(" + std::to_string(mode) + "," + corvan::BooleanText(force) +
                   ") url=" + corvan::modCorvanInstaller_Global().MasterUrlSource + "\n";
        Play();
        return Setting("result", "True") == "True";
    }

    bool NeedToInstall() override {
        journal += "NeedToInstall()\n";
        Play();
        return Setting("need", "False") == "True";
    }

    std::string NeedToDo() const override { return Setting("todo", ""); }

    bool GetWindowsConfiguration(corvan::KeyedCollection<std::string>&) override {
        journal += "GetWindowsConfiguration()\n";
        return true;
    }

    std::string Status() const override { return Setting("status", ""); }

private:
    void Play() {
        for (Step step : script) {
            step.resize(3);
            const std::string &kind = step[0], &text = step[1];
            float fraction = std::strtof(text.c_str(), nullptr);
            if (kind == "InstallationStatus") events_.InstallationStatus(text);
            else if (kind == "StatusMsgChange") events_.StatusMsgChange(text);
            else if (kind == "InstallerError") events_.InstallerError(text);
            else if (kind == "ProgressUpdate") events_.ProgressUpdate(fraction);
            else if (kind == "FTPStatus") events_.FTPStatus(fraction, step[2]);
            else if (kind == "pump") Pump(std::atoi(text.c_str()));
        }
    }

    corvan::InstallEngineEvents& events_;
    std::string installFile_, uninstallFile_;
};

}  // namespace

extern "C" void RecordingEngineSetScript(const char* text) {
    script.clear();
    journal.clear();
    std::stringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::stringstream fields(line);
        Step step;
        for (std::string field; std::getline(fields, field, '|');) step.push_back(field);
        if (!step.empty()) script.push_back(step);
    }
}

extern "C" const char* RecordingEngineJournal() { return journal.c_str(); }

namespace corvan {

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop&) {
    return std::make_unique<RecordingEngine>(events);
}

}  // namespace corvan
