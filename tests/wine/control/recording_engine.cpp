#include "recording_engine.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

#include "common/text.h"
#include "engine/install_engine.h"
#include "settings/modCorvanInstaller_Global.h"

namespace {

struct Recording {
    std::vector<std::vector<std::string>> steps;
    std::string journal;
};

Recording& State() {
    static Recording state;
    return state;
}

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::stringstream stream(line);
    std::string field;
    while (std::getline(stream, field, '|')) fields.push_back(field);
    return fields;
}

void Journal(const std::string& entry) { State().journal += entry + "\n"; }

std::string Setting(const char* name, const std::string& fallback) {
    for (const auto& step : State().steps)
        if (step.size() > 1 && step[0] == name) return step[1];
    return fallback;
}

void Pump(int milliseconds) {
    DWORD end = GetTickCount() + static_cast<DWORD>(milliseconds);
    while (static_cast<int>(end - GetTickCount()) > 0) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
}

class RecordingEngine : public corvan::InstallEngine {
public:
    explicit RecordingEngine(corvan::InstallEngineEvents& events) : events_(events) {}

    std::string InstallFile() const override { return installFile_; }
    void InstallFile(std::string path) override {
        Journal("InstallFile=" + path);
        installFile_ = std::move(path);
    }
    std::string UnInstallFile() const override { return uninstallFile_; }
    void UnInstallFile(std::string path) override {
        Journal("UnInstallFile=" + path);
        uninstallFile_ = std::move(path);
    }

    bool PrepInstaller(int32_t mode, bool force) override {
        Journal("PrepInstaller(" + std::to_string(mode) + "," + corvan::BooleanText(force) +
                ") url=" + corvan::modCorvanInstaller_Global().MasterUrlSource);
        Play();
        return Setting("result", "True") == "True";
    }

    bool NeedToInstall() override {
        Journal("NeedToInstall()");
        Play();
        return Setting("need", "False") == "True";
    }

    std::string Status() const override { return Setting("status", ""); }

private:
    void Play() {
        for (const auto& step : State().steps) {
            const std::string& kind = step[0];
            std::string a = step.size() > 1 ? step[1] : "", b = step.size() > 2 ? step[2] : "";
            if (kind == "InstallationStatus") events_.InstallationStatus(a);
            else if (kind == "StatusMsgChange") events_.StatusMsgChange(a);
            else if (kind == "InstallerError") events_.InstallerError(a);
            else if (kind == "ProgressUpdate") events_.ProgressUpdate(std::strtof(a.c_str(), nullptr));
            else if (kind == "FTPStatus") events_.FTPStatus(std::strtof(a.c_str(), nullptr), b);
            else if (kind == "pump") Pump(std::atoi(a.c_str()));
        }
    }

    corvan::InstallEngineEvents& events_;
    std::string installFile_, uninstallFile_;
};

}  // namespace

extern "C" void RecordingEngineSetScript(const char* script) {
    State().steps.clear();
    State().journal.clear();
    std::stringstream stream(script ? script : "");
    std::string line;
    while (std::getline(stream, line))
        if (!line.empty()) State().steps.push_back(Fields(line));
}

extern "C" int RecordingEngineJournal(char* buffer, int size) {
    const std::string& journal = State().journal;
    int length = static_cast<int>(journal.size());
    if (buffer && size > 0) {
        int copied = length < size - 1 ? length : size - 1;
        std::memcpy(buffer, journal.data(), static_cast<size_t>(copied));
        buffer[copied] = '\0';
    }
    return length;
}

namespace corvan {

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop&) {
    return std::make_unique<RecordingEngine>(events);
}

}  // namespace corvan
