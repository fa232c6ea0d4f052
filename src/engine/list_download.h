#pragma once
#include <functional>
#include <string>

#include "common/failure.h"
#include "engine/packing_list_comparison.h"
#include "files/clsFileIO.h"
#include "transfer/clsFTP.h"

namespace corvan {

// A list file object's rows, read from its text in place (the file object
// counts its rows by the same rule).
inline TextRows RowsOf(const clsFileIO& file) { return TextRows::Of(file.Contents()); }

// The settings module's download of a packing list: deletes `path`,
// downloads `url` to it through the shared session and opens it in `file`.
// A list that comes empty, or whose first row has fewer than eleven fields,
// is no list: it is deleted and the download counts as failed. A failure is
// handed to `report` (0x80040064, "'<path>' could not be accessed.") and
// answers false; so does a download without a file object to open it in.
bool DownloadListFile(clsFTP& session, const std::string& url, const std::string& path, clsFileIO* file,
                      const std::function<void(const Failure&)>& report);

inline constexpr int32_t kListCorrupt = static_cast<int32_t>(0x80040000);
inline constexpr int32_t kListDownloadFailed = static_cast<int32_t>(0x80040064);
inline constexpr int32_t kUninstallListFailed = static_cast<int32_t>(0x80040065);

}  // namespace corvan
