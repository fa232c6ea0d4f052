#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/desktop.h"
#include "common/failure.h"
#include "engine/install_engine.h"
#include "engine/packing_list_comparison.h"
#include "files/clsFileIO.h"
#include "items/clsItem.h"
#include "platform/clsRegistry.h"
#include "platform/clsWindowTools.h"
#include "security/clsCorvanSecurity.h"
#include "transfer/clsFTP.h"

namespace corvan {

// The install engine: decides what a run must do by comparing the local
// packing list with the server's, and does it over the whole list (install,
// update, repair, uninstall), reporting through its five events.
class clsInstall : public InstallEngine, private clsItemEvents, private clsCorvanSecurityEvents {
public:
    clsInstall(InstallEngineEvents& events, Desktop& desktop);
    ~clsInstall() override;
    clsInstall(const clsInstall&) = delete;
    clsInstall& operator=(const clsInstall&) = delete;

    std::string InstallFile() const override { return installFile_; }
    void InstallFile(std::string path) override { installFile_ = std::move(path); }
    std::string UnInstallFile() const override { return unInstallFile_; }
    void UnInstallFile(std::string path) override { unInstallFile_ = std::move(path); }

    bool PrepInstaller(int32_t mode, bool forceInstall) override;
    bool NeedToInstall() override;
    std::string NeedToDo() const override { return nextAction_; }
    bool GetWindowsConfiguration(KeyedCollection<std::string>& substitutions) override;
    std::string Status() const override { return status_; }

    // The install pass over colItems; true unless a failure ended it.
    bool Install();
    // The form of the local list: at least one row, eleven fields in the first.
    bool ValidateFile();

    void objItem_FileDownloadProgress(float Percent, const std::string& status);
    void objItem_StatusMessageUpdate(const std::string& status);
    void objSecurity_StatusMessageChange(const std::string& Message);

protected:
    // Loads one list file into colItems (see PackingListComparison); true
    // when nothing differed from what colItems held.
    virtual bool LoadFileIntoCollection(const clsFileIO& file, bool markDirty);

private:
    bool Prepare(int32_t mode, bool forceInstall);
    bool PrepareInstall();
    void PrepareUninstall(int32_t mode, bool& stopped);
    bool FetchLocalListAgain();
    // Creates SC_Uninstall.scl; when it cannot, raises the status and the
    // uninstall-list error (0x80040065).
    void CreateUninstallList(const char* failedStatus);

    bool SameAsServer();
    void UpdateLocalFile();
    void WriteUninstallLog();
    bool LoadLocalFile(clsFileIO& objLocalFile);
    // A packing list from `url`, falling back to the alternate installer
    // URLs when `url` is on the current base URL; the failure is reported
    // once, when no source gave the list.
    bool DownloadList(const std::string& url, const std::string& path, clsFileIO* file);
    // A packing list from `url` alone; a failure is left in `failure`.
    bool DownloadListFrom(const std::string& url, const std::string& path, clsFileIO* file, Failure& failure);
    // "ALT_URL_SOURCE_1" then "ALT_URL_SOURCE_2" of the settings, those set.
    std::vector<std::string> AlternateSources() const;

    // Walks colItems in order: the banner line with the item's file name,
    // the item's step, then the progress over all items (counted whether
    // the step did anything or not).
    void WalkItems(const std::string& banner, const std::function<void(ItemRecord&)>& step);
    void InstallItem(ItemRecord& record);
    void FinalizeInstall();
    void Uninstall();
    void RunRegistration(bool unregister);

    // Runs one item operation; a failure is reported and kept as the
    // pending error, and the pass goes on.
    void ItemStep(clsItem& item, void (clsItem::*operation)(), const char* context);

    int16_t ReadInstallComplete();
    void WriteInstallComplete(int32_t value);
    std::string BaseUrl() const;
    std::string ApplicationFolder() const;

    void StatusMsg(const std::string& text);
    void RaiseInstallationStatus(const std::string& text);
    // number - source - description + context, the form every handler uses.
    static std::string ErrorText(const Failure& failure, const std::string& context);
    void ReportError(const Failure& failure, const std::string& context);
    void LogError(const Failure& failure, const std::string& context);
    // A step whose failure only leaves the pending error behind.
    void Quietly(const std::function<void()>& step);

    // clsItemEvents, clsCorvanSecurityEvents
    void FileDownloadProgress(float Percent, const std::string& status) override;
    void StatusMessageUpdate(const std::string& status) override;
    void StatusMessageChange(const std::string& Message) override;

    InstallEngineEvents& events_;
    Desktop& desktop_;
    clsRegistry registry_;
    clsWindowTools windowTools_;
    std::unique_ptr<clsCorvanSecurity> objSecurity_;
    clsFTP session_;  // the shared transfer session the lists come through
    clsFileIO localFile_, serverFile_, uninstallFile_;
    PackingListComparison comparison_;

    std::string installFile_, unInstallFile_;
    std::string status_;
    std::string nextAction_;
    int16_t installComplete_ = 0;
    Failure pendingError_{0, "", ""};
};

}  // namespace corvan
