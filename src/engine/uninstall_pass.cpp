// The uninstall pass: every listed item, then the databases saved and the
// application folder, the start-menu folders, the registry mark and the
// lists removed.
#include <exception>

#include "engine/clsInstall.h"
#include "common/text.h"
#include "engine/engine_files.h"
#include "logging/modTrace.h"
#include "logging/write_log.h"

namespace corvan {

namespace {

constexpr char kBackupFolder[] = "C:\\Temp\\Talo\\Backup";

bool IsDatabase(const ItemRecord& record) { return UpperCase(record.GetFileExtention()) == "MDB"; }

}  // namespace

void clsInstall::Uninstall() {
    try {
        pendingError_ = Failure(0, "", "");
        // Each file step below goes on whatever happens; the trace shows the
        // error the steps so far left behind.
        auto pending = [this] { return std::to_string(pendingError_.Number()) + " - " + pendingError_.Description(); };

        RaiseInstallationStatus("Uninstalling");
        StatusMsg("Uninstalling Corvan Connect...");
        events_.FTPStatus(0.0f, "");

        WalkItems("Uninstall", [this](ItemRecord& record) {
            // The same filter that wrote the list.
            if (!ListedForUninstall(record, comparison_.VersionName())) return;
            StatusMsg("Removing " + record.FileName());
            // A listed database is the dealer's data: its own uninstall
            // would delete it before the backup below saves it, so it is
            // left to the backup and the folder's removal.
            if (IsDatabase(record)) return;
            clsItem objItem(desktop_, this);
            static_cast<ItemRecord&>(objItem) = record;
            ItemStep(objItem, &clsItem::Uninstall, " - clsInstall.Uninstall");
        });

        const std::string folder = ApplicationFolder();
        StatusMsg("Creating mdb backup directory");
        bool backup = true;
        try {
            engine_files::MakePath(kBackupFolder);
        } catch (const Failure& failure) {
            pendingError_ = failure;
            backup = false;
        }
        if (backup) {
            Trace({std::string(kBackupFolder) + " Created... " + pending()});
            StatusMsg("Backing up MDB files.");
            Quietly([&] { engine_files::CopyFiles(folder + "\\*.mdb", kBackupFolder); });
            Trace({"Copied MDB files... " + pending()});
            StatusMsg("Removing files from application directory.");
            Quietly([&] { engine_files::DeleteFiles(folder + "\\*.*"); });
            Trace({"Killed All Talo Directory Files... " + pending()});
            StatusMsg("Deleting Application Folder.");
            Quietly([&] { engine_files::DeleteFolder(folder); });
            Trace({"Deleted Application folder... " + pending()});
        } else {
            desktop_.MsgBox(
                "Could not create the backup directory for the local database files, the C:\\TALO directory will not "
                "be removed.",
                msgbox::vbExclamation, "Unable to Backup...");
            Trace({"Unable to create backup folder... " + pending()});
            StatusMsg("Could not run backup, deleting MSI and EXE files only.");
            Quietly([&] { engine_files::DeleteFiles(folder + "\\*.msi"); });
            Trace({"Deleted All MSI files... " + pending()});
            Quietly([&] { engine_files::DeleteFiles(folder + "\\*.exe"); });
            Trace({"Deleted All EXE Files... " + pending()});
        }

        Quietly([] {
            engine_files::DeleteFolder("C:\\Documents and Settings\\All Users\\Start Menu\\Programs\\Corvan Connect");
        });
        Quietly([] { engine_files::DeleteFolder("C:\\Documents and Settings\\All Users\\Start Menu\\Programs\\Talo"); });
        uninstallFile_.CloseFile();

        StatusMsg("Finalizing Uninstall.");
        Trace({"Clearing Installation Registry Setting..."});
        WriteInstallComplete(0);

        Quietly([&] { engine_files::DeleteFiles(folder + "*.SCL"); });
        Quietly([&] { engine_files::DeleteFiles(folder + "*.DAT"); });
        desktop_.DoEvents();
        // Only an emptied folder goes: where the databases could not be
        // saved they stay, as the dealer was told.
        Quietly([&] { engine_files::RemoveEmptyFolder(folder); });
        StatusMsg("Uninstall has completed successfully.");
    } catch (const Failure& failure) {
        ReportError(failure, " - clsInstall.Uninstall");
    } catch (const std::exception& problem) {
        ReportError(RuntimeError(error::kInvalidProcedureCall, problem.what()), " - clsInstall.Uninstall");
    }
}

}  // namespace corvan
