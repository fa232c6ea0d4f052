// The item's own install and uninstall: check the local file, fetch it when
// it is missing or changed, and run it by its extension.
#include <windows.h>

#include "common/failure.h"
#include "common/text.h"
#include "common/unique_any.h"
#include "engine/RegisterControls.h"
#include "files/clsFileIO.h"
#include "items/clsItem.h"
#include "logging/write_log.h"
#include "platform/clsWindowTools.h"

namespace corvan {
namespace {

// Packages always run from the fixed application folder, whatever folder
// the row names; the log lines name it too.
const char kTalo[] = "C:\\TALO\\";
const char kInstallSource[] = "ManageClient.clsItem.Install";

const char kMsiInstall[] = "msiexec /i %1 REBOOT=ReallySuppress ";
const char kMsiUninstall[] = "msiexec /x %1 REBOOT=ReallySuppress ";
const char kExpand[] = "Expand %1 -F:*.*";
const char kInfUninstall[] = "rundll32.exe advpack.dll,LaunchINFSectionEx %1,,,260,N";

// RunSetupCommand's flags: an INF to install, quietly.
constexpr DWORD kRscFlagInf = 1;
constexpr DWORD kRscFlagQuiet = 4;

std::string Replace(std::string text, const std::string& what, const std::string& with) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

// The template's own trailing blank stays; a switch adds one more before it.
std::string WithSwitch(std::string command, const std::string& switches) {
    if (!switches.empty()) command += " " + switches;
    return command;
}

bool FileExists(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

Failure NoExtension() {
    return Failure(kMissingOrCorrupt, kInstallSource,
                   "There was no file extention on the filename. Can not execute file.");
}

bool EndsWithInf(const std::string& name) {
    const std::string lower = LowerCase(name);
    return lower.size() >= 3 && lower.compare(lower.size() - 3, 3, "inf") == 0;
}

using RunSetupCommandFn = HRESULT(WINAPI*)(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, HANDLE*, DWORD, LPVOID);
using UniqueLibrary = UniqueAny<HMODULE, &FreeLibrary>;

// The setup helper library, loaded for one cab and freed after it.
class SetupHelper {
public:
    SetupHelper() : library_(LoadLibraryA("advpack.dll")) {
        if (library_)
            runSetupCommand_ = reinterpret_cast<RunSetupCommandFn>(
                reinterpret_cast<void*>(GetProcAddress(library_.Get(), "RunSetupCommand")));
        if (!runSetupCommand_) throw RuntimeError(error::kFileNotFound, kInstallSource);
    }
    // Installs the INF's default section with no window; the extracted
    // files are in `folder`.
    void InstallInf(const std::string& inf, const std::string& folder) const {
        runSetupCommand_(nullptr, inf.c_str(), nullptr, folder.c_str(), nullptr, nullptr, kRscFlagInf | kRscFlagQuiet,
                         nullptr);
    }

private:
    UniqueLibrary library_;
    RunSetupCommandFn runSetupCommand_ = nullptr;
};

}  // namespace

void clsItem::CRCProgress(int16_t& Percent) {
    // The checksum counts in percent; the item's progress is a fraction.
    if (listener_) listener_->FileDownloadProgress(static_cast<float>(Percent) / 100.0f, "CRC Calculation Progress:");
    desktop_.DoEvents();
}

clsFolderIO& clsItem::FolderIO() {
    if (!folderIO_) folderIO_ = std::make_unique<clsFolderIO>(desktop_);
    return *folderIO_;
}

void clsItem::RunPackage(const std::string& commandLine) {
    StatusMessage("Executing Package: " + Productname());
    desktop_.DoEvents();
    if (!shell_) shell_ = std::make_unique<clsShell>();
    int32_t waitWithoutLimit = static_cast<int32_t>(INFINITE);
    // A package that cannot be started does not stop the item.
    shell_->Execute(commandLine, "", waitWithoutLimit, SW_HIDE, NORMAL_PRIORITY_CLASS);
}

std::string clsItem::ExtractionFolder() const {
    const std::string cab = InstallFileName();
    return kTalo + cab.substr(0, cab.size() - 4);
}

std::vector<std::string> clsItem::InfFiles(const std::string& folder) {
    clsFolderIO& folderIO = FolderIO();
    folderIO.OpenFolder(folder);
    std::vector<std::string> infs;
    for (const std::string& name : folderIO.Files())
        if (EndsWithInf(name)) infs.push_back(folder + "\\" + name);
    return infs;
}

void clsItem::Install() {
    clsFileIO file(this);
    const std::string name = InstallFileName();
    WriteLog("Checking for local file '" + std::string(kTalo) + name + "'");

    const std::string local = InstallFolder() + name;
    file.NameFile(local);
    if (!FileExists(local)) {
        WriteLog("Downloading file '" + local + "'");
        DownloadItemFile();
        WriteLog("Opening file '" + local + "'");
        if (!FileExists(local)) {
            WriteLog("File could not be located on server");
            // "call ... with farther assistance" differs from the download
            // error's sentence; the help desk knows both.
            throw Failure(kMissingOrCorrupt, kInstallSource,
                          "The file '" + name + "' could not be located on the server '" + Source() + ".'\r\n" +
                              "Please call the help desk with farther assistance.");
        }
        StatusMessage("Getting CRC and Version of " + name);
        CRC(file.CRC32());
        WriteLog(kTalo + name + "'s CRC Value = " + CRC());
        Version(file.VersionNumber());
    } else {
        StatusMessage("Checking CRC of " + Productname());
        const std::string computed = file.CRC32();
        WriteLog(kTalo + name + "'s CRC Value = " + computed + ", SC_Install.scl's CRC value for this file = " + CRC());
        // Exact text: a list written in lower case or with leading zeros
        // never matches, and the file is fetched again.
        if (computed != CRC()) {
            WriteLog("Downloading new file.");
            DownloadItemFile();
            Version(file.VersionNumber());
        }
    }

    const std::string extension = LowerCase(GetFileExtention());
    if (extension == "msi") {
        RunPackage(WithSwitch(Replace(kMsiInstall, "%1", kTalo + name), InstallSwitch()));
    } else if (extension == "exe") {
        RunPackage(WithSwitch(kTalo + name, InstallSwitch()));
    } else if (extension == "cab") {
        WriteLog("Extracting CAB and executing INF file.");
        const std::string folder = ExtractionFolder();
        RunPackage(Replace(kExpand, "%1", kTalo + name) + " " + folder);
        const SetupHelper setup;
        for (const std::string& inf : InfFiles(folder)) setup.InstallInf(inf, folder);
    } else if (extension.empty()) {
        throw NoExtension();
    }
}

void clsItem::Uninstall() {
    const std::string extension = LowerCase(GetFileExtention());
    const std::string name = InstallFileName();
    if (extension == "msi") {
        RunPackage(WithSwitch(Replace(kMsiUninstall, "%1", kTalo + name), UninstallSwitch()));
    } else if (extension == "exe") {
        RunPackage(WithSwitch(kTalo + name, UninstallSwitch()));
    } else if (extension == "cab") {
        // The extracted files stay: the INF's own uninstall decides.
        if (!windowTools_) windowTools_ = std::make_unique<clsWindowTools>();
        const std::string command = windowTools_->WindowsSystem32() + kInfUninstall;
        for (const std::string& inf : InfFiles(ExtractionFolder())) RunPackage(Replace(command, "%1", inf));
    } else if (!extension.empty()) {
        // A control, library, database or plain file: only the file goes.
        // The normalised folder ends in a backslash, so the path holds two,
        // which the file system takes; a file already gone is no error.
        DeleteFileA((InstallFolder() + "\\" + name).c_str());
    } else {
        // The install's name, in the uninstall too.
        throw NoExtension();
    }
}

std::string clsItem::RegisterControl(bool unregister) {
    // The file the item installed: its own name in its own folder.
    return RegisterControls::RegisterFile(InstallFolder() + InstallFileName(), unregister);
}

}  // namespace corvan
