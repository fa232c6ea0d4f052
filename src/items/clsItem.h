#pragma once
#include <memory>
#include <string>

#include "common/desktop.h"
#include "files/clsFolderIO.h"
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

// One component of the packing list: its row, and the transfer session it
// fetches its file with.
class clsItem : public ItemRecord, private clsFTPEvents {
public:
    explicit clsItem(Desktop& desktop, clsItemEvents* listener = nullptr);
    clsItem(const clsItem&) = delete;
    clsItem& operator=(const clsItem&) = delete;

    void SetListener(clsItemEvents* listener) { listener_ = listener; }

    // Fetches Source + FileName into InstallFolder + InstallFileName, making
    // the folder first. Throws the download Failure (0x80040064) when the
    // server does not give the file.
    void DownloadItemFile();

    // Brings the item's file up to date and runs it by its extension;
    // failures are raised as Failure.
    void Install();
    // Runs the item's uninstall command, or deletes its file.
    void Uninstall();

    clsFTP& TransferSession() { return ftp_; }

private:
    void FileProgress(float Percent, const std::string& status) override;
    void StatusChange(std::string&, int32_t) override {}
    void StatusMessage(const std::string& text);
    // Makes `folder` and every missing folder above it; a folder that cannot
    // be made raises the file system's error.
    void MakeFolder(const std::string& folder);

    Desktop& desktop_;
    clsItemEvents* listener_;
    clsFTP ftp_;
    std::unique_ptr<clsFolderIO> folderIO_;  // made on first use
};

inline constexpr int32_t kDownloadFailed = static_cast<int32_t>(0x80040064);

}  // namespace corvan
