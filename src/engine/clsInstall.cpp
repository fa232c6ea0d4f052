#include "engine/clsInstall.h"

#include <exception>

#include "common/conversions.h"
#include "engine/engine_files.h"
#include "engine/error_report.h"
#include "engine/list_download.h"
#include "logging/modTrace.h"
#include "logging/write_log.h"
#include "settings/modCorvanInstaller_Global.h"

namespace corvan {

namespace {

constexpr int32_t kLocalMachine = static_cast<int32_t>(0x80000002u);
constexpr char kSettingsKey[] = "Software\\Talo\\Settings";
constexpr char kInstallComplete[] = "InstallComplete";
constexpr char kInternetSettings[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr char kExplorerKey[] = "SOFTWARE\\Microsoft\\Internet Explorer";
constexpr char kPrepContext[] = " - clsInstall.PreInstaller";
constexpr char kPrepSource[] = "Corvan.clsInstall.PrepInstaller";
const char kHelpDesk[] = "Please contact the help desk for farther assistance.";

// The leading digit of a text as a number; 0 when there is none.
int16_t DigitValue(char c) { return c >= '0' && c <= '9' ? static_cast<int16_t>(c - '0') : 0; }

Failure UninstallListFailure() {
    return Failure(kUninstallListFailed, kPrepSource,
                   std::string("Uninstall log file could not be created or opened.\r\n") + kHelpDesk);
}

Failure CorruptListFailure() {
    return Failure(kListCorrupt, "ManageClient.clsInstall.PrepInstaller",
                   std::string("Installation packing list is corrupt on the server. ") + kHelpDesk);
}

}  // namespace

clsInstall::clsInstall(InstallEngineEvents& events, Desktop& desktop)
    : events_(events),
      desktop_(desktop),
      objSecurity_(std::make_unique<clsCorvanSecurity>(desktop, static_cast<clsCorvanSecurityEvents*>(this))),
      session_(&desktop),
      comparison_(windowTools_.VersionName(), windowTools_.SystemRoot()) {}

clsInstall::~clsInstall() = default;

// ---- events and their relays ---------------------------------------------

void clsInstall::StatusMsg(const std::string& text) { events_.StatusMsgChange(text); }

void clsInstall::RaiseInstallationStatus(const std::string& text) {
    status_ = text;
    events_.InstallationStatus(text);
}

void clsInstall::objItem_FileDownloadProgress(float Percent, const std::string& status) {
    try {
        events_.FTPStatus(Percent, status);
    } catch (...) {
    }
}

void clsInstall::objItem_StatusMessageUpdate(const std::string& status) {
    try {
        StatusMsg(status);
    } catch (...) {
    }
}

void clsInstall::objSecurity_StatusMessageChange(const std::string& Message) {
    try {
        StatusMsg(Message);
    } catch (...) {
    }
}

void clsInstall::FileDownloadProgress(float Percent, const std::string& status) {
    objItem_FileDownloadProgress(Percent, status);
}
void clsInstall::StatusMessageUpdate(const std::string& status) { objItem_StatusMessageUpdate(status); }
void clsInstall::StatusMessageChange(const std::string& Message) { objSecurity_StatusMessageChange(Message); }

// ---- errors -----------------------------------------------------------------

std::string clsInstall::ErrorText(const Failure& failure, const std::string& context) {
    return ErrorReportText(failure, context);
}

void clsInstall::ReportError(const Failure& failure, const std::string& context) {
    events_.InstallerError(ErrorText(failure, context));
}

void clsInstall::LogError(const Failure& failure, const std::string& context) {
    // The log may be closed outside a run and refuse to open: the error
    // still reaches the trace.
    try {
        WriteLog(ErrorText(failure, context));
    } catch (...) {
        Trace({ErrorText(failure, context)});
    }
}

void clsInstall::Quietly(const std::function<void()>& step) {
    try {
        step();
    } catch (const Failure& failure) {
        pendingError_ = failure;
    }
}

// ---- settings, registry -----------------------------------------------------

std::string clsInstall::BaseUrl() const { return modCorvanInstaller_Global().MasterUrlSource; }

std::string clsInstall::ApplicationFolder() const { return modCorvanInstaller_Global().Root; }

int16_t clsInstall::ReadInstallComplete() {
    const RegVariant value = registry_.GetRegSetting(kLocalMachine, kSettingsKey, kInstallComplete, RegVariant::Long(0));
    if (value.IsInteger()) return static_cast<int16_t>(value.IntegerValue());
    return static_cast<int16_t>(LenientLong(value.DisplayText()));
}

void clsInstall::WriteInstallComplete(int32_t value) {
    registry_.SetRegValue(kLocalMachine, kSettingsKey, kInstallComplete, RegVariant::Long(value));
}

// ---- NeedToInstall, GetWindowsConfiguration ---------------------------------

bool clsInstall::NeedToInstall() {
    int32_t lngInstalled = 0;
    bool result = true;
    try {
        lngInstalled = ReadInstallComplete();
        comparison_.blnMustInstall(false);
        comparison_.Reset();
        if (lngInstalled != 0) {
            Trace({"Checking for Local file: SC_Install.scl"});
            if (!localFile_.OpenFile(installFile_)) {
                Trace({"SC_Install.scl Not Found"});
            } else if (!ValidateFile()) {
                Trace({"Local file is invalid."});
            } else if (!SameAsServer()) {
                Trace({"Local file does NOT match server file."});
            } else {
                result = false;
            }
        } else {
            Trace({"lngInstalled = 0 - Corvan Connect is Not installed."});
        }
    } catch (const Failure& failure) {
        ReportError(failure, " - clsInstall.NeedToInstall");
    }
    if (lngInstalled == 0) nextAction_ = result ? "Install" : "";
    if (lngInstalled == 1) nextAction_ = result ? "Update" : "";
    return result;
}

bool clsInstall::GetWindowsConfiguration(KeyedCollection<std::string>& substitutions) {
    InstallerSettings& settings = modCorvanInstaller_Global();
    auto text = [this](const std::string& key, const std::string& name) {
        return registry_.GetRegSetting(kLocalMachine, key, name, RegVariant::String("")).DisplayText();
    };
    try {
        const std::string version = windowTools_.VersionNo();
        settings.WindowsMajorVersion = version.empty() ? 0 : DigitValue(version.front());
        settings.WindowsMinorVersion = version.empty() ? 0 : DigitValue(version.back());

        std::string cache = text(kInternetSettings, "ActiveXCache");
        if (cache.empty()) cache = text(std::string(kInternetSettings) + "\\ActiveX Cache", "0");
        if (!cache.empty() && cache.back() != '\\') cache += '\\';
        if (substitutions.Contains("%ocx%")) substitutions.Remove("%ocx%");
        substitutions.Add("%ocx%", cache);

        const std::string vector = text(std::string(kExplorerKey) + "\\Version Vector", "IE");
        settings.IEMajorVersion = vector.empty() ? 0 : DigitValue(vector.front());
        settings.IEBuild = text(kExplorerKey, "Build");
        settings.IEVersion = text(kExplorerKey, "Version");
        return true;
    } catch (const Failure& failure) {
        LogError(failure, " - clsInstall.GetWindowsConfiguration()");
        return false;
    }
}

// ---- PrepInstaller ------------------------------------------------------------

bool clsInstall::PrepInstaller(int32_t mode, bool forceInstall) {
    try {
        return Prepare(mode, forceInstall);
    } catch (const Failure& failure) {
        const std::string text = ErrorText(failure, kPrepContext);
        Trace({text});
        events_.InstallerError(text);
    } catch (const std::exception& problem) {
        const std::string text = ErrorText(RuntimeError(error::kInvalidProcedureCall, problem.what()), kPrepContext);
        Trace({text});
        events_.InstallerError(text);
    }
    return false;
}

bool clsInstall::Prepare(int32_t mode, bool forceInstall) {
    comparison_.blnMustInstall(false);
    comparison_.blnForceInstall(forceInstall);
    RaiseInstallationStatus("Preparing");
    desktop_.DoEvents();

    installComplete_ = ReadInstallComplete();

    session_.Port(443);
    session_.protocal(3);  // INTERNET_SERVICE_HTTP
    session_.OpenFTP(BaseUrl(), "Corvan Connect Client Manager", "");
    StatusMsg("Setting FTP Port: 443 (Default)");
    StatusMsg("Setting FTP Protocol: HTTP (Default)");
    StatusMsg("Opening FTP Server...");
    StatusMsg(std::string(85, '-'));

    if (!engine_files::FolderHasFiles("C:\\TALO\\")) {
        engine_files::MakePath(ApplicationFolder());
        StatusMsg("Making Path: " + ApplicationFolder());
    }

    StatusMsg("Preparing Collection Object: colItems");
    comparison_.Reset();

    StatusMsg("Verifying Processing Mode");
    if (mode == 1) StatusMsg("Mode: Install/Update");
    if (mode == 3) StatusMsg("Mode: Uninstall");

    if (mode == 1) {
        if (!PrepareInstall()) return false;
    } else if (mode == 3 || mode == 4) {
        bool stopped = false;
        PrepareUninstall(mode, stopped);
        if (stopped) return false;
    }

    StatusMsg("Process Complete.");
    pendingError_ = Failure(0, "", "");
    return true;
}

void clsInstall::CreateUninstallList(const char* failedStatus) {
    try {
        uninstallFile_.CreateFile(unInstallFile_);
    } catch (const Failure&) {
        StatusMsg(failedStatus);
        throw UninstallListFailure();
    }
}

bool clsInstall::PrepareInstall() {
    const std::string folder = ApplicationFolder();
    if (comparison_.blnForceInstall()) {
        StatusMsg("Force Install Enabled");
        StatusMsg("Clearing Installs and Exes in Application directory.");
        Quietly([&] { engine_files::DeleteFiles(folder + "\\*.msi"); });
        Quietly([&] { engine_files::DeleteFiles(folder + "\\*.exe"); });
    }
    if (installComplete_ == 0) {
        StatusMsg("Checking installation registry setting.(" + std::to_string(installComplete_) + ")");
        comparison_.blnForceInstall(true);
        comparison_.blnMustInstall(true);
    }

    StatusMsg("Opening Installation File.");
    if (!LoadLocalFile(localFile_)) return false;

    StatusMsg("Getting Server File version to validate local copy against.");
    if (!DownloadList(BaseUrl() + "SC_Install.scl", folder + "ServerVersion.scl", &serverFile_)) {
        StatusMsg("Download Failed");
        return false;
    }
    StatusMsg("Download Successful");

    StatusMsg("Creating Uninstall File");
    CreateUninstallList("Create Failed");

    StatusMsg("Loading Files into Compare Process");
    // The local load marks every item dirty: the server load then clears
    // what it still lists, and what it dropped is removed.
    if (!LoadFileIntoCollection(localFile_, true)) {
        if (comparison_.blnForceInstall()) throw CorruptListFailure();
        if (!FetchLocalListAgain()) {
            StatusMsg("Download Failed...aborting installation");
            throw CorruptListFailure();
        }
        StatusMsg("Reloading install file into compare process");
        if (!LoadFileIntoCollection(localFile_, true)) {
            StatusMsg("Something really broke.");
            throw CorruptListFailure();
        }
    }

    StatusMsg("Loading Server file into Compare process");
    if (!LoadFileIntoCollection(serverFile_, comparison_.blnForceInstall())) comparison_.blnMustInstall(true);

    StatusMsg("Validating the files");
    bool runPasses = comparison_.blnMustInstall();
    if (!ValidateFile()) {
        StatusMsg("Downloading Server File again, something didn't load correctly.");
        if (!DownloadList(BaseUrl() + "SC_Install.scl", installFile_, &localFile_)) {
            StatusMsg("Download Failed.");
            throw Failure(kListCorrupt, "clsInstall.PrepInstaller", "Can not locate the installation file on the server.");
        }
        runPasses = true;
    }

    if (runPasses) {
        StatusMsg("Running Install Routines");
        Install();
        StatusMsg("Registering Controls");
        RunRegistration(false);
        StatusMsg("Finalizing the Installations");
        FinalizeInstall();
    } else {
        RaiseInstallationStatus("No Install Required");
        StatusMsg("Corvan Connect is Installed and up to Date.");
        events_.FTPStatus(0.0f, " ");
        desktop_.DoEvents();
    }
    return true;
}

// The local list is fetched again from each installer base URL in turn,
// until one gives it.
bool clsInstall::FetchLocalListAgain() {
    std::vector<std::string> sources = AlternateSources();
    sources.insert(sources.begin(), BaseUrl());
    Failure failure(0, "", "");
    for (const std::string& source : sources) {
        StatusMsg("Attempting New Download of Install file from " + source);
        if (DownloadListFrom(source + "SC_Install.scl", installFile_, &localFile_, failure)) return true;
    }
    if (failure.Number() != 0) ReportError(failure, "");
    return false;
}

void clsInstall::PrepareUninstall(int32_t mode, bool& stopped) {
    StatusMsg("Forcing Uninstall...");
    if (mode == 4) {
        if (!engine_files::FolderExists(ApplicationFolder())) engine_files::MakePath(ApplicationFolder());
        StatusMsg("Forcably rebuilding the uninstall file...");
        if (!LoadLocalFile(localFile_)) {
            stopped = true;
            return;
        }
        StatusMsg("Loading Local File...");
        LoadFileIntoCollection(localFile_, true);
        StatusMsg("Rebuilding Uninstall Log file...");
        bool created = true;
        try {
            uninstallFile_.CreateFile(unInstallFile_);
        } catch (const Failure& failure) {
            pendingError_ = failure;
            created = false;
        }
        if (created) WriteUninstallLog();
    }

    StatusMsg("Opening Uninstall File...");
    if (!localFile_.OpenFile(unInstallFile_)) {
        StatusMsg("File Not Found, Creating Uninstall File.");
        CreateUninstallList("Could not create uninstall file...serious error.");
    }

    StatusMsg("Loading Local Installation File...");
    LoadFileIntoCollection(localFile_, true);

    StatusMsg("Running Uninstall Process...");
    if (comparison_.colItems().Empty() && !engine_files::FolderHasFiles("C:\\TALO\\")) {
        WriteInstallComplete(0);
        StatusMsg("Corvan Connect appears to not be installed on this system.");
        return;
    }
    StatusMsg("Unregistering Controls");
    RunRegistration(true);
    Uninstall();
    Trace({"Returning to PrepInstaller. - " + ErrorText(pendingError_, kPrepContext)});
}

}  // namespace corvan
