#include "control/ManageClient.h"

#include <exception>

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

// Each engine event handler ends quietly on any failure: the page must never
// see an exception from an event.
template <typename Step>
void Quietly(Step step) {
    try {
        step();
    } catch (...) {
    }
}

bool FolderExists(const std::string& path) {
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

void MakeFolder(const std::string& path) {
    if (!CreateDirectoryA(path.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        throw FileFailure(GetLastError(), CORVAN_BASE_NAME);
}

}  // namespace

ManageClient::ManageClient(Desktop& desktop, ManageClientEvents& events)
    : desktop_(desktop), events_(events), objInstall_(CreateInstallEngine(*this, desktop)), surface_(desktop) {
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
    modCorvanInstaller_Global().MasterUrlSource = url.substr(0, slash + 1);
}

std::string ManageClient::UsersGroups() const { return modCorvanInstaller_Global().UsersGroups; }

void ManageClient::UsersGroups(const std::string& groups) { modCorvanInstaller_Global().UsersGroups = groups; }

clsWindowTools& ManageClient::WindowTools() {
    if (!windowTools_) windowTools_ = std::make_unique<clsWindowTools>();
    return *windowTools_;
}

std::optional<bool> ManageClient::Run(int16_t mode) {
    std::optional<bool> result;
    try {
        RunSession(mode, result);
    } catch (const Failure& failure) {
        // What the session holds goes back; the footer, the log close, the
        // pointer and the final status are not reached.
        monitor_.Enabled(false);
        busy_ = false;
        desktop_.MsgBox(std::to_string(failure.Number()) + ": " + failure.Description() + "\r\n" +
                            "Source: " + failure.Source() + " - Run",
                        msgbox::vbOKOnly, CORVAN_BASE_NAME);
    } catch (const std::exception& problem) {
        monitor_.Enabled(false);
        busy_ = false;
        desktop_.MsgBox(std::to_string(error::kInvalidProcedureCall) + ": " + problem.what() + "\r\n" +
                            "Source: " CORVAN_BASE_NAME " - Run",
                        msgbox::vbOKOnly, CORVAN_BASE_NAME);
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
    WriteLog("Groups: " + modCorvanInstaller_Global().UsersGroups);
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
    Quietly([&] {
        Trace({"InstallationStatus - " + message});
        events_.InstallStatus(message);
        desktop_.DoEvents();
    });
}

void ManageClient::InstallerError(const std::string& message) {
    Quietly([&] {
        surface_.LastMessage(message);
        surface_.RedrawProgressBar();
        WriteLog(message);
        ProcessStatusReport().Append(message);
        Trace({"InstallerError - " + message});
        events_.InstallError(message);
    });
}

void ManageClient::StatusMsgChange(const std::string& message) {
    Quietly([&] {
        surface_.LastMessage(message);
        surface_.RedrawProgressBar();
        WriteLog(message);
        ProcessStatusReport().Append(message);
    });
}

void ManageClient::ProgressUpdate(float fraction) {
    Quietly([&] {
        surface_.ProgressFraction(fraction);
        surface_.RedrawProgressBar();
    });
}

void ManageClient::FTPStatus(float fraction, const std::string& message) {
    Quietly([&] { surface_.DrawTransferLine(message, fraction); });
}

}  // namespace corvan
