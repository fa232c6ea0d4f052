#pragma once
#include <memory>
#include <string>
#include <vector>

#include "common/desktop.h"
#include "files/cCRC32.h"
#include "files/clsFolderIO.h"
#include "files/clsShell.h"
#include "items/ItemRecord.h"
#include "transfer/clsFTP.h"

namespace corvan {

// What an item tells the engine.
class clsItemEvents {
public:
    virtual ~clsItemEvents() = default;
    virtual void FileDownloadProgress(float Percent, const std::string& status) = 0;
    virtual void StatusMessageUpdate(const std::string& status) = 0;
};

class clsWindowTools;

// One component of the packing list: its row, the transfer session it
// fetches its file with, and its own install and uninstall.
class clsItem : public ItemRecord, private clsFTPEvents, private CRCProgressListener {
public:
    explicit clsItem(Desktop& desktop, clsItemEvents* listener = nullptr);
    ~clsItem() override;
    clsItem(const clsItem&) = delete;
    clsItem& operator=(const clsItem&) = delete;

    void SetListener(clsItemEvents* listener) { listener_ = listener; }

    // Fetches Source + FileName into InstallFolder + InstallFileName, making
    // the folder first. Throws the download Failure (0x80040064) when the
    // server does not give the file.
    void DownloadItemFile();

    // Checks the local file against the row's CRC, downloads it when it is
    // missing or differs, and runs it by its extension. Failures are raised.
    void Install();
    // Runs the file's uninstall by its extension, or deletes a plain file.
    void Uninstall();
    // Registers the installed file with COM, or unregisters it, by its
    // extension (RegisterControls::RegisterFile): the empty text on success,
    // else the reason it failed.
    std::string RegisterControl(bool unregister = false);

    // Made when the item first downloads: a list of many rows opens no
    // WinINet session for the rows that need no download.
    clsFTP& TransferSession();

private:
    void FileProgress(float Percent, const std::string& status) override;
    void CRCProgress(int16_t& Percent) override;
    // The package runner: status, pending messages, then the command, run
    // hidden and waited for without limit.
    void RunPackage(const std::string& commandLine);
    // The folder a cab item is extracted into: the application folder and
    // the cab's name less its extension.
    std::string ExtractionFolder() const;
    // Paths of the files of `folder` whose names end in "inf", in the order
    // the folder lists them.
    std::vector<std::string> InfFiles(const std::string& folder);
    clsFolderIO& FolderIO();
    void StatusChange(std::string&, int32_t) override {}
    void StatusMessage(const std::string& text);
    // Makes `folder` and every missing folder above it, below its drive,
    // share or root; a folder that cannot be made, or a root that cannot be
    // reached, raises the file system's error.
    void MakeFolder(const std::string& folder);

    Desktop& desktop_;
    clsItemEvents* listener_;
    std::unique_ptr<clsFTP> ftp_;            // made on first download
    std::unique_ptr<clsFolderIO> folderIO_;  // made on first use
    std::unique_ptr<clsShell> shell_;        // made on first use
    std::unique_ptr<clsWindowTools> windowTools_;  // made on first use
};

inline constexpr int32_t kDownloadFailed = static_cast<int32_t>(0x80040064);
// A file that is missing, or cannot be run for want of an extension.
inline constexpr int32_t kMissingOrCorrupt = static_cast<int32_t>(0x80040000);

}  // namespace corvan
