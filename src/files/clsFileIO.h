#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>
#include <ocidl.h>

#include "files/cCRC32.h"

// windows.h maps CreateFile to CreateFileA; the system's own method keeps
// its name, and Win32 is called by the "A" names anyway.
#ifdef CreateFile
#undef CreateFile
#endif

namespace corvan {

// One file on disk as the rest of the system sees it: the packing lists as
// text and rows, any file's version and CRC text, and the shell's facts.
//
// Writing never leaves a list half-written: every WriteText replaces the
// file as a whole through a new file in the same folder. After CreateFile
// an existing file keeps its text until the first WriteText replaces it,
// and later writes of that session append; after OpenFile each WriteText
// replaces the whole text.
class clsFileIO : public CRCProgressListener {
public:
    // `listener` receives the checksum's progress, once per 8192 bytes.
    explicit clsFileIO(CRCProgressListener* listener = nullptr) : listener_(listener) {}
    ~clsFileIO() override;
    clsFileIO(const clsFileIO&) = delete;
    clsFileIO& operator=(const clsFileIO&) = delete;

    void SetListener(CRCProgressListener* listener) { listener_ = listener; }

    // The file's size on disk in bytes; Failure 53 when it is not there.
    int64_t Length() const;

    // The shell's folder browser, captioned "Please select a folder:"; an
    // empty text when the user cancels.
    std::string GetFolder(HWND owner = nullptr) const;

    const std::string& path() const { return path_; }

    // Size, attributes and times of the file, fresh from the disk.
    struct Facts {
        int64_t size = 0;
        DWORD attributes = 0;
        FILETIME created{}, lastWritten{}, lastAccessed{};
    };
    Facts FileInfo() const;

    const std::string& Contents() const { return contents_; }
    // Sets the text held in memory (and its rows); the disk is not touched.
    void Contents(const std::string& text);

    // "Closed", "Open" (read in) or "Write" (created, open for writing).
    const std::string& Status() const { return status_; }

    int32_t RowCount() const { return static_cast<int32_t>(rowStarts_.size()) - 1; }

    // Creates the file when it is missing and leaves it open for writing;
    // Contents and the rows start empty. Failures (a missing folder: 76) are
    // raised.
    void CreateFile(const std::string& path);

    // Reads the whole text and indexes its rows. False, with the failure
    // kept in Status, when it cannot be read.
    bool OpenFile(const std::string& path);

    void CloseFile();

    // Names an existing file for its facts, version and CRC without reading
    // its text: a package can be large, and only lists are read as text.
    // Contents and rows are emptied; nothing is opened.
    void NameFile(const std::string& path);

    // Fails with source "clsFileIO.WriteText" when no file is open.
    void WriteText(const std::string& text);

    // Reads the file's text again, keeping the open state.
    bool Refresh();

    // "a.b.c.d" from the version resource; "0.0.0.0" when there is none.
    std::string VersionNumber() const;

    // Row `index` (1-based) without the line-break characters at its ends;
    // empty past the last row. The text after the last carriage return is
    // row RowCount() + 1.
    std::string GetRow(int32_t index) const;
    // The same row as a view of Contents(), valid until the text changes.
    std::string_view RowView(int32_t index) const;

    void CRCProgress(int16_t& Percent) override;

    // Upper-case hexadecimal CRC-32 without leading zeros ("0" when empty).
    std::string CRC32();

    // The shell's detail column of that name ("Comments", "Title", ...) for
    // this file; empty when the shell has no such column or no value.
    std::string GetFileSummaryItem(const std::string& columnName) const;
    std::string Comments() const { return GetFileSummaryItem("Comments"); }
    std::string Title() const { return GetFileSummaryItem("Title"); }
    std::string Description() const { return GetFileSummaryItem("Description"); }
    std::string Subject() const { return GetFileSummaryItem("Subject"); }

    // The file's shell icon; the caller owns it (DestroyIcon). Null when the
    // shell has none.
    HICON GetIcon(bool large = true) const;
    // Wraps an icon in a picture object that takes ownership of it.
    static IPicture* IconToPicture(HICON icon);
    std::string GetFileTypeName() const;

private:
    enum class Mode { Closed, Read, Write };
    void SetMode(Mode mode);
    void IndexRows();

    CRCProgressListener* listener_;
    std::string path_;
    std::string status_ = "Closed";
    Mode mode_ = Mode::Closed;
    bool written_ = false;     // a WriteText happened since CreateFile
    std::string sessionText_;  // what the writes since CreateFile or OpenFile made the file
    std::string contents_;
    std::vector<size_t> rowStarts_ = {0};
};

}  // namespace corvan
