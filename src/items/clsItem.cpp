#include "items/clsItem.h"

#include "common/failure.h"
#include "items/make_folder.h"

namespace corvan {

clsItem::clsItem(Desktop& desktop, clsItemEvents* listener)
    : desktop_(desktop), listener_(listener), ftp_(&desktop, this) {}

void clsItem::FileProgress(float Percent, const std::string& status) {
    if (listener_) listener_->FileDownloadProgress(Percent, status);
}

void clsItem::StatusMessage(const std::string& text) {
    if (listener_) listener_->StatusMessageUpdate(text);
}

void clsItem::DownloadItemFile() {
    const std::string name = Productname().empty() ? FileName() : Productname();
    StatusMessage("Downloading " + name);
    desktop_.DoEvents();

    // An empty folder is the default one, which the download goes to.
    const std::string folder = StoredInstallFolder().empty() ? std::string(kDefaultInstallFolder) : StoredInstallFolder();
    MakeFolder(folder);

    const std::string destination = InstallFolder() + InstallFileName();
    if (!ftp_.DownloadFile(Source() + FileName(), destination)) {
        // The engine's name as the source is what the help desk has always
        // been given for this error.
        throw Failure(kDownloadFailed, "Corvan.clsInstall.PrepInstaller",
                      "Could not locate '" + FileName() + "' on remote host.\r\n" +
                          "Please contact the help desk for farther assistance.");
    }
}

}  // namespace corvan
