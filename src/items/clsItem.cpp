#include "items/clsItem.h"

#include <windows.h>

#include <algorithm>

#include "common/failure.h"
#include "platform/clsWindowTools.h"

namespace corvan {

clsItem::clsItem(Desktop& desktop, clsItemEvents* listener) : desktop_(desktop), listener_(listener) {}

clsItem::~clsItem() = default;

clsFTP& clsItem::TransferSession() {
    if (!ftp_) ftp_ = std::make_unique<clsFTP>(&desktop_, static_cast<clsFTPEvents*>(this));
    return *ftp_;
}

void clsItem::FileProgress(float Percent, const std::string& status) {
    if (listener_) listener_->FileDownloadProgress(Percent, status);
}

void clsItem::StatusMessage(const std::string& text) {
    if (listener_) listener_->StatusMessageUpdate(text);
}

namespace {

// The part of a folder path that is never made, only opened: a drive
// ("C:\"), a share ("\\server\share\"), the current drive's root ("\"), or
// nothing for a path relative to the current folder. Slashes are taken as
// backslashes.
size_t RootLength(const std::string& path) {
    if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
        const size_t server = path.find('\\', 2);
        if (server == std::string::npos) return path.size();
        const size_t share = path.find('\\', server + 1);
        return share == std::string::npos ? path.size() : share + 1;
    }
    if (path.size() >= 2 && path[1] == ':') return path.size() >= 3 && path[2] == '\\' ? 3 : 2;
    return !path.empty() && path[0] == '\\' ? 1 : 0;
}

}  // namespace

void clsItem::MakeFolder(const std::string& folder) {
    std::string path = folder;
    std::replace(path.begin(), path.end(), '/', '\\');
    const size_t root = RootLength(path);
    std::string current = path.substr(0, root);
    if (!folderIO_) folderIO_ = std::make_unique<clsFolderIO>(desktop_);
    // A drive or share that is not there fails its open with the file
    // system's error, before the download could be blamed on the server.
    if (!current.empty() && GetFileAttributesA(current.c_str()) == INVALID_FILE_ATTRIBUTES)
        folderIO_->OpenFolder(current);
    // Then each folder below the root in turn.
    for (size_t start = root; start < path.size();) {
        size_t end = path.find('\\', start);
        if (end == std::string::npos) end = path.size();
        const std::string name = path.substr(start, end - start);
        start = end + 1;
        if (name.empty()) continue;
        const std::string next = current + name;
        if (GetFileAttributesA(next.c_str()) == INVALID_FILE_ATTRIBUTES) {
            folderIO_->OpenFolder(current.empty() ? "." : current);
            folderIO_->CreateFolder(name);
        }
        current = next + "\\";
    }
}

void clsItem::DownloadItemFile() {
    const std::string name = Productname().empty() ? FileName() : Productname();
    StatusMessage("Downloading " + name);
    desktop_.DoEvents();

    // An empty folder is the default one, which the download goes to.
    MakeFolder(StoredInstallFolder().empty() ? std::string(kDefaultInstallFolder) : StoredInstallFolder());

    const std::string destination = InstallFolder() + InstallFileName();
    if (!TransferSession().DownloadFile(Source() + FileName(), destination)) {
        // The engine's name as the source is what the help desk has always
        // been given for this error.
        throw Failure(kDownloadFailed, "Corvan.clsInstall.PrepInstaller",
                      "Could not locate '" + FileName() + "' on remote host.\r\n" +
                          "Please contact the help desk for farther assistance.");
    }
}

}  // namespace corvan
