#include "files/clsFileIO.h"

#include <cstdio>
#include <memory>

#include "files/cBinaryFileStream.h"
#include "files/folder_browser.h"
#include "files/list_rows.h"
#include "files/text_file.h"
#include "files/win_errors.h"

namespace corvan {
namespace {

const char kWriteTextSource[] = "clsFileIO.WriteText";

}  // namespace

clsFileIO::~clsFileIO() = default;

int64_t clsFileIO::Length() const { return FileInfo().size; }

std::string clsFileIO::GetFolder(HWND owner) const { return BrowseForFolder(owner); }

clsFileIO::Facts clsFileIO::FileInfo() const {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExA(path_.c_str(), GetFileExInfoStandard, &data))
        throw LastFileFailure("clsFileIO.FileInfo");
    Facts facts;
    facts.size = (int64_t(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    facts.attributes = data.dwFileAttributes;
    facts.created = data.ftCreationTime;
    facts.lastWritten = data.ftLastWriteTime;
    facts.lastAccessed = data.ftLastAccessTime;
    return facts;
}

void clsFileIO::Contents(const std::string& text) {
    contents_ = text;
    IndexRows();
}

void clsFileIO::SetMode(Mode mode) {
    mode_ = mode;
    status_ = mode == Mode::Read ? "Open" : mode == Mode::Write ? "Write" : "Closed";
}

void clsFileIO::IndexRows() { rowStarts_ = IndexListRows(contents_); }

void clsFileIO::CreateFile(const std::string& path) {
    CloseFile();
    path_ = path;
    // Nothing of this file has been read: the text and rows of an earlier
    // file must not pass for its own.
    contents_.clear();
    IndexRows();
    text_file::CreateIfMissing(path, "clsFileIO.CreateFile");
    SetMode(Mode::Write);
}

bool clsFileIO::OpenFile(const std::string& path) {
    CloseFile();
    path_ = path;
    try {
        contents_ = text_file::ReadAll(path, "clsFileIO.OpenFile");
        IndexRows();
        SetMode(Mode::Read);
        return true;
    } catch (...) {
        // Rows of an earlier file must not pass for this one's. A file too
        // large for the memory left is "Out of memory", like any other.
        const Failure failure = FailureInFlight("clsFileIO.OpenFile");
        contents_.clear();
        IndexRows();
        status_ = failure.Description();
        return false;
    }
}

void clsFileIO::CloseFile() {
    SetMode(Mode::Closed);
    written_ = false;
    sessionText_.clear();
}

void clsFileIO::NameFile(const std::string& path) {
    CloseFile();
    path_ = path;
    contents_.clear();
    IndexRows();
}

void clsFileIO::WriteText(const std::string& text) {
    if (mode_ == Mode::Closed)
        throw Failure(error::kPathFileAccessError, kWriteTextSource,
                      "The file is not opened for writing. Please close the file, and reopen it for writing, or "
                      "appending.");
    // An appending write adds to what this session wrote, never to Contents,
    // which the caller may have set to anything.
    const bool append = mode_ == Mode::Write && written_;
    std::string whole = append ? sessionText_ + text : text;
    text_file::ReplaceAll(path_, whole, kWriteTextSource);
    written_ = true;
    sessionText_ = whole;
    contents_ = std::move(whole);
    IndexRows();
}

bool clsFileIO::Refresh() {
    try {
        contents_ = text_file::ReadAll(path_, "clsFileIO.Refresh");
        IndexRows();
        return true;
    } catch (const Failure&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::string clsFileIO::VersionNumber() const {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeA(path_.c_str(), &ignored);
    if (size == 0) return "0.0.0.0";
    std::vector<char> block(size);
    if (!GetFileVersionInfoA(path_.c_str(), 0, size, block.data())) return "0.0.0.0";
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    if (!VerQueryValueA(block.data(), "\\", reinterpret_cast<void**>(&fixed), &length) || fixed == nullptr ||
        length < sizeof(VS_FIXEDFILEINFO))
        return "0.0.0.0";
    char text[64];
    std::snprintf(text, sizeof text, "%lu.%lu.%lu.%lu", static_cast<unsigned long>(HIWORD(fixed->dwFileVersionMS)),
                  static_cast<unsigned long>(LOWORD(fixed->dwFileVersionMS)),
                  static_cast<unsigned long>(HIWORD(fixed->dwFileVersionLS)),
                  static_cast<unsigned long>(LOWORD(fixed->dwFileVersionLS)));
    return text;
}

std::string clsFileIO::GetRow(int32_t index) const { return std::string(RowView(index)); }

std::string_view clsFileIO::RowView(int32_t index) const { return ListRow(contents_, rowStarts_, index); }

void clsFileIO::CRCProgress(int16_t& Percent) {
    if (listener_ != nullptr) listener_->CRCProgress(Percent);
}

std::string clsFileIO::CRC32() {
    return FileCrcText(path_, this);
}

}  // namespace corvan
