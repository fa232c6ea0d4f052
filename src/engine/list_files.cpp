// What the engine does with its three list files as wholes: SC_Install.scl
// (the local list), ServerVersion.scl (the server's) and SC_Uninstall.scl.
#include "common/text.h"
#include "engine/clsInstall.h"
#include "engine/list_download.h"
#include "logging/modTrace.h"
#include "settings/modCorvanInstaller_Global.h"

namespace corvan {

std::vector<std::string> clsInstall::AlternateSources() const {
    const KeyedCollection<std::string> dictionary = modCorvanInstaller_Global().Dictionary();
    std::vector<std::string> sources;
    for (const char* key : {"ALT_URL_SOURCE_1", "ALT_URL_SOURCE_2"}) {
        const std::string* source = dictionary.Find(key);
        if (source && !source->empty()) sources.push_back(*source);
    }
    return sources;
}

bool clsInstall::DownloadListFrom(const std::string& url, const std::string& path, clsFileIO* file, Failure& failure) {
    return DownloadListFile(session_, url, path, file, [&failure](const Failure& reported) { failure = reported; });
}

// A list the current base URL cannot give (the server unreachable after the
// transfer's retries, an HTTP error, a list too broken to take) is asked of
// the alternate installer URLs in turn; the step fails, and its error is
// reported, only when none of them gives it.
bool clsInstall::DownloadList(const std::string& url, const std::string& path, clsFileIO* file) {
    Failure failure(0, "", "");
    bool done = DownloadListFrom(url, path, file, failure);
    const std::string base = BaseUrl();
    if (!done && file && url.compare(0, base.size(), base) == 0) {
        for (const std::string& source : AlternateSources()) {
            StatusMsg("Attempting New Download of Install file from " + source);
            done = DownloadListFrom(source + url.substr(base.size()), path, file, failure);
            if (done) break;
        }
    }
    if (!done && failure.Number() != 0) ReportError(failure, "");
    return done;
}

bool clsInstall::ValidateFile() {
    try {
        switch (CheckListForm(RowsOf(localFile_))) {
            case ListForm::Valid:
                return true;
            case ListForm::Empty:
                Trace({"SC_Install.Scl is empty...Invalid file format."});
                return false;
            case ListForm::TooFewFields:
                // Says ten, tests eleven: both as they have always been.
                Trace({"SC_Install.Scl has less than 10 fields...Invalid file format."});
                return false;
        }
    } catch (const Failure& failure) {
        LogError(failure, " - clsInstall.ValidateFile()");
    }
    return false;
}

bool clsInstall::LoadFileIntoCollection(const clsFileIO& file, bool markDirty) {
    return comparison_.LoadFileIntoCollection(RowsOf(file), markDirty);
}

bool clsInstall::SameAsServer() {
    try {
        const std::string url = BaseUrl() + "SC_Install.scl";
        Trace({"Downloading Server file from: " + url});
        if (!DownloadList(url, ApplicationFolder() + "\\ServerVersion.scl", &serverFile_)) {
            Trace({"Download Failed"});
            return false;
        }
        comparison_.Reset();
        Trace({"Loading local file and Server file into collection."});
        // Only the answer is wanted: the lists are compared by the loads'
        // rules without making their items.
        const PackingListComparison::Agreement agreement =
            comparison_.CompareLists(RowsOf(localFile_), RowsOf(serverFile_));
        if (agreement.mustInstall) comparison_.blnMustInstall(true);
        if (!agreement.localLoaded) {
            Trace({"Local file failed to load into collection. Format could be bad."});
            return false;
        }
        if (!agreement.serverLoaded) {
            Trace({"Non-Duplicate rows found when comparing server and local file contents."});
            return false;
        }
        if (comparison_.blnMustInstall()) {
            Trace({"blnMustInstall = True"});
            return false;
        }
        Trace({"Local file = Server file"});
        // Nothing to do: the lists are let go.
        localFile_.Contents("");
        serverFile_.Contents("");
        comparison_.blnMustInstall(false);
        return true;
    } catch (const Failure& failure) {
        LogError(failure, " - clsInstall.SameAsServer()");
        return false;
    }
}

void clsInstall::UpdateLocalFile() {
    try {
        const std::string contents = serverFile_.Contents();
        if (!Trim(contents).empty()) localFile_.WriteText(contents);
    } catch (const Failure& failure) {
        LogError(failure, " - clsInstaller.UpdateLocalFile()");
    }
}

void clsInstall::WriteUninstallLog() {
    try {
        uninstallFile_.WriteText(comparison_.UninstallListText());
    } catch (const Failure& failure) {
        LogError(failure, " - clsInstall.WriteUninstallLog()");
    }
}

bool clsInstall::LoadLocalFile(clsFileIO& objLocalFile) {
    try {
        // The two ways to a fresh copy differ only in their texts: the
        // missing file's end in a full stop.
        auto fetch = [&](const char* why, const char* failed, const char* done) {
            StatusMsg(why);
            if (!DownloadList(BaseUrl() + "SC_Install.scl", installFile_, &objLocalFile)) {
                StatusMsg(failed);
                return;
            }
            StatusMsg(done);
            comparison_.blnForceInstall(true);
            comparison_.blnMustInstall(true);
        };
        const bool opened = objLocalFile.OpenFile(installFile_);
        if (!opened || comparison_.blnForceInstall())
            fetch("File not found, downloading.", "Download Failed.", "Download Successful.");
        else if (objLocalFile.RowCount() == 0)
            fetch("File was empty...Downloading install file.", "Download Failed", "Download Successful");
    } catch (const Failure& failure) {
        LogError(failure, " - clsInstall.LoadLocalFile(objLocalFile as clsFileIO)");
    }
    return true;
}

}  // namespace corvan
