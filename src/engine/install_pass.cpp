// The install pass over colItems, the registration walk after it, and the
// finalization that records the installation.
#include <exception>

#include "engine/clsInstall.h"
#include "engine/install_step.h"
#include "engine/registration_pass.h"
#include "logging/modTrace.h"
#include "logging/write_log.h"
#include "platform/modPDFVer.h"
#include "settings/modCorvanInstaller_Global.h"

namespace corvan {

namespace {

constexpr int32_t kLocalMachine = static_cast<int32_t>(0x80000002u);

}  // namespace

void clsInstall::ItemStep(clsItem& item, void (clsItem::*operation)(), const char* context) {
    // An item that fails is reported and the pass goes on with the next step.
    try {
        (item.*operation)();
    } catch (const Failure& failure) {
        pendingError_ = failure;
        ReportError(failure, context);
    }
}

void clsInstall::WalkItems(const std::string& banner, const std::function<void(ItemRecord&)>& step) {
    KeyedCollection<ItemRecord>& colItems = comparison_.colItems();
    const float total = static_cast<float>(colItems.Count());
    int32_t position = 0;
    for (auto& entry : colItems) {
        ItemRecord& record = entry.second;
        WriteLog("--------------------------Start " + banner + " of " + record.FileName() + " ------------------------");
        ++position;
        step(record);
        events_.ProgressUpdate(static_cast<float>(position) / total);
    }
}

bool clsInstall::Install() {
    try {
        if (installComplete_ == 1) {
            Trace({"intInstallationComplete = 1"});
            RaiseInstallationStatus("Updating");
            StatusMsg("Please wait while we update some components...");
        } else if (installComplete_ == 0) {
            Trace({"intInstallationComplete = 0"});
            RaiseInstallationStatus("Installing");
            StatusMsg("Please wait while we install the required components.");
        }
        desktop_.DoEvents();
        events_.FTPStatus(0.0f, "");

        // Emptied now; each row installed below is added to it.
        uninstallFile_.WriteText("");

        WalkItems("Install", [this](ItemRecord& record) {
            if (record.IsDirty()) InstallItem(record);
        });

        UpdateLocalFile();
        RaiseInstallationStatus("Complete");
        StatusMsg("Setting Local file to match server file.");
        return true;
    } catch (const Failure& failure) {
        ReportError(failure, " - clsInstall.Install");
    } catch (const std::exception& problem) {
        ReportError(RuntimeError(error::kInvalidProcedureCall, problem.what()), " - clsInstall.Install");
    }
    return false;
}

void clsInstall::InstallItem(ItemRecord& record) {
    const InstallerSettings& settings = modCorvanInstaller_Global();
    InstallStepFacts facts;
    facts.versionName = comparison_.VersionName();
    facts.usersGroups = settings.UsersGroups;
    facts.ieMajorVersion = settings.IEMajorVersion;
    facts.installComplete = installComplete_;
    facts.acrobatPresent = [] { return AcrobatIsInstalled(); };
    const InstallStep step = DecideInstallStep(record, facts);

    StatusMsg("OS Check: " + facts.versionName + " : Item OS: " + record.OS());
    if (step == InstallStep::OtherMachine || step == InstallStep::NeverRemoved || step == InstallStep::SkipProduct)
        return;

    // The item works on its own copy of the row; what it learns (the CRC
    // and version of the file it fetched) comes back into colItems.
    const std::string display = DisplayName(record);
    clsItem objItem(desktop_, this);
    static_cast<ItemRecord&>(objItem) = record;
    if (step == InstallStep::Remove) {
        StatusMsg("Removing: " + display);
        ItemStep(objItem, &clsItem::Uninstall, " - clsInstall.Install");
        return;
    }

    StatusMsg("Checking versions of " + display);
    if (UninstallsOldVersionFirst(record, facts)) {
        ItemStep(objItem, &clsItem::Uninstall, " - clsInstall.Install");
        StatusMsg("Uninstalling old version of " + display);
    }
    if (step == InstallStep::SkipGroup) {
        WriteLog("File: " + record.FileName() + " skipped...Group not set for this user");
        return;
    }
    ItemStep(objItem, &clsItem::Install, " - clsInstall.Install");
    record = static_cast<const ItemRecord&>(objItem);
    record.IsDirty(kVbFalse);
    // Every row ends with its own line break, so the list reads back.
    if (record.Flag() == 0) uninstallFile_.WriteText(record.UniformString() + "\r\n");
}

void clsInstall::RunRegistration(bool unregister) {
    Registration(comparison_.colItems(), unregister, events_);
}

void clsInstall::FinalizeInstall() {
    // Every step runs whatever the one before it did.
    auto step = [this](auto action) {
        try {
            action();
        } catch (const Failure& failure) {
            pendingError_ = failure;
            LogError(failure, " - clsInstall.FinalizeInstall()");
        } catch (const std::exception&) {
        }
    };
    const std::string versionName = windowTools_.VersionName();
    step([&] {
        registry_.SetRegValue(kLocalMachine, "Software\\Talo\\Settings", "InstallComplete", RegVariant::Long(1));
    });
    step([&] {
        if (versionName == "Windows XP" && windowTools_.ServicePack() == "Service Pack 2")
            objSecurity_->SetXPSP2SecurityConfig();
    });
    step([&] { objSecurity_->SetRegistryTrustConfig(); });
    step([&] { StatusMsg("Corvan Connect has been successfully installed."); });
    step([&] { events_.FTPStatus(1.0f, "All Downloads Complete"); });
    step([&] {
        if (versionName != "Windows 98" && versionName != "Windows ME") return;
        const int answer = desktop_.MsgBox(
            "Since you are using " + versionName + " you MUST reboot your computer before you log into Corvan Connect." +
                "\r\n" + "'Yes' = reboot your computer, 'No' = Allow manual reboot.",
            msgbox::vbYesNo | msgbox::vbCritical, "Must Reboot...");
        if (answer == msgbox::vbYes) desktop_.ExitSession(2, 0);
    });
}

}  // namespace corvan
