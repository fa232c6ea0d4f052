#pragma once
#include <functional>
#include <string>

#include "common/failure.h"
#include "engine/packing_list_comparison.h"
#include "files/clsFileIO.h"
#include "transfer/clsFTP.h"

namespace corvan {

// A list file object's rows, read in place from its text by the index the
// file object keeps (the rows the engine sees are the ones it counts).
class FileRows : public ListRows {
public:
    explicit FileRows(const clsFileIO& file) : file_(file) {}
    int32_t RowCount() const override { return file_.RowCount(); }
    std::string GetRow(int32_t index) const override { return std::string(Row(index)); }
    std::string_view RowView(int32_t index, std::string&) const override { return Row(index); }

private:
    // Nothing past the last row: the file object's text after the last
    // carriage return is not a row of the list.
    std::string_view Row(int32_t index) const { return index > RowCount() ? std::string_view() : file_.RowView(index); }

    const clsFileIO& file_;
};

inline FileRows RowsOf(const clsFileIO& file) { return FileRows(file); }

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
