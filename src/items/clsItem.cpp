#include "items/clsItem.h"

#include <windows.h>

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

void clsItem::MakeFolder(const std::string& folder) {
    std::string path = folder;
    while (!path.empty() && path.back() == '\\') path.pop_back();
    if (path.empty() || GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) return;
    const size_t slash = path.find_last_of('\\');
    if (slash == std::string::npos) return;
    std::string parent = path.substr(0, slash);
    // A drive ("C:") or a share ("\\server") is never made, only opened.
    const bool top = parent.size() == 2 && parent[1] == ':';
    if (top) parent += '\\';
    else if (parent.find_first_not_of('\\') != std::string::npos) MakeFolder(parent);
    if (!folderIO_) folderIO_ = std::make_unique<clsFolderIO>(desktop_);
    if (folderIO_->OpenFolder(parent)) folderIO_->CreateFolder(path.substr(slash + 1));
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
