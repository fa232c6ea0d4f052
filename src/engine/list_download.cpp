#include "engine/list_download.h"

#include "engine/engine_files.h"
#include "logging/modTrace.h"

namespace corvan {

namespace {

void DeleteQuietly(const std::string& path) {
    try {
        engine_files::DeleteFiles(path);
    } catch (const Failure&) {
    }
}

}  // namespace

bool DownloadListFile(clsFTP& session, const std::string& url, const std::string& path, clsFileIO* file,
                      const std::function<void(const Failure&)>& report) {
    DeleteQuietly(path);
    clsFileIO own;
    clsFileIO& list = file ? *file : own;
    bool taken = false;
    if (session.DownloadFile(url, path) && list.OpenFile(path)) {
        taken = IsWholeList(RowsOf(list));
        if (!taken) {
            // Taken as it came, an empty or cut list would mark every
            // installed item removed.
            Trace({"'" + url + "' is empty or its first row has fewer than eleven fields; it is not taken."});
            DeleteQuietly(path);
        }
    }
    if (!taken) {
        // The object must not go on holding what the deleted file held.
        list.OpenFile(path);
        report(Failure(kListDownloadFailed, "Corvan.clsInstall.PrepInstaller",
                       "'" + path + "' could not be accessed.\r\nPlease contact the help desk for farther assistance."));
        return false;
    }
    return file != nullptr;
}

}  // namespace corvan
