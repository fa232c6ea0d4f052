#include "control/ManageClient.h"

#include "common/failure.h"
#include "common/text.h"
#include "common/this_module.h"
#include "corvan/build_config.h"
#include "files/win_errors.h"
#include "logging/modTrace.h"
#include "logging/write_log.h"
#include "platform/clsWindowTools.h"
#include "settings/modCorvanInstaller_Global.h"

namespace corvan {

namespace {

const std::string kRule(85, '-');

// Each step of an engine event handler ends quietly on any failure, and the
// next step still runs: a log that cannot be written must not keep the page
// from hearing the event.
template <typename... Steps>
void EachQuietly(Steps... steps) {
    auto quietly = [](auto& step) {
        try {
            step();
        } catch (...) {
        }
    };
    (quietly(steps), ...);
}

bool FolderExists(const std::string& path) {
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// Only called when the folder is not there: a file of that name makes the
// creation fail with "File already exists", as it always has.
void MakeFolder(const std::string& path) {
    if (!CreateDirectoryA(path.c_str(), nullptr)) {
        const DWORD code = GetLastError();
        if (code != ERROR_ALREADY_EXISTS || !FolderExists(path)) throw FileFailure(code, CORVAN_BASE_NAME);
    }
}

// Told to the page when it calls Run while a run is already under way.
const char kRunBusy[] =
    "Run was called while another run of this control is still under way; the second call was refused.";

}  // namespace

ManageClient::ManageClient(Desktop& desktop, ManageClientEvents& events)
    : desktop_(desktop), events_(events), surface_(desktop) {
    // Made after the members its events reach, which its declaration order
    // ensures; made before the settings are loaded.
    objInstall_ = CreateInstallEngine(*this, desktop);
    InstallerSettings& settings = modCorvanInstaller_Global();
    settings.Load();
    objInstall_->InstallFile(settings.InstallListPath());
    objInstall_->UnInstallFile(settings.UninstallListPath());
    // Once per control: the Windows and browser versions every run reads.
    objInstall_->GetWindowsConfiguration(substitutions_);
}

ManageClient::~ManageClient() = default;

std::string ManageClient::Status() const { return objInstall_->Status(); }

void ManageClient::URL(const std::string& url) {
    size_t slash = url.rfind('/');
    if (slash == std::string::npos) return;
    modCorvanInstaller_Global().MasterUrlSource(url.substr(0, slash + 1));
}

std::string ManageClient::UsersGroups() const { return modCorvanInstaller_Global().UsersGroups(); }

void ManageClient::UsersGroups(const std::string& groups) { modCorvanInstaller_Global().UsersGroups(groups); }

clsWindowTools& ManageClient::WindowTools() {
    if (!windowTools_) windowTools_ = std::make_unique<clsWindowTools>();
    return *windowTools_;
}

std::optional<bool> ManageClient::Run(int16_t mode) {
    // A page that calls Run again from an event of the run under way would
    // close that run's log and stop its dialog monitor: the second call is
    // refused and told like an engine error.
    if (busy_) {
        InstallerError(kRunBusy);
        return std::nullopt;
    }
    std::optional<bool> result;
    try {
        RunSession(mode, result);
    } catch (...) {
        // What the session holds goes back; the footer, the log close, the
        // pointer and the final status are not reached.
        const Failure failure = FailureInFlight(CORVAN_BASE_NAME);
        monitor_.Enabled(false);
        busy_ = false;
        desktop_.MsgBox(std::to_string(failure.Number()) + ": " + failure.Description() + "\r\n" +
                            "Source: " + failure.Source() + " - Run",
                        msgbox::vbOKOnly, CORVAN_LIBRARY_TITLE);
    }
    return result;
}

void ManageClient::RunSession(int16_t mode, std::optional<bool>& result) {
    desktop_.SetMousePointer(vbHourglass);
    busy_ = true;

    // Both spellings name the same folder; the log is opened under the first.
    if (!FolderExists(kApplicationFolder)) MakeFolder(kApplicationFolderCreated);

    // Kept for the reader of this code only: the header shows the engine's
    // status, not the mode name.
    std::string modeName;
    switch (mode) {
        case 1: case 5: modeName = "INSTALL/UPGRADE"; break;
        case 2: modeName = "REPAIR/FORCE INSTALL"; break;
        case 3: modeName = "UNINSTALL"; break;
        case 4: modeName = "FORCE UNINSTALL"; break;
        default: break;
    }
    (void)modeName;

    surface_.ProgressFraction(0);
    surface_.RedrawProgressBar();

    GlobalLog().OpenLogFile("SC_Install.log", kApplicationFolder, true);
    WriteHeader();
    Trace({"Run(mode=" + std::to_string(mode) + ")"});
    monitor_.Enabled(true);

    // Mode 5 is deliberately the same run as mode 1.
    switch (mode) {
        case 1: case 5: surface_.TransferLineVisible(true); result = objInstall_->PrepInstaller(1, false); break;
        case 2: surface_.TransferLineVisible(true); result = objInstall_->PrepInstaller(1, true); break;
        case 3: surface_.TransferLineVisible(false); result = objInstall_->PrepInstaller(3, false); break;
        case 4: surface_.TransferLineVisible(false); result = objInstall_->PrepInstaller(4, false); break;
        default: break;
    }

    monitor_.Enabled(false);
    busy_ = false;
    WriteLog("----------------------------END OF " + Status() + " -----------------------------------");
    WriteLog("\r\n");
    GlobalLog().CloseLogFile();
    desktop_.SetMousePointer(vbDefault);
    events_.InstallStatus("Complete");
}

void ManageClient::WriteHeader() {
    clsWindowTools& tools = WindowTools();
    WriteLog("----------------------------START OF " + Status() + " -----------------------------------");
    WriteLog(std::string("Application Name: ") + CORVAN_LIBRARY_TITLE);
    WriteLog("Application Version: " + std::to_string(CORVAN_VERSION_MAJOR) + "." +
             std::to_string(CORVAN_VERSION_MINOR) + "." + std::to_string(CORVAN_VERSION_REVISION));
    WriteLog("hInstance: " + std::to_string(reinterpret_cast<uintptr_t>(ThisModule())));
    WriteLog("ThreadID: " + std::to_string(GetCurrentThreadId()));
    WriteLog(kRule);
    WriteLog("OS Name: " + tools.VersionName());
    WriteLog("OS Version: v" + tools.VersionNo());
    WriteLog("OS SP: " + tools.ServicePack());
    WriteLog("OS Build: " + tools.BuildNo());
    WriteLog(kRule);
    WriteLog("Groups: " + modCorvanInstaller_Global().UsersGroups());
    WriteLog(kRule);
}

bool ManageClient::NeedToInstall() {
    Trace({"NeedToInstall()"});
    bool need = objInstall_->NeedToInstall();
    ProcessStatusReport().Append(std::string("NeedToInstall: ") + BooleanText(need));
    Trace({std::string("NeedToInstall = ") + BooleanText(need)});
    return need;
}

void ManageClient::ShowUpdates(HWND owner) { ProcessStatusReport().Display(true, owner); }

void ManageClient::InstallationStatus(const std::string& message) {
    // The page's reaction to a status must not wait for the next download
    // block: this yield always pumps.
    EachQuietly([&] { Trace({"InstallationStatus - " + message}); }, [&] { events_.InstallStatus(message); },
                [&] { desktop_.DoEvents(); });
}

void ManageClient::InstallerError(const std::string& message) {
    EachQuietly([&] { surface_.LastMessage(message); }, [&] { surface_.RedrawProgressBar(); },
                [&] { WriteLog(message); }, [&] { ProcessStatusReport().Append(message); },
                [&] { Trace({"InstallerError - " + message}); }, [&] { events_.InstallError(message); });
}

void ManageClient::StatusMsgChange(const std::string& message) {
    EachQuietly([&] { surface_.LastMessage(message); }, [&] { surface_.RedrawProgressBar(); },
                [&] { WriteLog(message); }, [&] { ProcessStatusReport().Append(message); });
}

void ManageClient::ProgressUpdate(float fraction) {
    EachQuietly([&] { surface_.ProgressFraction(fraction); }, [&] { surface_.RedrawProgressBar(); });
}

void ManageClient::FTPStatus(float fraction, const std::string& message) {
    EachQuietly([&] { surface_.DrawTransferLine(message, fraction); });
}

}  // namespace corvan
