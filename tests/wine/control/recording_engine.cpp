#include "recording_engine.h"

#include <windows.h>

#include <cstdlib>
#include <new>
#include <sstream>
#include <vector>

#include "common/text.h"
#include "engine/install_engine.h"
#include "settings/modCorvanInstaller_Global.h"

namespace {

using Step = std::vector<std::string>;  // the kind, then its fields
std::vector<Step> script;
std::string journal;

std::string Answer(const char* name, const char* fallback) {
    for (const Step& step : script)
        if (step[0] == name) return step[1];
    return fallback;
}

class RecordingEngine : public corvan::InstallEngine {
public:
    explicit RecordingEngine(corvan::InstallEngineEvents& events) : events_(events) { Play("new:"); }

    std::string InstallFile() const override { return installFile_; }
    void InstallFile(std::string path) override { journal += "InstallFile=" + (installFile_ = path) + "\n"; }
    std::string UnInstallFile() const override { return uninstallFile_; }
    void UnInstallFile(std::string path) override { journal += "UnInstallFile=" + (uninstallFile_ = path) + "\n"; }
    bool PrepInstaller(int32_t mode, bool force) override {
        journal += "PrepInstaller(" + std::to_string(mode) + "," + corvan::BooleanText(force) +
                   ") url=" + corvan::modCorvanInstaller_Global().MasterUrlSource() + "\n";
        Play("");
        return Answer("result", "True") == "True";
    }
    bool NeedToInstall() override {
        journal += "NeedToInstall()\n";
        Play("");
        return Answer("need", "False") == "True";
    }
    std::string NeedToDo() const override { return Answer("todo", ""); }
    bool GetWindowsConfiguration(corvan::KeyedCollection<std::string>&) override {
        journal += "GetWindowsConfiguration()\n";
        return true;
    }
    std::string Status() const override { return Answer("status", ""); }

private:
    // The steps whose kind starts with `when` ("new:" while the engine is
    // made, "" for an operation's, which never start with "new:").
    void Play(const std::string& when) {
        for (const Step& step : script) {
            if (step[0].rfind("new:", 0) == 0 ? when.empty() : !when.empty()) continue;
            const std::string kind = step[0].substr(when.size()), &text = step[1];
            const float fraction = std::strtof(text.c_str(), nullptr);
            if (kind == "InstallationStatus") events_.InstallationStatus(text);
            else if (kind == "StatusMsgChange") events_.StatusMsgChange(text);
            else if (kind == "InstallerError") events_.InstallerError(text);
            else if (kind == "ProgressUpdate") events_.ProgressUpdate(fraction);
            else if (kind == "FTPStatus") events_.FTPStatus(fraction, step[2]);
            else if (kind == "throw") throw std::bad_alloc();
            else if (kind == "pump") PumpFor(std::atoi(text.c_str()));
        }
    }

    corvan::InstallEngineEvents& events_;
    std::string installFile_, uninstallFile_;
};

}  // namespace

void PumpFor(DWORD milliseconds) {
    MSG message;
    for (DWORD until = GetTickCount() + milliseconds; static_cast<int>(until - GetTickCount()) > 0;) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }
}

extern "C" void RecordingEngineSetScript(const char* text) {
    script.clear();
    journal.clear();
    std::stringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::stringstream fields(line);
        Step step;
        for (std::string field; std::getline(fields, field, '|');) step.push_back(field);
        step.resize(3);
        if (!step[0].empty()) script.push_back(step);
    }
}

extern "C" const char* RecordingEngineJournal() { return journal.c_str(); }

namespace corvan {

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop&) {
    return std::make_unique<RecordingEngine>(events);
}

}  // namespace corvan
